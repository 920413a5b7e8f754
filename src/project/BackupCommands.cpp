#include "project/BackupCommands.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"

namespace kilnova {

namespace {

QString tableName(Table table)
{
    return Schema::table(table).name;
}

void reportFailure(UserPrompt& ui, const DatabaseError& e)
{
    ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
}

} // namespace

long BackupCommands::deleteBackups(ProjectDatabase& db, BackupRestore::Kind kind, UserPrompt& ui)
{
    BackupRestore backups(db, kind);
    const QString table = tableName(backups.backupTable());
    try {
        const long rows = db.count(backups.backupTable());
        if (rows == 0)
            return 0;
        // Emptying a backup table asks nothing, as it always has; it says afterwards what went.
        backups.deleteBackups();
        ui.showMessage(message(Msg::BackupsDeleted, {QString::number(rows), table}));
        return rows;
    } catch (const DatabaseError& e) {
        reportFailure(ui, e);
        return 0;
    }
}

std::vector<Record> BackupCommands::restore(ProjectDatabase& db, BackupRestore::Kind kind,
                                            const std::vector<Record>& chosen, UserPrompt& ui)
{
    if (chosen.empty())
        return {};
    BackupRestore backups(db, kind);
    const QString backupTable = tableName(backups.backupTable());
    const QString working = tableName(kind == BackupRestore::Kind::Blasts ? Table::Blast : Table::Stockpile);
    const QString count = QString::number(chosen.size());
    if (!ui.askYesNo(message(Msg::RestoreQuestion, {count, backupTable, working})))
        return {};
    std::vector<Record> restored;
    try {
        restored = backups.restore(chosen);
    } catch (const DatabaseError& e) {
        reportFailure(ui, e);
        return {};
    }
    QString told = message(Msg::Restored, {QString::number(restored.size()), count, working});
    if (restored.size() < chosen.size())
        told += '\n' + message(Msg::RestoreUnmatched, {QString::number(chosen.size() - restored.size())});
    ui.showMessage(told, restored.size() < chosen.size() ? UserPrompt::Icon::Warning
                                                         : UserPrompt::Icon::Information);
    return restored;
}

} // namespace kilnova
