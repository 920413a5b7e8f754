#include "render/QuarryMapRenderer.h"

#include "optimise/QuarryMapData.h"
#include "render/RenderStyle.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kilnova {

namespace {

constexpr double kTitleHeight = 28.0;
constexpr double kNorthAxisWidth = 66.0;
constexpr double kEastAxisHeight = 24.0;
constexpr double kGap = 8.0;

const QColor kPlotBackground(0xf4, 0xf4, 0xf0);
const QColor kPlotBorder(0xb8, 0xb8, 0xb0);
const QColor kGridColour(0xdd, 0xdd, 0xd6);
const QColor kFilterOn(0x0b, 0x72, 0x85);
const QColor kFilterOff(0x99, 0x99, 0x99);

/// A grid step of 1, 2 or 5 times a power of ten, near `rough`.
double niceStep(double rough)
{
    if (!(rough > 0.0) || !std::isfinite(rough))
        return 1.0;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (double m : {1.0, 2.0, 5.0}) {
        if (m * power >= rough)
            return m * power;
    }
    return 10.0 * power;
}

} // namespace

QuarryMapRenderer::QuarryMapRenderer(const QuarryMapData& data, const QuarryMapOptions& options,
                                     const QRectF& area)
    : mData(data)
    , mOptions(options)
    , mArea(area)
{
    mPlot = QRectF(area.left() + kNorthAxisWidth, area.top() + kTitleHeight,
                   std::max(40.0, area.width() - kNorthAxisWidth - kLegendWidth - kGap),
                   std::max(40.0, area.height() - kTitleHeight - kEastAxisHeight));
    const std::size_t placed = data.drawOrder().size();
    // Blasts share the plot: the more there are, the smaller the largest one.
    mBaseRadius =
        std::clamp(0.3 * std::sqrt(mPlot.width() * mPlot.height() / std::max<double>(1, placed)), 2.5, 14.0);
    const double margin = mBaseRadius + MapSymbols::kSelectionReach + 4.0;
    QRectF world(QPointF(0, 0), QSizeF(0, 0));
    if (const auto e = data.extent())
        world = QRectF(QPointF(e->eastMinimum, e->northMinimum), QPointF(e->eastMaximum, e->northMaximum));
    mTransform = MapTransform::fit(world, mPlot.adjusted(margin, margin, -margin, -margin));
    if (options.centre)
        mTransform.setCentre(*options.centre);
    if (options.zoom > 0.0 && options.zoom != 1.0)
        mTransform.zoomAt(mPlot.center(), options.zoom);
    mBaseRadius *= std::sqrt(std::clamp(options.zoom, 0.25, 16.0));
    if (const auto range = data.valueRange(options.element))
        mScale = ColourScale(range->first, range->second);
}

double QuarryMapRenderer::radius(std::size_t blast) const
{
    const double largest = mData.largestTonnage();
    if (!(largest > 0.0))
        return mBaseRadius * 0.5;
    const double share = std::max(0.0, mData[blast].tonnage) / largest;
    return std::max(1.5, mBaseRadius * std::sqrt(share));
}

MapSymbol QuarryMapRenderer::symbolOf(std::size_t blast) const
{
    const QuarryBlast& b = mData[blast];
    const double v = static_cast<double>(b.values[static_cast<std::size_t>(mOptions.element)]);
    MapSymbol s;
    s.hollow = v == kMissing || !mScale;
    s.shade = s.hollow ? 0 : mScale->shade(v);
    s.selected = b.selected;
    s.faded = !b.listed;
    return s;
}

std::optional<std::size_t> QuarryMapRenderer::blastAt(const QPointF& pixel) const
{
    // The topmost first: selected blasts are drawn last, then by draw order.
    const std::vector<std::size_t>& order = mData.drawOrder();
    std::optional<std::size_t> hit;
    for (int pass = 1; pass >= 0 && !hit; --pass) {
        for (auto it = order.rbegin(); it != order.rend(); ++it) {
            if (mData[*it].selected != (pass == 1))
                continue;
            const QPointF c = mTransform.toPixel(mData[*it].east, mData[*it].north);
            const double reach = radius(*it) + 1.0;
            const QPointF d = pixel - c;
            if (d.x() * d.x() + d.y() * d.y() <= reach * reach && mPlot.contains(c)) {
                hit = *it;
                break;
            }
        }
    }
    return hit;
}

