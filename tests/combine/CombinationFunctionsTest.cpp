#include "combine/CombinationFunctions.h"

#include <gtest/gtest.h>

#include <array>

namespace kilnova {
namespace {

TEST(CombinationCount, CountsInWrappingThirtyTwoBitArithmetic)
{
    struct Case {
        int k;
        int n;
        std::int32_t expected;
    };
    const Case cases[] = {
        {2, 2, 1},
        {2, 5, 10},
        {3, 5, 10},
        {2, 5000, 12497500},
        {12, 12, 1},
        {3, 2, -1},   // more than there are
        {13, 20, -1}, // too many to count
        // 50000·49999 wraps to -1795017296 in 32 bits, and the count goes negative with it.
        {2, 50000, -897508648},
        // 70000·69999 wraps past 2^32 back to a positive 604962704.
        {2, 70000, 302481352},
    };
    for (const Case& c : cases)
        EXPECT_EQ(CombinationCount(c.k, c.n), c.expected) << c.k << " of " << c.n;
}

TEST(SolveSquareSystem, EliminatesWithoutExchangingRows)
{
    struct Case {
        const char* what;
        int m;
        std::array<double, 4> A;
        std::array<double, 2> b;
        bool solved;
        std::array<double, 2> x;
    };
    const Case cases[] = {
        {"regular 2x2", 2, {2, 1, 1, 1}, {3, 2}, true, {1, 1}},
        {"grade and tonnage rows", 2, {-4, 6, 1, 1}, {0, 1000}, true, {600, 400}},
        {"one equation", 1, {4, 0, 0, 0}, {10, 0}, true, {2.5, 0}},
        // x = (1, 0) solves it, but the leading zero is never swapped away.
        {"zero first pivot", 2, {0, 1, 1, 1}, {0, 1}, false, {}},
        {"singular: second pivot zero", 2, {2, 2, 1, 1}, {0, 1}, false, {}},
        {"pivot at the threshold", 1, {1e-10, 0, 0, 0}, {1, 0}, false, {}},
        {"pivot just above the threshold", 1, {2e-10, 0, 0, 0}, {1, 0}, true, {5e9, 0}},
        {"negative pivot at the threshold", 1, {-1e-10, 0, 0, 0}, {1, 0}, false, {}},
    };
    for (const Case& c : cases) {
        std::array<double, 4> A = c.A;
        std::array<double, 2> b = c.b;
        ASSERT_EQ(SolveSquareSystem(std::span(A).first(static_cast<std::size_t>(c.m * c.m)), b, c.m),
                  c.solved)
            << c.what;
        if (!c.solved)
            continue;
        for (int i = 0; i < c.m; ++i)
            EXPECT_DOUBLE_EQ(b[static_cast<std::size_t>(i)], c.x[static_cast<std::size_t>(i)]) << c.what;
    }
}

} // namespace
} // namespace kilnova
