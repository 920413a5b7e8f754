#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPointF>

#include <cmath>
#include <functional>
#include <ostream>

namespace kilnova::test {

/// Colours equal within `tolerance` per channel (antialiasing and rounding leave a unit or two).
inline bool sameColour(const QColor& a, const QColor& b, int tolerance = 2)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

inline QColor pixelAt(const QImage& image, const QPointF& p)
{
    return image.pixelColor(static_cast<int>(std::floor(p.x())), static_cast<int>(std::floor(p.y())));
}

/// A white picture of the given size with whatever `paint` draws on it.
inline QImage picture(int width, int height, const std::function<void(QPainter&)>& paint)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    paint(painter);
    painter.end();
    return image;
}

} // namespace kilnova::test

inline void PrintTo(const QColor& c, std::ostream* os)
{
    *os << c.name().toStdString();
}
