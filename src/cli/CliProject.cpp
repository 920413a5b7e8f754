#include "cli/CliProject.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "project/ProjectFileError.h"

#include <QDir>
#include <QFileInfo>

namespace kilnova {

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
        err << message(Msg::CannotOpenProject, {QDir::toNativeSeparators(project.path)}) << '\n'
            << e.what() << '\n';
        return std::nullopt;
    }
    try {
        project.db = ProjectDatabase::open(project.settings.databasePath);
    } catch (const DatabaseError& e) {
        err << message(Msg::CannotConnect) << '\n' << e.message() << '\n';
        return std::nullopt;
    }
    return project;
}

} // namespace kilnova
