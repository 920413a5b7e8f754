#include "render/BlendChartRenderer.h"

#include "Pixels.h"
#include "optimise/CoalOptimization.h"
#include "render/RenderStyle.h"

#include <QFontMetricsF>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::pixelAt;
using test::sameColour;
using B = BlendChartData::Binding;

BlendChartData::Row row(Element e, std::optional<std::array<double, 2>> band, double value,
                        B binding = B::None)
{
    BlendChartData::Row r;
    r.element = elementIndex(e);
    r.band = band;
    r.value = value;
    r.binding = binding;
    return r;
}

/// A blend whose silica and silica modulus sit in the middle of their very different bands, whose
/// LSF is held at its maximum, and whose lime hit its target.
BlendChartData chart()
{
    BlendChartData c;
    c.mode = 0;
    c.tonnage = 60000;
    c.rows.push_back(row(Element::SiO2, std::array<double, 2>{12.5, 14.5}, 13.5));
    BlendChartData::Row lime = row(Element::CaO, std::nullopt, 43.0);
    lime.optimised = true;
    lime.target = 43.0;
    c.rows.push_back(lime);
    c.rows.push_back(row(Element::MS, std::array<double, 2>{2.2, 2.8}, 2.5));
    c.rows.push_back(row(Element::LSF, std::array<double, 2>{0.94, 1.0}, 1.0, B::Maximum));
    return c;
}

struct Span {
    int first = -1;
    int last = -1;
};

/// The first and last pixel of a row's middle line in any of the colours.
Span spanOf(const QImage& image, int y, std::initializer_list<QColor> colours)
{
    Span s;
    for (int x = 0; x < image.width(); ++x) {
        for (const QColor& c : colours) {
            if (sameColour(image.pixelColor(x, y), c, 3)) {
                if (s.first < 0)
                    s.first = x;
                s.last = x;
                break;
            }
        }
    }
    return s;
}

/// The longest stretch of a row's middle line in the colours, allowing gaps of a few pixels (the
/// marker's soft edges); stray pixels of lettering in a matching grey do not make a stretch.
Span longestRun(const QImage& image, int y, std::initializer_list<QColor> colours)
{
    Span best, current;
    int gap = 0;
    for (int x = 0; x < image.width(); ++x) {
        bool match = false;
        for (const QColor& c : colours)
            match = match || sameColour(image.pixelColor(x, y), c, 3);
        if (match) {
            if (current.first < 0)
                current.first = x;
            current.last = x;
            gap = 0;
        } else if (current.first >= 0 && ++gap > 3) {
            if (current.last - current.first > best.last - best.first)
                best = current;
            current = Span();
            gap = 0;
        }
    }
    if (current.last - current.first > best.last - best.first)
        best = current;
    return best;
}

class BlendChartRendererTest : public testing::Test {
protected:
    void SetUp() override
    {
        const QSizeF size = BlendChartRenderer::preferredSize(mChart.rows.size());
        mImage =
            test::picture(static_cast<int>(size.width()), static_cast<int>(size.height()), [&](QPainter& p) {
                BlendChartRenderer(mChart, QRectF(QPointF(0, 0), size)).paint(p);
            });
        mRenderer.emplace(mChart, QRectF(QPointF(0, 0), size));
    }

    int middle(std::size_t row) const { return static_cast<int>(mRenderer->rowRect(row).center().y()); }
    /// The track as drawn: its grey line with the band and the marker on it.
    Span track(std::size_t row) const
    {
        return longestRun(mImage, middle(row),
                          {QColor(0xc8, 0xc8, 0xc4), BlendChartRenderer::bandColour(),
                           BlendChartRenderer::limitColour(), BlendChartRenderer::bindingColour(),
                           BlendChartRenderer::valueColour()});
    }
    Span band(std::size_t row) const
    {
        return spanOf(mImage, middle(row),
                      {BlendChartRenderer::bandColour(), BlendChartRenderer::limitColour(),
                       BlendChartRenderer::bindingColour()});
    }

    BlendChartData mChart = chart();
    QImage mImage;
    std::optional<BlendChartRenderer> mRenderer;
};

