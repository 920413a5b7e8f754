// Dantzig's choice by PricingTree against the pricing walk itself, which rounds its running minimum
// to single precision after each column it takes.

#include "solver/PricingTree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace kilnova {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Column {
    double reduced;
    bool eligible = true;
};

PricingTree::Choice walk(const std::vector<Column>& columns)
{
    PricingTree::Choice c;
    for (std::size_t k = 0; k < columns.size(); ++k) {
        if (columns[k].eligible && columns[k].reduced < c.minimum) {
            c.minimum = static_cast<float>(columns[k].reduced);
            c.position = static_cast<int>(k) + 1;
        }
    }
    return c;
}

/// The choice of a PricingTree over the columns followed by `padding` ineligible ones: with enough
/// padding the tree is searched, not walked.
PricingTree::Choice tree(const std::vector<Column>& columns, int padding = 0)
{
    PricingTree t;
    t.reset(static_cast<int>(columns.size()) + padding);
    for (std::size_t k = 0; k < columns.size(); ++k)
        t.set(static_cast<int>(k) + 1, columns[k].reduced, columns[k].eligible);
    for (int k = 1; k <= padding; ++k)
        t.set(static_cast<int>(columns.size()) + k, -7.0, false);
    return t.choose();
}

// -1 - 2^-30 and -1 - 2^-31 both round to -1.0f; -1 - 2^-23 is the float below it.
const double kJustBelowOne = -1.0 - std::ldexp(1.0, -30);
const double kNearerOne = -1.0 - std::ldexp(1.0, -31);
const double kFloatBelowOne = -1.0 - std::ldexp(1.0, -23);

TEST(PricingTree, ChoosesWhereTheWalkEnds)
{
    struct Case {
        const char* what;
        std::vector<Column> columns;
        int position;
    };
    const std::vector<Case> cases = {
        {"nothing", {}, 0},
        {"ties go to the first", {{-2}, {-3}, {-3}, {-1}}, 2},
        {"a later value below the rounded minimum wins though it is larger",
         {{kJustBelowOne}, {kNearerOne}},
         2},
        {"the smallest first: the later one is not below its rounding", {{kNearerOne}, {kJustBelowOne}}, 2},
        {"rounding down: the first that rounds to the minimum", {{-0.5}, {-1.0}, {-1.0 + 1e-12}, {-1.0}}, 2},
        {"a float step apart", {{kFloatBelowOne}, {-1.0}, {kJustBelowOne}}, 1},
        {"not eligible is skipped", {{-5, false}, {-1}, {-2}}, 3},
        {"NaN is never taken", {{kNaN}, {-1}, {kNaN}}, 2},
        {"only NaN", {{kNaN}, {kNaN}}, 0},
        {"minus infinity", {{-1}, {-kInf}, {-kInf}, {-1e300}}, 2},
        {"a huge negative rounds to minus infinity", {{-1e300}, {-kInf}}, 1},
        {"1e30 lies below the float start", {{1e30}, {2e30}}, 1},
        {"the float start itself is not below it", {{static_cast<double>(1e30f)}, {kInf}}, 0},
        {"zeros of both signs", {{0.0}, {-0.0}, {1}}, 1},
        {"the last of the values below the rounded minimum",
         {{-3}, {kJustBelowOne}, {-1.0}, {kNearerOne}, {-0.5}},
         1},
    };
    for (const Case& c : cases) {
        const PricingTree::Choice expected = walk(c.columns);
        EXPECT_EQ(expected.position, c.position) << c.what << " (the walk itself)";
        for (const int padding : {0, PricingTree::kWalkSize}) {
            const PricingTree::Choice ours = tree(c.columns, padding);
            EXPECT_EQ(ours.position, expected.position) << c.what << ", padded by " << padding;
            EXPECT_EQ(std::bit_cast<std::uint32_t>(ours.minimum),
                      std::bit_cast<std::uint32_t>(expected.minimum))
                << c.what << ", padded by " << padding;
        }
    }
}

// Reduced costs crowded around a few values, a float step and a double step apart, changed a few at
// a time as pivots change them.
TEST(PricingTree, FollowsTheWalkThroughChanges)
{
    std::mt19937 engine(1729);
    auto draw = [&](int high) {
        return static_cast<int>(engine() % static_cast<unsigned>(high + 1));
    };
    auto value = [&]() -> Column {
        const double bases[] = {-1.0, -2.5, -1e-6, 0.0, 3.0, -1e29};
        double v = bases[draw(5)];
        switch (draw(5)) {
        case 0:
            v = std::nextafter(v, -kInf);
            break;
        case 1:
            v -= std::ldexp(std::fabs(v) + 1.0, -24 - draw(8)); // around a float rounding boundary
            break;
        case 2:
            v = static_cast<double>(std::nextafter(static_cast<float>(v), -1e30f));
            break;
        case 3:
            v = draw(20) == 0 ? kNaN : v;
            break;
        default:
            break;
        }
        return {v, draw(15) != 0};
    };
    for (int run = 0; run < 200; ++run) {
        const int size = 1 + draw(300);
        std::vector<Column> columns(static_cast<std::size_t>(size));
        PricingTree t;
        t.reset(size);
        for (int k = 0; k < size; ++k) {
            columns[static_cast<std::size_t>(k)] = value();
            t.set(k + 1, columns[static_cast<std::size_t>(k)].reduced,
                  columns[static_cast<std::size_t>(k)].eligible);
        }
        for (int step = 0; step < 30; ++step) {
            const PricingTree::Choice expected = walk(columns);
            const PricingTree::Choice ours = t.choose();
            ASSERT_EQ(ours.position, expected.position) << "run " << run << ", step " << step;
            ASSERT_EQ(std::bit_cast<std::uint32_t>(ours.minimum),
                      std::bit_cast<std::uint32_t>(expected.minimum))
                << "run " << run << ", step " << step;
            for (int change = draw(4); change >= 0; --change) {
                const int k = draw(size - 1);
                columns[static_cast<std::size_t>(k)] = value();
                t.set(k + 1, columns[static_cast<std::size_t>(k)].reduced,
                      columns[static_cast<std::size_t>(k)].eligible);
            }
        }
    }
}

TEST(PricingTree, PositionsOutsideAreRefused)
{
    PricingTree t;
    t.reset(3);
    EXPECT_THROW(t.set(0, -1.0), std::invalid_argument);
    EXPECT_THROW(t.set(4, -1.0), std::invalid_argument);
    EXPECT_NO_THROW(t.set(3, -1.0));
}

} // namespace
} // namespace kilnova
