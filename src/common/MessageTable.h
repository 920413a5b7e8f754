#pragma once

#include <QString>

#include <initializer_list>

namespace kilnova {

/// Numbers of the system's own texts. Values 26500-29302 are the string table; 30000 and above are
/// texts of this program's own that the string table has no number for.
enum class Msg : int {
    DatabaseDialogTitle = 26500,
    BlastFileDialogTitle = 26502,
    WorkbookDialogTitle = 26503,
    StockpileFileDialogTitle = 26504,
    BlastSpecTitle = 27000,
    StockpileSpecTitle = 27001,
    BlastFileFilter = 27501,
    WorkbookFilter = 27502,
    StockpileFileFilter = 27503,
    AlreadyConnected = 28000,
    CannotOverwriteDatabase = 28001,
    ConfirmDeleteRecords = 28002,
    NoValidDataSource = 28500,
    CannotConnect = 28502,
    MissingValueInSource = 28503,
    ClinkerMissingLoi = 28504,
    ImportedRecords = 29000,
    CrudeNamePrompt = 29109,
    ClinkerNamePrompt = 29110,
    ReplaceActualStockpiles = 29113,
    DegeneratedSolution = 29114,
    CannotDeleteActual = 29200,
    TooFewBlasts = 29300,
    SuccessfulCombinations = 29301,

    // Texts of this program's own.
    DatabaseFileFilter = 30000,
    StatusReport,
    NotConnected,
    NotAvailableYet,
    CannotOpenProject,
    CannotSaveProject,
    SaveChangesQuestion,
    DatabaseOperationFailed,
};

/// The exact text of a message with %1, %2, ... filled in from args (numbers are formatted by the
/// caller). Placeholders are replaced in one pass, so a "%2" inside an argument stays as it is.
QString message(Msg id, std::initializer_list<QString> args = {});

} // namespace kilnova
