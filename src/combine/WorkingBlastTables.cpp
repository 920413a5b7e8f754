#include "combine/WorkingBlastTables.h"

#include "common/MessageTable.h"
#include "common/PrintfFormat.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Schema.h"
#include "database/Transaction.h"

#include <QCryptographicHash>
#include <QSqlError>
#include <QSqlQuery>

namespace kilnova {

namespace {

QString tableName(Table table)
{
    return Schema::quoted(Schema::table(table).name);
}

QString columnList(Table table, const QString& prefix = {})
{
    QStringList columns;
    for (const QString& name : Schema::table(table).columnNames())
        columns << prefix + Schema::quoted(name);
    return columns.join(QStringLiteral(", "));
}

/// Copies every row of one table into another of the same columns, in table order.
void copyRows(ProjectDatabase& db, Table from, Table to)
{
    db.exec(QStringLiteral("INSERT INTO %1 (%2) SELECT %2 FROM %3 ORDER BY rowid")
                .arg(tableName(to), columnList(to), tableName(from)));
}

void deleteRows(ProjectDatabase& db, Table table)
{
    db.exec(QStringLiteral("DELETE FROM %1").arg(tableName(table)));
}

/// Holds off the cascade from the working blasts to their deviations while it lives. SQLite takes the
/// setting only outside a transaction, so a guard lives around the transaction, not in it.
class CascadeHeldOff final {
public:
    explicit CascadeHeldOff(ProjectDatabase& db)
        : mDb(db)
    {
        mDb.exec(QStringLiteral("PRAGMA foreign_keys = OFF"));
    }
    ~CascadeHeldOff()
    {
        try {
            mDb.exec(QStringLiteral("PRAGMA foreign_keys = ON"));
        } catch (const DatabaseError&) {
            // A connection that cannot take a pragma fails its next statement anyway.
        }
    }
    CascadeHeldOff(const CascadeHeldOff&) = delete;
    CascadeHeldOff& operator=(const CascadeHeldOff&) = delete;

private:
    ProjectDatabase& mDb;
};

/// The filter has always compared against its bounds as printed with six decimals.
double asPrinted(double bound)
{
    return formatPrintf("%lf", bound).toDouble();
}

} // namespace

WorkingBlastTables::WorkingBlastTables(ProjectDatabase& db)
    : mDb(db)
{
}

std::vector<WorkingBlastTables::RowDigest> WorkingBlastTables::digests(Table table) const
{
    std::vector<RowDigest> rows;
    QSqlQuery query =
        mDb.exec(QStringLiteral("SELECT %1 FROM %2 ORDER BY rowid").arg(columnList(table), tableName(table)));
    const int columns = static_cast<int>(Schema::table(table).columns.size());
    while (query.next()) {
        QCryptographicHash hash(QCryptographicHash::Sha1);
        for (int c = 0; c < columns; ++c) {
            const QVariant value = query.value(c);
            // Numbers with every digit, so that any change of a value changes the digest.
            hash.addData((value.typeId() == QMetaType::Double ? QString::number(value.toDouble(), 'g', 17)
                                                              : value.toString())
                             .toUtf8());
            hash.addData(QByteArrayView("\x1F", 1));
        }
        rows.push_back({query.value(0).toString(), hash.result()});
    }
    return rows;
}

void WorkingBlastTables::requireUnchanged(Table table, const std::vector<RowDigest>& copied) const
{
    const std::vector<RowDigest> now = digests(table);
    for (std::size_t i = 0; i < std::max(now.size(), copied.size()); ++i) {
        if (i < now.size() && i < copied.size() && now[i] == copied[i])
            continue;
        const QString name = i < copied.size() ? copied[i].name : now[i].name;
        throw DatabaseError(
            message(Msg::BlastTableChanged,
                    {QStringLiteral("%1 \"%2\"")
                         .arg(table == Table::Blast ? "blast" : "deviations of blast", name)}));
    }
}

void WorkingBlastTables::refresh()
{
    Transaction transaction(mDb);
    deleteRows(mDb, Table::TempBlast);
    deleteRows(mDb, Table::TempStdBlast);
    copyRows(mDb, Table::Blast, Table::TempBlast);
    copyRows(mDb, Table::StdBlast, Table::TempStdBlast);
    std::vector<RowDigest> blasts = digests(Table::Blast);
    std::vector<RowDigest> deviations = digests(Table::StdBlast);
    transaction.commit();
    mCopiedBlasts = std::move(blasts);
    mCopiedDeviations = std::move(deviations);
}

void WorkingBlastTables::clearBlasts()
{
    // Only the blasts go: the working deviations stay until the next opening replaces them.
    const CascadeHeldOff heldOff(mDb);
    Transaction transaction(mDb);
    deleteRows(mDb, Table::TempBlast);
    transaction.commit();
}

WorkingBlastTables::WriteBack WorkingBlastTables::writeBack()
{
    Transaction transaction(mDb);
    // Blast is replaced whole: whatever changed in it since it was copied would be lost unseen.
    requireUnchanged(Table::Blast, mCopiedBlasts.value_or(std::vector<RowDigest>{}));
    requireUnchanged(Table::StdBlast, mCopiedDeviations.value_or(std::vector<RowDigest>{}));
    WriteBack counts;
    const auto count = [this](const QString& sql) {
        QSqlQuery query = mDb.exec(sql);
        return query.next() ? query.value(0).toLongLong() : 0;
    };
    const QString blast = tableName(Table::Blast), working = tableName(Table::TempBlast);
    QStringList differs;
    for (const QString& column : Schema::table(Table::Blast).columnNames())
        differs << QStringLiteral("b.%1 IS NOT w.%1").arg(Schema::quoted(column));
    counts.changed =
        count(QStringLiteral("SELECT COUNT(*) FROM %1 b JOIN %2 w ON b.[Name] = w.[Name] WHERE %3")
                  .arg(blast, working, differs.join(QStringLiteral(" OR "))));
    counts.deleted =
        count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE [Name] NOT IN (SELECT [Name] FROM %2)")
                  .arg(blast, working));
    counts.added = count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE [Name] NOT IN (SELECT [Name] FROM %2)")
                             .arg(working, blast));
    deleteRows(mDb, Table::Blast);
    copyRows(mDb, Table::TempBlast, Table::Blast);
    deleteRows(mDb, Table::StdBlast);
    copyRows(mDb, Table::TempStdBlast, Table::StdBlast);
    transaction.commit();
    return counts;
}