std::vector<std::size_t> QuarryMapRenderer::blastsIn(const QRectF& pixels) const
{
    const QRectF r = pixels.normalized();
    std::vector<std::size_t> inside;
    for (std::size_t i : mData.drawOrder()) {
        if (r.contains(mTransform.toPixel(mData[i].east, mData[i].north)))
            inside.push_back(i);
    }
    std::sort(inside.begin(), inside.end());
    return inside;
}

std::optional<QRectF> QuarryMapRenderer::filterRect() const
{
    if (!mOptions.filter)
        return std::nullopt;
    const auto& f = *mOptions.filter;
    return QRectF(mTransform.toPixel(f[0], f[3]), mTransform.toPixel(f[1], f[2])).normalized();
}

std::optional<QRectF> QuarryMapRenderer::filterTab() const
{
    const std::optional<QRectF> r = filterRect();
    if (!r)
        return std::nullopt;
    return QRectF(r->left(), r->top() - 16.0, 46.0, 16.0);
}

QString QuarryMapRenderer::notice() const
{
    if (mData.size() == 0)
        return QStringLiteral("No blasts to show");
    if (mData.drawOrder().empty())
        return QStringLiteral("No blast has coordinates to place it on the map");
    const std::size_t unplaced = mData.unplacedCount();
    if (unplaced == 0)
        return {};
    return unplaced == 1 ? QStringLiteral("1 blast without coordinates is not shown")
                         : QStringLiteral("%1 blasts without coordinates are not shown").arg(unplaced);
}

void QuarryMapRenderer::paint(QPainter& painter, MapSymbols* symbols) const
{
    painter.save();
    painter.fillRect(mArea, Qt::white);
    painter.fillRect(mPlot, kPlotBackground);
    paintGrid(painter);
    painter.save();
    painter.setClipRect(mPlot);
    MapSymbols local;
    paintBlasts(painter, symbols ? *symbols : local);
    paintFilter(painter);
    paintTaken(painter);
    painter.restore();

    painter.setPen(QPen(kPlotBorder, 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(mPlot);
    painter.setFont(RenderStyle::font(11));
    painter.setPen(RenderStyle::quietText());
    if (mData.drawOrder().empty())
        painter.drawText(mPlot, Qt::AlignCenter, notice());
    else
        painter.drawText(mPlot.adjusted(8, 6, -8, -6), Qt::AlignLeft | Qt::AlignBottom, notice());
    paintTitle(painter);
    paintLegend(painter);
    painter.restore();
}

void QuarryMapRenderer::paintGrid(QPainter& painter) const
{
    const QPointF topLeft = mTransform.toWorld(mPlot.topLeft());
    const QPointF bottomRight = mTransform.toWorld(mPlot.bottomRight());
    const double step = niceStep(110.0 / mTransform.scale());
    painter.setFont(RenderStyle::font(10));
    const QFontMetricsF metrics(painter.font());
    QPen grid(kGridColour, 1.0);
    for (double e = std::ceil(topLeft.x() / step) * step; e <= bottomRight.x(); e += step) {
        const double x = mTransform.toPixel(e, 0).x();
        painter.setPen(grid);
        painter.drawLine(QPointF(x, mPlot.top()), QPointF(x, mPlot.bottom()));
        painter.setPen(RenderStyle::quietText());
        const QString text = QString::number(e, 'f', 0);
        const double w = metrics.horizontalAdvance(text);
        if (x - w / 2 >= mArea.left() && x + w / 2 <= mPlot.right() + 20)
            painter.drawText(QRectF(x - w / 2 - 2, mPlot.bottom() + 3, w + 4, kEastAxisHeight - 4),
                             Qt::AlignHCenter | Qt::AlignTop, text);
    }
    for (double n = std::ceil(bottomRight.y() / step) * step; n <= topLeft.y(); n += step) {
        const double y = mTransform.toPixel(0, n).y();
        painter.setPen(grid);
        painter.drawLine(QPointF(mPlot.left(), y), QPointF(mPlot.right(), y));
        painter.setPen(RenderStyle::quietText());
        painter.drawText(QRectF(mArea.left(), y - 8, kNorthAxisWidth - 6, 16),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(n, 'f', 0));
    }
    painter.setPen(RenderStyle::quietText());
    painter.drawText(QRectF(mPlot.right() + 30, mPlot.bottom() + 3, 60, kEastAxisHeight - 4),
                     Qt::AlignLeft | Qt::AlignTop, QStringLiteral("East →"));
    painter.drawText(QRectF(mArea.left(), mPlot.top() - 18, kNorthAxisWidth - 6, 16),
                     Qt::AlignRight | Qt::AlignBottom, QStringLiteral("North ↑"));
}

void QuarryMapRenderer::paintBlasts(QPainter& painter, MapSymbols& symbols) const
{
    const QRectF visible = mPlot.adjusted(-30, -30, 30, 30);
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i : mData.drawOrder()) {
            if (mData[i].selected != (pass == 1))
                continue;
            const QPointF c = mTransform.toPixel(mData[i].east, mData[i].north);
            if (!visible.contains(c))
                continue;
            symbols.draw(painter, c, radius(i), symbolOf(i));
        }
    }
}

