#include "cli/CliCommands.h"

#include "cli/ActualCommand.h"
#include "cli/CliPrompt.h"
#include "cli/CombineCommand.h"
#include "cli/DemoCommand.h"
#include "cli/ImportCommand.h"
#include "cli/OptimizeCommand.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "project/CKilnovaDoc.h"
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
  create DB [--force]                 create a project database (--force replaces an existing file)
  status DB                           show the record counts of a project database
  project new PROJECT.knv --db DB [--force]
                                      write a project with default settings that uses database DB
  project show PROJECT.knv            print every setting stored in a project as JSON
  combine PROJECT.knv (--select NAME... | --all)
                                      report the pairs of blasts that meet the project's combination targets
  demo DIR [--force]                  build the demo project DIR/demo.knv and its database DIR/demo.kndb
  import blasts|stockpiles PROJECT.knv FILE [--sheet NAME | --range NAME | --cells RANGE]
                                      import a text file with the project's layout, or a workbook
                                      (.xls, .xlsx, .csv) by its headings, from its first sheet unless told
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
    mErr << kUsage << ActualCommand::usage() << OptimizeCommand::usage();
    mErr.flush();
    return 2;
}

int CliCommands::run(const QStringList& arguments)
{
    if (arguments.isEmpty())
        return usage();
    const QString command = arguments.first();
    const QStringList rest = arguments.mid(1);
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
    if (command == "--help" || command == "-h" || command == "help") {
        mOut << kUsage << ActualCommand::usage() << OptimizeCommand::usage();
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
