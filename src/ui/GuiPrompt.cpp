#include "ui/GuiPrompt.h"

#include "ui/CPromptDlg.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include <vector>

namespace kilnova {

GuiPrompt::GuiPrompt(QWidget* parent)
    : mParent(parent)
{
}

bool GuiPrompt::askYesNo(const QString& question)
{
    return QMessageBox::question(mParent, QApplication::applicationDisplayName(), question,
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

UserPrompt::Answer GuiPrompt::askYesNoCancel(const QString& question)
{
    switch (QMessageBox::question(mParent, QApplication::applicationDisplayName(), question,
                                  QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                                  QMessageBox::Yes)) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

void GuiPrompt::showMessage(const QString& text, Icon icon, const QString& details)
{
    QMessageBox box(mParent);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setText(text);
    box.setIcon(icon == Icon::Error     ? QMessageBox::Critical
                : icon == Icon::Warning ? QMessageBox::Warning
                                        : QMessageBox::Information);
    if (!details.isEmpty())
        box.setDetailedText(details);
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
}

std::optional<QString> GuiPrompt::chooseFile(const FileRequest& request)
{
    QFileDialog dialog(mParent, request.title, request.initialPath, request.filter);
    dialog.setAcceptMode(request.forSaving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(request.forSaving ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(request.defaultSuffix);
    if (!request.initialPath.isEmpty())
        dialog.selectFile(request.initialPath);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().first();
}

int GuiPrompt::askChoice(const QString& question, const QStringList& answers, int fallback)
{
    QMessageBox box(mParent);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setIcon(QMessageBox::Question);
    box.setText(question);
    std::vector<QAbstractButton*> buttons;
    for (int i = 0; i < answers.size(); ++i) {
        // Buttons in the order given; Escape and the close box take the answer that changes nothing.
        QPushButton* b = box.addButton(answers[i], QMessageBox::ActionRole);
        buttons.push_back(b);
        if (i == fallback) {
            box.setEscapeButton(b);
            box.setDefaultButton(b);
        }
    }
    box.exec();
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        if (box.clickedButton() == buttons[i])
            return static_cast<int>(i);
    }
    return fallback;
}

std::optional<QString> GuiPrompt::askText(const QString& prompt, const QString& initial)
{
    return CPromptDlg::ask(mParent, prompt, initial);
}

} // namespace kilnova
