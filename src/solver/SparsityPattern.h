#pragma once

#include "solver/CheckedArray.h"

#include <cstdint>

namespace kilnova {

/// Which columns of each row of a matrix may be non-zero, one bit per column. A set bit may stand
/// for an entry that has become zero; a clear bit is always a zero entry. Rows are range-checked.
class SparsityPattern final {
public:
    /// Sizes to rows x columns, all clear.
    void reset(int rows, int columns)
    {
        mRows = rows < 0 ? 0 : rows;
        mWordsPerRow = columns <= 0 ? 0 : (columns + 63) / 64;
        mWords.reset(mRows * mWordsPerRow);
    }
    void clear() { reset(0, 0); }

    void clearRow(int row)
    {
        for (std::uint64_t& w : words(row))
            w = 0;
    }
    void set(int row, int column) { words(row)[index(column)] |= bit(column); }
    void unset(int row, int column) { words(row)[index(column)] &= ~bit(column); }
    /// The words of one row (column c is bit c % 64 of word c / 64).
    std::span<const std::uint64_t> rowWords(int row) const { return words(row); }
    int wordsPerRow() const { return mWordsPerRow; }
    /// The words of rows first..last as one block, checked once as a whole.
    std::span<std::uint64_t> block(int first, int last)
    {
        check(first);
        check(last);
        return mWords.range(first * mWordsPerRow, (last + 1) * mWordsPerRow - 1);
    }
    std::span<const std::uint64_t> block(int first, int last) const
    {
        check(first);
        check(last);
        return mWords.range(first * mWordsPerRow, (last + 1) * mWordsPerRow - 1);
    }

private:
    std::span<std::uint64_t> words(int row)
    {
        check(row);
        return mWords.range(row * mWordsPerRow, (row + 1) * mWordsPerRow - 1);
    }
    std::span<const std::uint64_t> words(int row) const
    {
        check(row);
        return mWords.range(row * mWordsPerRow, (row + 1) * mWordsPerRow - 1);
    }
    std::size_t index(int column) const
    {
        if (column < 0 || column >= mWordsPerRow * 64) [[unlikely]]
            throwIndexOutOfRange("pattern column", column, mWordsPerRow * 64);
        return static_cast<std::size_t>(column / 64);
    }
    static std::uint64_t bit(int column) { return std::uint64_t{1} << (column % 64); }
    void check(int row) const
    {
        if (row < 0 || row >= mRows) [[unlikely]]
            throwIndexOutOfRange("pattern row", row, mRows);
    }

    int mRows = 0;
    int mWordsPerRow = 0;
    CheckedArray<std::uint64_t> mWords;
};

} // namespace kilnova
