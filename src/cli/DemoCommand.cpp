#include "cli/DemoCommand.h"

#include "cli/CliPrompt.h"
#include "database/DatabaseError.h"
#include "project/CKilnovaDoc.h"
#include "project/DemoDataError.h"
#include "project/DemoProject.h"
#include "project/ProjectFileError.h"

#include <QDir>
#include <QFileInfo>

namespace kilnova {

namespace {
// The files of examples/demo, built into the program.
const QString kBuiltInData = QStringLiteral(":/demo");
} // namespace

DemoCommand::DemoCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

int DemoCommand::run(const QStringList& args)
{
    QStringList rest = args;
    const bool force = rest.removeAll(QStringLiteral("--force")) > 0;
    QString data = kBuiltInData;
    const qsizetype dataOption = rest.indexOf(QStringLiteral("--data"));
    if (dataOption >= 0 && dataOption + 1 < rest.size()) {
        data = rest[dataOption + 1];
        rest.remove(dataOption, 2);
    }
    if (rest.size() != 1 || rest.first().startsWith(QStringLiteral("--"))) {
        mErr << "kilnova-cli: demo needs one folder: demo DIR [--force] [--data FOLDER]\n";
        mErr.flush();
        return 2;
    }
    const QDir dir(QDir::cleanPath(QFileInfo(rest.first()).absoluteFilePath()));
    const QString project = dir.filePath(DemoProject::projectName());
    const QString database = dir.filePath(DemoProject::databaseName());
    for (const QString& path : {project, database}) {
        if (QFileInfo::exists(path) && !force) {
            mErr << QStringLiteral("%1 already exists; add --force to replace it.\n")
                        .arg(QDir::toNativeSeparators(path));
            mErr.flush();
            return 1;
        }
    }
    try {
        DemoProject::build(data, dir.path());
    } catch (const DemoDataError& e) {
        mErr << e.message() << '\n';
        mErr.flush();
        return 1;
    } catch (const DatabaseError& e) {
        mErr << e.message() << '\n';
        mErr.flush();
        return 1;
    } catch (const ProjectFileError& e) {
        mErr << e.what() << '\n';
        mErr.flush();
        return 1;
    }
    // Opening the new project shows its record counts, as Database > Status would.
    CKilnovaDoc doc;
    CliPrompt prompt(mOut, mErr);
    if (!doc.openDocument(project, prompt) || !doc.isConnected() || prompt.sawError())
        return 1;
    mOut << QStringLiteral("Demo project: %1\n").arg(QDir::toNativeSeparators(project));
    mOut.flush();
    return 0;
}

} // namespace kilnova
