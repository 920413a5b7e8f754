#include "ui/ReportView.h"

#include "common/ReportText.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

namespace kilnova {

ReportView::ReportView(std::shared_ptr<const ReportText> report, QWidget* parent)
    : QAbstractScrollArea(parent)
    , mReport(std::move(report))
{
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setAutoFillBackground(true);
    updateScrollBars();
}

int ReportView::lineHeight() const
{
    return std::max(1, fontMetrics().lineSpacing());
}

int ReportView::visibleLines() const
{
    return std::max(1, viewport()->height() / lineHeight());
}

qsizetype ReportView::firstVisibleLine() const
{
    return verticalScrollBar()->value();
}

void ReportView::scrollToLine(qsizetype line)
{
    verticalScrollBar()->setValue(
        static_cast<int>(std::clamp<qsizetype>(line, 0, verticalScrollBar()->maximum())));
}

void ReportView::updateScrollBars()
{
    // One scroll step per line: a report of up to two thousand million lines fits the range.
    const qsizetype lines = mReport->lineCount();
    const int rows = visibleLines();
    verticalScrollBar()->setRange(0, static_cast<int>(std::max<qsizetype>(0, lines - rows)));
    verticalScrollBar()->setPageStep(rows);
    verticalScrollBar()->setSingleStep(1);
    const int width =
        fontMetrics().horizontalAdvance(QLatin1Char('M')) * static_cast<int>(mReport->longestLine());
    horizontalScrollBar()->setRange(0, std::max(0, width - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(fontMetrics().horizontalAdvance(QLatin1Char('M')));
}

void ReportView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void ReportView::paintEvent(QPaintEvent*)
{
    QPainter painter(viewport());
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::Text));
    const int height = lineHeight();
    const int ascent = fontMetrics().ascent();
    const int x = 2 - horizontalScrollBar()->value();
    int y = 0;
    // One line more than fits: the last may show in part.
    mReport->lines(firstVisibleLine(), visibleLines() + 1, [&](const QByteArray& line) {
        painter.drawText(x, y + ascent, QString::fromUtf8(line));
        y += height;
    });
}

void ReportView::keyPressEvent(QKeyEvent* event)
{
    QScrollBar* bar = verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_Home:
        bar->setValue(0);
        break;
    case Qt::Key_End:
        bar->setValue(bar->maximum());
        break;
    case Qt::Key_PageDown:
        bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
        break;
    case Qt::Key_PageUp:
        bar->triggerAction(QAbstractSlider::SliderPageStepSub);
        break;
    case Qt::Key_Down:
        bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        break;
    case Qt::Key_Up:
        bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
        break;
    case Qt::Key_Right:
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        break;
    case Qt::Key_Left:
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
        break;
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

} // namespace kilnova
