#include "render/ColourScale.h"

#include "Pixels.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(ColourScale, ValuesFallOnTheScaleFromPaleYellowToDarkRed)
{
    const ColourScale scale(40, 50);
    const struct {
        double value;
        double position;
        int shade;
        QColor colour;
    } cases[] = {
        {40, 0.0, 0, QColor(0xff, 0xff, 0xcc)},  {45, 0.5, 32, QColor(0xfd, 0x8d, 0x3c)},
        {50, 1.0, 64, QColor(0x80, 0x00, 0x26)}, {42.5, 0.25, 16, QColor(0xfe, 0xd9, 0x76)},
        {30, 0.0, 0, QColor(0xff, 0xff, 0xcc)}, // outside the range: clamped
        {70, 1.0, 64, QColor(0x80, 0x00, 0x26)},
    };
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(scale.position(c.value), c.position) << c.value;
        EXPECT_EQ(scale.shade(c.value), c.shade) << c.value;
        EXPECT_EQ(ColourScale::shadeColour(scale.shade(c.value)), c.colour) << c.value;
    }
    // Between two stops the colour lies between them, channel by channel.
    const QColor between = ColourScale::colourAt(0.625);
    EXPECT_LT(between.green(), 0x8d);
    EXPECT_GT(between.green(), 0x1a);
}

TEST(ColourScale, ARangeOfOneValueSitsInTheMiddle)
{
    const ColourScale one(12, 12);
    EXPECT_EQ(one.position(12), 0.5);
    EXPECT_EQ(one.shade(3), ColourScale::kShades / 2);
    const ColourScale reversed(50, 40);
    EXPECT_EQ(reversed.lowest(), 40);
    EXPECT_EQ(reversed.position(50), 1.0);
}

} // namespace
} // namespace kilnova
