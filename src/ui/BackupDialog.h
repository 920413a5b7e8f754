#pragma once

#include "database/BackupRestore.h"

#include <QDialog>

class QTableWidget;

namespace kilnova {

class UserPrompt;

/// "Backup Blasts" / "Backup Stockpiles": the backup rows, several selectable, "Restore" and "Done".
class BackupDialog final : public QDialog {
    Q_OBJECT
public:
    BackupDialog(ProjectDatabase& db, BackupRestore::Kind kind, UserPrompt& ui, QWidget* parent = nullptr);

    /// Restores the selected rows, in list order, and lists what is left.
    void restoreSelected();
    int rowCount() const;

private:
    void fill();

    BackupRestore mRestore;
    UserPrompt& mUi;
    std::vector<Record> mRows;
    QTableWidget* mList;
};

} // namespace kilnova
