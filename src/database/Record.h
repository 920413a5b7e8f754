#pragma once

#include "chemistry/Elements.h"
#include "database/Schema.h"

#include <QVariant>

#include <optional>
#include <vector>

namespace kilnova {

/// How a record is found: Name alone, or Name and Source for stockpiles, crudes and clinkers.
struct RecordKey {
    QString name;
    QString source;
    bool operator==(const RecordKey&) const = default;
};

/// One record of any table, its values in column order. A new record holds the column defaults.
/// Values set into Single columns are rounded to single precision, as the database stores them; one
/// beyond the range of a float is kept as given, for the database to refuse.
class Record final {
public:
    explicit Record(Table table);

    Table table() const { return mTable; }
    const TableDef& definition() const;
    int columnCount() const { return static_cast<int>(mValues.size()); }

    const QVariant& value(int column) const;
    QVariant value(const QString& column) const;
    /// Throws std::out_of_range for a column the table does not have.
    void setValue(int column, const QVariant& value);
    void setValue(const QString& column, const QVariant& value);

    double number(const QString& column) const { return value(column).toDouble(); }
    QString text(const QString& column) const { return value(column).toString(); }

    QString name() const { return text(QStringLiteral("Name")); }
    RecordKey key() const;

    /// The 22 analysis values in element order; -1 for an element the table has no column for.
    Analysis analysis() const;
    /// Sets the analysis columns the table has; the others are ignored.
    void setAnalysis(const Analysis& analysis);

    /// A record of another table with this one's values copied column by column, by position (a
    /// backup table and its working table have the same columns). No row id.
    Record copiedTo(Table other) const;

    /// The row this record was read from, if it was read from the database.
    std::optional<qint64> rowId() const { return mRowId; }
    void setRowId(std::optional<qint64> rowId) { mRowId = rowId; }

    bool operator==(const Record& other) const { return mTable == other.mTable && mValues == other.mValues; }

private:
    Table mTable;
    std::vector<QVariant> mValues;
    std::optional<qint64> mRowId;
};

} // namespace kilnova
