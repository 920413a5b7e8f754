#pragma once

#include <QString>

#include <array>

namespace kilnova {

/// One pair that met the target and every restriction: its blasts in pair order and the tonnes taken
/// from each. Its number in the report is its position in the run's list plus 1.
struct CSuccessfulComb {
    static constexpr int kSize = 2;

    std::array<QString, kSize> Names;
    std::array<double, kSize> Quantities{};

    bool operator==(const CSuccessfulComb&) const = default;
};

} // namespace kilnova
