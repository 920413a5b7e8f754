#pragma once

#include "database/Record.h"

#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The way back from a source update: backed-up blasts and stockpiles copied back into their working
/// tables, and the backup tables emptied.
class BackupRestore final {
public:
    enum class Kind { Blasts, Stockpiles };

    BackupRestore(ProjectDatabase& db, Kind kind);

    /// backup-Blast or backup-Stockpile.
    Table backupTable() const;

    /// The backup rows as the restore dialog lists them, in table order.
    std::vector<Record> rows() const;

    /// Restores the listed rows, in order, in one transaction. A row is found by its Name (and Source
    /// for stockpiles); when several backups share the key, the one whose Quantity lies within 0.1
    /// of the listed Quantity. Returns the rows that were restored. Throws DatabaseError, also when
    /// the database file is gone, and restores nothing when a listed row is no longer a backup as
    /// listed (restored or deleted meanwhile by another program).
    std::vector<Record> restore(const std::vector<Record>& listed);

    /// Deletes every backup row: backup-Blast only for blasts (their deviations stay in
    /// backup-stdBlast, where a later restore of the same name finds them), backup-Stockpile for
    /// stockpiles.
    void deleteBackups();

    static constexpr double kQuantityTolerance = 0.1;

private:
    bool restoreOne(const Record& listed);

    ProjectDatabase& mDb;
    Kind mKind;
};

} // namespace kilnova
