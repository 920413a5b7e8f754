#include "ui/CPromptDlg.h"

#include "database/Schema.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kilnova {

CPromptDlg::CPromptDlg(const QString& prompt, const QString& initial, QWidget* parent)
    : QDialog(parent)
    , mEdit(new QLineEdit)
{
    setWindowTitle(QApplication::applicationDisplayName());
    auto* label = new QLabel(prompt);
    label->setObjectName(QStringLiteral("prompt"));
    mEdit->setObjectName(QStringLiteral("name"));
    // The database keeps names of 1 to 50 characters; the field takes no more.
    mEdit->setMaxLength(Schema::kTextLength);
    mEdit->setText(initial);
    label->setBuddy(mEdit);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    mOk = buttons->button(QDialogButtonBox::Ok);
    mOk->setEnabled(!mEdit->text().isEmpty());
    connect(mEdit, &QLineEdit::textChanged, this,
            [this](const QString& text) { mOk->setEnabled(!text.isEmpty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (!mEdit->text().isEmpty())
            accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(mEdit);
    layout->addWidget(buttons);
    setMinimumWidth(360);
}

QString CPromptDlg::text() const
{
    return mEdit->text();
}

std::optional<QString> CPromptDlg::ask(QWidget* parent, const QString& prompt, const QString& initial)
{
    CPromptDlg dialog(prompt, initial, parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.text();
}

} // namespace kilnova
