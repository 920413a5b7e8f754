#include "project/CKilnovaDoc.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "project/ProjectFile.h"
#include "project/ProjectFileError.h"

#include <QDir>
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
    // The file is whole: only now does anything of the open document change. The database is
    // connected before the parameters are taken over, as the file orders its fields.
    closeDatabase();
    mSettings.databasePath = loaded.settings.databasePath;
    mSettings.blastImportSpec = loaded.settings.blastImportSpec;
    openDatabase(ui);
    mSettings = loaded.settings;
    setClinkerProcess(loaded.settings.clinkerProcess);
    chemCoefficients() = loaded.chemistryDefaulted ? ChemEquationCoefficients{} : loaded.settings.chemistry;
    mFilePath = QFileInfo(path).absoluteFilePath();
    mModified = false;
    return true;
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
