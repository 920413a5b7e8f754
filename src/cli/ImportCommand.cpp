#include "cli/ImportCommand.h"

#include "cli/CliProject.h"
#include "cli/CliPrompt.h"
#include "common/MessageTable.h"
#include "import/ImportWorkflow.h"
#include "import/Workbook.h"
#include "import/WorkbookError.h"
#include "import/WorkbookSourceForm.h"

#include <QDir>
#include <QFileInfo>

namespace kilnova {

namespace {

bool isWorkbook(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("xls") || suffix == QLatin1String("xlsx") ||
           suffix == QLatin1String("csv");
}

} // namespace

ImportCommand::ImportCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

int ImportCommand::wrongUsage(const QString& problem)
{
    mProblem = problem;
    return kWrongUsage;
}

int ImportCommand::run(const QStringList& arguments)
{
    QStringList args = arguments;
    const bool strict = args.removeAll(QStringLiteral("--strict")) > 0;
    mForce = args.removeAll(QStringLiteral("--force")) > 0;
    if (args.size() != 3 && args.size() != 5)
        return wrongUsage(QStringLiteral("import needs blasts or stockpiles, PROJECT.knv and FILE"));
    if (args[0] != QLatin1String("blasts") && args[0] != QLatin1String("stockpiles"))
        return wrongUsage(QStringLiteral("import reads blasts or stockpiles, not \"%1\"").arg(args[0]));
    const ImportTarget target =
        args[0] == QLatin1String("blasts") ? ImportTarget::Blast : ImportTarget::Stockpile;
    mFile = QDir::cleanPath(QFileInfo(args[2]).absoluteFilePath());
    const bool workbook = isWorkbook(mFile);
    if (args.size() == 5) {
        mSourceOption = args[3];
        mSource = args[4];
        if (mSourceOption != QLatin1String("--sheet") && mSourceOption != QLatin1String("--range") &&
            mSourceOption != QLatin1String("--cells"))
            return wrongUsage(QStringLiteral("unknown option \"%1\"").arg(mSourceOption));
        if (!workbook)
            return wrongUsage(QStringLiteral("%1 is for workbooks (.xls, .xlsx, .csv)").arg(mSourceOption));
    }

    std::optional<CliProject> project = CliProject::open(args[1], mErr);
    if (!project)
        return 1;
    if (workbook && mSourceOption.isEmpty()) {
        try {
            mSourceOption = QStringLiteral("--sheet");
            mSource = Workbook::open(mFile)->sheetNames().value(0);
        } catch (const WorkbookError& e) {
            mErr << message(Msg::CannotReadWorkbook, {QDir::toNativeSeparators(mFile), e.message()}) << '\n';
            return 1;
        }
    }

    CliPrompt prompt(mOut, mErr);
    prompt.setFile(mFile);
    ImportWorkflow workflow(*project->db, project->settings.blastImportSpec,
                            project->settings.stockpileImportSpec, prompt, *this);
    workflow.setStrict(strict);
    workflow.setWarningsApart(true);
    const ImportOutcome outcome = workbook ? workflow.importWorkbook(target) : workflow.importText(target);
    // What was stored in place of a value that was not a number goes with the errors, not the count.
    if (!outcome.warnings.isEmpty())
        mErr << outcome.warnings << '\n';
    mErr.flush();
    if (outcome.status != ImportOutcome::Status::Imported)
        return 1;
    // The window imports stockpiles from text without a word; a script wants the count all the same.
    if (!workbook && target == ImportTarget::Stockpile && outcome.count > 0)
        mOut << message(Msg::ImportedRecords,
                        {QString::number(outcome.count), QDir::toNativeSeparators(mFile)})
             << '\n';
    return 0;
}

bool ImportCommand::editSpecification(ImportSpecEditor&)
{
    return true;
}

bool ImportCommand::importDespite(const QString& problem, UserPrompt&)
{
    if (mForce)
        return true;
    mErr << problem << '\n' << "Nothing was imported; add --force to import the file all the same.\n";
    return false;
}

bool ImportCommand::chooseWorkbookSource(WorkbookSourceForm& form, UserPrompt&)
{
    using Kind = WorkbookSourceForm::Kind;
    const Kind kind = mSourceOption == QLatin1String("--range")   ? Kind::NamedRange
                      : mSourceOption == QLatin1String("--cells") ? Kind::CellRange
                                                                  : Kind::Worksheet;
    form.setKind(kind);
    if (kind == Kind::Worksheet)
        form.setWorksheet(mSource);
    else if (kind == Kind::NamedRange)
        form.setNamedRange(mSource);
    else
        form.setCellRange(mSource);
    form.setWorkbookPath(mFile);
    return true;
}

} // namespace kilnova
