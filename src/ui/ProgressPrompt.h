#pragma once

#include "common/UserPrompt.h"

#include <functional>

namespace kilnova {

/// Passes every question and message on to another prompt, but first runs a hook that closes the
/// progress dialog of a run: a message box opened under a window-modal progress dialog cannot be
/// reached, and neither answers the mouse.
class ProgressPrompt final : public UserPrompt {
public:
    ProgressPrompt(UserPrompt& inner, std::function<void()> closeProgress);

    bool askYesNo(const QString& question) override;
    Answer askYesNoCancel(const QString& question) override;
    void showMessage(const QString& text, Icon icon, const QString& details) override;
    std::optional<QString> chooseFile(const FileRequest& request) override;
    std::optional<QString> askText(const QString& prompt, const QString& initial) override;
    int askChoice(const QString& question, const QStringList& answers, int fallback) override;

private:
    UserPrompt& mInner;
    std::function<void()> mCloseProgress;
};

} // namespace kilnova