TEST_F(BlendChartRendererTest, BandEndsSitAtTheLimitsOnEachRowsOwnScale)
{
    // A band with the value inside fills the middle two thirds of its track: the scale adds a
    // quarter of the band's width on either side.
    for (std::size_t i : {std::size_t{0}, std::size_t{2}}) {
        const Span t = track(i), b = band(i);
        ASSERT_GE(t.first, 0) << "row " << i;
        const double width = t.last - t.first;
        EXPECT_NEAR(b.first, t.first + width / 6, 2.5) << "minimum of row " << i;
        EXPECT_NEAR(b.last, t.first + 5 * width / 6, 2.5) << "maximum of row " << i;
    }
    // So 12.5..14.5 % and 2.2..2.8 read alike.
    EXPECT_NEAR(band(0).first, band(2).first, 1);
    EXPECT_NEAR(band(0).last, band(2).last, 1);
}

TEST_F(BlendChartRendererTest, TheBlendIsAMarkerAndALimitItReachesHasItsOwnColour)
{
    // SiO2 13.5 is the middle of 12.5..14.5.
    const Span silica = track(0);
    const QPointF marker((silica.first + silica.last) / 2.0, middle(0));
    EXPECT_TRUE(sameColour(pixelAt(mImage, marker), BlendChartRenderer::valueColour(), 3))
        << pixelAt(mImage, marker).name().toStdString();

    // LSF is held at its maximum: that end is drawn in the binding colour (above the marker, which
    // covers the middle line there), the other in the limits' colour.
    const Span lsf = track(3);
    const double width = lsf.last - lsf.first;
    const int above = middle(3) - 10;
    const Span bound = spanOf(mImage, above, {BlendChartRenderer::bindingColour()});
    ASSERT_GE(bound.first, 0);
    EXPECT_NEAR((bound.first + bound.last) / 2.0, lsf.first + 5 * width / 6, 2.5);
    const Span limits = spanOf(mImage, above, {BlendChartRenderer::limitColour()});
    EXPECT_NEAR((limits.first + limits.last) / 2.0, lsf.first + width / 6, 2.5);
    EXPECT_EQ(spanOf(mImage, middle(0) - 10, {BlendChartRenderer::bindingColour()}).first, -1)
        << "no limit of SiO2 is reached";
}

TEST_F(BlendChartRendererTest, TheTargetIsMarkedOnTheOptimisedRow)
{
    const QRectF t = mRenderer->trackRect(1);
    // Value and target agree: both in the middle of a row without a band.
    const int x = static_cast<int>(t.center().x());
    EXPECT_TRUE(sameColour(mImage.pixelColor(x, middle(1) - 12), BlendChartRenderer::targetColour(), 40))
        << mImage.pixelColor(x, middle(1) - 12).name().toStdString();
    EXPECT_TRUE(sameColour(mImage.pixelColor(x, middle(1)), BlendChartRenderer::valueColour(), 3));
    EXPECT_EQ(spanOf(mImage, middle(1), {BlendChartRenderer::bandColour()}).first, -1) << "no band";
}

/// A coal mix of cheapest cost: its heat inside 12000..13000 BTU/lb, its sulfur held at its maximum
/// and the silica modulus of its ash at its minimum.
BlendChartData coalChart()
{
    const auto at = [](CoalProperty p) {
        return static_cast<std::size_t>(coalPropertyIndex(p));
    };
    std::vector<ConstraintEntry> limits(kCoalPropertyCount);
    limits[at(CoalProperty::BTU)] = {12000, 13000, {}, 1};
    limits[at(CoalProperty::Sulfur)] = {0, 1.5, {}, 1};
    limits[at(CoalProperty::MS)] = {1.5, 2.5, {}, 1};
    std::vector<double> mix(kCoalPropertyCount, 1.0);
    mix[at(CoalProperty::BTU)] = 12370.99;
    mix[at(CoalProperty::Sulfur)] = 1.5;
    mix[at(CoalProperty::MS)] = 1.5;
    mix[at(CoalProperty::CostFactor)] = 86.04;
    return BlendChartData::of(-1, coalPropertyIndex(CoalProperty::CostFactor), 0, limits, mix, 10000,
                              CoalOptimization::quantityOf);
}

class CoalChartRendererTest : public BlendChartRendererTest {
protected:
    CoalChartRendererTest() { mChart = coalChart(); }
};

