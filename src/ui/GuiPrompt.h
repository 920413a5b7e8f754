#pragma once

#include "common/UserPrompt.h"

#include <QPointer>
#include <QWidget>

namespace kilnova {

/// Asks with message boxes and file dialogs over a parent window.
class GuiPrompt final : public UserPrompt {
public:
    explicit GuiPrompt(QWidget* parent);

    bool askYesNo(const QString& question) override;
    Answer askYesNoCancel(const QString& question) override;
    void showMessage(const QString& text, Icon icon, const QString& details) override;
    std::optional<QString> chooseFile(const FileRequest& request) override;
    std::optional<QString> askText(const QString& prompt, const QString& initial) override;
    int askChoice(const QString& question, const QStringList& answers, int fallback) override;

private:
    QPointer<QWidget> mParent;
};

} // namespace kilnova
