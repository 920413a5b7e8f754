#pragma once

#include "ui/BackupDialog.h"

namespace kilnova {

/// "Backup Blasts": restores rows of backup-Blast.
class BackupBlastRecords final : public BackupDialog {
    Q_OBJECT
public:
    BackupBlastRecords(ProjectDatabase& db, UserPrompt& ui, QWidget* parent = nullptr);
};

} // namespace kilnova
