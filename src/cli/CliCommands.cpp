#include "cli/CliCommands.h"

#include "cli/ActualCommand.h"
#include "cli/CliProject.h"
#include "cli/CliPrompt.h"
#include "cli/CombineCommand.h"
#include "cli/DemoCommand.h"
#include "cli/ImportCommand.h"
#include "cli/MapCommand.h"
#include "cli/OptimizeCommand.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "project/CKilnovaDoc.h"
#include "project/ProgramInfo.h"
#include "project/ProjectFile.h"
#include "project/ProjectFileError.h"
#include "project/ProjectSettingsJson.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

namespace kilnova {

namespace {

const char* const kUsage = R"(Usage: kilnova-cli COMMAND ...

Commands:
  (import, optimize and combine take --db DB: use database DB instead of the one the project names)
  create DB [--force]                 create a project database (--force replaces an existing file)
  status DB                           show the record counts of a project database
  project new PROJECT.knv --db DB [--force]
                                      write a project with default settings that uses database DB
  project show PROJECT.knv            print every setting stored in a project as JSON
  map PROJECT.knv [--element NAME] [--select NAME...] --out FILE.png|FILE.pdf|FILE.svg
                                      draw the quarry map of the project's blasts, coloured by an
                                      element (CaO unless told), with the blast filter of its settings
  demo DIR [--force] [--data FOLDER]  build the demo project DIR/demo.knv and its database DIR/demo.kndb
                                      from the files of FOLDER (else from the copy built into the program)
  import blasts|stockpiles PROJECT.knv FILE [--sheet NAME | --range NAME | --cells RANGE]
                                      [--strict] [--force]
                                      import a text file with the project's layout, or a workbook
                                      (.xls, .xlsx, .csv) by its headings, from its first sheet unless told;
                                      number fields that are not numbers are listed on standard error
                                      (--strict refuses the file), a file that does not fit the layout is
                                      refused (--force imports it all the same)
)";

const char* const kOptions = R"(
Options:
  --version                           print the version, the Qt and SQLite in use, and the licence
  --help                              print this text
)";

