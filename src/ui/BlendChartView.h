#pragma once

#include "optimise/BlendChartData.h"

#include <QWidget>

namespace kilnova {

/// The blend chart in a results window; it only paints what BlendChartRenderer draws.
class BlendChartView final : public QWidget {
    Q_OBJECT
public:
    explicit BlendChartView(const BlendChartData& chart, QWidget* parent = nullptr);

    const BlendChartData& chart() const { return mChart; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {420, 200}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    BlendChartData mChart;
};

} // namespace kilnova
