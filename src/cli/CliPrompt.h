#pragma once

#include "common/UserPrompt.h"

#include <QTextStream>

namespace kilnova {

/// Answers the core's questions from command-line options: messages go to standard output (errors
/// to standard error, with their details), questions get the answer given by --yes, file requests
/// the path named on the command line.
class CliPrompt final : public UserPrompt {
public:
    CliPrompt(QTextStream& out, QTextStream& err);

    void setAnswerYes(bool yes) { mYes = yes; }
    void setFile(const QString& path) { mFile = path; }
    bool sawError() const { return mSawError; }

    bool askYesNo(const QString& question) override;
    void showMessage(const QString& text, Icon icon, const QString& details) override;
    std::optional<QString> chooseFile(const FileRequest& request) override;
    std::optional<QString> askText(const QString& prompt, const QString& initial) override;

private:
    QTextStream& mOut;
    QTextStream& mErr;
    bool mYes = false;
    bool mSawError = false;
    std::optional<QString> mFile;
};

} // namespace kilnova
