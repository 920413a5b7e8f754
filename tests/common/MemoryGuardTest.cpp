#include "common/MemoryGuard.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(MemoryGuard, HalfOfTheMachineAndTheLargestSelectionThatFits)
{
    struct Case {
        std::uint64_t machine;
        std::uint64_t perPair, perSource;
        std::uint64_t largest;
    };
    // 8 GiB: 4 GiB = 4 294 967 296 bytes for n (n - 1) / 2 x 24 + 512 n, which 18 897 blasts take to
    // 4 294 607 808 bytes, and 18 898 to 4 295 061 848, past it.
    // 3000 bytes: 1500 for 24 per pair and 512 per blast; two blasts need 1048, three 1608.
    const Case cases[] = {
        {std::uint64_t{8} << 30, 24, 512, 18897},
        {3000, 24, 512, 2},
        {2000, 24, 512, 1},
        {100, 24, 512, 0},
    };
    for (const Case& c : cases) {
        const MemoryGuard guard(c.machine);
        EXPECT_EQ(guard.limit(), c.machine / 2);
        EXPECT_EQ(guard.largestPairwise(c.perPair, c.perSource), c.largest) << c.machine;
        EXPECT_TRUE(guard.fits(MemoryGuard::pairwise(c.largest, c.perPair, c.perSource))) << c.machine;
        EXPECT_FALSE(guard.fits(MemoryGuard::pairwise(c.largest + 1, c.perPair, c.perSource))) << c.machine;
    }
    EXPECT_EQ(MemoryGuard::pairwise(3, 24, 512), 3u * 24 + 3 * 512);
    EXPECT_EQ(MemoryGuard::pairwise(1, 24, 512), 512u);
    // A machine whose memory is unknown refuses nothing.
    EXPECT_TRUE(MemoryGuard(0).fits(~std::uint64_t{0}));
    EXPECT_GT(MemoryGuard::physicalMemory(), std::uint64_t{1} << 26) << "this machine has some memory";
}

} // namespace
} // namespace kilnova
