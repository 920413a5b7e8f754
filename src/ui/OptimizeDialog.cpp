#include "ui/OptimizeDialog.h"

#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "ui/NumberField.h"
#include "ui/RecordView.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

namespace kilnova {

OptimizeDialog::OptimizeDialog(UserPrompt& ui, const QString& title, QWidget* parent)
    : QDialog(parent)
    , mUi(ui)
    , mMode(new QComboBox)
    , mElement(new QComboBox)
    , mTarget(new NumberField)
    , mTonnage(new NumberField)
{
    setWindowTitle(title);
    mMode->setObjectName(QStringLiteral("mode"));
    mElement->setObjectName(QStringLiteral("element"));
    mTarget->setObjectName(QStringLiteral("target"));
    mTonnage->setObjectName(QStringLiteral("requestedTonnage"));
}

QGridLayout* OptimizeDialog::objectiveLayout(const QString& targetCaption, const QString& tonnageCaption)
{
    OptimizationSettings& s = settings();
    mMode->addItems(s.modeChoiceList());
    mMode->setCurrentIndex(s.modeChoice());
    mElement->addItems(s.propertyNames().mid(0, s.optimisableCount()));
    mElement->setCurrentIndex(s.element());
    mTarget->setValue(s.target());
    mTonnage->setValue(s.requestedTonnage());
    auto* objective = new QGridLayout;
    objective->addWidget(new QLabel(QStringLiteral("Optimize:")), 0, 0);
    objective->addWidget(mMode, 0, 1);
    objective->addWidget(mElement, 0, 2);
    objective->addWidget(new QLabel(targetCaption), 1, 0);
    objective->addWidget(mTarget, 1, 1);
    objective->addWidget(new QLabel(tonnageCaption), 2, 0);
    objective->addWidget(mTonnage, 2, 1);

    connect(mMode, &QComboBox::currentIndexChanged, this, [this](int index) {
        settings().setModeChoice(index);
        updateEnabling();
    });
    connect(mElement, &QComboBox::currentIndexChanged, this,
            [this](int index) { settings().setElement(index); });
    return objective;
}

QHBoxLayout* OptimizeDialog::dialogButtons(bool autoDefault)
{
    auto* optimizeButton = new QPushButton(QStringLiteral("Optimize"));
    optimizeButton->setObjectName(QStringLiteral("optimize"));
    auto* ok = new QPushButton(QStringLiteral("OK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : {optimizeButton, ok, cancel}) {
        b->setAutoDefault(autoDefault);
        buttons->addWidget(b);
    }
    connect(optimizeButton, &QPushButton::clicked, this, &OptimizeDialog::optimize);
    connect(ok, &QPushButton::clicked, this, &OptimizeDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    return buttons;
}

void OptimizeDialog::updateEnabling()
{
    mTarget->setEnabled(settings().targetEnabled());
}

bool OptimizeDialog::readFields()
{
    for (NumberField* f : {mTarget, mTonnage}) {
        if (!requireNumber(f, mUi))
            return false;
    }
    settings().setTarget(*mTarget->value());
    settings().setRequestedTonnage(*mTonnage->value());
    return true;
}

bool OptimizeDialog::guarded(const std::function<void()>& step)
{
    try {
        step();
        return true;
    } catch (const DatabaseError& e) {
        mUi.showMessage(e.message(), UserPrompt::Icon::Error, {});
        return false;
    }
}

void OptimizeDialog::viewRecord(const std::function<std::optional<Record>()>& read)
{
    std::optional<Record> record;
    if (guarded([&] { record = read(); }) && record)
        RecordView(*record, this).exec();
}

QStringList OptimizeDialog::selectedTexts(const QListWidget* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) {
        if (list->item(i)->isSelected())
            texts << list->item(i)->text();
    }
    return texts;
}

void OptimizeDialog::fillList(QListWidget* list, const QStringList& texts, const QStringList& chosen,
                              Qt::CaseSensitivity cs)
{
    const QSignalBlocker blocker(list);
    list->clear();
    list->addItems(texts);
    for (int i = 0; i < list->count(); ++i)
        list->item(i)->setSelected(chosen.contains(list->item(i)->text(), cs));
}

} // namespace kilnova
