#pragma once

#include "ui/BackupDialog.h"

namespace kilnova {

/// "Backup Stockpiles": restores rows of backup-Stockpile.
class CBackupStockpileRecords final : public BackupDialog {
    Q_OBJECT
public:
    CBackupStockpileRecords(ProjectDatabase& db, UserPrompt& ui, QWidget* parent = nullptr);
};

} // namespace kilnova
