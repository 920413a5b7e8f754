#pragma once

#include <QString>

#include <initializer_list>

namespace kilnova {

/// Numbers of the system's own texts. Values 26500-29302 are the string table (29900-29999 hold the
/// system's texts whose numbers are not known); 30000 and above are texts of this program's own.
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

    // Texts of the system whose string-table numbers are not known.
    SelectTwoSources = 29900,
    ConstraintAlreadySet,
    NoConstraintOnTargetElement,
    CannotInitialize,
    RowsInconsistent,
    Unbounded,
    Infeasible,
    CannotDeriveOptimum,
    StockpileNamePrompt,
    SubtractQuantities,

    // Blast combination analysis: the system's confirmation text, then texts of our own (30800-30899).
    ConfirmUpdateBlastTable = 29950,
    TooManyCombinationTargets = 30800,
    CombinationPropertyMissing = 30801,
    CombinationTargetAlreadySet = 30802,
    CombinationTargetNotSet = 30803,
    BlastNotInSourceList = 30804,
    CombinationTonnageMissing = 30805,

    // Coal optimisation (30600-30699).
    CoalNamePrompt = 30600,
    CoalWithoutAsh,
    CoalTonnageNotAvailable,
    CoalChangeCannotBeRestored,
    // A coal gone before the run is SourceRecordGone.

    // Clinker optimisation (31900-31999).
    ClinkerCoalAlone = 31900,
    ClinkerTonnageNeeded,
    ClinkerFixedLoiTooHigh,
    ClinkerEnergyFactorNeeded,
    ClinkerCoalWithoutAshOrBtu,
    SourceRecordGone,

    // Texts of this program's own.
    DatabaseFileFilter = 30000,
    StatusReport,
    NotConnected,
    NotAvailableYet,
    CannotOpenProject,
    CannotSaveProject,
    SaveChangesQuestion,
    DatabaseOperationFailed,
    // Import (30700-30799).
    OtherWorkbookFilters = 30700,
    ImportStopped,
    ImportStoppedNothingKept,
    CannotOpenImportFile,
    NotATextFile,
    CannotReadWorkbook,
    NoCompleteLine,
    SourceNoLongerThere = 30100,
    InvalidRecordName,
    // Table viewing and editing (30300-30399).
    FieldEmpty = 30300,
    FieldTooLong,
    FieldNotANumber,
    DuplicateRecordName,
    DatabaseFileGone,
    RecordNotSaved,
    RecordsNotDeleted,
    CannotReadTable,
    ActualStockpileKeyKept,
    // Care around imports, stores, moved projects and destructive commands (31700-31799).
    ImportFieldsNotNumbers = 31700,
    ImportFieldBlank,
    ImportFieldText,
    ImportFieldsMore,
    ImportBlankFieldHint,
    ImportNumberInTextField,
    ImportFieldsUnreadable,
    ImportAnyway,
    ImportNotAllNumbers,
    NameTakenQuestion = 31710,
    ReplaceAnswer,
    KeepBothAnswer,
    AnotherNameAnswer,
    NameTakenRefused,
    ActualNotReplaced,
    OneRecord,
    SomeRecords,
    Stored = 31720,
    StoredInPlace,
    StoreSubtracted,
    StoreNothingSubtracted,
    StoreBackupRows,
    StoreBackups,
    StoreNoBackups,
    DatabaseOutsideProject = 31730,
    DatabaseNotThere,
    UseDatabaseBeside,
    UseDatabaseNamed,
    LeaveUnconnected,
    CopyDatabaseQuestion,
    DatabaseNotCopied,
    BackupsDeleted = 31741,
    RestoreQuestion,
    Restored,
    RestoreUnmatched,
    BlastTableUpdated,
    // Writing only on what was read, and saying where the database went (31800-31899).
    DatabaseInUse = 31800,
    DatabaseDamaged,
    DatabaseFileReplaced,
    DatabaseWriteLost,
    SourceChanged,
    SourceGone,
    BlastTableChanged,
    BackupChanged,
    BlendSourceChanged,
    BlendSourceGone,
    // Stockpile optimisation and the Actual stockpiles (32000-32099). A source gone from its table
    // before the run is SourceRecordGone.
    UnknownSource = 32001,
    BlendQuantityMissing,
    BlendIntoItself,
    BlendNeedsSources,
    BlendStockpileGone,
    ExternalCannotOpen,
    ExternalCannotRead,
    ExternalNotANumber,
    ExternalNoActual,
    ActualRefreshed,
    ExternalOutOfRange,
    // Large selections (32100-32199).
    SecondMethodFound = 32100,
    SelectionTooLarge,
};

/// The exact text of a message with %1, %2, ... filled in from args (numbers are formatted by the
/// caller). Placeholders are replaced in one pass, so a "%2" inside an argument stays as it is.
QString message(Msg id, std::initializer_list<QString> args = {});

} // namespace kilnova
