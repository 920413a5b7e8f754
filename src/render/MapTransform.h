#pragma once

#include <QPointF>
#include <QRectF>

namespace kilnova {

/// Places East/North coordinates (metres) on a picture: the same scale on both axes, north up.
class MapTransform final {
public:
    MapTransform() = default;

    /// The view that shows `world` (East across, North up; any size, a point included) as large as
    /// fits in `plot`. A world without extent is shown as a square of 100 m around its centre.
    static MapTransform fit(const QRectF& world, const QRectF& plot);

    QPointF toPixel(double east, double north) const;
    QPointF toPixel(const QPointF& world) const { return toPixel(world.x(), world.y()); }
    /// East in x, North in y.
    QPointF toWorld(const QPointF& pixel) const;

    /// Pixels per metre.
    double scale() const { return mScale; }
    /// The world point at the plot's centre.
    QPointF centre() const { return mCentre; }
    void setCentre(const QPointF& world) { mCentre = world; }

    /// Zooms by `factor`, keeping the world point under `pixel` where it is.
    void zoomAt(const QPointF& pixel, double factor);
    /// Moves the picture by a distance in pixels.
    void panBy(const QPointF& pixels);

    static constexpr double kEmptyWorldSize = 100.0;

private:
    QPointF mPlotCentre;
    QPointF mCentre;
    double mScale = 1.0;
};

} // namespace kilnova