void QuarryMapRenderer::paintFilter(QPainter& painter) const
{
    const std::optional<QRectF> r = filterRect();
    if (!r || (r->width() < 1.0 && r->height() < 1.0 && !mOptions.filterGrips))
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    QPen pen(mOptions.filterOn ? kFilterOn : kFilterOff, mOptions.filterOn ? 2.0 : 1.2, Qt::DashLine);
    painter.setPen(pen);
    painter.setBrush(mOptions.filterOn ? QColor(0x0b, 0x72, 0x85, 18) : QColor(Qt::transparent));
    painter.drawRect(*r);
    if (mOptions.filterGrips) {
        painter.setPen(QPen(mOptions.filterOn ? kFilterOn : kFilterOff, 1.0));
        painter.setBrush(Qt::white);
        for (const QPointF& p : {r->topLeft(), r->topRight(), r->bottomLeft(), r->bottomRight()})
            painter.drawRect(QRectF(p - QPointF(3.5, 3.5), QSizeF(7, 7)));
        const QRectF tab = *filterTab();
        painter.setBrush(mOptions.filterOn ? kFilterOn : kFilterOff);
        painter.drawRect(tab);
        painter.setPen(Qt::white);
        painter.setFont(RenderStyle::font(10, true));
        painter.drawText(tab, Qt::AlignCenter, QStringLiteral("filter"));
    }
    painter.restore();
}

void QuarryMapRenderer::paintTaken(QPainter& painter) const
{
    painter.setFont(RenderStyle::font(11, true));
    const QFontMetricsF metrics(painter.font());
    painter.setRenderHint(QPainter::Antialiasing);
    for (std::size_t i : mData.drawOrder()) {
        const QuarryBlast& b = mData[i];
        if (!(b.taken > 0.0))
            continue;
        const QPointF c = mTransform.toPixel(b.east, b.north);
        const QString text = QString::number(b.taken, 'f', 0) + QStringLiteral(" t");
        const QSizeF size(metrics.horizontalAdvance(text) + 8, metrics.height() + 2);
        const QRectF box(QPointF(c.x() + radius(i) + 4, c.y() - size.height() / 2), size);
        painter.setPen(QPen(MapSymbols::selectionColour(), 1.0));
        painter.setBrush(QColor(255, 255, 255, 225));
        painter.drawRoundedRect(box, 3, 3);
        painter.setPen(RenderStyle::text());
        painter.drawText(box, Qt::AlignCenter, text);
    }
}

void QuarryMapRenderer::paintTitle(QPainter& painter) const
{
    const QRectF line(mPlot.left(), mArea.top() + 4, mArea.right() - mPlot.left() - 4, kTitleHeight - 8);
    painter.setPen(RenderStyle::text());
    painter.setFont(RenderStyle::font(13, true));
    const QString heading = QStringLiteral("Quarry map: ") + RenderStyle::elementHeading(mOptions.element);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, heading);
    const double used = QFontMetricsF(painter.font()).horizontalAdvance(heading);
    qsizetype selected = 0;
    for (const QuarryBlast& b : mData.blasts())
        selected += b.selected ? 1 : 0;
    painter.setFont(RenderStyle::font(11));
    painter.setPen(RenderStyle::quietText());
    QString counts = QStringLiteral("%1 blasts").arg(mData.size());
    if (selected > 0)
        counts += QStringLiteral(", %1 selected").arg(selected);
    painter.drawText(line.adjusted(used + 14, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, counts);
}

