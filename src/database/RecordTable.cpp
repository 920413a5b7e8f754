#include "database/RecordTable.h"

#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"

#include <QHash>
#include <QSqlQuery>
#include <QSqlRecord>

namespace kilnova {

RecordTable::RecordTable(ProjectDatabase& db, Table table)
    : mDb(db)
    , mTable(table)
{
}

const TableDef& RecordTable::definition() const
{
    return Schema::table(mTable);
}

long RecordTable::count() const
{
    return mDb.count(mTable);
}

std::vector<Record> RecordTable::select(const QString& where, const QVariantList& values,
                                        const QString& order) const
{
    QString sql = definition().selectAll;
    if (!where.isEmpty())
        sql += " WHERE " + where;
    sql += " ORDER BY " + (order.isEmpty() ? QStringLiteral("rowid") : order + ", rowid");

    std::vector<Record> records;
    mDb.forEachRow(sql, values, [this, &records](const QSqlQuery& query) {
        Record record(mTable);
        record.setRowId(query.value(0).toLongLong());
        for (int c = 0; c < record.columnCount(); ++c)
            record.setValue(c, query.value(c + 1));
        records.push_back(std::move(record));
    });
    return records;
}

std::vector<Record> RecordTable::all(bool orderByName) const
{
    return select({}, {}, orderByName ? QStringLiteral("[Name]") : QString());
}

QStringList RecordTable::names() const
{
    QSqlQuery query = mDb.exec(
        QStringLiteral("SELECT [Name] FROM %1 ORDER BY rowid").arg(Schema::quoted(definition().name)));
    QStringList result;
    while (query.next())
        result << query.value(0).toString();
    return result;
}

QString RecordTable::keyCondition() const
{
    return definition().key == KeyKind::NameAndSource ? QStringLiteral("[Name] = ? AND [Source] = ?")
                                                      : QStringLiteral("[Name] = ?");
}

QVariantList RecordTable::keyValues(const RecordKey& key) const
{
    if (definition().key == KeyKind::NameAndSource)
        return {key.name, key.source};
    return {key.name};
}

std::optional<Record> RecordTable::find(const RecordKey& key) const
{
    std::vector<Record> found = findAll(key);
    if (found.empty())
        return std::nullopt;
    return std::move(found.front());
}

std::vector<Record> RecordTable::findAll(const RecordKey& key) const
{
    return select(keyCondition(), keyValues(key), {});
}

std::vector<Record> RecordTable::findNamed(const QString& name) const
{
    return select(QStringLiteral("[Name] = ?"), {name}, {});
}

std::vector<Record> RecordTable::findNames(const QStringList& names) const
{
    // SQLite allows 32,766 bound values per statement; a selection is far below that.
    QVariantList values;
    QStringList marks;
    for (const QString& name : names) {
        values << name;
        marks << QStringLiteral("?");
    }
    std::vector<Record> found =
        names.isEmpty() ? std::vector<Record>{}
                        : select(QStringLiteral("[Name] IN (%1)").arg(marks.join(", ")), values, {});
    // Names compare without regard to case, as the database's own index does.
    QHash<QString, std::size_t> byName;
    for (std::size_t i = found.size(); i-- > 0;)
        byName.insert(found[i].name().toCaseFolded(), i);
    std::vector<Record> ordered;
    for (const QString& name : names) {
        const auto at = byName.constFind(name.toCaseFolded());
        if (at != byName.constEnd())
            ordered.push_back(found[*at]);
    }
    return ordered;
}

Record RecordTable::add(const Record& record)
{
    if (record.table() != mTable)
        throw DatabaseError(
            QStringLiteral("A record of another table cannot be added to %1.").arg(definition().name));
    const TableDef& def = definition();
    QStringList columns, marks;
    QVariantList values;
    for (int c = 0; c < record.columnCount(); ++c) {
        columns << Schema::quoted(def.columns[static_cast<std::size_t>(c)].name);
        marks << QStringLiteral("?");
        values << record.value(c);
    }
    try {
        QSqlQuery query = mDb.exec(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                                       .arg(Schema::quoted(def.name), columns.join(", "), marks.join(", ")),
                                   values);
        Record stored = record;
        stored.setRowId(query.lastInsertId().toLongLong());
        return stored;
    } catch (const DatabaseError& e) {
        throw DatabaseError(readableError(e.message(), &record));
    }
}

void RecordTable::update(const Record& record)
{
    if (record.table() != mTable || !record.rowId())
        throw DatabaseError(
            QStringLiteral("Only a record read from %1 can be changed there.").arg(definition().name));
    const TableDef& def = definition();
    QStringList assignments;
    QVariantList values;
    for (int c = 0; c < record.columnCount(); ++c) {
        assignments << Schema::quoted(def.columns[static_cast<std::size_t>(c)].name) + " = ?";
        values << record.value(c);
    }
    values << *record.rowId();
    try {
        QSqlQuery query = mDb.exec(QStringLiteral("UPDATE %1 SET %2 WHERE rowid = ?")
                                       .arg(Schema::quoted(def.name), assignments.join(", ")),
                                   values);
        if (query.numRowsAffected() != 1)
            throw DatabaseError(QStringLiteral("The record \"%1\" is no longer in the %2 table.")
                                    .arg(record.name(), def.name));
    } catch (const DatabaseError& e) {
        throw DatabaseError(readableError(e.message(), &record));
    }
}

int RecordTable::remove(const RecordKey& key)
{
    QSqlQuery query = mDb.exec(
        QStringLiteral("DELETE FROM %1 WHERE %2").arg(Schema::quoted(definition().name), keyCondition()),
        keyValues(key));
    return query.numRowsAffected();
}

bool RecordTable::removeRecord(const Record& record)
{
    if (record.table() != mTable || !record.rowId())
        return false;
    QSqlQuery query =
        mDb.exec(QStringLiteral("DELETE FROM %1 WHERE rowid = ?").arg(Schema::quoted(definition().name)),
                 {*record.rowId()});
    return query.numRowsAffected() == 1;
}

void RecordTable::removeAll()
{
    mDb.exec(QStringLiteral("DELETE FROM %1").arg(Schema::quoted(definition().name)));
}

QString RecordTable::readableError(const QString& engineText, const Record* record) const
{
    const TableDef& def = definition();
    const QString table = def.name;
    const QString name = record ? record->name() : QString();
    // The engine names the column after the colon: "CHECK constraint failed: SiO2",
    // "NOT NULL constraint failed: Blast.East", "cannot store TEXT value in REAL column Blast.East".
    auto failedColumn = [&](const QString& separator) -> const ColumnDef* {
        const qsizetype at = engineText.lastIndexOf(separator);
        if (at < 0)
            return nullptr;
        QString column = engineText.mid(at + separator.size()).trimmed();
        column = column.mid(column.lastIndexOf(u'.') + 1);
        const int index = def.columnIndex(column);
        return index < 0 ? nullptr : &def.columns[static_cast<std::size_t>(index)];
    };
    auto about = [&](const ColumnDef& column, const char* problem) {
        return QStringLiteral("The %1 of the %2 record \"%3\" %4.")
            .arg(column.name, table, name, QLatin1StringView(problem));
    };

    if (engineText.contains(QLatin1String("UNIQUE constraint failed")))
        return QStringLiteral("The %1 table already holds a record named \"%2\".").arg(table, name);
    if (engineText.contains(QLatin1String("FOREIGN KEY constraint failed")))
        return QStringLiteral("The %1 record \"%2\" has no matching blast.").arg(table, name);
    if (engineText.contains(QLatin1String("CHECK constraint failed"))) {
        const ColumnDef* column = failedColumn(QStringLiteral(":"));
        if (column && column->type == ColumnType::Single)
            return about(*column, "is beyond the range of a single-precision number");
        if (column && column->type == ColumnType::Double)
            return about(*column, "is not a finite number");
        if (column)
            return about(*column, "is empty or longer than 50 characters");
        return QStringLiteral("A text column of the %1 record \"%2\" is empty or longer than %3 characters.")
            .arg(table, name)
            .arg(Schema::kTextLength);
    }
    if (engineText.contains(QLatin1String("NOT NULL constraint failed"))) {
        if (const ColumnDef* column = failedColumn(QStringLiteral(":")))
            return about(*column, "has no value");
        return QStringLiteral("A column of the %1 record \"%2\" has no value.").arg(table, name);
    }
    if (engineText.contains(QLatin1String("cannot store"))) {
        if (const ColumnDef* column = failedColumn(QStringLiteral(" column ")))
            return about(*column, "is not a number");
        return QStringLiteral("A value of the %1 record \"%2\" is not a number.").arg(table, name);
    }
    return engineText;
}

} // namespace kilnova
