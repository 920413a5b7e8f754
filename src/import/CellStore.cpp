#include "import/CellStore.h"

#include <algorithm>

namespace kilnova {

void CellStore::set(int row, int column, QVariant value)
{
    if (!value.isValid() || (value.typeId() == QMetaType::QString && value.toString().isEmpty()))
        return;
    if (row < 0 || row >= kMaxRows || column < 0 || column >= kMaxColumns)
        return;
    const qint64 key = keyOf(row, column);
    if (!mEntries.empty() && mEntries.back().key >= key)
        mSorted = false;
    mEntries.push_back({key, std::move(value)});
}

void CellStore::sort() const
{
    if (mSorted)
        return;
    // Stable, so that of two values for one cell the one given last stays.
    std::stable_sort(mEntries.begin(), mEntries.end(),
                     [](const Entry& a, const Entry& b) { return a.key < b.key; });
    std::vector<Entry> unique;
    unique.reserve(mEntries.size());
    for (Entry& e : mEntries) {
        if (!unique.empty() && unique.back().key == e.key)
            unique.back() = std::move(e);
        else
            unique.push_back(std::move(e));
    }
    mEntries = std::move(unique);
    mSorted = true;
}

std::size_t CellStore::size() const
{
    sort();
    return mEntries.size();
}

std::optional<CellArea> CellStore::usedArea() const
{
    sort();
    if (mEntries.empty())
        return std::nullopt;
    int lastColumn = 0;
    for (const Entry& e : mEntries)
        lastColumn = std::max(lastColumn, static_cast<int>(e.key % kMaxColumns));
    return CellArea{0, 0, static_cast<int>(mEntries.back().key / kMaxColumns), lastColumn};
}

QVariant CellStore::value(int row, int column) const
{
    sort();
    const qint64 key = keyOf(row, column);
    const auto found = std::lower_bound(mEntries.begin(), mEntries.end(), key,
                                        [](const Entry& e, qint64 k) { return e.key < k; });
    return found != mEntries.end() && found->key == key ? found->value : QVariant();
}

std::vector<CellStore::Cell> CellStore::cellsIn(const CellArea& area) const
{
    sort();
    std::vector<Cell> cells;
    if (area.firstRow > area.lastRow || area.firstColumn > area.lastColumn)
        return cells;
    const qint64 first = keyOf(area.firstRow, area.firstColumn);
    const qint64 last = keyOf(area.lastRow, area.lastColumn);
    auto it = std::lower_bound(mEntries.begin(), mEntries.end(), first,
                               [](const Entry& e, qint64 k) { return e.key < k; });
    for (; it != mEntries.end() && it->key <= last; ++it) {
        const int column = static_cast<int>(it->key % kMaxColumns);
        if (column >= area.firstColumn && column <= area.lastColumn)
            cells.push_back({static_cast<int>(it->key / kMaxColumns), column, &it->value});
    }
    return cells;
}

} // namespace kilnova
