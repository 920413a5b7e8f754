#pragma once

#include <QString>

#include <optional>

namespace kilnova {

class UserPrompt;

/// Where a project's database is when the project folder has moved or been copied. The document
/// names its database by full path, so a folder copied elsewhere goes on naming the original's
/// database, and a folder moved elsewhere names one that is not there. A database of the same file
/// name beside the document (or in the same sub-folder under it) is then most likely the one meant.
class ProjectLocation final {
public:
    struct Check {
        /// The path the document names.
        QString stored;
        bool storedExists = false;
        /// The stored path lies in the document's folder or below it.
        bool storedInside = false;
        /// A database of the stored one's file name in the document's folder (or the same
        /// sub-folder under it), when it is another file than the stored one.
        std::optional<QString> beside;

        /// The stored path is gone or lies outside the folder while another database lies beside the
        /// document: the user has to say which one the project uses.
        bool doubtful() const { return beside && (!storedExists || !storedInside); }
    };

    ProjectLocation() = delete;

    static Check check(const QString& documentPath, const QString& storedDatabase);

    /// Asks which database the project uses; returns its path. Closing the question keeps the stored one.
    static QString ask(UserPrompt& ui, const Check& check);

    /// Where the database goes when Save As moves the project from oldDocument to newDocument in
    /// another folder: the same place relative to the new folder, when the database lies in the old
    /// project's folder or below it. Nothing otherwise.
    static std::optional<QString> copyTarget(const QString& oldDocument, const QString& newDocument,
                                             const QString& database);
};

} // namespace kilnova