TEST_F(CoalChartRendererTest, BandsMarkersAndBindingLimitsSitWhereTheValuesAre)
{
    ASSERT_EQ(mChart.rows.size(), 4u);
    // BTU: the scale runs from 11750 to 13250, so the band fills the middle two thirds and the mix's
    // 12370.99 sits at 620.99 / 1500 of the track.
    const Span heat = track(0), heatBand = band(0);
    ASSERT_GE(heat.first, 0);
    const double width = heat.last - heat.first;
    EXPECT_NEAR(heatBand.first, heat.first + width / 6, 2.5);
    EXPECT_NEAR(heatBand.last, heat.first + 5 * width / 6, 2.5);
    const QPointF marker(heat.first + width * 620.99 / 1500, middle(0));
    EXPECT_TRUE(sameColour(pixelAt(mImage, marker), BlendChartRenderer::valueColour(), 3))
        << pixelAt(mImage, marker).name().toStdString();
    EXPECT_EQ(spanOf(mImage, middle(0) - 10, {BlendChartRenderer::bindingColour()}).first, -1)
        << "the heat reaches neither limit";

    // Sulfur is held at its maximum, the ash's MS at its minimum: those ends in the binding colour.
    struct Held {
        std::size_t row;
        double at; ///< share of the track
    };
    for (const Held& h : {Held{1, 5.0 / 6}, Held{2, 1.0 / 6}}) {
        const Span t = track(h.row);
        const Span bound = spanOf(mImage, middle(h.row) - 10, {BlendChartRenderer::bindingColour()});
        ASSERT_GE(bound.first, 0) << "row " << h.row;
        EXPECT_NEAR((bound.first + bound.last) / 2.0, t.first + h.at * (t.last - t.first), 2.5)
            << "row " << h.row;
    }
}

TEST_F(CoalChartRendererTest, ALongValueKeepsItsUnitAndTheElementChartKeepsItsTracks)
{
    const QString heat = RenderStyle::valueText(12370.99, QStringLiteral("BTU/lb"), 2);
    EXPECT_EQ(heat, QStringLiteral("12370.99 BTU/lb"));
    const double advance = QFontMetricsF(RenderStyle::font(13, true)).horizontalAdvance(heat);
    EXPECT_LE(mRenderer->trackRect(0).right() + 18 + advance, mImage.width() - 4)
        << "the value column is wide enough";
    // Values of a few characters leave the tracks where they always were.
    const BlendChartData elements = chart();
    const BlendChartRenderer plain(elements, QRectF(mImage.rect()));
    EXPECT_DOUBLE_EQ(plain.trackRect(0).right(), mImage.width() - 118.0 - 18.0);
    EXPECT_LT(mRenderer->trackRect(0).right(), plain.trackRect(0).right());
}

TEST(BlendChartRenderer, ScalesHoldEveryPointAndNeverCollapse)
{
    BlendChartData c;
    c.rows.push_back(row(Element::CaO, std::nullopt, 43.00001));
    c.rows[0].target = 43.0;
    c.rows.push_back(row(Element::MgO, std::array<double, 2>{0, 2}, 3.0)); // outside its band
    c.rows.push_back(row(Element::Cl, std::nullopt, 0.0));
    c.rows.push_back(row(Element::SO3, std::array<double, 2>{1, 1}, 1, B::Maximum));
    const BlendChartRenderer r(c, QRectF(0, 0, 820, 400));
    const auto [lo0, hi0] = r.scaleOf(0);
    EXPECT_NEAR(hi0 - lo0, 4.3 / 2, 1e-3) << "a hair between value and target is not blown up";
    const auto [lo1, hi1] = r.scaleOf(1);
    EXPECT_DOUBLE_EQ(lo1, -0.75);
    EXPECT_DOUBLE_EQ(hi1, 3.75);
    const auto [lo2, hi2] = r.scaleOf(2);
    EXPECT_GT(hi2, lo2);
    const auto [lo3, hi3] = r.scaleOf(3);
    EXPECT_LT(lo3, 1.0);
    EXPECT_GT(hi3, 1.0);
    EXPECT_NEAR(r.xOf(3, 1.0), r.trackRect(3).center().x(), 1e-9);
    const QImage image = test::picture(820, 400, [&](QPainter& p) { r.paint(p); });
    EXPECT_FALSE(image.isNull());

    const BlendChartData empty;
    const QImage none = test::picture(
        400, 200, [&](QPainter& p) { BlendChartRenderer(empty, QRectF(0, 0, 400, 200)).paint(p); });
    EXPECT_FALSE(none.isNull());
}

} // namespace
} // namespace kilnova
