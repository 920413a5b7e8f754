#include "cli/CliPrompt.h"

namespace kilnova {

CliPrompt::CliPrompt(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

bool CliPrompt::askYesNo(const QString& question)
{
    mOut << question << (mYes ? " yes" : " no") << '\n';
    return mYes;
}

void CliPrompt::showMessage(const QString& text, Icon icon, const QString& details)
{
    if (icon == Icon::Error) {
        mSawError = true;
        mErr << text << '\n';
        if (!details.isEmpty())
            mErr << details << '\n';
        mErr.flush();
        return;
    }
    mOut << text << '\n';
    mOut.flush();
}

std::optional<QString> CliPrompt::chooseFile(const FileRequest&)
{
    return mFile;
}

std::optional<QString> CliPrompt::askText(const QString&, const QString&)
{
    return std::nullopt;
}

} // namespace kilnova
