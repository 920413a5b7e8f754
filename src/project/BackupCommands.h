#pragma once

#include "database/BackupRestore.h"

#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// The commands of Database > Restore Backup that change data. Each asks before it writes and says
/// after what it did; a database failure is reported and leaves every table as it was.
class BackupCommands final {
public:
    BackupCommands() = delete;

    /// "Delete Blast backup table", "Delete Stockpile backup table": an empty backup table is left
    /// alone without a word. Returns the rows deleted.
    static long deleteBackups(ProjectDatabase& db, BackupRestore::Kind kind, UserPrompt& ui);

    /// "Restore" in a restore dialog, for the rows chosen in its list. Returns the rows restored.
    static std::vector<Record> restore(ProjectDatabase& db, BackupRestore::Kind kind,
                                       const std::vector<Record>& chosen, UserPrompt& ui);
};

} // namespace kilnova
