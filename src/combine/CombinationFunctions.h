#pragma once

#include <cstdint>
#include <span>

namespace kilnova {

/// Number of combinations of k out of n, or -1 when k > n or k >= 13. Computed in 32-bit integers
/// that wrap silently for large n, as the report has always printed it.
std::int32_t CombinationCount(int k, int n);

/// Solves A·x = b in place for an m×m system (A row-major, m·m values): Gauss–Jordan elimination
/// without row exchanges. Returns false as soon as a pivot |A[c][c]| <= 1e-10, even when a solution
/// exists; otherwise x is left in b.
bool SolveSquareSystem(std::span<double> A, std::span<double> b, int m);

} // namespace kilnova
