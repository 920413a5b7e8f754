#pragma once

#include "import/ImportTarget.h"

#include <QString>

class QFile;

namespace kilnova {

class ImportDialogs;
class TextImporter;
class ImportSpecification;
class ProjectDatabase;
class UserPrompt;
struct ImportResult;

/// How an import command ended.
struct ImportOutcome {
    enum class Status { Cancelled, Imported, Failed };
    Status status = Status::Cancelled;
    /// Records imported and kept.
    long count = 0;
    /// The user confirmed a layout, which now replaces the document's: the document must be marked
    /// modified.
    bool documentModified = false;
    /// The number fields of a text import that were not plain numbers, as ImportWarnings tells them;
    /// empty when every one was.
    QString warnings;
};

/// The four import commands: blasts or stockpiles, from a fixed-column text file or from a workbook.
/// Each asks the user through UserPrompt and ImportDialogs, writes in one transaction and reports the
/// outcome: blasts and workbooks with the count message, a text import of stockpiles silently. When a
/// record is refused, the records saved before it are kept and the failure is reported.
class ImportWorkflow final {
public:
    /// blastSpec and stockpileSpec are the document's layouts; a confirmed layout replaces its own.
    ImportWorkflow(ProjectDatabase& db, ImportSpecification& blastSpec, ImportSpecification& stockpileSpec,
                   UserPrompt& ui, ImportDialogs& dialogs);

    ImportOutcome importText(ImportTarget target);
    /// Refuse a text file with any number field that is not a plain number, before writing anything.
    void setStrict(bool strict) { mStrict = strict; }
    /// Leave the warnings of a text import out of its closing message (the outcome still has them),
    /// for a front end that shows them apart.
    void setWarningsApart(bool apart) { mWarningsApart = apart; }
    ImportOutcome importWorkbook(ImportTarget target);

    /// Name of the temporary table through which workbooks used to be linked into a project
    /// database; the workbook import removes any such table it finds, so none is ever kept.
    static QString linkedTableName(ImportTarget target);

private:
    /// False, with the message, when the project database file was deleted or moved away.
    bool databaseFileIsThere(ImportOutcome& outcome);
    /// Shows how an import ended and sets the outcome's status and count.
    void report(const ImportResult& result, const QString& path, bool countMessage, ImportOutcome& outcome);
    /// Reads the file before writing: asks when its lines do not fit the layout, refuses it when
    /// strict and a field is not a plain number. False when nothing is to be written.
    bool checkText(const TextImporter& importer, ImportTarget target, QFile& file, const QString& path,
                   ImportOutcome& outcome);
    void fail(const QString& text, const QString& details, ImportOutcome& outcome);

    ProjectDatabase& mDb;
    ImportSpecification& mBlastSpec;
    ImportSpecification& mStockpileSpec;
    UserPrompt& mUi;
    ImportDialogs& mDialogs;
    bool mStrict = false;
    bool mWarningsApart = false;
};

} // namespace kilnova
