#include "support/ScriptedPrompt.h"

#include <stdexcept>

namespace kilnova::test {

namespace {
template <typename T> T next(std::deque<T>& answers, const char* what)
{
    if (answers.empty())
        throw std::logic_error(std::string("unexpected question: ") + what);
    T answer = answers.front();
    answers.pop_front();
    return answer;
}
} // namespace

bool ScriptedPrompt::askYesNo(const QString& question)
{
    questions << question;
    return next(yesNoAnswers, "yes/no");
}

UserPrompt::Answer ScriptedPrompt::askYesNoCancel(const QString& question)
{
    questions << question;
    return next(yesNoCancelAnswers, "yes/no/cancel");
}

void ScriptedPrompt::showMessage(const QString& text, Icon icon, const QString& details)
{
    messages.push_back({text, icon, details});
}

std::optional<QString> ScriptedPrompt::chooseFile(const FileRequest& request)
{
    fileRequests.push_back(request);
    return next(fileAnswers, "file");
}

std::optional<QString> ScriptedPrompt::askText(const QString& prompt, const QString&)
{
    questions << prompt;
    return next(textAnswers, "text");
}

int ScriptedPrompt::askChoice(const QString& question, const QStringList& answers, int)
{
    questions << question;
    choices.push_back(answers);
    const int answer = next(choiceAnswers, "choice");
    if (answer < 0 || answer >= answers.size())
        throw std::logic_error("scripted choice out of range");
    return answer;
}

QStringList ScriptedPrompt::messageTexts() const
{
    QStringList texts;
    for (const Shown& m : messages)
        texts << m.text;
    return texts;
}

} // namespace kilnova::test
