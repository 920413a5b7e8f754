#pragma once

#include "database/BackupRestore.h"

#include <QDialog>

class QTableWidget;

namespace kilnova {

class UserPrompt;

/// A restore dialog: the rows of a backup table under its column names, several selectable,
/// "Restore" and "Done". BackupBlastRecords and CBackupStockpileRecords are its two kinds.
class BackupDialog : public QDialog {
    Q_OBJECT
public:
    /// Restores the selected rows, in list order, and lists what is left.
    void restoreSelected();
    int rowCount() const;

protected:
    BackupDialog(ProjectDatabase& db, BackupRestore::Kind kind, UserPrompt& ui, QWidget* parent);

private:
    void fill();

    ProjectDatabase& mDb;
    BackupRestore::Kind mKind;
    BackupRestore mRestore;
    UserPrompt& mUi;
    std::vector<Record> mRows;
    QTableWidget* mList;
};

} // namespace kilnova
