#pragma once

#include "combine/BLASTSD.h"
#include "combine/CombinationOutcome.h"
#include "combine/CombinationRequest.h"

#include <QByteArray>

#include <array>
#include <functional>
#include <vector>

namespace kilnova {

class ReportSink;

/// Called once per blast of the outer loop with the pairs tried so far and the number of pairs;
/// returning false cancels the run.
using CombinationProgress = std::function<bool(long long done, long long total)>;

/// Tries every pair of a series against the target tonnage and grade, keeps the pairs that are
/// possible and meet every restriction, ranks them and reports them. Pure computation over a series
/// loaded beforehand; nothing is written.
class CombinationSearch final {
public:
    CombinationSearch(CombinationRequest request, std::vector<BLASTSD> series);

    /// The run; its report goes to `report` as it is built (nothing at all when no pair succeeds).
    CombinationOutcome run(ReportSink& report, const CombinationProgress& progress = {}) const;

private:
    struct Pair {
        std::array<double, 2> taken{};
        double total = 0.0;
        double deviation = 0.0;
        Analysis combined{};
        Analysis inventory{};
    };

    /// False when pair (i, j) cannot be solved, is not possible or fails a restriction.
    bool evaluate(int i, int j, Pair& pair) const;
    bool mix(int i, int j, Pair& pair) const;
    bool meetsRestrictions(int i, int j, Pair& pair) const;
    /// What is left of the series once the pair is taken, from the totals gathered once.
    void computeInventory(int i, int j, Pair& pair) const;

    const BLASTSD& blast(int index) const { return mSeries[static_cast<std::size_t>(index)]; }

    CombinationRequest mRequest;
    std::vector<BLASTSD> mSeries;
    std::vector<QByteArray> mNames; // UTF-8, as the report prints them
    /// 2 with a grade target (grade and tonnage), 1 with the tonnage alone.
    int mEquations = 1;
    /// Per blast: its coefficient in the grade equation.
    std::vector<double> mCoefficient;
    /// Σ Quantity and Σ Quantity·value over the whole series; one missing value makes a sum missing.
    double mSeriesQuantity = 0.0;
    std::array<double, kElementCount> mSeriesAmount{};
    std::array<bool, kElementCount> mSeriesMissing{};
};

} // namespace kilnova
