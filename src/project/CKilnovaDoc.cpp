#include "project/CKilnovaDoc.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseCopy.h"
#include "database/DatabaseError.h"
#include "project/ProjectFile.h"
#include "project/ProjectFileError.h"
#include "project/ProjectLocation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kilnova {

CKilnovaDoc::CKilnovaDoc()
{
    chemCoefficients() = ChemEquationCoefficients{};
    ClinkerFreeLime() = mSettings.clinkerProcess.FreeLime;
}

CKilnovaDoc::~CKilnovaDoc() = default;

void CKilnovaDoc::setClinkerProcess(const ClinkerProcessParameters& parameters)
{
    mSettings.clinkerProcess = parameters;
    ClinkerFreeLime() = parameters.FreeLime;
}

const ClinkerProcessParameters& CKilnovaDoc::clinkerProcessForDialog()
{
    mSettings.clinkerProcess.FreeLime = ClinkerFreeLime();
    return mSettings.clinkerProcess;
}

QString CKilnovaDoc::displayName() const
{
    return mFilePath.isEmpty() ? QStringLiteral("Untitled") : QFileInfo(mFilePath).fileName();
}

std::optional<QString> CKilnovaDoc::missingDatabaseFile() const
{
    return mDatabase ? mDatabase->missingFileMessage() : std::nullopt;
}

void CKilnovaDoc::closeDatabase()
{
    mDatabase.reset();
}

std::optional<QString> CKilnovaDoc::chooseDatabaseFile(UserPrompt& ui, bool forSaving)
{
    UserPrompt::FileRequest request;
    request.title = message(Msg::DatabaseDialogTitle);
    request.filter = message(Msg::DatabaseFileFilter);
    request.defaultSuffix = QStringLiteral("kndb");
    request.initialPath = mSettings.databasePath;
    request.forSaving = forSaving;
    return ui.chooseFile(request);
}

void CKilnovaDoc::createDatabase(UserPrompt& ui)
{
    if (isConnected()) {
        if (!ui.askYesNo(message(Msg::AlreadyConnected)))
            return;
        closeDatabase();
    }
    if (const std::optional<QString> path = chooseDatabaseFile(ui, true)) {
        mSettings.databasePath = QDir::cleanPath(QFileInfo(*path).absoluteFilePath());
        try {
            mDatabase = ProjectDatabase::create(mSettings.databasePath);
        } catch (const DatabaseError& e) {
            ui.showMessage(message(Msg::CannotOverwriteDatabase), UserPrompt::Icon::Error, e.message());
        }
    }
    setModified();
    showStatus(ui);
}

void CKilnovaDoc::connectDatabase(UserPrompt& ui)
{
    if (isConnected()) {
        if (!ui.askYesNo(message(Msg::AlreadyConnected)))
            return;
        closeDatabase();
    }
    const std::optional<QString> path = chooseDatabaseFile(ui, false);
    if (!path)
        return;
    mSettings.databasePath = QDir::cleanPath(QFileInfo(*path).absoluteFilePath());
    openDatabase(ui);
    setModified();
}

void CKilnovaDoc::openDatabase(UserPrompt& ui)
{
    closeDatabase();
    try {
        mDatabase = ProjectDatabase::open(mSettings.databasePath);
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::CannotConnect), UserPrompt::Icon::Error, e.message());
        return;
    }
    showStatus(ui);
}

QString CKilnovaDoc::statusText()
{
    if (!isConnected())
        return {};
    QStringList args{QDir::toNativeSeparators(mSettings.databasePath)};
    for (Table t :
         {Table::Blast, Table::Stockpile, Table::Crude, Table::Clinker, Table::Additives, Table::Coal})
        args << QString::number(mDatabase->count(t));
    return message(Msg::StatusReport, {args[0], args[1], args[2], args[3], args[4], args[5], args[6]});
}

