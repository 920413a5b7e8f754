#include "ui/GuiPrompt.h"

#include "ui/CPromptDlg.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

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

std::optional<QString> GuiPrompt::askText(const QString& prompt, const QString& initial)
{
    return CPromptDlg::ask(mParent, prompt, initial);
}

} // namespace kilnova
