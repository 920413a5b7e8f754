#include "ui/ProgressPrompt.h"

namespace kilnova {

ProgressPrompt::ProgressPrompt(UserPrompt& inner, std::function<void()> closeProgress)
    : mInner(inner)
    , mCloseProgress(std::move(closeProgress))
{
}

bool ProgressPrompt::askYesNo(const QString& question)
{
    mCloseProgress();
    return mInner.askYesNo(question);
}

UserPrompt::Answer ProgressPrompt::askYesNoCancel(const QString& question)
{
    mCloseProgress();
    return mInner.askYesNoCancel(question);
}

void ProgressPrompt::showMessage(const QString& text, Icon icon, const QString& details)
{
    mCloseProgress();
    mInner.showMessage(text, icon, details);
}

std::optional<QString> ProgressPrompt::chooseFile(const FileRequest& request)
{
    mCloseProgress();
    return mInner.chooseFile(request);
}

std::optional<QString> ProgressPrompt::askText(const QString& prompt, const QString& initial)
{
    mCloseProgress();
    return mInner.askText(prompt, initial);
}

int ProgressPrompt::askChoice(const QString& question, const QStringList& answers, int fallback)
{
    mCloseProgress();
    return mInner.askChoice(question, answers, fallback);
}

} // namespace kilnova
