#include "database/Record.h"

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
    case ColumnType::Single:
        return static_cast<double>(static_cast<float>(value.toDouble()));
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

RecordKey Record::key() const
{
    return {name(), definition().key == KeyKind::NameAndSource ? text(QStringLiteral("Source")) : QString()};
}

Analysis Record::analysis() const
{
    Analysis result = missingAnalysis();
    const TableDef& def = definition();
    for (int i = 0; i < kElementCount; ++i) {
        const auto name = elementColumnName(i);
        const int column =
            def.columnIndex(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
        if (column >= 0)
            result[static_cast<std::size_t>(i)] =
                static_cast<float>(mValues[static_cast<std::size_t>(column)].toDouble());
    }
    return result;
}

void Record::setAnalysis(const Analysis& analysis)
{
    const TableDef& def = definition();
    for (int i = 0; i < kElementCount; ++i) {
        const auto name = elementColumnName(i);
        const int column =
            def.columnIndex(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
        if (column >= 0)
            mValues[static_cast<std::size_t>(column)] =
                static_cast<double>(analysis[static_cast<std::size_t>(i)]);
    }
}

} // namespace kilnova
