#pragma once

#include "database/Record.h"

#include <map>
#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// What happens when a blend is stored under a name its table already holds. The blend tables have
/// no unique name, so nothing in the database would stop a second record: the store asks, or refuses.
/// Names are compared as the database compares them, without regard to case.
class DuplicateNamePolicy final {
public:
    enum class Choice {
        Refuse,   ///< store nothing when the name is taken (the command line without --allow-duplicate)
        KeepBoth, ///< add the blend beside the records of that name
        Replace,  ///< delete the records of that name, backed up where their table has a backup
    };

    DuplicateNamePolicy() = delete;

    /// The records of the table with that name, whatever their Source. Throws DatabaseError.
    static std::vector<Record> holders(ProjectDatabase& db, Table table, const QString& name);

    /// "Replace, keep both, or choose another name?": the choice, or nothing for another name.
    static std::optional<Choice> ask(UserPrompt& ui, Table table, const QString& name, std::size_t count);

    /// An Actual stockpile keeps its place: it cannot be replaced by a blend.
    static bool replaceable(const std::vector<Record>& holders);

    /// Inside the store's transaction, before the blend is added. Refuse throws StoreRefused when
    /// the name is taken; Replace deletes the records of that name after backing them up (throwing
    /// StoreRefused for an Actual stockpile), counts the backup rows in `backupRows` and returns how
    /// many records it deleted. Throws DatabaseError.
    static int apply(ProjectDatabase& db, Table table, const QString& name, Choice choice,
                     std::map<Table, int>& backupRows);

    /// The message of a refused store.
    static QString refusal(Table table, const QString& name, std::size_t count);
};

} // namespace kilnova
