#include "cli/CliPrompt.h"

#include "cli/CliWording.h"

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

void CliPrompt::showMessage(const QString& core, Icon icon, const QString& details)
{
    const QString text = CliWording::reword(core);
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
