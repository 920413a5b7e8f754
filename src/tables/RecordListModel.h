#pragma once

#include "database/Record.h"

#include <QAbstractTableModel>

#include <optional>
#include <vector>

namespace kilnova {

/// The records of one table as a list: one row per record, one column per table column in table
/// order, headed by the column name. Numbers are right-aligned with a fixed number of decimals per
/// column, and a missing value (-1) is flagged through kMissingRole so that a view can grey it.
/// Sorting by a column is stable and is applied again whenever the records are replaced.
class RecordListModel final : public QAbstractTableModel {
public:
    /// True for a number cell that holds -1.
    static constexpr int kMissingRole = Qt::UserRole + 1;

    explicit RecordListModel(Table table, QObject* parent = nullptr);

    Table table() const { return mTable; }
    const TableDef& definition() const;

    /// Replaces every row.
    void setRecords(std::vector<Record> records);
    const Record& record(int row) const { return mRecords.at(static_cast<std::size_t>(row)); }
    /// The row showing the record read from this row id, if listed.
    std::optional<int> rowOf(qint64 rowId) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    /// The text a cell shows: "-1" for a missing number, other numbers with decimals(column).
    static QString displayText(const ColumnDef& column, const QVariant& value);
    /// Decimals shown for a number column: three for the moduli and chloride, two otherwise.
    static int decimals(const ColumnDef& column);

private:
    void applySort();

    Table mTable;
    std::vector<Record> mRecords;
    int mSortColumn = -1;
    Qt::SortOrder mSortOrder = Qt::AscendingOrder;
};

} // namespace kilnova
