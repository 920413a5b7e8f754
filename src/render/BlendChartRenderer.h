#pragma once

#include "optimise/BlendChartData.h"

#include <QColor>
#include <QRectF>
#include <QString>

#include <utility>

class QPainter;

namespace kilnova {

/// Draws the blend chart: one row per property with a limit (and the optimised one), each on its own
/// scale, so that an MS of 2.4 and a CaO of 43 read alike. A row shows the band between the limits,
/// the blend's value as a marker, the target in Target mode, and a limit the blend reaches in a
/// colour of its own; its values are written with the row's unit and decimals.
class BlendChartRenderer final {
public:
    /// Without a caption, the data's own heading, or "Blend of T t".
    BlendChartRenderer(const BlendChartData& data, const QRectF& area, QString caption = {});

    void paint(QPainter& painter) const;

    /// The rectangle of row i, and the span of it that the row's scale maps onto.
    QRectF rowRect(std::size_t row) const;
    QRectF trackRect(std::size_t row) const;
    /// The values at the track's two ends: the row's band, value and target with a quarter of
    /// their spread added on each side. A row without a band spans at least a tenth of its values'
    /// size (and at least 0.1).
    std::pair<double, double> scaleOf(std::size_t row) const;
    double xOf(std::size_t row, double value) const;

    /// A size that shows n rows comfortably.
    static QSizeF preferredSize(std::size_t rows);

    static QColor bandColour() { return QColor(0xc9, 0xe6, 0xcc); }
    static QColor limitColour() { return QColor(0x2f, 0x7d, 0x3a); }
    static QColor bindingColour() { return QColor(0xe8, 0x59, 0x0c); }
    static QColor valueColour() { return QColor(0x1b, 0x2a, 0x49); }
    static QColor targetColour() { return QColor(0x70, 0x48, 0xe8); }

    /// "minimised", "maximised", "target", "tonnage maximised" for the optimised row.
    static QString goalText(int mode);

private:
    void paintHeader(QPainter& painter) const;
    void paintRow(QPainter& painter, std::size_t row) const;

    const BlendChartData& mData;
    QRectF mArea;
    QString mCaption;
    double mRowHeight = 40.0;
    /// The column of the values in words, right of the tracks.
    double mValueWidth = 0.0;
};

} // namespace kilnova
