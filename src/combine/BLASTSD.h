#pragma once

#include "chemistry/Elements.h"

#include <QString>

#include <array>

namespace kilnova {

/// One blast of a combination series, as loaded from the working copies.
struct BLASTSD {
    /// Standard deviations are kept for Titration … P2O5 (properties 0-11).
    static constexpr int kDeviationCount = 12;

    QString Name;
    double Quantity = 0.0; ///< tonnes still available
    Analysis Values{};     ///< the 22 properties in element order
    std::array<float, kDeviationCount> StdDev{};
};

} // namespace kilnova
