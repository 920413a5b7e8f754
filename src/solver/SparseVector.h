#pragma once

#include "solver/CheckedArray.h"

#include <algorithm>
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
        for (const int i : mIndices) {
            mValues[i] = 0.0;
            mListed[i] = 0;
        }
        mIndices.clear();
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
