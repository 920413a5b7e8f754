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

TEST(Elements, RatiosHaveNoUnitAndEverythingElseIsAPercentage)
{
    const std::pair<Element, std::string_view> cases[] = {
        {Element::Titration, "%"}, {Element::CaO, "%"}, {Element::MS, ""},    {Element::MA, ""},
        {Element::LSF, ""},        {Element::C3S, "%"}, {Element::NaEq, "%"}, {Element::CostFactor, ""},
        {Element::C4AF, "%"},      {Element::Cl, "%"},
    };
    for (const auto& [element, unit] : cases)
        EXPECT_EQ(elementUnit(elementIndex(element)), unit) << elementColumnName(elementIndex(element));
    EXPECT_THROW((void)elementUnit(kElementCount), std::out_of_range);
}

} // namespace
} // namespace kilnova
