#pragma once

#include "optimise/BlendChartData.h"
#include "ui/PageHeader.h"

#include <QFont>
#include <QString>

#include <memory>
#include <optional>

class QPagedPaintDevice;
class QPaintDevice;
class QPainter;
class QRect;

namespace kilnova {

class ReportText;

/// Prints a plain-text report on paged devices (a printer or a PDF file) in a fixed-pitch font,
/// with "Page n of m" in the footer of every page, when given a header line above the report
/// naming its project, database and time of the run, and the blend chart, when there is one, on a
/// last page of its own.
class ReportPrinter final {
public:
    explicit ReportPrinter(const QString& reportText, const PageHeader& header = {},
                           std::optional<BlendChartData> chart = std::nullopt);
    /// Lines are read from the report page by page, so a report of any length prints without being
    /// held whole.
    explicit ReportPrinter(std::shared_ptr<const ReportText> report, const PageHeader& header = {},
                           std::optional<BlendChartData> chart = std::nullopt);

    /// Paints every page; returns the number of pages.
    int print(QPagedPaintDevice& device) const;
    /// The pages the report takes on the painter's device, and the painting of one of them (from 0)
    /// on the painter's viewport; print() is made of these.
    int pageCount(QPainter& painter) const;
    void paintPage(QPainter& painter, int page, int pages) const;
    /// Writes the report as a PDF file; false if the file cannot be written.
    bool writePdf(const QString& path) const;

    /// The fixed-pitch font the report is printed in: 9 points, or smaller (down to 6) when its
    /// widest line would not fit in pageWidth device pixels.
    QFont fontFor(QPaintDevice& device, int pageWidth) const;

    static constexpr double kPointSize = 9.0;
    static constexpr double kSmallestPointSize = 6.0;

private:
    /// Report lines on one page, below the header and above the footer.
    int linesPerPage(QPainter& painter) const;
    int textPageCount(QPainter& painter) const;
    void paintChart(QPainter& painter, const QRect& area) const;

    std::shared_ptr<const ReportText> mReport;
    PageHeader mHeader;
    std::optional<BlendChartData> mChart;
};

} // namespace kilnova
