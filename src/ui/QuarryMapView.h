#pragma once

#include "optimise/QuarryMapData.h"
#include "render/MapSymbols.h"
#include "render/QuarryMapRenderer.h"

#include <QWidget>

#include <optional>

namespace kilnova {

/// The quarry map as a widget: it draws through QuarryMapRenderer and turns the mouse into
/// selections, filter bounds, zoom and pan. Clicking a blast selects it (Ctrl adds or removes);
/// dragging selects the blasts inside (Ctrl adds); dragging the filter's edges, corners or tab
/// changes it and Shift-dragging draws a new one; the wheel zooms, the right or middle button pans,
/// a double click shows every blast again. Only blasts the source list offers can be selected.
class QuarryMapView final : public QWidget {
    Q_OBJECT
public:
    explicit QuarryMapView(QWidget* parent = nullptr);

    const QuarryMapData& data() const { return mData; }
    /// Changes the blasts; the view shows them at once.
    void setData(QuarryMapData data);
    /// Selections, listing and taken tonnes are changed through here; the view repaints.
    QuarryMapData& editData();

    int element() const { return mOptions.element; }
    void setElement(int element);
    /// The coordinate filter as the dialog's fields hold it.
    void setFilter(bool on, const QuarryMapData::Extent& bounds);
    /// Shows every blast.
    void fitAll();

    /// What is drawn at the view's present size.
    QuarryMapOptions options() const { return mOptions; }
    QuarryMapRenderer renderer() const;

    /// The tooltip of the blast under a pixel: name, tonnes, the element's value; empty elsewhere.
    QString tooltipAt(const QPointF& pixel) const;

    QSize sizeHint() const override { return {560, 460}; }
    QSize minimumSizeHint() const override { return {320, 260}; }

signals:
    /// The user changed the selection on the map; the names in map order.
    void selectionChanged(const QStringList& names);
    /// The user is dragging the filter to these bounds.
    void filterChanged(const QuarryMapData::Extent& bounds);
    /// The drag ended; `drawn` when it was a new rectangle.
    void filterDragFinished(bool drawn);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;

private:
    enum class Drag { None, Pending, RubberBand, Pan, FilterEdges, FilterMove, FilterNew };
    enum Edge { kLeft = 1, kRight = 2, kTop = 4, kBottom = 8 };

    /// The filter edges within reach of a pixel (Edge bits), 0 for none.
    int filterEdgesAt(const QPointF& pixel) const;
    void updateCursor(const QPointF& pixel);
    /// Sets the filter to a rectangle of pixels and tells the dialog.
    void dragFilterTo(const QRectF& pixels);
    void click(const QPointF& pixel, Qt::KeyboardModifiers modifiers);
    void selectIn(const QRectF& pixels, Qt::KeyboardModifiers modifiers);

    QuarryMapData mData;
    QuarryMapOptions mOptions;
    MapSymbols mSymbols;

    Drag mDrag = Drag::None;
    QPointF mPressAt;
    QPointF mLastAt;
    int mDragEdges = 0;
    QRectF mDragStartRect;
    QRectF mRubberBand;
};

} // namespace kilnova
