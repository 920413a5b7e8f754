#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class CKilnovaDoc;

/// Identifiers of the commands of the main menu; they are part of the program's interface.
enum class CommandId : int {
    DatabaseCreate = 32771,
    DatabaseStatus = 32772,
    ImportBlastText = 32773,
    DatabaseConnect = 32774,
    ViewBlasts = 32775,
    ClinkerProcessParameters = 32776,
    ViewAdditives = 32777,
    ModifyAdditives = 32778,
    ImportBlastWorkbook = 32782,
    OptimizeBlasts = 32783,
    ViewStockpiles = 32784,
    ModifyStockpiles = 32785,
    OptimizeStockpiles = 32786,
    ModifyBlasts = 32787,
    OptimizeClinker = 32791,
    ImportStockpileText = 32794,
    ImportStockpileWorkbook = 32795,
    AnalyseBlastCombinations = 32796,
    ViewCoal = 32797,
    ModifyCoal = 32798,
    ViewCrude = 32799,
    ModifyCrude = 32800,
    ViewClinker = 32801,
    ModifyClinker = 32802,
    OptimizeCoal = 32803,
    RestoreBlastBackup = 32804,
    RestoreStockpileBackup = 32805,
    DeleteBlastBackup = 32806,
    DeleteStockpileBackup = 32807,
    ChemicalEquationParameters = 32808,
};

struct CommandInfo {
    CommandId id;
    /// Menu path from the top-level menu to the item, e.g. {"Database", "View Table", "Blasts"}.
    QStringList menuPath;
    QString statusTip;
    /// Reads or writes records, so it refuses while no database is connected.
    bool needsDatabase;
    /// Built in this version; the others answer that they are not available yet.
    bool available;
};

/// The command set of the main menu, in menu order.
class CommandTable final {
public:
    static const std::vector<CommandInfo>& commands();
    static const CommandInfo& command(CommandId id);

    /// Why the command cannot run for this document now (not built yet, no database, or its file gone
    /// from under the connection), or nothing.
    static std::optional<QString> refusal(CommandId id, const CKilnovaDoc& doc);
};

} // namespace kilnova