QString absolute(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

CliCommands::CliCommands(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

int CliCommands::usage(const QString& problem)
{
    if (!problem.isEmpty())
        mErr << "kilnova-cli: " << problem << '\n';
    mErr << kUsage << ActualCommand::usage() << OptimizeCommand::usage() << CombineCommand::usage()
         << kOptions;
    mErr.flush();
    return 2;
}

int CliCommands::run(const QStringList& arguments)
{
    if (arguments.isEmpty())
        return usage();
    const QString command = arguments.first();
    QStringList rest = arguments.mid(1);
    // The commands that open a project take --db, the database to use in place of the one it names.
    CliProject::setDatabaseOption(std::nullopt);
    if (command == "import" || command == "optimize" || command == "combine") {
        const qsizetype at = rest.indexOf(QStringLiteral("--db"));
        if (at >= 0) {
            if (at + 1 >= rest.size())
                return usage(QStringLiteral("--db needs the path of a project database"));
            CliProject::setDatabaseOption(rest[at + 1]);
            rest.remove(at, 2);
        }
    }
    if (command == "create")
        return create(rest);
    if (command == "status")
        return status(rest);
    if (command == "project" && !rest.isEmpty() && rest.first() == "new")
        return projectNew(rest.mid(1));
    if (command == "project" && !rest.isEmpty() && rest.first() == "show")
        return projectShow(rest.mid(1));
    if (command == "optimize")
        return OptimizeCommand(mOut, mErr).run(rest);
    if (command == "demo")
        return DemoCommand(mOut, mErr).run(rest);
    if (command == "combine") {
        CombineCommand combine(mOut, mErr);
        const int status = combine.run(rest);
        return status == CombineCommand::kWrongUsage ? usage(combine.problem()) : status;
    }
    if (command == "map") {
        MapCommand map(mErr);
        const int status = map.run(rest);
        return status == MapCommand::kWrongUsage ? usage(map.problem()) : status;
    }
    if (command == "actual") {
        ActualCommand actual(mOut, mErr);
        const int status = actual.run(rest);
        return status == ActualCommand::kWrongUsage ? usage(actual.problem()) : status;
    }
    if (command == "import") {
        ImportCommand import(mOut, mErr);
        const int status = import.run(rest);
        return status == ImportCommand::kWrongUsage ? usage(import.problem()) : status;
    }
    if (command == "--version" || command == "-v") {
        mOut << ProgramInfo::versionText(QStringLiteral("kilnova-cli"));
        return 0;
    }
    if (command == "--help" || command == "-h" || command == "help") {
        mOut << kUsage << ActualCommand::usage() << OptimizeCommand::usage() << CombineCommand::usage()
             << kOptions;
        return 0;
    }
    return usage(QStringLiteral("unknown command \"%1\"").arg(arguments.join(' ')));
}

int CliCommands::create(const QStringList& args)
{
    QStringList paths = args;
    const bool force = paths.removeAll(QStringLiteral("--force")) > 0;
    if (paths.size() != 1)
        return usage(QStringLiteral("create needs one database file name"));
    const QString path = absolute(paths.first());
    if (QFileInfo::exists(path) && !force) {
        mErr << QStringLiteral("%1 already exists; add --force to replace it.\n")
                    .arg(QDir::toNativeSeparators(path));
        return 1;
    }
    CKilnovaDoc doc;
    CliPrompt prompt(mOut, mErr);
    prompt.setFile(path);
    doc.createDatabase(prompt);
    return doc.isConnected() && !prompt.sawError() ? 0 : 1;
}

int CliCommands::status(const QStringList& args)
{
    if (args.size() != 1)
        return usage(QStringLiteral("status needs one database file name"));
    CKilnovaDoc doc;
    CliPrompt prompt(mOut, mErr);
    prompt.setFile(absolute(args.first()));
    doc.connectDatabase(prompt);
    return doc.isConnected() && !prompt.sawError() ? 0 : 1;
}

int CliCommands::projectNew(const QStringList& arguments)
{
    QStringList args = arguments;
    const bool force = args.removeAll(QStringLiteral("--force")) > 0;
    const qsizetype dbOption = args.indexOf(QStringLiteral("--db"));
    if (args.size() != 3 || dbOption < 0 || dbOption == args.size() - 1)
        return usage(QStringLiteral("project new needs PROJECT.knv --db DB"));
    const QString database = args[dbOption + 1];
    const QString project = absolute(args[dbOption == 0 ? 2 : 0]);
    // A project holds every setting of every dialog: it is not lost to a mistyped name.
    if (QFileInfo::exists(project) && !force) {
        mErr << QStringLiteral("%1 already exists; add --force to replace it.\n")
                    .arg(QDir::toNativeSeparators(project));
        return 1;
    }
    CKilnovaDoc doc;
    doc.settings().databasePath = absolute(database);
    CliPrompt prompt(mOut, mErr);
    return doc.saveDocument(project, prompt) ? 0 : 1;
}

int CliCommands::projectShow(const QStringList& args)
{
    if (args.size() != 1)
        return usage(QStringLiteral("project show needs one project file name"));
    try {
        const ProjectFile::Loaded loaded = ProjectFile::load(absolute(args.first()));
        QJsonObject json = projectSettingsToJson(loaded.settings);
        if (loaded.chemistryDefaulted)
            json.insert(QStringLiteral("chemistryDefaulted"), true);
        mOut << QJsonDocument(json).toJson(QJsonDocument::Indented);
        return 0;
    } catch (const ProjectFileError& e) {
        mErr << message(Msg::CannotOpenProject, {QDir::toNativeSeparators(absolute(args.first()))}) << '\n'
             << e.what() << '\n';
        return 1;
    }
}

} // namespace kilnova
