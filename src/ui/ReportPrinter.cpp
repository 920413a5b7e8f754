#include "ui/ReportPrinter.h"

#include "common/ReportText.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>

namespace kilnova {

ReportPrinter::ReportPrinter(const QString& reportText)
    : mReport(ReportText::fromString(reportText))
{
}

ReportPrinter::ReportPrinter(std::shared_ptr<const ReportText> report)
    : mReport(std::move(report))
{
}

QFont ReportPrinter::fontFor(QPaintDevice& device, int pageWidth) const
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(kPointSize);
    // A line wider than the page (a long blast name) is not cut: the whole report gets smaller. In a
    // fixed-pitch font the longest line is the widest.
    const QFontMetrics metrics(font, &device);
    const int widest =
        metrics.horizontalAdvance(QString(static_cast<qsizetype>(mReport->longestLine()), QLatin1Char('M')));
    if (widest > pageWidth && pageWidth > 0)
        font.setPointSizeF(std::max(kSmallestPointSize, kPointSize * pageWidth / widest * 0.98));
    return font;
}

int ReportPrinter::print(QPagedPaintDevice& device) const
{
    QPainter painter(&device);
    if (!painter.isActive())
        return 0;
    const QFont font = fontFor(device, painter.viewport().width());
    painter.setFont(font);
    const QFontMetrics metrics(font, &device);
    const int lineHeight = metrics.lineSpacing();
    const QRect area = painter.viewport();
    const int footerHeight = 2 * lineHeight;
    const int linesPerPage = std::max(1, (area.height() - footerHeight) / lineHeight);
    // A report's last line end starts no line of its own.
    const qsizetype lines = mReport->lineCount();
    const int pages = std::max<int>(1, static_cast<int>((lines + linesPerPage - 1) / linesPerPage));

    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            device.newPage();
        int i = 0;
        mReport->lines(static_cast<qsizetype>(page) * linesPerPage, linesPerPage,
                       [&](const QByteArray& line) {
                           painter.drawText(0, (i + 1) * lineHeight, QString::fromUtf8(line));
                           ++i;
                       });
        const QString footer = QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages);
        painter.drawText(QRect(0, area.height() - lineHeight, area.width(), lineHeight), Qt::AlignHCenter,
                         footer);
    }
    return pages;
}

bool ReportPrinter::writePdf(const QString& path) const
{
    QPdfWriter writer(path);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(15, 15, 15, 15), QPageLayout::Millimeter);
    writer.setTitle(QStringLiteral("Kilnova report"));
    writer.setCreator(QStringLiteral("Kilnova"));
    return print(writer) > 0 && QFile::exists(path);
}

} // namespace kilnova
