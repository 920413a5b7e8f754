#include "ui/ReportPrinter.h"

#include "render/BlendChartRenderer.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>

namespace kilnova {

ReportPrinter::ReportPrinter(const QString& reportText, std::optional<BlendChartData> chart)
    : mChart(std::move(chart))
{
    QString text = reportText;
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (text.endsWith('\n'))
        text.chop(1);
    mLines = text.split('\n');
}

QFont ReportPrinter::fontFor(QPaintDevice& device, int pageWidth) const
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(kPointSize);
    // A line wider than the page (a long blast name) is not cut: the whole report gets smaller.
    int widest = 0;
    const QFontMetrics metrics(font, &device);
    for (const QString& line : mLines)
        widest = std::max(widest, metrics.horizontalAdvance(line));
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
    const int textPages =
        std::max<int>(1, static_cast<int>((mLines.size() + linesPerPage - 1) / linesPerPage));
    const int pages = textPages + (mChart ? 1 : 0);

    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            device.newPage();
        if (page == textPages)
            paintChart(painter, QRect(0, 0, area.width(), area.height() - footerHeight));
        for (int i = 0; i < linesPerPage; ++i) {
            const qsizetype line = static_cast<qsizetype>(page) * linesPerPage + i;
            if (line >= mLines.size())
                break;
            painter.drawText(0, (i + 1) * lineHeight, mLines[line]);
        }
        const QString footer = QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages);
        painter.drawText(QRect(0, area.height() - lineHeight, area.width(), lineHeight), Qt::AlignHCenter,
                         footer);
    }
    return pages;
}

void ReportPrinter::paintChart(QPainter& painter, const QRect& area) const
{
    // The chart is drawn at its own size in its pixels and scaled to the page's width (or height).
    const QSizeF size = BlendChartRenderer::preferredSize(mChart->rows.size());
    const double scale = std::min(area.width() / size.width(), area.height() / size.height());
    painter.save();
    painter.translate(area.topLeft());
    painter.scale(scale, scale);
    BlendChartRenderer(*mChart, QRectF(QPointF(0, 0), size)).paint(painter);
    painter.restore();
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
