#include "ui/QuietPrompt.h"

#include <cstdio>

namespace kilnova {

bool QuietPrompt::askYesNo(const QString& question)
{
    std::fprintf(stderr, "%s no\n", qPrintable(question));
    return false;
}

void QuietPrompt::showMessage(const QString& text, Icon, const QString& details)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    if (!details.isEmpty())
        std::fprintf(stderr, "%s\n", qPrintable(details));
}

std::optional<QString> QuietPrompt::chooseFile(const FileRequest&)
{
    return std::nullopt;
}

std::optional<QString> QuietPrompt::askText(const QString&, const QString&)
{
    return std::nullopt;
}

} // namespace kilnova