void QuarryMapRenderer::paintLegend(QPainter& painter) const
{
    const double left = mPlot.right() + kGap + 10;
    double y = mPlot.top();
    painter.setPen(RenderStyle::text());
    painter.setFont(RenderStyle::font(12, true));
    painter.drawText(QRectF(left, y, kLegendWidth - 14, 18), Qt::AlignLeft | Qt::AlignVCenter,
                     RenderStyle::elementHeading(mOptions.element));
    y += 24;
    painter.setFont(RenderStyle::font(10));
    if (mScale) {
        const double barHeight = std::clamp(mPlot.height() * 0.42, 60.0, 220.0);
        const QRectF bar(left, y, 16, barHeight);
        QLinearGradient gradient(bar.bottomLeft(), bar.topLeft());
        for (int s = 0; s <= 8; ++s)
            gradient.setColorAt(s / 8.0, ColourScale::colourAt(s / 8.0));
        painter.fillRect(bar, gradient);
        painter.setPen(QPen(kPlotBorder, 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(bar);
        painter.setPen(RenderStyle::text());
        const double lo = mScale->lowest(), hi = mScale->highest();
        const std::pair<double, double> ticks[] = {{1.0, hi}, {0.5, (lo + hi) / 2}, {0.0, lo}};
        for (const auto& [at, value] : ticks) {
            if (at == 0.5 && !(hi > lo))
                continue;
            const double ty = bar.bottom() - at * bar.height();
            painter.drawLine(QPointF(bar.right(), ty), QPointF(bar.right() + 4, ty));
            painter.drawText(QRectF(bar.right() + 7, ty - 8, kLegendWidth - 40, 16),
                             Qt::AlignLeft | Qt::AlignVCenter, QString::number(value, 'f', 2));
        }
        y = bar.bottom() + 16;
    } else {
        painter.setPen(RenderStyle::quietText());
        painter.drawText(QRectF(left, y, kLegendWidth - 14, 32), Qt::AlignLeft | Qt::TextWordWrap,
                         QStringLiteral("no blast has a value"));
        y += 38;
    }

    // What the symbols mean.
    painter.setPen(RenderStyle::text());
    auto entry = [&](const MapSymbol& symbol, double r, const QString& text) {
        MapSymbols::paint(painter, QPointF(left + 8, y + 8), r, symbol);
        painter.setPen(RenderStyle::text());
        painter.drawText(QRectF(left + 22, y, kLegendWidth - 36, 16), Qt::AlignLeft | Qt::AlignVCenter, text);
        y += 22;
    };
    const int middle = ColourScale::kShades / 2;
    entry({middle, true, false, false}, 6, QStringLiteral("no value"));
    entry({middle, false, true, false}, 6, QStringLiteral("selected"));
    bool anyUnlisted = false;
    for (const QuarryBlast& b : mData.blasts())
        anyUnlisted = anyUnlisted || !b.listed;
    if (anyUnlisted)
        entry({middle, false, false, true}, 6, QStringLiteral("not listed"));
    if (mOptions.filter) {
        painter.save();
        painter.setPen(QPen(mOptions.filterOn ? kFilterOn : kFilterOff, 1.5, Qt::DashLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(left + 1, y + 2, 14, 12));
        painter.restore();
        painter.drawText(QRectF(left + 22, y, kLegendWidth - 36, 16), Qt::AlignLeft | Qt::AlignVCenter,
                         mOptions.filterOn ? QStringLiteral("filter") : QStringLiteral("filter (off)"));
        y += 22;
    }
    if (mData.largestTonnage() > 0.0 && !mData.drawOrder().empty()) {
        // A round tonnage, drawn at the size a blast of that tonnage has.
        const double largest = mData.largestTonnage();
        const double step = std::pow(10.0, std::floor(std::log10(largest)));
        const double sample = std::floor(largest / step) * step;
        const double r = std::max(1.5, mBaseRadius * std::sqrt(sample / largest));
        y += 4;
        MapSymbols::paint(painter, QPointF(left + r, y + r), r, {middle, false, false, false});
        painter.setPen(RenderStyle::text());
        painter.drawText(QRectF(left + 2 * r + 8, y + r - 8, kLegendWidth, 16),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         QString::number(sample, 'f', 0) + QStringLiteral(" t"));
        y += 2 * r + 6;
        painter.setPen(RenderStyle::quietText());
        painter.drawText(QRectF(left, y, kLegendWidth - 10, 16), Qt::AlignLeft | Qt::AlignVCenter,
                         QStringLiteral("area in proportion to tonnes"));
    }
}

} // namespace kilnova
