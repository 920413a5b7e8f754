#include "tables/RecordListModel.h"

#include "database/Schema.h"

#include <algorithm>
#include <numeric>

namespace kilnova {

namespace {

bool isNumber(const ColumnDef& column)
{
    return column.type != ColumnType::Text;
}

bool isMissing(const ColumnDef& column, const QVariant& value)
{
    return isNumber(column) && value.toDouble() == kMissing;
}

/// Compares runs of digits by their value and everything else without regard to case. Done by hand
/// because a collator's numeric mode depends on the platform's locale support.
bool naturalLess(QStringView x, QStringView y)
{
    qsizetype i = 0, j = 0;
    while (i < x.size() && j < y.size()) {
        if (x[i].isDigit() && y[j].isDigit()) {
            qsizetype ei = i, ej = j;
            while (ei < x.size() && x[ei].isDigit())
                ++ei;
            while (ej < y.size() && y[ej].isDigit())
                ++ej;
            QStringView dx = x.sliced(i, ei - i), dy = y.sliced(j, ej - j);
            while (dx.size() > 1 && dx.front() == u'0')
                dx = dx.sliced(1);
            while (dy.size() > 1 && dy.front() == u'0')
                dy = dy.sliced(1);
            if (dx.size() != dy.size())
                return dx.size() < dy.size();
            if (const int d = dx.compare(dy); d != 0)
                return d < 0;
            i = ei;
            j = ej;
            continue;
        }
        const int d = x.sliced(i, 1).compare(y.sliced(j, 1), Qt::CaseInsensitive);
        if (d != 0)
            return d < 0;
        ++i;
        ++j;
    }
    return x.size() - i < y.size() - j;
}

} // namespace

RecordListModel::RecordListModel(Table table, QObject* parent)
    : QAbstractTableModel(parent)
    , mTable(table)
{
}

const TableDef& RecordListModel::definition() const
{
    return Schema::table(mTable);
}

void RecordListModel::setRecords(std::vector<Record> records)
{
    beginResetModel();
    mRecords = std::move(records);
    endResetModel();
    // A reset keeps no persistent indexes, so the order can be restored without a layout change.
    applySort();
}

std::optional<int> RecordListModel::rowOf(qint64 rowId) const
{
    for (std::size_t i = 0; i < mRecords.size(); ++i) {
        if (mRecords[i].rowId() == rowId)
            return static_cast<int>(i);
    }
    return std::nullopt;
}

int RecordListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mRecords.size());
}

int RecordListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(definition().columns.size());
}

QVariant RecordListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount())
        return {};
    const ColumnDef& column = definition().columns[static_cast<std::size_t>(index.column())];
    const QVariant& value = record(index.row()).value(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return displayText(column, value);
    case Qt::EditRole:
        return value;
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(
            Qt::Alignment((isNumber(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    case Qt::ToolTipRole:
        return isMissing(column, value) ? QVariant(QStringLiteral("missing")) : QVariant();
    case kMissingRole:
        return isMissing(column, value);
    default:
        return {};
    }
}

QVariant RecordListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    if (section < 0 || section >= columnCount())
        return {};
    return definition().columns[static_cast<std::size_t>(section)].name;
}

void RecordListModel::sort(int column, Qt::SortOrder order)
{
    mSortColumn = column;
    mSortOrder = order;
    applySort();
}

void RecordListModel::applySort()
{
    if (mSortColumn < 0 || mSortColumn >= columnCount() || mRecords.size() < 2)
        return;
    const ColumnDef& column = definition().columns[static_cast<std::size_t>(mSortColumn)];
    const int c = mSortColumn;
    const bool descending = mSortOrder == Qt::DescendingOrder;

    std::vector<std::size_t> order(mRecords.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (isNumber(column)) {
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            const double x = mRecords[a].value(c).toDouble();
            const double y = mRecords[b].value(c).toDouble();
            return descending ? y < x : x < y;
        });
    } else {
        // Names as people read them: "B9" before "B10", case ignored as the database ignores it.
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            const QString x = mRecords[a].value(c).toString();
            const QString y = mRecords[b].value(c).toString();
            return descending ? naturalLess(y, x) : naturalLess(x, y);
        });
    }

    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    std::vector<int> newRow(mRecords.size());
    std::vector<Record> sorted;
    sorted.reserve(mRecords.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        newRow[order[i]] = static_cast<int>(i);
        sorted.push_back(std::move(mRecords[order[i]]));
    }
    mRecords = std::move(sorted);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& i : before)
        after << index(newRow[static_cast<std::size_t>(i.row())], i.column());
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

int RecordListModel::decimals(const ColumnDef& column)
{
    for (const char* fine : {"MS", "MA", "LSF", "Cl"}) {
        if (column.name == QLatin1String(fine))
            return 3;
    }
    return 2;
}

QString RecordListModel::displayText(const ColumnDef& column, const QVariant& value)
{
    if (!isNumber(column))
        return value.toString();
    if (isMissing(column, value))
        return QStringLiteral("-1");
    return QString::number(value.toDouble(), 'f', decimals(column));
}

} // namespace kilnova
