#pragma once

#include "optimise/BlendChartData.h"

#include <QFont>
#include <QString>
#include <QStringList>

#include <optional>

class QPagedPaintDevice;
class QPaintDevice;
class QPainter;
class QRect;

namespace kilnova {

/// Prints a plain-text report on paged devices (a printer or a PDF file) in a fixed-pitch font,
/// with "Page n of m" in the footer of every page, and the blend chart, when there is one, on a
/// last page of its own.
class ReportPrinter final {
public:
    explicit ReportPrinter(const QString& reportText, std::optional<BlendChartData> chart = std::nullopt);

    /// Paints every page; returns the number of pages.
    int print(QPagedPaintDevice& device) const;
    /// Writes the report as a PDF file; false if the file cannot be written.
    bool writePdf(const QString& path) const;

    /// The fixed-pitch font the report is printed in: 9 points, or smaller (down to 6) when its
    /// widest line would not fit in pageWidth device pixels.
    QFont fontFor(QPaintDevice& device, int pageWidth) const;

    static constexpr double kPointSize = 9.0;
    static constexpr double kSmallestPointSize = 6.0;

private:
    void paintChart(QPainter& painter, const QRect& area) const;

    QStringList mLines;
    std::optional<BlendChartData> mChart;
};

} // namespace kilnova
