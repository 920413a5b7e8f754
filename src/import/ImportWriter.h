#pragma once

#include "database/Record.h"
#include "import/ImportResult.h"

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace kilnova {

class ProjectDatabase;
class Transaction;

/// Saves imported records inside one transaction, with insert statements prepared once and reused for
/// every row. A blast gets its stdBlast companion. When a record is refused, the records saved before
/// it stay: the importer commits them and reports the failure.
///
/// The statements run on the project database's own connection, inside its transaction, but are
/// bound through SQLite itself: binding through Qt costs a formatted placeholder name per value, which
/// doubled the time of a large import.
class ImportWriter final {
public:
    /// Begins the transaction. Throws DatabaseError.
    ImportWriter(ProjectDatabase& db, Table table);
    /// Rolls back unless commit() was called.
    ~ImportWriter();
    ImportWriter(const ImportWriter&) = delete;
    ImportWriter& operator=(const ImportWriter&) = delete;

    /// Saves a record of the writer's table, then for a blast a stdBlast record of the same Name.
    /// Throws DatabaseError with a readable message; what was saved before stays pending.
    void save(const Record& record);

    /// Makes everything saved so far permanent. Should the engine refuse, nothing was kept: the result
    /// then says so, with the engine's reason unless it already gives why the import stopped.
    void commit(ImportResult& result);

private:
    sqlite3_stmt* prepareInsert(Table table);
    void insert(sqlite3_stmt* statement, const Record& record);
    void finish();

    ProjectDatabase& mDb;
    Table mTable;
    sqlite3* mHandle = nullptr;
    std::unique_ptr<Transaction> mTransaction;
    sqlite3_stmt* mInsert = nullptr;
    sqlite3_stmt* mCompanionInsert = nullptr;
    /// The stdBlast record of every blast: the defaults and the blast's name.
    Record mCompanion{Table::StdBlast};
};

} // namespace kilnova
