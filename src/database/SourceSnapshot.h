#pragma once

#include "database/DatabaseError.h"
#include "database/Record.h"

#include <vector>

namespace kilnova {

class ProjectDatabase;

/// What a computation read of the rows it worked on: each row's tonnage and analysis. A command
/// that acts on the result checks it again inside its write transaction, before it writes, so that
/// nothing is ever written on rows another program (or another window) has changed since: the
/// second of two stores that computed on the same blasts finds them changed and stores nothing.
class SourceSnapshot final {
public:
    /// A row that is no longer there, or no longer holds what was read.
    class Changed : public DatabaseError {
    public:
        Changed(QString row, bool gone)
            : DatabaseError(row)
            , mRow(std::move(row))
            , mGone(gone)
        {
        }
        /// The row in words: blast "B-101", stockpile "S-1" from "Quarry A".
        const QString& row() const { return mRow; }
        bool gone() const { return mGone; }

    private:
        QString mRow;
        bool mGone;
    };

    /// The row found by this key held this tonnage and analysis when it was read.
    void add(Table table, const RecordKey& key, double quantity, const Analysis& analysis);
    /// The record as it was read.
    void add(const Record& record);
    bool isEmpty() const { return mRows.empty(); }

    /// Throws Changed for the first row that is gone or differs; DatabaseError when reading fails.
    /// Call it inside the transaction that writes, so that nothing can change between check and write.
    void verify(ProjectDatabase& db) const;

    /// A row named for a message: its table's noun and its key.
    static QString describe(Table table, const RecordKey& key);

private:
    struct Row {
        Table table;
        RecordKey key;
        double quantity;
        Analysis analysis;
    };
    std::vector<Row> mRows;
};

} // namespace kilnova
