#include "ui/NumberField.h"

#include "common/UserPrompt.h"

#include <QLocale>

namespace kilnova {

NumberField::NumberField(QWidget* parent)
    : QLineEdit(parent)
{
    setAlignment(Qt::AlignRight);
}

void NumberField::setValue(double value)
{
    // Seven significant digits show a float as it was typed (5.0654, not 5.065400123596191).
    setText(QString::number(value, 'g', 7));
}

std::optional<double> NumberField::value() const
{
    bool ok = false;
    const double v = QLocale::c().toDouble(text().trimmed(), &ok);
    if (!ok)
        return std::nullopt;
    return v;
}

std::optional<double> requireNumber(NumberField* field, UserPrompt& ui)
{
    const std::optional<double> v = field->value();
    if (!v) {
        ui.showMessage(QObject::tr("Please enter a number."), UserPrompt::Icon::Warning, {});
        field->setFocus();
        field->selectAll();
    }
    return v;
}

} // namespace kilnova
