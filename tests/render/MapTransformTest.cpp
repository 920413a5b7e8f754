#include "render/MapTransform.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

void expectNear(const QPointF& a, const QPointF& b, const char* what)
{
    EXPECT_NEAR(a.x(), b.x(), 1e-6) << what;
    EXPECT_NEAR(a.y(), b.y(), 1e-6) << what;
}

TEST(MapTransform, FitsTheQuarryNorthUpWithOneScale)
{
    // 1000 m by 500 m into 400 by 400 pixels: the width decides, 0.4 px per metre.
    const QRectF world(QPointF(512000, 4861000), QPointF(513000, 4861500));
    const MapTransform t = MapTransform::fit(world, QRectF(0, 0, 400, 400));
    EXPECT_DOUBLE_EQ(t.scale(), 0.4);
    expectNear(t.toPixel(512000, 4861250), {0, 200}, "west edge");
    expectNear(t.toPixel(513000, 4861250), {400, 200}, "east edge");
    expectNear(t.toPixel(512500, 4861500), {200, 100}, "north is up");
    expectNear(t.toPixel(512500, 4861000), {200, 300}, "south is down");
    expectNear(t.toWorld({123, 321}), t.toWorld(t.toPixel(t.toWorld({123, 321}))), "round trip");
}

TEST(MapTransform, APointOrALineStillGetsAView)
{
    const MapTransform point =
        MapTransform::fit(QRectF(QPointF(50, 60), QSizeF(0, 0)), QRectF(0, 0, 200, 100));
    EXPECT_DOUBLE_EQ(point.scale(), 1.0) << "a 100 m square in 100 pixels";
    expectNear(point.toPixel(50, 60), {100, 50}, "the point in the middle");

    const MapTransform line =
        MapTransform::fit(QRectF(QPointF(0, 10), QPointF(0, 210)), QRectF(0, 0, 300, 100));
    EXPECT_DOUBLE_EQ(line.scale(), 0.5) << "200 m of north-south line in 100 pixels";
}

TEST(MapTransform, ZoomKeepsThePointUnderTheMouseAndPanMovesByPixels)
{
    MapTransform t = MapTransform::fit(QRectF(0, 0, 100, 100), QRectF(0, 0, 100, 100));
    const QPointF mouse(20, 70);
    const QPointF under = t.toWorld(mouse);
    t.zoomAt(mouse, 2.5);
    EXPECT_DOUBLE_EQ(t.scale(), 2.5);
    expectNear(t.toPixel(under), mouse, "zoom");
    const QPointF before = t.toPixel(40, 40);
    t.panBy({15, -5});
    expectNear(t.toPixel(40, 40), before + QPointF(15, -5), "pan");
}

} // namespace
} // namespace kilnova
