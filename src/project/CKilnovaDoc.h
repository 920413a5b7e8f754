#pragma once

#include "database/ProjectDatabase.h"
#include "project/ProjectSettings.h"

#include <QString>

#include <memory>
#include <optional>

namespace kilnova {

class UserPrompt;

/// The project document: names the project database and keeps the connection to it, and owns every
/// parameter set of the project, so that saving the document saves all settings of a project. The
/// chemical equation coefficients are program-wide (chemCoefficients()); the document loads and
/// saves them. One document object lives for the whole run of the program.
class CKilnovaDoc final {
public:
    CKilnovaDoc();
    ~CKilnovaDoc();
    CKilnovaDoc(const CKilnovaDoc&) = delete;
    CKilnovaDoc& operator=(const CKilnovaDoc&) = delete;

    const QString& databasePath() const { return mSettings.databasePath; }
    bool isConnected() const { return mDatabase != nullptr; }
    /// The open project database, or nullptr while not connected.
    ProjectDatabase* database() { return mDatabase.get(); }
    /// Connected, but the database file was deleted or moved away since: the message saying so, else
    /// nothing. Whatever is written now would be lost with the file.
    std::optional<QString> missingDatabaseFile() const;

    /// Every stored setting except the chemistry, which lives in chemCoefficients().
    ProjectSettings& settings() { return mSettings; }
    const ProjectSettings& settings() const { return mSettings; }

    /// Sets the clinker process parameters and mirrors the free lime into ClinkerFreeLime().
    void setClinkerProcess(const ClinkerProcessParameters& parameters);
    /// The clinker process parameters as a dialog is filled with them: the program-wide free lime is
    /// copied back into the document's first (the two never differ in practice).
    const ClinkerProcessParameters& clinkerProcessForDialog();

    /// Path of the project file (.knv); empty until the document is saved or opened.
    const QString& filePath() const { return mFilePath; }
    /// "demo.knv", or "Untitled" for a document never saved.
    QString displayName() const;
    bool isModified() const { return mModified; }
    void setModified(bool modified = true) { mModified = modified; }

    /// Database > Create: asks, chooses a file, builds a fresh database there and connects to it.
    void createDatabase(UserPrompt& ui);
    /// Database > Connect: asks, chooses an existing project database and connects to it.
    void connectDatabase(UserPrompt& ui);
    /// Database > Status: the record counts of the six material tables; nothing while not connected,
    /// and a message instead of counts when the database file has gone.
    void showStatus(UserPrompt& ui);
    /// The Status text, or an empty string while not connected. Throws DatabaseError.
    QString statusText();

    /// File > New: closes the database and forgets its path; every parameter set keeps its values.
    void newDocument();
    /// Reads a project file and connects to its database. A damaged or foreign file is reported and
    /// leaves this document exactly as it was; returns false then. When the project folder was moved
    /// or copied and another database of the same name lies beside the file, the user chooses which
    /// one (ProjectLocation); choosing the one beside leaves the document modified.
    bool openDocument(const QString& path, UserPrompt& ui);
    /// Writes the project file atomically; reports a failure and returns false.
    bool saveDocument(const QString& path, UserPrompt& ui);
    /// File > Save As: when the project moves to another folder and its database lies in its old one,
    /// first offers to copy the database along; the project then uses the copy.
    bool saveDocumentAs(const QString& path, UserPrompt& ui);

    /// The settings as the project file stores them, chemistry included.
    ProjectSettings snapshot() const;

private:
    /// Connects to the database at the current path, reporting 28502 on failure, then Status.
    void openDatabase(UserPrompt& ui);
    void closeDatabase();
    std::optional<QString> chooseDatabaseFile(UserPrompt& ui, bool forSaving);

    ProjectSettings mSettings;
    std::unique_ptr<ProjectDatabase> mDatabase;
    QString mFilePath;
    bool mModified = false;
};

} // namespace kilnova
