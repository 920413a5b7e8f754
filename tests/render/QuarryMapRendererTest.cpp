#include "render/QuarryMapRenderer.h"

#include "Pixels.h"
#include "optimise/QuarryMapData.h"
#include "render/MapSymbols.h"

#include <QBuffer>
#include <QSvgGenerator>

#include <gtest/gtest.h>

#include <random>

namespace kilnova {
namespace {

using test::pixelAt;
using test::sameColour;

constexpr int kCaO = elementIndex(Element::CaO);
const QRectF kArea(0, 0, 900, 640);

QuarryBlast blast(const char* name, double east, double north, double tonnes, float CaO)
{
    QuarryBlast b;
    b.name = QString::fromLatin1(name);
    b.east = east;
    b.north = north;
    b.tonnage = tonnes;
    b.values[static_cast<std::size_t>(kCaO)] = CaO;
    return b;
}

/// Whether a pixel on the horizontal line between two points has the colour.
bool anyAlong(const QImage& image, const QPointF& from, const QPointF& to, const QColor& colour)
{
    for (double x = std::floor(from.x()); x <= to.x(); x += 1.0) {
        if (sameColour(pixelAt(image, QPointF(x, from.y())), colour, 30))
            return true;
    }
    return false;
}

/// Draws the map on a raster picture (the copied symbols) or, with `vector`, through a painter
/// that is scaled 1:1 so that the symbols are drawn as circles.
QImage draw(const QuarryMapData& data, const QuarryMapOptions& options = {}, bool vector = false)
{
    return test::picture(static_cast<int>(kArea.width()), static_cast<int>(kArea.height()), [&](QPainter& p) {
        if (vector)
            p.setWorldTransform(QTransform(1, 0, 0, 1, 0, 0).rotate(0.0001));
        QuarryMapRenderer(data, options, kArea).paint(p);
    });
}

TEST(QuarryMapRenderer, EachBlastIsAtItsPlaceInTheColourOfItsValue)
{
    // Lime 40, 45 and 50: the two ends and the middle of the scale.
    const QuarryMapData data({blast("low", 1000, 2000, 5000, 40), blast("mid", 1300, 2100, 5000, 45),
                              blast("high", 1150, 1850, 5000, 50)});
    const QuarryMapRenderer r(data, {}, kArea);
    ASSERT_TRUE(r.scale());
    const std::pair<std::size_t, QColor> expected[] = {
        {0, QColor(0xff, 0xff, 0xcc)}, {1, QColor(0xfd, 0x8d, 0x3c)}, {2, QColor(0x80, 0x00, 0x26)}};
    for (bool vector : {false, true}) {
        const QImage image = draw(data, {}, vector);
        for (const auto& [i, colour] : expected) {
            const QPointF at = r.transform().toPixel(data[i].east, data[i].north);
            EXPECT_TRUE(r.plotRect().contains(at));
            EXPECT_TRUE(sameColour(pixelAt(image, at), colour))
                << data[i].name.toStdString() << (vector ? " as circles: " : ": ")
                << pixelAt(image, at).name().toStdString() << " instead of " << colour.name().toStdString();
        }
    }
    // West is left, north is up.
    const QPointF low = r.transform().toPixel(1000, 2000), mid = r.transform().toPixel(1300, 2100);
    const QPointF high = r.transform().toPixel(1150, 1850);
    EXPECT_LT(low.x(), high.x());
    EXPECT_LT(high.x(), mid.x());
    EXPECT_LT(mid.y(), low.y());
    EXPECT_LT(low.y(), high.y());
}

TEST(QuarryMapRenderer, MissingValuesAreHollowAndTheSelectionIsRingedInBlue)
{
    QuarryMapData data(
        {blast("a", 0, 100, 4000, 40), blast("b", 400, 100, 4000, 50), blast("nothing", 200, 300, 4000, -1)});
    data.setSelection({"b"});
    const QuarryMapRenderer r(data, {}, kArea);
    const QImage image = draw(data);

    const QPointF hollow = r.transform().toPixel(200, 300);
    const QColor inside = pixelAt(image, hollow);
    EXPECT_GT(inside.lightness(), 225) << "a hollow blast is light inside: " << inside.name().toStdString();
    for (int s = 0; s < ColourScale::kShades; ++s)
        EXPECT_FALSE(sameColour(inside, ColourScale::shadeColour(s), 1)) << "shade " << s;
    const double radius = r.radius(2);
    EXPECT_TRUE(anyAlong(image, hollow, hollow + QPointF(radius + 1, 0), MapSymbols::hollowColour()))
        << "its ring is grey";

    const QPointF selected = r.transform().toPixel(400, 100);
    const double reach = r.radius(1) + MapSymbols::kSelectionReach;
    EXPECT_TRUE(anyAlong(image, selected + QPointF(r.radius(1), 0), selected + QPointF(reach + 1, 0),
                         MapSymbols::selectionColour()));
    const QPointF unselected = r.transform().toPixel(0, 100);
    EXPECT_FALSE(anyAlong(image, unselected + QPointF(r.radius(0), 0), unselected + QPointF(reach + 1, 0),
                          MapSymbols::selectionColour()));
}

TEST(QuarryMapRenderer, BlastsTheListDoesNotOfferAreFaded)
{
    QuarryMapData data(
        {blast("in", 0, 100, 1000, 50), blast("out", 400, 100, 1000, 50), blast("low", 200, 300, 1000, 40)});
    data.setListed({"in", "low"});
    const QuarryMapRenderer r(data, {}, kArea);
    const QImage image = draw(data);
    const QColor listed = pixelAt(image, r.transform().toPixel(0, 100));
    const QColor faded = pixelAt(image, r.transform().toPixel(400, 100));
    EXPECT_TRUE(sameColour(listed, QColor(0x80, 0x00, 0x26)));
    EXPECT_GT(faded.lightness(), listed.lightness() + 80) << faded.name().toStdString();
    EXPECT_GT(faded.red(), faded.green()) << "still red, only paler";
}

TEST(QuarryMapRenderer, AreaFollowsTonnageAndHitsFindTheTopmostBlast)
{
    QuarryMapData data({blast("big", 100, 100, 4000, 45), blast("small", 300, 300, 1000, 45),
                        blast("under", 300, 300, 4000, 45), blast("zero", 500, 500, 0, 45)});
    const QuarryMapRenderer r(data, {}, kArea);
    EXPECT_NEAR(r.radius(0) / r.radius(1), 2.0, 1e-9) << "four times the tonnes, four times the area";
    EXPECT_GT(r.radius(3), 0.0) << "a blast with no tonnes still shows";

    EXPECT_EQ(r.blastAt(r.transform().toPixel(100, 100)), 0u);
    EXPECT_EQ(r.blastAt(r.transform().toPixel(300, 300)), 1u) << "the small one is drawn over the big one";
    EXPECT_EQ(r.blastAt(r.transform().toPixel(100, 100) + QPointF(r.radius(0) + 5, 0)), std::nullopt);

    data.setSelection({"under"});
    const QuarryMapRenderer selected(data, {}, kArea);
    EXPECT_EQ(selected.blastAt(selected.transform().toPixel(300, 300)), 2u) << "selected blasts are on top";

    const QRectF around(selected.transform().toPixel(250, 350), selected.transform().toPixel(350, 250));
    EXPECT_EQ(selected.blastsIn(around), (std::vector<std::size_t>{1, 2}));
}

TEST(QuarryMapRenderer, TheFilterIsWhereItsBoundsAre)
{
    const QuarryMapData data({blast("a", 0, 100, 1000, 40), blast("b", 1000, 900, 1000, 50)});
    QuarryMapOptions options;
    options.filter = std::array<double, 4>{200, 600, 300, 700};
    options.filterOn = true;
    const QuarryMapRenderer r(data, options, kArea);
    const QRectF f = *r.filterRect();
    EXPECT_NEAR(f.left(), r.transform().toPixel(200, 0).x(), 1e-9);
    EXPECT_NEAR(f.right(), r.transform().toPixel(600, 0).x(), 1e-9);
    EXPECT_NEAR(f.top(), r.transform().toPixel(0, 700).y(), 1e-9);
    EXPECT_NEAR(f.bottom(), r.transform().toPixel(0, 300).y(), 1e-9);
    const QImage image = draw(data, options);
    // The dashed edge: some pixels along the left side carry the filter's colour.
    int dashes = 0;
    for (int y = static_cast<int>(f.top()) + 2; y < static_cast<int>(f.bottom()) - 2; ++y)
        dashes += sameColour(image.pixelColor(static_cast<int>(std::round(f.left())), y),
                             QColor(0x0b, 0x72, 0x85), 12);
    EXPECT_GT(dashes, (f.height() - 4) / 4);
}

TEST(QuarryMapRenderer, TakenTonnesAreWrittenBesideTheirBlasts)
{
    QuarryMapData data({blast("taken", 0, 100, 1000, 40), blast("left", 0, 500, 1000, 50)});
    data.setTaken({"taken"}, {18250});
    const QuarryMapRenderer r(data, {}, kArea);
    const QImage image = draw(data);
    auto labelPixels = [&](std::size_t i) {
        const QPointF c = r.transform().toPixel(data[i].east, data[i].north);
        int dark = 0;
        for (int x = static_cast<int>(c.x() + r.radius(i) + 6); x < c.x() + r.radius(i) + 60; ++x)
            dark += image.pixelColor(x, static_cast<int>(c.y())).lightness() < 100 ? 1 : 0;
        return dark;
    };
    EXPECT_GT(labelPixels(0), 2) << "\"18250 t\" crosses its middle line";
    EXPECT_EQ(labelPixels(1), 0);
}

TEST(QuarryMapRenderer, AwkwardQuarriesStillGiveAPicture)
{
    std::vector<QuarryBlast> samePlace{blast("a", 50, 60, 1000, 40), blast("b", 50, 60, 3000, 42)};
    std::vector<QuarryBlast> unsurveyed{blast("a", 0, 0, 1000, 40), blast("b", -1, 500, 1000, 41)};
    std::vector<QuarryBlast> noLime{blast("a", 10, 10, 1000, -1), blast("b", 90, 20, 1000, -1)};
    std::vector<QuarryBlast> oneUnsurveyed{blast("a", 10, 10, 1000, 40), blast("b", 0, 0, 1000, 41)};
    const struct {
        const char* what;
        std::vector<QuarryBlast> blasts;
        bool placed;
        const char* notice;
    } cases[] = {
        {"no blasts", {}, false, "No blasts to show"},
        {"one blast", {blast("only", 512400, 4861600, 1000, 44)}, true, ""},
        {"all at one point", samePlace, true, ""},
        {"none surveyed", unsurveyed, false, "No blast has coordinates to place it on the map"},
        {"one not surveyed", oneUnsurveyed, true, "1 blast without coordinates is not shown"},
        {"lime missing everywhere", noLime, true, ""},
    };
    for (const auto& c : cases) {
        const QuarryMapData data(c.blasts);
        const QuarryMapRenderer r(data, {}, kArea);
        EXPECT_EQ(r.notice(), QString::fromLatin1(c.notice)) << c.what;
        const QImage image = draw(data);
        EXPECT_FALSE(image.isNull()) << c.what;
        if (!c.placed)
            continue;
        const QPointF first = r.transform().toPixel(data[0].east, data[0].north);
        EXPECT_TRUE(r.plotRect().adjusted(10, 10, -10, -10).contains(first)) << c.what;
        if (c.blasts.size() == 1 || c.blasts[0].east == c.blasts[1].east) {
            EXPECT_NEAR(QLineF(first, r.plotRect().center()).length(), 0, 20)
                << c.what << " is in the middle";
        }
    }
    const QuarryMapData noValues(noLime);
    EXPECT_FALSE(QuarryMapRenderer(noValues, {}, kArea).scale()) << "no scale when no blast has a value";
}

TEST(QuarryMapRenderer, TwentyThousandBlastsAllLandInThePlot)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> east(511000, 514000), north(4860000, 4862500), tonnes(500, 60000);
    std::uniform_real_distribution<float> lime(30, 54);
    std::vector<QuarryBlast> blasts;
    for (int i = 0; i < 20000; ++i)
        blasts.push_back(blast(qPrintable(QStringLiteral("B%1").arg(i)), east(random), north(random),
                               tonnes(random), lime(random)));
    const QuarryMapData data(std::move(blasts));
    const QuarryMapRenderer r(data, {}, kArea);
    EXPECT_EQ(r.blastsIn(r.plotRect()).size(), 20000u);
    EXPECT_LT(r.radius(0), 6.0) << "a crowded quarry gets small symbols";
    MapSymbols symbols;
    const QImage image = test::picture(900, 640, [&](QPainter& p) { r.paint(p, &symbols); });
    EXPECT_LE(symbols.copies(), MapSymbols::kMaxCopies);
    EXPECT_GT(symbols.copies(), 50);
}

TEST(QuarryMapRenderer, VectorPicturesGetTrueCircles)
{
    const QuarryMapData data({blast("a", 0, 100, 1000, 40), blast("b", 300, 100, 1000, 50)});
    QBuffer svg;
    svg.open(QIODevice::WriteOnly);
    QSvgGenerator generator;
    generator.setOutputDevice(&svg);
    generator.setSize(kArea.size().toSize());
    QPainter painter(&generator);
    QuarryMapRenderer(data, {}, kArea).paint(painter);
    painter.end();
    const QByteArray text = svg.data();
    EXPECT_GE(text.count("<ellipse") + text.count("<circle"), 2) << "the symbols are not copied images";
    EXPECT_EQ(text.count("<image"), 0);
}

} // namespace
} // namespace kilnova
