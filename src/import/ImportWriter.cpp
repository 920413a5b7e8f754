#include "import/ImportWriter.h"

#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"

#include <QSqlDriver>

#include <sqlite3.h>

namespace kilnova {

namespace {

sqlite3* nativeHandle(ProjectDatabase& db)
{
    const QVariant handle = db.connection().driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        throw DatabaseError(QStringLiteral("The project database is not an SQLite database."));
    sqlite3* native = *static_cast<sqlite3* const*>(handle.constData());
    if (!native)
        throw DatabaseError(QStringLiteral("The project database is not open."));
    return native;
}

} // namespace

ImportWriter::ImportWriter(ProjectDatabase& db, Table table)
    : mDb(db)
    , mTable(table)
    , mHandle(nativeHandle(db))
    , mTransaction(std::make_unique<Transaction>(db))
{
    try {
        mInsert = prepareInsert(table);
        if (table == Table::Blast)
            mCompanionInsert = prepareInsert(Table::StdBlast);
    } catch (...) {
        finish();
        throw;
    }
}

ImportWriter::~ImportWriter()
{
    // The statements must be done before the transaction guard ends.
    finish();
}

void ImportWriter::finish()
{
    sqlite3_finalize(mInsert);
    sqlite3_finalize(mCompanionInsert);
    mInsert = nullptr;
    mCompanionInsert = nullptr;
}

sqlite3_stmt* ImportWriter::prepareInsert(Table table)
{
    const TableDef& def = Schema::table(table);
    QStringList columns, marks;
    for (const ColumnDef& column : def.columns) {
        columns << Schema::quoted(column.name);
        marks << QStringLiteral("?");
    }
    const QByteArray sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                               .arg(Schema::quoted(def.name), columns.join(", "), marks.join(", "))
                               .toUtf8();
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(mHandle, sql.constData(), static_cast<int>(sql.size()), &statement, nullptr) !=
        SQLITE_OK) {
        sqlite3_finalize(statement);
        throw DatabaseError(QString::fromUtf8(sqlite3_errmsg(mHandle)));
    }
    return statement;
}

void ImportWriter::insert(sqlite3_stmt* statement, const Record& record)
{
    const TableDef& def = record.definition();
    for (int c = 0; c < record.columnCount(); ++c) {
        const QVariant& value = record.value(c);
        if (def.columns[static_cast<std::size_t>(c)].type == ColumnType::Text) {
            const QByteArray text = value.toString().toUtf8();
            sqlite3_bind_text(statement, c + 1, text.constData(), static_cast<int>(text.size()),
                              SQLITE_TRANSIENT);
        } else {
            sqlite3_bind_double(statement, c + 1, value.toDouble());
        }
    }
    const int status = sqlite3_step(statement);
    sqlite3_reset(statement);
    if (status == SQLITE_DONE)
        return;
    // The refused row goes once more through the general record access, which words the engine's
    // complaint for the user (or saves the row after all, should the cause have been passing).
    RecordTable(mDb, record.table()).add(record);
}

void ImportWriter::save(const Record& record)
{
    if (record.table() != mTable)
        throw DatabaseError(QStringLiteral("A record of another table cannot be imported into %1.")
                                .arg(Schema::table(mTable).name));
    insert(mInsert, record);
    if (mCompanionInsert) {
        mCompanion.setValue(0, record.value(0));
        insert(mCompanionInsert, mCompanion);
    }
}

void ImportWriter::commit(ImportResult& result)
{
    finish();
    try {
        mTransaction->commit();
    } catch (const DatabaseError& e) {
        if (!result.stopped()) {
            result.stoppedAt = QStringLiteral("the end");
            result.reason = e.message();
        }
        result.nothingKept = true;
        result.count = 0;
    }
}

} // namespace kilnova
