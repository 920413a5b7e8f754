#include "chemistry/Elements.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(Elements, OrderKeepsCostFactorBetweenNaEqAndC4AF)
{
    EXPECT_EQ(elementColumnName(0), "Titration");
    EXPECT_EQ(elementColumnName(18), "NaEq");
    EXPECT_EQ(elementColumnName(19), "CostFactor");
    EXPECT_EQ(elementDisplayName(19), "Cost Factor");
    EXPECT_EQ(elementColumnName(20), "C4AF");
    EXPECT_EQ(elementColumnName(21), "Cl");
    EXPECT_THROW((void)elementColumnName(22), std::out_of_range);
}

TEST(Elements, NamesResolveBothWays)
{
    for (int i = 0; i < kElementCount; ++i) {
        EXPECT_EQ(elementFromName(elementColumnName(i)), i);
        EXPECT_EQ(elementFromName(elementDisplayName(i)), i);
    }
    EXPECT_FALSE(elementFromName("Quantity").has_value());
}

} // namespace
} // namespace kilnova
