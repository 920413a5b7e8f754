#pragma once

#include "combine/CSuccessfulComb.h"

#include <QString>

#include <array>
#include <vector>

namespace kilnova {

/// One pair that met the target and every restriction, as the run keeps it: the positions of its
/// blasts in the series and the tonnes taken from each. 24 bytes, however long the names.
struct SuccessfulPair {
    std::array<int, CSuccessfulComb::kSize> blasts{};
    std::array<double, CSuccessfulComb::kSize> tonnes{};
};

/// What a combination run produced (its report went to the sink the run was given). A cancelled
/// run produced nothing that may be shown.
struct CombinationOutcome {
    bool cancelled = false;
    /// The series' names, by position; the pairs refer to them.
    std::vector<QString> names;
    /// In the order found; a pair's number is its index plus 1.
    std::vector<SuccessfulPair> pairs;
    /// Index of the best pair, or -1 when none succeeded.
    int bestIndex = -1;
    int seriesSize = 0;

    int count() const { return static_cast<int>(pairs.size()); }
    /// Pair `index` with its blasts' names, as "Use Combination #" hands it on.
    CSuccessfulComb combination(int index) const
    {
        const SuccessfulPair& p = pairs.at(static_cast<std::size_t>(index));
        CSuccessfulComb c;
        for (std::size_t b = 0; b < CSuccessfulComb::kSize; ++b) {
            c.Names[b] = names.at(static_cast<std::size_t>(p.blasts[b]));
            c.Quantities[b] = p.tonnes[b];
        }
        return c;
    }
};

} // namespace kilnova
