#include "ui/BackupBlastRecords.h"

namespace kilnova {

BackupBlastRecords::BackupBlastRecords(ProjectDatabase& db, UserPrompt& ui, QWidget* parent)
    : BackupDialog(db, BackupRestore::Kind::Blasts, ui, parent)
{
}

} // namespace kilnova
