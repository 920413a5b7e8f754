#include "ui/CBackupStockpileRecords.h"

namespace kilnova {

CBackupStockpileRecords::CBackupStockpileRecords(ProjectDatabase& db, UserPrompt& ui, QWidget* parent)
    : BackupDialog(db, BackupRestore::Kind::Stockpiles, ui, parent)
{
}

} // namespace kilnova
