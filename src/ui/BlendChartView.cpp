#include "ui/BlendChartView.h"

#include "render/BlendChartRenderer.h"

#include <QPainter>

namespace kilnova {

BlendChartView::BlendChartView(const BlendChartData& chart, QWidget* parent)
    : QWidget(parent)
    , mChart(chart)
{
    setObjectName(QStringLiteral("blendChart"));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize BlendChartView::sizeHint() const
{
    const QSizeF preferred = BlendChartRenderer::preferredSize(mChart.rows.size());
    return {560, static_cast<int>(preferred.height())};
}

void BlendChartView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    BlendChartRenderer(mChart, QRectF(rect())).paint(painter);
}

} // namespace kilnova
