#pragma once

#include "solver/CheckedArray.h"

#include <cmath>
#include <limits>
#include <vector>

namespace kilnova {

/// Dantzig's choice of the entering column over positions 1..size of the non-basic list, as the
/// pricing walk makes it, without walking. The walk starts from the single-precision 1e30, takes
/// each position whose reduced cost (double) is strictly below the current minimum and rounds the
/// minimum to single precision each time. With F the single-precision rounding of the smallest
/// reduced cost, that walk ends
///   - on the last position whose reduced cost is below F, if any is (each such one is taken when
///     the walk meets it, and after the last of them the minimum stays F), and otherwise
///   - on the first position whose reduced cost rounds to F (the positions before it round above
///     F, and from it on the minimum is F, which nothing below it undercuts),
/// and nothing is taken when no reduced cost lies below the start value. Rounding is monotone, so
/// both positions are found by descending a tree of subtree minima: O(log size) per change and per
/// choice instead of a walk over every position.
class PricingTree final {
public:
    /// Sizes to `size` positions, none eligible.
    void reset(int size);
    /// The reduced cost at a position, or not eligible (an artificial that left the basis). A NaN
    /// is never taken, as in the walk.
    void set(int position, double reduced, bool eligible = true);
    void setIneligible(int position) { set(position, 0.0, false); }
    /// A position's reduced cost without bringing the tree up to date: many changes at once are
    /// cheaper followed by one rebuild().
    void setLeaf(int position, double reduced, bool eligible = true)
    {
        if (position < 1 || position > mSize) [[unlikely]]
            throwIndexOutOfRange("pricing position", position, mSize + 1);
        mNodes[static_cast<std::size_t>(mLeaves + position - 1)] =
            eligible && !std::isnan(reduced) ? reduced : std::numeric_limits<double>::infinity();
    }
    void rebuild();

    struct Choice {
        int position = 0;      ///< 0 when nothing was taken
        float minimum = 1e30f; ///< the walk's single-precision minimum at its end
    };
    Choice choose() const;

    /// Up to this many positions the walk itself is cheaper than keeping the tree: choose() walks.
    static constexpr int kWalkSize = 32;

private:
    bool walks() const { return mSize <= kWalkSize; }

    int mSize = 0;
    int mLeaves = 1;            // a power of two
    std::vector<double> mNodes; // 1-based heap order; leaf p at mLeaves + p - 1
};

} // namespace kilnova
