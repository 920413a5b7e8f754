#include "common/MemoryGuard.h"

#include <unistd.h>

namespace kilnova {

MemoryGuard::MemoryGuard()
    : MemoryGuard(physicalMemory())
{
}

MemoryGuard::MemoryGuard(std::uint64_t machineBytes)
    : mMachine(machineBytes)
{
}

std::uint64_t MemoryGuard::physicalMemory()
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

std::uint64_t MemoryGuard::pairwise(std::uint64_t n, std::uint64_t perPair, std::uint64_t perSource)
{
    const std::uint64_t pairs = n < 2 ? 0 : n * (n - 1) / 2;
    return pairs * perPair + n * perSource;
}

std::uint64_t MemoryGuard::largestPairwise(std::uint64_t perPair, std::uint64_t perSource) const
{
    if (mMachine == 0)
        return UINT64_MAX;
    // The memory grows with n, so the largest n that fits is found by halving.
    std::uint64_t low = 0;
    std::uint64_t high = 1;
    while (fits(pairwise(high, perPair, perSource)) && high < (std::uint64_t{1} << 31))
        high *= 2;
    while (low + 1 < high) {
        const std::uint64_t middle = low + (high - low) / 2;
        if (fits(pairwise(middle, perPair, perSource)))
            low = middle;
        else
            high = middle;
    }
    return low;
}

} // namespace kilnova
