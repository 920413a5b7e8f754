#include "project/CommandTable.h"

#include "common/MessageTable.h"
#include "project/CKilnovaDoc.h"

#include <stdexcept>

namespace kilnova {

const std::vector<CommandInfo>& CommandTable::commands()
{
    using C = CommandId;
    static const std::vector<CommandInfo> table = {
        {C::DatabaseCreate, {"Database", "Create"}, "Create a new project database", false, true},
        {C::DatabaseStatus,
         {"Database", "Status"},
         "Show the record counts of the project database",
         false,
         true},
        {C::DatabaseConnect,
         {"Database", "Connect"},
         "Connect the project to an existing project database",
         false,
         true},
        {C::ViewBlasts, {"Database", "View Table", "Blasts"}, "View the Blast table", true, true},
        {C::ViewAdditives, {"Database", "View Table", "Additives"}, "View the Additives table", true, true},
        {C::ViewStockpiles, {"Database", "View Table", "Stockpiles"}, "View the Stockpile table", true, true},
        {C::ViewCrude, {"Database", "View Table", "Crude"}, "View the Crude table", true, true},
        {C::ViewClinker, {"Database", "View Table", "Clinker"}, "View the Clinker table", true, true},
        {C::ViewCoal, {"Database", "View Table", "Coal"}, "View the Coal table", true, true},
        {C::ModifyBlasts, {"Database", "Modify Table", "Blast"}, "Modify the Blast table", true, true},
        {C::ModifyAdditives,
         {"Database", "Modify Table", "Additives"},
         "Modify the Additives table",
         true,
         true},
        {C::ModifyStockpiles,
         {"Database", "Modify Table", "Stockpiles"},
         "Modify the Stockpile table",
         true,
         true},
        {C::ModifyCrude, {"Database", "Modify Table", "Crude"}, "Modify the Crude table", true, true},
        {C::ModifyClinker, {"Database", "Modify Table", "Clinker"}, "Modify the Clinker table", true, true},
        {C::ModifyCoal, {"Database", "Modify Table", "Coal"}, "Modify the Coal table", true, true},
        {C::RestoreBlastBackup,
         {"Database", "Restore Backup", "From Blast backup"},
         "Restore blasts from the backup",
         true,
         true},
        {C::RestoreStockpileBackup,
         {"Database", "Restore Backup", "From Stockpile backup"},
         "Restore stockpiles from the backup",
         true,
         true},
        {C::DeleteBlastBackup,
         {"Database", "Restore Backup", "Delete Blast backup table"},
         "Empty the blast backup table",
         true,
         true},
        {C::DeleteStockpileBackup,
         {"Database", "Restore Backup", "Delete Stockpile backup table"},
         "Empty the stockpile backup table",
         true,
         true},
        {C::ImportBlastText,
         {"Import", "Blast data", "From ASCII file"},
         "Import blasts from a fixed-column text file",
         true,
         true},
        {C::ImportBlastWorkbook,
         {"Import", "Blast data", "From an Excel Workbook"},
         "Import blasts from a workbook",
         true,
         true},
        {C::ImportStockpileText,
         {"Import", "Stockpile data", "From ASCII File"},
         "Import stockpiles from a fixed-column text file",
         true,
         true},
        {C::ImportStockpileWorkbook,
         {"Import", "Stockpile data", "From an Excel Workbook"},
         "Import stockpiles from a workbook",
         true,
         true},
        {C::ClinkerProcessParameters,
         {"Settings", "Clinker Process Parameters"},
         "Set the clinker process parameters",
         false,
         true},
        {C::ChemicalEquationParameters,
         {"Settings", "Chemical Equation Parameters"},
         "Set chemical equation parameters",
         false,
         true},
        {C::OptimizeBlasts, {"Optimize", "Blasts"}, "Optimize a blend of blasts", true, true},
        {C::OptimizeStockpiles,
         {"Optimize", "Stockpiles"},
         "Optimize a blend of stockpiles and additives",
         true,
         true},
        {C::OptimizeClinker, {"Optimize", "Clinker"}, "Optimize a clinker", true, true},
        {C::AnalyseBlastCombinations,
         {"Optimize", "Analyse Blast Combinations"},
         "Analyse combinations of two blasts",
         true,
         true},
        {C::OptimizeCoal, {"Optimize", "Coal"}, "Optimize a blend of coals", true, true},
    };
    return table;
}

const CommandInfo& CommandTable::command(CommandId id)
{
    for (const CommandInfo& c : commands()) {
        if (c.id == id)
            return c;
    }
    throw std::out_of_range("unknown command id");
}

std::optional<QString> CommandTable::refusal(CommandId id, const CKilnovaDoc& doc)
{
    const CommandInfo& info = command(id);
    if (!info.available)
        return message(Msg::NotAvailableYet, {info.menuPath.join(QStringLiteral(" > "))});
    if (info.needsDatabase && !doc.isConnected())
        return message(Msg::NotConnected);
    if (info.needsDatabase)
        return doc.missingDatabaseFile();
    return std::nullopt;
}

} // namespace kilnova
