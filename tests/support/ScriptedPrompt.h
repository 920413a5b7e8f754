#pragma once

#include "common/UserPrompt.h"

#include <QStringList>

#include <deque>

namespace kilnova::test {

/// A user who answers from a script and writes down everything they were asked or told.
class ScriptedPrompt final : public UserPrompt {
public:
    struct Shown {
        QString text;
        Icon icon;
        QString details;
    };

    std::deque<bool> yesNoAnswers;
    std::deque<Answer> yesNoCancelAnswers;
    std::deque<std::optional<QString>> fileAnswers;
    std::deque<std::optional<QString>> textAnswers;
    std::deque<int> choiceAnswers;

    QStringList questions;
    std::vector<Shown> messages;
    std::vector<FileRequest> fileRequests;
    /// The answers offered with each askChoice question, in order.
    std::vector<QStringList> choices;

    bool askYesNo(const QString& question) override;
    Answer askYesNoCancel(const QString& question) override;
    void showMessage(const QString& text, Icon icon, const QString& details) override;
    std::optional<QString> chooseFile(const FileRequest& request) override;
    std::optional<QString> askText(const QString& prompt, const QString& initial) override;
    int askChoice(const QString& question, const QStringList& answers, int fallback) override;

    QStringList messageTexts() const;
};

} // namespace kilnova::test
