#pragma once

#include <QString>
#include <QStringList>

class QPagedPaintDevice;

namespace kilnova {

/// Prints a plain-text report on paged devices (a printer or a PDF file) in a fixed-pitch font,
/// with "Page n of m" in the footer of every page.
class ReportPrinter final {
public:
    explicit ReportPrinter(const QString& reportText);

    /// Paints every page; returns the number of pages.
    int print(QPagedPaintDevice& device) const;
    /// Writes the report as a PDF file; false if the file cannot be written.
    bool writePdf(const QString& path) const;

private:
    QStringList mLines;
};

} // namespace kilnova
