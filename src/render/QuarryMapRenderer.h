#pragma once

#include "chemistry/Elements.h"
#include "render/ColourScale.h"
#include "render/MapSymbols.h"
#include "render/MapTransform.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <array>
#include <optional>
#include <vector>

class QPainter;

namespace kilnova {

class QuarryMapData;

/// What the quarry map shows besides its blasts.
struct QuarryMapOptions {
    /// The element that colours the blasts.
    int element = elementIndex(Element::CaO);
    /// Zoom relative to the view that shows every blast, and the world point at the centre (the
    /// blasts' centre when empty).
    double zoom = 1.0;
    std::optional<QPointF> centre;
    /// The coordinate filter (East minimum, East maximum, North minimum, North maximum): drawn
    /// strong when on, faint when off.
    std::optional<std::array<double, 4>> filter;
    bool filterOn = false;
    /// Grips for dragging the filter (the view that edits it draws them).
    bool filterGrips = false;
};

/// Draws the quarry map: every placed blast at its East/North with an area in proportion to its
/// tonnage, coloured by an element on a continuous scale with a legend in the element's units; a
/// blast without that value as a ring; the selection ringed in blue, the tonnes taken written
/// beside their blasts, the coordinate filter as a dashed rectangle. It also answers where things
/// are, so that a view hit-tests exactly what it drew.
class QuarryMapRenderer final {
public:
    QuarryMapRenderer(const QuarryMapData& data, const QuarryMapOptions& options, const QRectF& area);

    /// Paints on any device; `symbols` keeps the raster copies between redraws (may be null).
    void paint(QPainter& painter, MapSymbols* symbols = nullptr) const;

    const QRectF& plotRect() const { return mPlot; }
    const MapTransform& transform() const { return mTransform; }
    /// The colour scale of the element, or nothing when no placed blast has a value for it.
    const std::optional<ColourScale>& scale() const { return mScale; }

    /// The radius a blast is drawn with, in pixels (its area in proportion to its tonnage).
    double radius(std::size_t blast) const;
    /// The blast drawn topmost under a pixel, if any.
    std::optional<std::size_t> blastAt(const QPointF& pixel) const;
    /// The placed blasts whose centres lie in a rectangle of pixels.
    std::vector<std::size_t> blastsIn(const QRectF& pixels) const;
    /// The filter rectangle in pixels (normalised), if there is a filter.
    std::optional<QRectF> filterRect() const;
    /// The tab above the filter's top-left corner by which a view moves it.
    std::optional<QRectF> filterTab() const;

    /// What the plot says besides its blasts: that there is nothing to place, or how many blasts
    /// lack coordinates; empty when every blast is on the map.
    QString notice() const;

    static constexpr double kLegendWidth = 150.0;

private:
    void paintGrid(QPainter& painter) const;
    void paintBlasts(QPainter& painter, MapSymbols& symbols) const;
    void paintFilter(QPainter& painter) const;
    void paintTaken(QPainter& painter) const;
    void paintTitle(QPainter& painter) const;
    void paintLegend(QPainter& painter) const;
    MapSymbol symbolOf(std::size_t blast) const;

    const QuarryMapData& mData;
    QuarryMapOptions mOptions;
    QRectF mArea;
    QRectF mPlot;
    MapTransform mTransform;
    std::optional<ColourScale> mScale;
    double mBaseRadius = 4.0;
};

} // namespace kilnova
