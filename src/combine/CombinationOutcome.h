#pragma once

#include "combine/CSuccessfulComb.h"

#include <QString>

#include <vector>

namespace kilnova {

/// What a combination run produced. A cancelled run produced nothing that may be shown.
struct CombinationOutcome {
    bool cancelled = false;
    QString report;
    /// In the order found; a pair's number is its index plus 1.
    std::vector<CSuccessfulComb> successes;
    /// Index of the best pair in successes, or -1 when none succeeded.
    int bestIndex = -1;
    int seriesSize = 0;
};

} // namespace kilnova