std::vector<WorkingBlastTables::Source> WorkingBlastTables::sources(const CoordinateFilter* filter) const
{
    QString sql = QStringLiteral("SELECT [Name], [Quantity] FROM %1").arg(tableName(Table::TempBlast));
    QVariantList bounds;
    if (filter) {
        sql += QStringLiteral(" WHERE [East] >= ? AND [East] <= ? AND [North] >= ? AND [North] <= ? AND "
                              "[Elevation] >= ? AND [Elevation] <= ?");
        for (double bound : {filter->eastMinimum, filter->eastMaximum, filter->northMinimum,
                             filter->northMaximum, filter->elevationMinimum, filter->elevationMaximum})
            bounds << asPrinted(bound);
    }
    sql += QStringLiteral(" ORDER BY rowid");
    QSqlQuery query = mDb.exec(sql, bounds);
    std::vector<Source> result;
    while (query.next()) {
        const double quantity = query.value(1).toDouble();
        if (quantity > 0)
            result.push_back({query.value(0).toString(), quantity});
    }
    return result;
}

std::optional<Record> WorkingBlastTables::blast(const QString& name) const
{
    return RecordTable(mDb, Table::TempBlast).find({name, {}});
}

std::optional<Record> WorkingBlastTables::deviations(const QString& name) const
{
    return RecordTable(mDb, Table::TempStdBlast).find({name, {}});
}

std::vector<BLASTSD> WorkingBlastTables::loadSeries(const QStringList& names) const
{
    const TableDef& blasts = Schema::table(Table::TempBlast);
    const TableDef& deviations = Schema::table(Table::TempStdBlast);
    const QString blastTable = tableName(Table::TempBlast);
    const QString deviationTable = tableName(Table::TempStdBlast);
    // LEFT JOIN so that a blast without deviations is told apart from a name that is not there.
    const QString sql =
        QStringLiteral("SELECT %1.[Quantity], %2, %3, %4.[Name] FROM %1 LEFT JOIN %4 ON %1.[Name] = "
                       "%4.[Name] WHERE %1.[Name] = ?")
            .arg(blastTable, columnList(Table::TempBlast, blastTable + "."),
                 columnList(Table::TempStdBlast, deviationTable + "."), deviationTable);
    QSqlQuery query(mDb.connection());
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        throw DatabaseError(query.lastError().databaseText());

    const int firstValue = 1 + blasts.columnIndex(QStringLiteral("Titration"));
    const int firstDeviation =
        1 + static_cast<int>(blasts.columns.size()) + deviations.columnIndex(QStringLiteral("Titration"));
    const int deviationName = 1 + static_cast<int>(blasts.columns.size() + deviations.columns.size());
    std::vector<BLASTSD> series;
    series.reserve(static_cast<std::size_t>(names.size()));
    for (const QString& name : names) {
        query.bindValue(0, name);
        if (!query.exec())
            throw DatabaseError(query.lastError().databaseText());
        if (!query.next())
            continue;
        BLASTSD b;
        b.Name = query.value(1 + blasts.columnIndex(QStringLiteral("Name"))).toString();
        if (query.value(deviationName).isNull()) {
            b.Quantity = 0.0;
            b.Values = missingAnalysis();
            b.StdDev.fill(-1.0f);
        } else {
            b.Quantity = query.value(0).toDouble();
            for (int p = 0; p < kElementCount; ++p)
                b.Values[static_cast<std::size_t>(p)] = query.value(firstValue + p).toFloat();
            for (int d = 0; d < BLASTSD::kDeviationCount; ++d)
                b.StdDev[static_cast<std::size_t>(d)] = query.value(firstDeviation + d).toFloat();
        }
        series.push_back(std::move(b));
        query.finish();
    }
    return series;
}

QStringList WorkingBlastTables::takeOut(const CSuccessfulComb& pair)
{
    Transaction transaction(mDb);
    RecordTable blasts(mDb, Table::TempBlast);
    QStringList deleted;
    for (int b = 0; b < CSuccessfulComb::kSize; ++b) {
        const QString& name = pair.Names[static_cast<std::size_t>(b)];
        std::optional<Record> record = blasts.find({name, {}});
        if (!record)
            continue;
        const double remaining =
            record->number(QStringLiteral("Quantity")) - pair.Quantities[static_cast<std::size_t>(b)];
        if (remaining > 0) {
            record->setValue(QStringLiteral("Quantity"), remaining);
            blasts.update(*record);
        } else {
            blasts.remove({name, {}});
            deleted << name;
        }
    }
    transaction.commit();
    return deleted;
}

} // namespace kilnova
