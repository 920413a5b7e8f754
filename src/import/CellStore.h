#pragma once

#include "import/CellArea.h"

#include <QVariant>

#include <optional>
#include <vector>

namespace kilnova {

/// The cells of one sheet that hold a value, kept sparse: a sheet with one cell in its last row and
/// column costs one cell, not the area up to it. Cells are added in any order; the last value given
/// to a cell wins.
class CellStore final {
public:
    /// The largest sheet any spreadsheet program writes.
    static constexpr int kMaxRows = 1 << 20;
    static constexpr int kMaxColumns = 1 << 14;

    struct Cell {
        int row;
        int column;
        const QVariant* value;
    };

    /// Adds a cell; an invalid value or an empty text is no value and is not kept. Rows and columns
    /// outside the largest sheet are not kept either: the readers refuse them before.
    void set(int row, int column, QVariant value);

    /// From A1 to the last row and the last column that hold a value; nothing for an empty sheet.
    std::optional<CellArea> usedArea() const;
    /// The value of one cell; invalid when it holds none.
    QVariant value(int row, int column) const;
    /// Every cell of the area, by row then column. Costs the cells of the area's rows, never its size.
    std::vector<Cell> cellsIn(const CellArea& area) const;
    std::size_t size() const;

private:
    struct Entry {
        qint64 key;
        QVariant value;
    };
    static qint64 keyOf(int row, int column) { return static_cast<qint64>(row) * kMaxColumns + column; }
    void sort() const;

    mutable std::vector<Entry> mEntries;
    mutable bool mSorted = true;
};

} // namespace kilnova
