#pragma once

#include <cstdint>

namespace kilnova {

/// Half of this computer's memory, which no step whose memory grows with the square of a selection
/// may pass: such a step is refused up front, naming the largest selection that fits.
class MemoryGuard final {
public:
    /// The guard of this computer.
    MemoryGuard();
    /// The guard of a computer with this much memory (0 when unknown: nothing is refused).
    explicit MemoryGuard(std::uint64_t machineBytes);

    static std::uint64_t physicalMemory();

    std::uint64_t machine() const { return mMachine; }
    std::uint64_t limit() const { return mMachine / 2; }

    /// Memory for n sources when every pair of them may need `perPair` bytes and each source
    /// `perSource` bytes.
    static std::uint64_t pairwise(std::uint64_t n, std::uint64_t perPair, std::uint64_t perSource);
    bool fits(std::uint64_t bytes) const { return mMachine == 0 || bytes <= limit(); }
    /// The largest n whose pairwise memory fits.
    std::uint64_t largestPairwise(std::uint64_t perPair, std::uint64_t perSource) const;

private:
    std::uint64_t mMachine;
};

} // namespace kilnova