void CKilnovaDoc::showStatus(UserPrompt& ui)
{
    if (!isConnected())
        return;
    if (const auto gone = missingDatabaseFile()) {
        ui.showMessage(*gone, UserPrompt::Icon::Error);
        return;
    }
    try {
        ui.showMessage(statusText());
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
    }
}

void CKilnovaDoc::newDocument()
{
    closeDatabase();
    mSettings.databasePath.clear();
    mFilePath.clear();
    mModified = false;
}

ProjectSettings CKilnovaDoc::snapshot() const
{
    ProjectSettings s = mSettings;
    s.chemistry = chemCoefficients();
    return s;
}

bool CKilnovaDoc::openDocument(const QString& path, UserPrompt& ui)
{
    ProjectFile::Loaded loaded;
    try {
        loaded = ProjectFile::load(path);
    } catch (const ProjectFileError& e) {
        ui.showMessage(message(Msg::CannotOpenProject, {QDir::toNativeSeparators(path)}),
                       UserPrompt::Icon::Error, QString::fromStdString(e.what()));
        return false;
    }
    // A project folder that was moved or copied may name a database other than its own.
    QString database = loaded.settings.databasePath;
    const ProjectLocation::Check where = ProjectLocation::check(path, database);
    if (where.doubtful())
        database = ProjectLocation::ask(ui, where);
    const bool relocated = database != loaded.settings.databasePath;

    // The file is whole: only now does anything of the open document change. The database is
    // connected before the parameters are taken over, as the file orders its fields.
    closeDatabase();
    mSettings.databasePath = database;
    mSettings.blastImportSpec = loaded.settings.blastImportSpec;
    openDatabase(ui);
    mSettings = loaded.settings;
    mSettings.databasePath = database;
    setClinkerProcess(loaded.settings.clinkerProcess);
    chemCoefficients() = loaded.chemistryDefaulted ? ChemEquationCoefficients{} : loaded.settings.chemistry;
    mFilePath = QFileInfo(path).absoluteFilePath();
    // The file still names the other database until the project is saved.
    mModified = relocated;
    return true;
}

bool CKilnovaDoc::saveDocumentAs(const QString& path, UserPrompt& ui)
{
    const std::optional<QString> target =
        isConnected() ? ProjectLocation::copyTarget(mFilePath, path, mSettings.databasePath) : std::nullopt;
    if (target && !QFileInfo::exists(*target) &&
        ui.askYesNo(message(Msg::CopyDatabaseQuestion, {QDir::toNativeSeparators(mSettings.databasePath),
                                                        QDir::toNativeSeparators(*target)}))) {
        std::unique_ptr<ProjectDatabase> copy;
        try {
            DatabaseCopy::copy(*mDatabase, *target);
            copy = ProjectDatabase::open(*target);
        } catch (const DatabaseError& e) {
            ui.showMessage(message(Msg::DatabaseNotCopied, {QDir::toNativeSeparators(*target)}),
                           UserPrompt::Icon::Error, e.message());
            return false;
        }
        const QString before = mSettings.databasePath;
        mSettings.databasePath = *target;
        if (!saveDocument(path, ui)) {
            // The project stays as it was, with its database; the copy is not the project's.
            mSettings.databasePath = before;
            copy.reset();
            QFile::remove(*target);
            return false;
        }
        mDatabase = std::move(copy);
        return true;
    }
    return saveDocument(path, ui);
}

bool CKilnovaDoc::saveDocument(const QString& path, UserPrompt& ui)
{
    try {
        ProjectFile::save(snapshot(), path);
    } catch (const ProjectFileError& e) {
        ui.showMessage(message(Msg::CannotSaveProject, {QDir::toNativeSeparators(path)}),
                       UserPrompt::Icon::Error, QString::fromStdString(e.what()));
        return false;
    }
    mFilePath = QFileInfo(path).absoluteFilePath();
    mModified = false;
    return true;
}

} // namespace kilnova
