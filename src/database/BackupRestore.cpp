#include "database/BackupRestore.h"

#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/SourceSnapshot.h"
#include "database/Transaction.h"

#include <algorithm>
#include <cmath>

namespace kilnova {

namespace {
const QString kQuantity = QStringLiteral("Quantity");

void requireDatabaseFile(const ProjectDatabase& db)
{
    if (const auto gone = db.missingFileMessage())
        throw DatabaseError(*gone);
}
} // namespace

BackupRestore::BackupRestore(ProjectDatabase& db, Kind kind)
    : mDb(db)
    , mKind(kind)
{
}

Table BackupRestore::backupTable() const
{
    return mKind == Kind::Blasts ? Table::BackupBlast : Table::BackupStockpile;
}

std::vector<Record> BackupRestore::rows() const
{
    return RecordTable(mDb, backupTable()).all();
}

bool BackupRestore::restoreOne(const Record& listed)
{
    const bool blasts = mKind == Kind::Blasts;
    const RecordKey key = listed.key();
    RecordTable backups(mDb, backupTable());
    RecordTable working(mDb, blasts ? Table::Blast : Table::Stockpile);
    const std::vector<Record> candidates = backups.findAll(key);
    std::vector<Record> deviationBackups;
    if (blasts)
        deviationBackups = RecordTable(mDb, Table::BackupStdBlast).findAll(key);

    // With one backup of a name it is that one; with several, the one the list showed, by quantity.
    std::optional<std::size_t> chosen;
    if (candidates.size() == 1) {
        chosen = 0;
    } else {
        for (std::size_t i = 0; i < candidates.size() && !chosen; ++i) {
            if (std::abs(candidates[i].number(kQuantity) - listed.number(kQuantity)) < kQuantityTolerance)
                chosen = i;
        }
    }
    if (!chosen)
        return false;
    const Record& backup = candidates[*chosen];

    if (std::optional<Record> existing = working.find(key)) {
        Record restored = backup.copiedTo(working.table());
        restored.setRowId(existing->rowId());
        working.update(restored);
    } else {
        working.add(backup.copiedTo(working.table()));
    }
    backups.removeRecord(backup);

    if (!blasts)
        return true;
    // The deviations backed up alongside: the same position among the rows of that name.
    RecordTable deviations(mDb, Table::StdBlast);
    const std::optional<Record> deviationBackup =
        *chosen < deviationBackups.size()
            ? std::optional<Record>(deviationBackups[*chosen])
            : (deviationBackups.empty() ? std::nullopt : std::optional<Record>(deviationBackups.front()));
    Record restored = deviationBackup ? deviationBackup->copiedTo(Table::StdBlast) : Record(Table::StdBlast);
    restored.setValue(QStringLiteral("Name"), backup.name());
    if (std::optional<Record> existing = deviations.find(key)) {
        restored.setRowId(existing->rowId());
        deviations.update(restored);
    } else {
        deviations.add(restored);
    }
    if (deviationBackup)
        RecordTable(mDb, Table::BackupStdBlast).removeRecord(*deviationBackup);
    return true;
}

std::vector<Record> BackupRestore::restore(const std::vector<Record>& listed)
{
    requireDatabaseFile(mDb);
    Transaction transaction(mDb);
    // The list may be old: every row it shows must still be a backup, as shown, or nothing is done.
    RecordTable backups(mDb, backupTable());
    for (const Record& row : listed) {
        const std::vector<Record> now = backups.findAll(row.key());
        if (std::find(now.begin(), now.end(), row) == now.end())
            throw DatabaseError(
                message(Msg::BackupChanged,
                        {SourceSnapshot::describe(mKind == Kind::Blasts ? Table::Blast : Table::Stockpile,
                                                  row.key())}));
    }
    std::vector<Record> restored;
    for (const Record& row : listed) {
        if (restoreOne(row))
            restored.push_back(row);
    }
    transaction.commit();
    return restored;
}

void BackupRestore::deleteBackups()
{
    requireDatabaseFile(mDb);
    Transaction transaction(mDb);
    RecordTable(mDb, backupTable()).removeAll();
    transaction.commit();
}

} // namespace kilnova
