#include "database/Record.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace kilnova {

namespace {

QVariant normalised(const ColumnDef& column, const QVariant& value)
{
    switch (column.type) {
    case ColumnType::Text:
        return value.toString();
    case ColumnType::Double:
        return value.toDouble();
    case ColumnType::Single: {
        // A value no float can hold is kept as it is, for the database to refuse.
        const double v = value.toDouble();
        if (!(std::abs(v) <= static_cast<double>(std::numeric_limits<float>::max())))
            return v;
        return static_cast<double>(static_cast<float>(v));
    }
    }
    return value;
}

int requireColumn(const TableDef& def, const QString& column)
{
    const int index = def.columnIndex(column);
    if (index < 0)
        throw std::out_of_range("table " + def.name.toStdString() + " has no column " + column.toStdString());
    return index;
}

} // namespace

Record::Record(Table table)
    : mTable(table)
{
    for (const ColumnDef& column : definition().columns)
        mValues.push_back(normalised(column, column.defaultValue));
}

const TableDef& Record::definition() const
{
    return Schema::table(mTable);
}

const QVariant& Record::value(int column) const
{
    return mValues.at(static_cast<std::size_t>(column));
}

QVariant Record::value(const QString& column) const
{
    const int index = definition().columnIndex(column);
    return index < 0 ? QVariant() : mValues[static_cast<std::size_t>(index)];
}

void Record::setValue(int column, const QVariant& value)
{
    const ColumnDef& def = definition().columns.at(static_cast<std::size_t>(column));
    mValues[static_cast<std::size_t>(column)] = normalised(def, value);
}

void Record::setValue(const QString& column, const QVariant& value)
{
    setValue(requireColumn(definition(), column), value);
}

Record Record::copiedTo(Table other) const
{
    Record copy(other);
    const int columns = std::min(copy.columnCount(), columnCount());
    for (int c = 0; c < columns; ++c)
        copy.setValue(c, mValues[static_cast<std::size_t>(c)]);
    return copy;
}

RecordKey Record::key() const
{
    return {name(), definition().key == KeyKind::NameAndSource ? text(QStringLiteral("Source")) : QString()};
}

Analysis Record::analysis() const
{
    Analysis result = missingAnalysis();
    const auto& columns = definition().analysisColumns;
    for (std::size_t k = 0; k < columns.size(); ++k) {
        if (columns[k] >= 0)
            result[k] = static_cast<float>(mValues[static_cast<std::size_t>(columns[k])].toDouble());
    }
    return result;
}

void Record::setAnalysis(const Analysis& analysis)
{
    const auto& columns = definition().analysisColumns;
    for (std::size_t k = 0; k < columns.size(); ++k) {
        if (columns[k] >= 0)
            mValues[static_cast<std::size_t>(columns[k])] = static_cast<double>(analysis[k]);
    }
}

} // namespace kilnova
