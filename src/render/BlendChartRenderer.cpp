#include "render/BlendChartRenderer.h"

#include "render/RenderStyle.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kilnova {

namespace {

constexpr double kHeaderHeight = 62.0;
constexpr double kLabelWidth = 124.0;
constexpr double kMinimumValueWidth = 118.0;
constexpr double kTrackInset = 18.0;
constexpr double kMinimumRowHeight = 36.0;
constexpr double kMaximumRowHeight = 64.0;

void diamond(QPainter& painter, const QPointF& c, double half)
{
    QPainterPath path;
    path.moveTo(c.x(), c.y() - half);
    path.lineTo(c.x() + half, c.y());
    path.lineTo(c.x(), c.y() + half);
    path.lineTo(c.x() - half, c.y());
    path.closeSubpath();
    painter.setPen(QPen(Qt::white, 1.0));
    painter.setBrush(BlendChartRenderer::valueColour());
    painter.drawPath(path);
}

} // namespace

BlendChartRenderer::BlendChartRenderer(const BlendChartData& data, const QRectF& area, QString caption)
    : mData(data)
    , mArea(area)
    , mCaption(std::move(caption))
{
    if (mCaption.isEmpty())
        mCaption = data.caption;
    if (mCaption.isEmpty())
        mCaption = QStringLiteral("Blend of %1 t").arg(data.tonnage, 0, 'f', 2);
    // A long value ("12370.99 BTU/lb") takes room from the tracks rather than lose its unit.
    const QFontMetricsF metrics(RenderStyle::font(13, true));
    mValueWidth = kMinimumValueWidth;
    for (const BlendChartData::Row& row : data.rows) {
        const QString shown = RenderStyle::valueText(row.value, row.quantity.unit, row.quantity.decimals);
        mValueWidth = std::max(mValueWidth, std::ceil(metrics.horizontalAdvance(shown)) + 8.0);
    }
    if (!data.rows.empty())
        mRowHeight = std::clamp((area.height() - kHeaderHeight - 8.0) / static_cast<double>(data.rows.size()),
                                kMinimumRowHeight, kMaximumRowHeight);
}

QSizeF BlendChartRenderer::preferredSize(std::size_t rows)
{
    return {820.0, kHeaderHeight + 8.0 + 52.0 * static_cast<double>(std::max<std::size_t>(rows, 2))};
}

QString BlendChartRenderer::goalText(int mode)
{
    switch (mode) {
    case -1:
        return QStringLiteral("minimised");
    case 1:
        return QStringLiteral("maximised");
    case 0:
        return QStringLiteral("targeted");
    case 2:
        return QStringLiteral("quantity maximised");
    default:
        return QStringLiteral("optimised");
    }
}

QRectF BlendChartRenderer::rowRect(std::size_t row) const
{
    return {mArea.left(), mArea.top() + kHeaderHeight + static_cast<double>(row) * mRowHeight, mArea.width(),
            mRowHeight};
}

QRectF BlendChartRenderer::trackRect(std::size_t row) const
{
    const QRectF r = rowRect(row);
    const double left = r.left() + kLabelWidth + kTrackInset;
    const double right = std::max(left + 40.0, r.right() - mValueWidth - kTrackInset);
    return {left, r.center().y() - 10.0, right - left, 20.0};
}

std::pair<double, double> BlendChartRenderer::scaleOf(std::size_t row) const
{
    const BlendChartData::Row& r = mData.rows.at(row);
    std::vector<double> points;
    if (r.band)
        points.insert(points.end(), r.band->begin(), r.band->end());
    if (r.value != kMissing)
        points.push_back(r.value);
    if (r.target)
        points.push_back(*r.target);
    if (points.empty())
        points.push_back(0.0);
    const auto [lo, hi] = std::minmax_element(points.begin(), points.end());
    double spread = *hi - *lo;
    // Without a band to give the row its scale, a value a hair off its target must not look far
    // from it: the scale spans at least a tenth of the values' size.
    const bool banded = r.band && (*r.band)[1] > (*r.band)[0];
    if (!banded)
        spread = std::max({spread, 0.1 * std::max(std::abs(*lo), std::abs(*hi)), 0.1});
    return {*lo - spread / 4.0, *hi + spread / 4.0};
}

double BlendChartRenderer::xOf(std::size_t row, double value) const
{
    const auto [lo, hi] = scaleOf(row);
    const QRectF track = trackRect(row);
    return track.left() + (value - lo) / (hi - lo) * track.width();
}

void BlendChartRenderer::paint(QPainter& painter) const
{
    painter.save();
    painter.fillRect(mArea, Qt::white);
    paintHeader(painter);
    if (mData.rows.empty()) {
        painter.setPen(RenderStyle::quietText());
        painter.setFont(RenderStyle::font(12));
        painter.drawText(mArea.adjusted(0, kHeaderHeight, 0, 0), Qt::AlignHCenter | Qt::AlignTop,
                         QStringLiteral("No element has a limit"));
    }
    for (std::size_t i = 0; i < mData.rows.size(); ++i)
        paintRow(painter, i);
    painter.restore();
}

