#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QPointF>

class QPainter;

namespace kilnova {

/// How one blast is drawn: a disc in its shade, a ring when its value is missing, a blue ring
/// around it when selected, faded when the source list does not offer it.
struct MapSymbol {
    int shade = 0;
    bool hollow = false;
    bool selected = false;
    bool faded = false;
};

/// Draws the quarry map's blast symbols. On a raster picture each symbol is drawn once per shade,
/// size and style and then copied, which is what lets 20,000 blasts redraw in a few milliseconds;
/// on a vector picture (PDF, SVG) every symbol is a true circle. Keep one for the life of a map
/// view to reuse its copies between redraws.
class MapSymbols final {
public:
    static QColor outlineColour() { return QColor(0x4a, 0x4a, 0x4a); }
    static QColor hollowColour() { return QColor(0x6e, 0x6e, 0x6e); }
    static QColor selectionColour() { return QColor(0x1c, 0x5d, 0xd8); }
    /// How much the selection ring reaches beyond the disc.
    static constexpr double kSelectionReach = 3.5;
    static constexpr double kFadedOpacity = 0.28;

    /// Draws a symbol of radius r (logical pixels) centred on `centre`.
    void draw(QPainter& painter, const QPointF& centre, double r, const MapSymbol& symbol);
    /// Whether draw() copies prepared images on this painter (a raster device, no scaling or turning).
    static bool copiesOn(const QPainter& painter);

    /// Draws a symbol as circles, whatever the device.
    static void paint(QPainter& painter, const QPointF& centre, double r, const MapSymbol& symbol);

    /// Copies prepared so far (a cache that grows past kMaxCopies is emptied).
    qsizetype copies() const { return mCopies.size(); }
    static constexpr qsizetype kMaxCopies = 8192;

private:
    QHash<quint64, QImage> mCopies;
};

} // namespace kilnova
