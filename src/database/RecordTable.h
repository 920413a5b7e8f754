#pragma once

#include "database/Record.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The one place where records of a table are counted, listed, found by key, added, edited and
/// deleted. Keys are always bound as parameters, so any name (O'Brien included) works. Every
/// failure is a DatabaseError whose message a user can read.
class RecordTable final {
public:
    RecordTable(ProjectDatabase& db, Table table);

    Table table() const { return mTable; }
    const TableDef& definition() const;

    long count() const;
    /// Every record in table order, or ordered by Name.
    std::vector<Record> all(bool orderByName = false) const;
    QStringList names() const;

    /// The first record with this key, in table order.
    std::optional<Record> find(const RecordKey& key) const;
    /// Every record with this key (a stockpile key may occur several times).
    std::vector<Record> findAll(const RecordKey& key) const;
    /// Every record with this Name, whatever its Source, names compared as the database compares them.
    std::vector<Record> findNamed(const QString& name) const;

    /// The records with these names, in one query, in the order of the names; a name that is not
    /// there is left out (the first record of a name that occurs twice is taken).
    std::vector<Record> findNames(const QStringList& names) const;

    /// Adds a record; returns it as stored, with its row id.
    Record add(const Record& record);
    /// Writes every column of a record that was read from this table (found by its row id).
    void update(const Record& record);
    /// Deletes the one row a record was read from; false if it is no longer there.
    bool removeRecord(const Record& record);
    /// Deletes every record with this key; returns how many were deleted.
    int remove(const RecordKey& key);
    void removeAll();

private:
    std::vector<Record> select(const QString& where, const QVariantList& values, const QString& order) const;
    QString keyCondition() const;
    QVariantList keyValues(const RecordKey& key) const;
    QString readableError(const QString& engineText, const Record* record) const;

    ProjectDatabase& mDb;
    Table mTable;
};

} // namespace kilnova
