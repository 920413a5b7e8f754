#pragma once

#include "solver/CheckedArray.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <vector>

namespace kilnova {

/// A vector over positions 0..size-1 whose entries are zero except at the listed positions. The
/// values are held whole, so reading any position is one access; the list says which ones to
/// visit. Clearing costs as much as the entries listed, not the size.
class SparseVector final {
public:
    /// Sizes to `size` positions, all zero, none listed.
    void reset(int size)
    {
        mValues.reset(size);
        mListed.reset(size);
        mIndices.clear();
        mIndices.reserve(static_cast<std::size_t>(std::max(size, 0)));
    }
    int size() const { return mValues.size(); }

    /// Every listed entry back to +0, none listed.
    void clear()
    {
        if (mIndices.empty())
            return;
        // Listed positions lie within the size: they were checked when listed.
        const auto values = mValues.range(0, mValues.size() - 1);
        const auto listed = mListed.range(0, mListed.size() - 1);
        for (const int i : mIndices) {
            values[static_cast<std::size_t>(i)] = 0.0;
            listed[static_cast<std::size_t>(i)] = 0;
        }
        mIndices.clear();
    }

    /// Clears, then lists in ascending order each position whose bit is set in `words` (position
    /// p is bit p % 64 of word p / 64), with its value from `from`.
    void assignPattern(std::span<const std::uint64_t> words, std::span<const double> from)
    {
        clear();
        const auto size = static_cast<std::size_t>(mValues.size());
        if (size == 0)
            return;
        const auto values = mValues.range(0, mValues.size() - 1);
        const auto listed = mListed.range(0, mListed.size() - 1);
        for (std::size_t w = 0; w < words.size(); ++w) {
            for (std::uint64_t bits = words[w]; bits != 0; bits &= bits - 1) {
                const std::size_t p = w * 64 + static_cast<std::size_t>(std::countr_zero(bits));
                if (p >= size || p >= from.size()) [[unlikely]]
                    throwIndexOutOfRange("vector", static_cast<int>(p), static_cast<int>(size));
                values[p] = from[p];
                listed[p] = 1;
                mIndices.push_back(static_cast<int>(p));
            }
        }
    }

    double operator[](int i) const { return mValues[i]; }
    /// values[i] += term, listing i. A sum that starts at +0 this way is the sum of the full loop.
    void add(int i, double term)
    {
        double& v = mValues[i];
        v += term;
        list(i);
    }
    void set(int i, double value)
    {
        mValues[i] = value;
        list(i);
    }

    /// The listed positions, in the order listed until sortIndices.
    std::span<const int> indices() const { return mIndices; }
    void sortIndices() { std::sort(mIndices.begin(), mIndices.end()); }
    /// Unlists the entries that came out exactly zero (either sign), keeping the order of the rest.
    void dropZeros()
    {
        std::size_t kept = 0;
        for (const int i : mIndices) {
            if (mValues[i] != 0.0)
                mIndices[kept++] = i;
            else
                mListed[i] = 0;
        }
        mIndices.resize(kept);
    }
    /// The whole value array (position 0 included), checked once.
    std::span<const double> values() const { return mValues.range(0, mValues.size() - 1); }

private:
    void list(int i)
    {
        std::uint8_t& listed = mListed[i];
        if (listed == 0) {
            listed = 1;
            mIndices.push_back(i);
        }
    }

    CheckedArray<double> mValues;
    CheckedArray<std::uint8_t> mListed;
    std::vector<int> mIndices;
};

} // namespace kilnova
