#include "ui/ReportPrinter.h"

#include "common/ReportText.h"
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

ReportPrinter::ReportPrinter(const QString& reportText, const PageHeader& header,
                             std::optional<BlendChartData> chart)
    : ReportPrinter(ReportText::fromString(reportText), header, std::move(chart))
{
}

ReportPrinter::ReportPrinter(std::shared_ptr<const ReportText> report, const PageHeader& header,
                             std::optional<BlendChartData> chart)
    : mReport(std::move(report))
    , mHeader(header)
    , mChart(std::move(chart))
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

int ReportPrinter::linesPerPage(QPainter& painter) const
{
    const int lineHeight = QFontMetrics(painter.font(), painter.device()).lineSpacing();
    // Two lines of footer; the header takes its line and one of space.
    const int reserved = 2 + (mHeader.isEmpty() ? 0 : 2);
    return std::max(1, painter.viewport().height() / lineHeight - reserved);
}

int ReportPrinter::textPageCount(QPainter& painter) const
{
    painter.setFont(fontFor(*painter.device(), painter.viewport().width()));
    const int perPage = linesPerPage(painter);
    return std::max<int>(1, static_cast<int>((mReport->lineCount() + perPage - 1) / perPage));
}

int ReportPrinter::pageCount(QPainter& painter) const
{
    return textPageCount(painter) + (mChart ? 1 : 0);
}

void ReportPrinter::paintPage(QPainter& painter, int page, int pages) const
{
    painter.setFont(fontFor(*painter.device(), painter.viewport().width()));
    const QFontMetrics metrics(painter.font(), painter.device());
    const int lineHeight = metrics.lineSpacing();
    const QRect area = painter.viewport();
    const int perPage = linesPerPage(painter);
    int top = 0;
    if (!mHeader.isEmpty()) {
        // The time at the right; the names take what is left, shortened in the middle if need be.
        const QString right = mHeader.right();
        const int rightWidth = right.isEmpty() ? 0 : metrics.horizontalAdvance(right + QStringLiteral("   "));
        const QString left = metrics.elidedText(mHeader.left(), Qt::ElideMiddle, area.width() - rightWidth);
        painter.drawText(QRect(0, 0, area.width(), lineHeight), Qt::AlignLeft | Qt::AlignVCenter, left);
        painter.drawText(QRect(0, 0, area.width(), lineHeight), Qt::AlignRight | Qt::AlignVCenter, right);
        const int rule = lineHeight + lineHeight / 3;
        painter.drawLine(0, rule, area.width(), rule);
        top = 2 * lineHeight;
    }
    if (mChart && page == textPageCount(painter)) {
        painter.setFont(fontFor(*painter.device(), area.width()));
        paintChart(painter, QRect(0, top, area.width(), area.height() - top - 2 * lineHeight));
    }
    int i = 0;
    mReport->lines(static_cast<qsizetype>(page) * perPage, perPage, [&](const QByteArray& line) {
        painter.drawText(0, top + (i + 1) * lineHeight, QString::fromUtf8(line));
        ++i;
    });
    const QString footer = QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages);
    painter.drawText(QRect(0, area.height() - lineHeight, area.width(), lineHeight), Qt::AlignHCenter,
                     footer);
}

int ReportPrinter::print(QPagedPaintDevice& device) const
{
    QPainter painter(&device);
    if (!painter.isActive())
        return 0;
    const int pages = pageCount(painter);
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            device.newPage();
        paintPage(painter, page, pages);
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
