#pragma once

#include <QFont>
#include <QString>

#include <memory>

class QPagedPaintDevice;
class QPaintDevice;

namespace kilnova {

class ReportText;

/// Prints a plain-text report on paged devices (a printer or a PDF file) in a fixed-pitch font,
/// with "Page n of m" in the footer of every page. Lines are read from the report page by page, so
/// a report of any length prints without being held whole.
class ReportPrinter final {
public:
    explicit ReportPrinter(const QString& reportText);
    explicit ReportPrinter(std::shared_ptr<const ReportText> report);

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
    std::shared_ptr<const ReportText> mReport;
};

} // namespace kilnova