void BlendChartRenderer::paintHeader(QPainter& painter) const
{
    painter.setPen(RenderStyle::text());
    painter.setFont(RenderStyle::font(15, true));
    painter.drawText(QRectF(mArea.left() + 8, mArea.top() + 4, mArea.width() - 16, 24),
                     Qt::AlignLeft | Qt::AlignVCenter, mCaption);

    // The key, on one line.
    painter.setFont(RenderStyle::font(11));
    const double y = mArea.top() + 38;
    double x = mArea.left() + 8;
    auto label = [&](const QString& text) {
        painter.setPen(RenderStyle::quietText());
        const double w = painter.fontMetrics().horizontalAdvance(text);
        painter.drawText(QRectF(x, y - 8, w + 2, 16), Qt::AlignLeft | Qt::AlignVCenter, text);
        x += w + 22;
    };
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRectF(x, y - 6, 26, 12), bandColour());
    painter.fillRect(QRectF(x - 1, y - 9, 2, 18), limitColour());
    painter.fillRect(QRectF(x + 25, y - 9, 2, 18), limitColour());
    x += 34;
    label(QStringLiteral("between the limits"));
    diamond(painter, QPointF(x + 6, y), 6);
    x += 16;
    label(QStringLiteral("blend"));
    painter.fillRect(QRectF(x, y - 10, 4, 20), bindingColour());
    x += 10;
    label(QStringLiteral("limit reached"));
    const bool anyTarget = std::any_of(mData.rows.begin(), mData.rows.end(),
                                       [](const BlendChartData::Row& r) { return r.target; });
    if (anyTarget) {
        painter.setPen(QPen(targetColour(), 2.0, Qt::DashLine));
        painter.drawLine(QPointF(x + 2, y - 10), QPointF(x + 2, y + 10));
        x += 10;
        label(QStringLiteral("target"));
    }
}

void BlendChartRenderer::paintRow(QPainter& painter, std::size_t i) const
{
    const BlendChartData::Row& row = mData.rows[i];
    const QRectF r = rowRect(i);
    const QRectF track = trackRect(i);
    const double cy = track.center().y();
    if (i % 2 == 1)
        painter.fillRect(r, QColor(0xf5, 0xf5, 0xf1));

    // Name, and what the optimisation did to it.
    painter.setPen(RenderStyle::text());
    painter.setFont(RenderStyle::font(13, row.optimised));
    const QRectF label(r.left() + 10, r.top(), kLabelWidth - 10, r.height());
    const BlendChartData::Quantity& quantity = row.quantity;
    const QString heading = RenderStyle::heading(quantity.name, quantity.unit);
    if (row.optimised) {
        painter.drawText(label.adjusted(0, 0, 0, -r.height() / 2 + 2), Qt::AlignLeft | Qt::AlignBottom,
                         heading);
        painter.setFont(RenderStyle::font(10));
        painter.setPen(RenderStyle::quietText());
        painter.drawText(label.adjusted(0, r.height() / 2 + 2, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                         goalText(mData.mode));
    } else {
        painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter, heading);
    }

    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(QRectF(track.left(), cy - 1, track.width(), 2), QColor(0xc8, 0xc8, 0xc4));
    painter.setFont(RenderStyle::font(10));
    if (row.band) {
        const double x0 = xOf(i, (*row.band)[0]), x1 = xOf(i, (*row.band)[1]);
        painter.fillRect(QRectF(x0, cy - 7, x1 - x0, 14), bandColour());
        const std::pair<double, BlendChartData::Binding> ends[] = {{x0, BlendChartData::Binding::Minimum},
                                                                   {x1, BlendChartData::Binding::Maximum}};
        for (std::size_t e = 0; e < 2; ++e) {
            const auto [x, which] = ends[e];
            const bool binds = row.binding == which;
            const double w = binds ? 4.0 : 2.0, h = binds ? 13.0 : 11.0;
            painter.fillRect(QRectF(x - w / 2, cy - h, w, 2 * h), binds ? bindingColour() : limitColour());
            painter.setPen(binds ? bindingColour() : RenderStyle::quietText());
            painter.setFont(RenderStyle::font(10, binds));
            painter.drawText(QRectF(x - 40, cy + h, 80, 14), Qt::AlignHCenter | Qt::AlignTop,
                             QString::number((*row.band)[e], 'f', quantity.decimals));
        }
    }
    painter.setRenderHint(QPainter::Antialiasing);
    if (row.target) {
        const double x = xOf(i, *row.target);
        painter.setPen(QPen(targetColour(), 2.0, Qt::DashLine));
        painter.drawLine(QPointF(x, cy - 15), QPointF(x, cy + 15));
    }
    if (row.value != kMissing)
        diamond(painter, QPointF(xOf(i, row.value), cy), 7.5);

    // The value in words on the right.
    const QRectF value(track.right() + kTrackInset, r.top(), mValueWidth - 4, r.height());
    painter.setPen(RenderStyle::text());
    painter.setFont(RenderStyle::font(13, true));
    QString note;
    QColor noteColour = RenderStyle::quietText();
    if (row.binding == BlendChartData::Binding::Maximum) {
        note = QStringLiteral("at the maximum");
        noteColour = bindingColour();
    } else if (row.binding == BlendChartData::Binding::Minimum) {
        note = QStringLiteral("at the minimum");
        noteColour = bindingColour();
    } else if (row.target) {
        note = QStringLiteral("target ") + QString::number(*row.target, 'f', quantity.decimals);
        noteColour = targetColour();
    }
    const QString shown = RenderStyle::valueText(row.value, quantity.unit, quantity.decimals);
    if (note.isEmpty()) {
        painter.drawText(value, Qt::AlignLeft | Qt::AlignVCenter, shown);
        return;
    }
    painter.drawText(value.adjusted(0, 0, 0, -r.height() / 2 + 2), Qt::AlignLeft | Qt::AlignBottom, shown);
    painter.setPen(noteColour);
    painter.setFont(RenderStyle::font(10, true));
    painter.drawText(value.adjusted(0, r.height() / 2 + 2, 0, 0), Qt::AlignLeft | Qt::AlignTop, note);
}

} // namespace kilnova
