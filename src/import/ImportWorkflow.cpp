#include "import/ImportWorkflow.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "import/FileFilter.h"
#include "import/ImportDialogs.h"
#include "import/ImportPreview.h"
#include "import/ImportResult.h"
#include "import/ImportSpecEditor.h"
#include "import/ImportSpecification.h"
#include "import/TextImportCheck.h"
#include "import/TextImporter.h"
#include "import/WorkbookError.h"
#include "import/WorkbookImporter.h"
#include "import/WorkbookReader.h"
#include "import/WorkbookSourceForm.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>

namespace kilnova {

namespace {

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

} // namespace

ImportWorkflow::ImportWorkflow(ProjectDatabase& db, ImportSpecification& blastSpec,
                               ImportSpecification& stockpileSpec, UserPrompt& ui, ImportDialogs& dialogs)
    : mDb(db)
    , mBlastSpec(blastSpec)
    , mStockpileSpec(stockpileSpec)
    , mUi(ui)
    , mDialogs(dialogs)
{
}

QString ImportWorkflow::linkedTableName(ImportTarget target)
{
    return target == ImportTarget::Blast ? QStringLiteral("Input Blasts from Excel")
                                         : QStringLiteral("Input Stockpile from Excel");
}

void ImportWorkflow::fail(const QString& text, const QString& details, ImportOutcome& outcome)
{
    mUi.showMessage(text, UserPrompt::Icon::Error, details);
    outcome.status = ImportOutcome::Status::Failed;
}

bool ImportWorkflow::databaseFileIsThere(ImportOutcome& outcome)
{
    const auto gone = mDb.missingFileMessage();
    if (gone)
        fail(*gone, {}, outcome);
    return !gone;
}

void ImportWorkflow::report(const ImportResult& result, const QString& path, bool countMessage,
                            ImportOutcome& outcome)
{
    outcome.count = result.count;
    const QString warnings = mWarningsApart ? QString() : outcome.warnings;
    const auto withWarnings = [&warnings](const QString& text) {
        return warnings.isEmpty() ? text : text + QStringLiteral("\n\n") + warnings;
    };
    if (result.stopped()) {
        const QString text =
            result.count == 0 || result.nothingKept
                ? message(Msg::ImportStoppedNothingKept, {shown(path), result.stoppedAt, result.reason})
                : withWarnings(message(Msg::ImportStopped, {shown(path), result.stoppedAt, result.reason,
                                                            QString::number(result.count)}));
        fail(text, {}, outcome);
        return;
    }
    outcome.status = ImportOutcome::Status::Imported;
    const UserPrompt::Icon icon =
        warnings.isEmpty() ? UserPrompt::Icon::Information : UserPrompt::Icon::Warning;
    if (countMessage)
        mUi.showMessage(
            withWarnings(message(Msg::ImportedRecords, {QString::number(result.count), shown(path)})), icon);
    else if (!warnings.isEmpty())
        mUi.showMessage(warnings, icon);
}

bool ImportWorkflow::checkText(const TextImporter& importer, ImportTarget target, QFile& file,
                               const QString& path, ImportOutcome& outcome)
{
    const TextImportCheck check(importer, target);
    const TextImportCheck::Inspection seen = check.inspect(file);
    if (seen.layoutProblem && !mDialogs.importDespite(*seen.layoutProblem, mUi))
        return false;
    outcome.warnings = seen.warnings.describe();
    if (mStrict && !seen.warnings.empty()) {
        const QString refusal = message(Msg::ImportNotAllNumbers, {shown(path)});
        fail(mWarningsApart ? refusal : refusal + QStringLiteral("\n") + outcome.warnings, {}, outcome);
        return false;
    }
    if (!file.seek(0)) {
        fail(message(Msg::CannotOpenImportFile, {shown(path), file.errorString()}), {}, outcome);
        return false;
    }
    return true;
}

ImportOutcome ImportWorkflow::importText(ImportTarget target)
{
    const bool blasts = target == ImportTarget::Blast;
    ImportOutcome outcome;
    if (!databaseFileIsThere(outcome))
        return outcome;

    UserPrompt::FileRequest request;
    request.title = message(blasts ? Msg::BlastFileDialogTitle : Msg::StockpileFileDialogTitle);
    request.filter = FileFilter::fromPairs(message(blasts ? Msg::BlastFileFilter : Msg::StockpileFileFilter));
    request.defaultSuffix = QStringLiteral("rsv");
    const std::optional<QString> path = mUi.chooseFile(request);
    if (!path)
        return outcome;

    ImportSpecification& spec = blasts ? mBlastSpec : mStockpileSpec;
    ImportSpecEditor editor(spec, message(blasts ? Msg::BlastSpecTitle : Msg::StockpileSpecTitle),
                            ImportPreview::ofFile(*path));
    if (!mDialogs.editSpecification(editor))
        return outcome;
    spec = editor.specification();
    outcome.documentModified = true;

    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(message(Msg::CannotOpenImportFile, {shown(*path), file.errorString()}), {}, outcome);
        return outcome;
    }
    if (!TextImporter::looksLikeText(file)) {
        fail(message(Msg::NotATextFile, {shown(*path)}), {}, outcome);
        return outcome;
    }
    const TextImporter importer(target, mBlastSpec, mStockpileSpec);
    if (!checkText(importer, target, file, *path, outcome))
        return outcome;
    if (!databaseFileIsThere(outcome))
        return outcome;
    ImportResult result;
    try {
        result = importer.import(mDb, file);
    } catch (const DatabaseError& e) {
        fail(message(Msg::DatabaseOperationFailed), e.message(), outcome);
        return outcome;
    }
    if (result.stopped() && file.seek(0)) {
        // Only the lines that were kept count.
        outcome.warnings = TextImportCheck(importer, target).inspect(file, result.count).warnings.describe();
    }
    if (!blasts && !result.stopped() && result.count == 0) {
        // The stockpile import ends without a word, except when there was nothing to import at all.
        mUi.showMessage(message(Msg::NoCompleteLine, {shown(*path)}), UserPrompt::Icon::Warning);
    }
    report(result, *path, blasts, outcome);
    return outcome;
}

ImportOutcome ImportWorkflow::importWorkbook(ImportTarget target)
{
    ImportOutcome outcome;
    if (!databaseFileIsThere(outcome))
        return outcome;
    WorkbookSourceForm form;
    if (!mDialogs.chooseWorkbookSource(form, mUi))
        return outcome;
    const QString source = form.sourceName();
    const QString path = form.workbookPath();
    if (source.isEmpty() || path.isEmpty()) {
        fail(message(Msg::NoValidDataSource), {}, outcome);
        return outcome;
    }

    if (!databaseFileIsThere(outcome))
        return outcome;
    try {
        mDb.exec(QStringLiteral("DROP TABLE IF EXISTS %1").arg(Schema::quoted(linkedTableName(target))));
    } catch (const DatabaseError& e) {
        fail(message(Msg::DatabaseOperationFailed), e.message(), outcome);
        return outcome;
    }

    SheetData data;
    try {
        data = WorkbookReader::read(path, source);
    } catch (const WorkbookError& e) {
        fail(message(Msg::CannotReadWorkbook, {shown(path), e.message()}), {}, outcome);
        return outcome;
    }
    ImportResult result;
    try {
        result = WorkbookImporter(target).import(mDb, data);
    } catch (const DatabaseError& e) {
        fail(message(Msg::DatabaseOperationFailed), e.message(), outcome);
        return outcome;
    }
    report(result, path, true, outcome);
    return outcome;
}

} // namespace kilnova
