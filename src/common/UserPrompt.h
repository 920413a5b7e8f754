#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kilnova {

/// The one way core code asks the user something or tells them something. The GUI answers with
/// message boxes and file dialogs, the command-line tool with its options, tests with a scripted fake.
class UserPrompt {
public:
    enum class Icon { Information, Warning, Error };
    enum class Answer { Yes, No, Cancel };

    struct FileRequest {
        QString title;
        /// Qt-style filter, e.g. "Kilnova project databases (*.kndb)".
        QString filter;
        /// Appended when the user types a name without one, e.g. "kndb".
        QString defaultSuffix;
        QString initialPath;
        /// A save dialog asks before overwriting; an open dialog wants an existing file.
        bool forSaving = false;
    };

    virtual ~UserPrompt() = default;

    /// A Yes/No question; true for Yes.
    virtual bool askYesNo(const QString& question) = 0;
    /// A Yes/No/Cancel question ("Save changes to ...?"). One that cannot offer Cancel asks Yes/No.
    virtual Answer askYesNoCancel(const QString& question)
    {
        return askYesNo(question) ? Answer::Yes : Answer::No;
    }
    /// A message with only an OK button. Details, when given, explain a failure for support.
    virtual void showMessage(const QString& text, Icon icon = Icon::Information,
                             const QString& details = {}) = 0;
    /// A file name, or nothing when the user cancels.
    virtual std::optional<QString> chooseFile(const FileRequest& request) = 0;
    /// One line of text (a record name), or nothing when the user cancels.
    virtual std::optional<QString> askText(const QString& prompt, const QString& initial) = 0;
    /// A question with more answers than Yes and No ("Replace", "Keep both", "Choose another name").
    /// Returns the index of the answer chosen; closing the question chooses `fallback`, the answer
    /// that changes nothing. One that cannot ask answers `fallback` at once.
    virtual int askChoice(const QString& question, const QStringList& answers, int fallback)
    {
        Q_UNUSED(question);
        Q_UNUSED(answers);
        return fallback;
    }
};

} // namespace kilnova
