#include "cli/CliProject.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "project/ProjectFileError.h"
#include "project/ProjectLocation.h"

#include <QDir>
#include <QFileInfo>

namespace kilnova {

namespace {

std::optional<QString>& option()
{
    static std::optional<QString> database;
    return database;
}

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

} // namespace

void CliProject::setDatabaseOption(const std::optional<QString>& path)
{
    option() = path ? std::optional(QDir::cleanPath(QFileInfo(*path).absoluteFilePath())) : std::nullopt;
}

const std::optional<QString>& CliProject::databaseOption()
{
    return option();
}

std::optional<CliProject> CliProject::open(const QString& path, QTextStream& err)
{
    CliProject project;
    project.path = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    try {
        const ProjectFile::Loaded loaded = ProjectFile::load(project.path);
        project.settings = loaded.settings;
        chemCoefficients() =
            loaded.chemistryDefaulted ? ChemEquationCoefficients{} : loaded.settings.chemistry;
        ClinkerFreeLime() = loaded.settings.clinkerProcess.FreeLime;
    } catch (const ProjectFileError& e) {
        err << message(Msg::CannotOpenProject, {shown(project.path)}) << '\n' << e.what() << '\n';
        return std::nullopt;
    }
    if (databaseOption()) {
        project.settings.databasePath = *databaseOption();
    } else {
        const ProjectLocation::Check where =
            ProjectLocation::check(project.path, project.settings.databasePath);
        if (where.doubtful()) {
            err << QStringLiteral(
                       "Warning: this project names the database %1, %2, while a database of the same "
                       "name lies beside the project: %3. Add --db %3 to use that one.\n")
                       .arg(shown(where.stored),
                            where.storedExists ? QStringLiteral("outside the project's folder")
                                               : QStringLiteral("which is not there"),
                            shown(*where.beside));
        }
    }
    try {
        project.db = ProjectDatabase::open(project.settings.databasePath);
    } catch (const DatabaseError& e) {
        err << QStringLiteral("The project database %1 cannot be opened; name the one to use with --db PATH.")
                   .arg(shown(project.settings.databasePath))
            << '\n'
            << e.message() << '\n';
        return std::nullopt;
    }
    return project;
}

} // namespace kilnova
