#include "database/SourceSnapshot.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"

namespace kilnova {

void SourceSnapshot::add(Table table, const RecordKey& key, double quantity, const Analysis& analysis)
{
    mRows.push_back({table, key, quantity, analysis});
}

void SourceSnapshot::add(const Record& record)
{
    add(record.table(), record.key(), record.number(QStringLiteral("Quantity")), record.analysis());
}

QString SourceSnapshot::describe(Table table, const RecordKey& key)
{
    const QString noun = Schema::table(table).name.toLower();
    if (Schema::table(table).key == KeyKind::NameAndSource)
        return QStringLiteral("%1 \"%2\" from \"%3\"").arg(noun, key.name, key.source);
    return QStringLiteral("%1 \"%2\"").arg(noun, key.name);
}

void SourceSnapshot::verify(ProjectDatabase& db) const
{
    for (const Row& row : mRows) {
        const std::optional<Record> now = RecordTable(db, row.table).find(row.key);
        if (!now)
            throw Changed(describe(row.table, row.key), true);
        // Exact comparison: both sides are the very values the database holds, read the same way.
        if (now->number(QStringLiteral("Quantity")) != row.quantity || now->analysis() != row.analysis)
            throw Changed(describe(row.table, row.key), false);
    }
}

} // namespace kilnova
