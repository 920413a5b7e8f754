#include "render/MapTransform.h"

#include <algorithm>

namespace kilnova {

MapTransform MapTransform::fit(const QRectF& world, const QRectF& plot)
{
    MapTransform t;
    t.mPlotCentre = plot.center();
    t.mCentre = world.center();
    double width = world.width(), height = world.height();
    if (!(width > 0.0) && !(height > 0.0))
        width = height = kEmptyWorldSize;
    // A line of blasts is fitted along its length.
    const double across = width > 0.0 ? plot.width() / width : 1e300;
    const double up = height > 0.0 ? plot.height() / height : 1e300;
    t.mScale = std::max(1e-9, std::min(across, up));
    return t;
}

QPointF MapTransform::toPixel(double east, double north) const
{
    return {mPlotCentre.x() + (east - mCentre.x()) * mScale,
            mPlotCentre.y() - (north - mCentre.y()) * mScale};
}

QPointF MapTransform::toWorld(const QPointF& pixel) const
{
    return {mCentre.x() + (pixel.x() - mPlotCentre.x()) / mScale,
            mCentre.y() - (pixel.y() - mPlotCentre.y()) / mScale};
}

void MapTransform::zoomAt(const QPointF& pixel, double factor)
{
    const QPointF fixed = toWorld(pixel);
    mScale *= factor;
    mCentre = {fixed.x() - (pixel.x() - mPlotCentre.x()) / mScale,
               fixed.y() + (pixel.y() - mPlotCentre.y()) / mScale};
}

void MapTransform::panBy(const QPointF& pixels)
{
    mCentre = {mCentre.x() - pixels.x() / mScale, mCentre.y() + pixels.y() / mScale};
}

} // namespace kilnova
