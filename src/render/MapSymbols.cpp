#include "render/MapSymbols.h"

#include "render/ColourScale.h"

#include <QPaintEngine>
#include <QPainter>

#include <cmath>

namespace kilnova {

void MapSymbols::paint(QPainter& painter, const QPointF& centre, double r, const MapSymbol& symbol)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (symbol.faded)
        painter.setOpacity(painter.opacity() * kFadedOpacity);
    if (symbol.selected) {
        QPen ring(selectionColour());
        ring.setWidthF(2.5);
        painter.setPen(ring);
        painter.setBrush(Qt::NoBrush);
        const double reach = r + kSelectionReach - 1.25;
        painter.drawEllipse(centre, reach, reach);
    }
    if (symbol.hollow) {
        QPen pen(hollowColour());
        pen.setWidthF(1.5);
        painter.setPen(pen);
        painter.setBrush(QColor(255, 255, 255, 170));
        painter.drawEllipse(centre, std::max(1.0, r - 0.75), std::max(1.0, r - 0.75));
    } else {
        QPen pen(outlineColour());
        pen.setWidthF(0.8);
        painter.setPen(pen);
        painter.setBrush(ColourScale::shadeColour(symbol.shade));
        painter.drawEllipse(centre, std::max(0.8, r - 0.4), std::max(0.8, r - 0.4));
    }
    painter.restore();
}

bool MapSymbols::copiesOn(const QPainter& painter)
{
    const QPaintEngine* engine = painter.paintEngine();
    return engine && engine->type() == QPaintEngine::Raster &&
           painter.worldTransform().type() <= QTransform::TxTranslate;
}

void MapSymbols::draw(QPainter& painter, const QPointF& centre, double r, const MapSymbol& symbol)
{
    if (!copiesOn(painter)) {
        paint(painter, centre, r, symbol);
        return;
    }
    // Sizes in quarter pixels; the centre falls on a whole pixel of the copy.
    const int quarters = static_cast<int>(std::lround(r * 4.0));
    const double ratio = painter.device() ? painter.device()->devicePixelRatio() : 1.0;
    const quint64 key = (static_cast<quint64>(std::lround(ratio * 4.0)) << 40) |
                        (static_cast<quint64>(quarters) << 16) | (static_cast<quint64>(symbol.shade) << 4) |
                        (symbol.hollow ? 1u : 0u) | (symbol.selected ? 2u : 0u) | (symbol.faded ? 4u : 0u);
    auto it = mCopies.constFind(key);
    if (it == mCopies.constEnd()) {
        if (mCopies.size() >= kMaxCopies)
            mCopies.clear();
        const double radius = quarters / 4.0;
        const int half = static_cast<int>(std::ceil(radius + kSelectionReach + 1.0));
        const int side = static_cast<int>(std::lround((2 * half + 1) * ratio));
        QImage copy(side, side, QImage::Format_ARGB32_Premultiplied);
        copy.setDevicePixelRatio(ratio);
        copy.fill(Qt::transparent);
        QPainter p(&copy);
        paint(p, QPointF(half + 0.5, half + 0.5), radius, symbol);
        p.end();
        it = mCopies.insert(key, copy);
    }
    // A translation is all the transformation there is: place the copy on whole device pixels.
    const int half = static_cast<int>(std::lround(it->deviceIndependentSize().width())) / 2;
    const QPointF shift(painter.worldTransform().dx(), painter.worldTransform().dy());
    const QPointF device = centre + shift;
    painter.drawImage(QPointF(std::floor(device.x()) - half, std::floor(device.y()) - half) - shift, *it);
}

} // namespace kilnova
