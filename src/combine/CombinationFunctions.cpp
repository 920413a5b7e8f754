#include "combine/CombinationFunctions.h"

#include <cmath>
#include <cstddef>

namespace kilnova {

std::int32_t CombinationCount(int k, int n)
{
    if (k > n || k >= 13)
        return -1;
    // Unsigned arithmetic wraps like the 32-bit registers the count was always computed in; signed
    // overflow would be undefined.
    std::uint32_t numerator = 1;
    for (int i = 0; i < k; ++i)
        numerator *= static_cast<std::uint32_t>(n - i);
    std::int32_t factorial = 1;
    for (int i = 2; i <= k; ++i)
        factorial *= i;
    return static_cast<std::int32_t>(numerator) / factorial;
}

bool SolveSquareSystem(std::span<double> A, std::span<double> b, int m)
{
    const auto at = [&A, m](int row, int column) -> double& {
        return A[static_cast<std::size_t>(row * m + column)];
    };
    const auto rhs = [&b](int row) -> double& {
        return b[static_cast<std::size_t>(row)];
    };
    for (int c = 0; c < m; ++c) {
        if (std::fabs(at(c, c)) <= 1e-10)
            return false;
        const double scale = 1.0 / at(c, c);
        for (int k = c; k < m; ++k)
            at(c, k) *= scale;
        rhs(c) *= scale;
        for (int r = 0; r < m; ++r) {
            if (r == c)
                continue;
            const double f = at(r, c);
            for (int k = c; k < m; ++k)
                at(r, k) -= f * at(c, k);
            rhs(r) -= f * rhs(c);
        }
    }
    return true;
}

} // namespace kilnova
