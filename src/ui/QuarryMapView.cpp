#include "ui/QuarryMapView.h"

#include "render/RenderStyle.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace kilnova {

namespace {

constexpr double kReach = 6.0;
constexpr double kDragThreshold = 4.0;
constexpr double kSmallestZoom = 0.2;
constexpr double kLargestZoom = 500.0;

/// Filter bounds are kept to a tenth of a metre, as a planner would type them.
double tenth(double metres)
{
    return std::round(metres * 10.0) / 10.0;
}

} // namespace

QuarryMapView::QuarryMapView(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("quarryMap"));
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::ClickFocus);
    mOptions.filterGrips = true;
}

void QuarryMapView::setData(QuarryMapData data)
{
    mData = std::move(data);
    update();
}

QuarryMapData& QuarryMapView::editData()
{
    update();
    return mData;
}

void QuarryMapView::setElement(int element)
{
    mOptions.element = std::clamp(element, 0, kElementCount - 1);
    update();
}

void QuarryMapView::setFilter(bool on, const QuarryMapData::Extent& b)
{
    mOptions.filterOn = on;
    mOptions.filter = std::array<double, 4>{b.eastMinimum, b.eastMaximum, b.northMinimum, b.northMaximum};
    update();
}

void QuarryMapView::fitAll()
{
    mOptions.zoom = 1.0;
    mOptions.centre.reset();
    update();
}

QuarryMapRenderer QuarryMapView::renderer() const
{
    return QuarryMapRenderer(mData, mOptions, QRectF(rect()));
}

void QuarryMapView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    renderer().paint(painter, &mSymbols);
    if (mDrag == Drag::RubberBand) {
        painter.setPen(QPen(MapSymbols::selectionColour(), 1.0, Qt::DashLine));
        painter.setBrush(QColor(0x1c, 0x5d, 0xd8, 30));
        painter.drawRect(mRubberBand);
    }
}

int QuarryMapView::filterEdgesAt(const QPointF& p) const
{
    const std::optional<QRectF> r = renderer().filterRect();
    if (!r)
        return 0;
    int edges = 0;
    if (p.y() >= r->top() - kReach && p.y() <= r->bottom() + kReach) {
        const double toLeft = std::abs(p.x() - r->left()), toRight = std::abs(p.x() - r->right());
        if (std::min(toLeft, toRight) <= kReach)
            edges |= toLeft <= toRight ? kLeft : kRight;
    }
    if (p.x() >= r->left() - kReach && p.x() <= r->right() + kReach) {
        const double toTop = std::abs(p.y() - r->top()), toBottom = std::abs(p.y() - r->bottom());
        if (std::min(toTop, toBottom) <= kReach)
            edges |= toTop <= toBottom ? kTop : kBottom;
    }
    return edges;
}

void QuarryMapView::updateCursor(const QPointF& p)
{
    const QuarryMapRenderer r = renderer();
    const std::optional<QRectF> tab = r.filterTab();
    const int edges = filterEdgesAt(p);
    if (tab && tab->contains(p))
        setCursor(Qt::SizeAllCursor);
    else if (edges == (kLeft | kTop) || edges == (kRight | kBottom))
        setCursor(Qt::SizeFDiagCursor);
    else if (edges == (kRight | kTop) || edges == (kLeft | kBottom))
        setCursor(Qt::SizeBDiagCursor);
    else if (edges & (kLeft | kRight))
        setCursor(Qt::SizeHorCursor);
    else if (edges & (kTop | kBottom))
        setCursor(Qt::SizeVerCursor);
    else if (const auto hit = r.blastAt(p); hit && mData[*hit].listed)
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
}

void QuarryMapView::mousePressEvent(QMouseEvent* event)
{
    const QPointF p = event->position();
    mPressAt = mLastAt = p;
    if (event->button() == Qt::RightButton || event->button() == Qt::MiddleButton) {
        mDrag = Drag::Pan;
        setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    const QuarryMapRenderer r = renderer();
    const std::optional<QRectF> tab = r.filterTab();
    if (event->modifiers() & Qt::ShiftModifier) {
        mDrag = Drag::FilterNew;
    } else if (tab && tab->contains(p)) {
        mDrag = Drag::FilterMove;
        mDragStartRect = *r.filterRect();
    } else if (const int edges = filterEdgesAt(p)) {
        mDrag = Drag::FilterEdges;
        mDragEdges = edges;
        mDragStartRect = *r.filterRect();
    } else {
        mDrag = Drag::Pending;
    }
}

void QuarryMapView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF p = event->position();
    switch (mDrag) {
    case Drag::None:
        updateCursor(p);
        break;
    case Drag::Pending:
        if (QLineF(mPressAt, p).length() < kDragThreshold)
            break;
        mDrag = Drag::RubberBand;
        [[fallthrough]];
    case Drag::RubberBand:
        mRubberBand = QRectF(mPressAt, p).normalized();
        update();
        break;
    case Drag::Pan: {
        MapTransform t = renderer().transform();
        t.panBy(p - mLastAt);
        mOptions.centre = t.centre();
        update();
        break;
    }
    case Drag::FilterMove:
        dragFilterTo(mDragStartRect.translated(p - mPressAt));
        break;
    case Drag::FilterEdges: {
        QRectF r = mDragStartRect;
        if (mDragEdges & kLeft)
            r.setLeft(p.x());
        if (mDragEdges & kRight)
            r.setRight(p.x());
        if (mDragEdges & kTop)
            r.setTop(p.y());
        if (mDragEdges & kBottom)
            r.setBottom(p.y());
        dragFilterTo(r.normalized());
        break;
    }
    case Drag::FilterNew:
        dragFilterTo(QRectF(mPressAt, p).normalized());
        break;
    }
    mLastAt = p;
}

void QuarryMapView::mouseReleaseEvent(QMouseEvent* event)
{
    const Drag drag = mDrag;
    mDrag = Drag::None;
    switch (drag) {
    case Drag::Pending:
        click(event->position(), event->modifiers());
        break;
    case Drag::RubberBand:
        selectIn(mRubberBand, event->modifiers());
        update();
        break;
    case Drag::FilterMove:
    case Drag::FilterEdges:
    case Drag::FilterNew:
        emit filterDragFinished(drag == Drag::FilterNew);
        break;
    case Drag::Pan:
    case Drag::None:
        break;
    }
    updateCursor(event->position());
}

void QuarryMapView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && !renderer().blastAt(event->position()))
        fitAll();
}

void QuarryMapView::wheelEvent(QWheelEvent* event)
{
    const double wanted = mOptions.zoom * std::pow(1.2, event->angleDelta().y() / 120.0);
    const double zoom = std::clamp(wanted, kSmallestZoom, kLargestZoom);
    MapTransform t = renderer().transform();
    t.zoomAt(event->position(), zoom / mOptions.zoom);
    mOptions.zoom = zoom;
    mOptions.centre = t.centre();
    update();
    event->accept();
}

bool QuarryMapView::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const QString text = tooltipAt(help->pos());
        if (text.isEmpty()) {
            QToolTip::hideText();
            event->ignore();
        } else {
            QToolTip::showText(help->globalPos(), text, this);
        }
        return true;
    }
    return QWidget::event(event);
}

QString QuarryMapView::tooltipAt(const QPointF& pixel) const
{
    const std::optional<std::size_t> hit = renderer().blastAt(pixel);
    if (!hit)
        return {};
    const QuarryBlast& b = mData[*hit];
    const double v = static_cast<double>(b.values[static_cast<std::size_t>(mOptions.element)]);
    QString text = QStringLiteral("%1\n%2 t\n%3 %4")
                       .arg(b.name, QString::number(b.tonnage, 'f', 2),
                            QString::fromLatin1(elementDisplayName(mOptions.element).data()),
                            RenderStyle::valueText(mOptions.element, v));
    if (b.taken > 0.0)
        text += QStringLiteral("\ntaken: %1 t").arg(b.taken, 0, 'f', 2);
    if (!b.listed)
        text += QStringLiteral("\nnot in the source list");
    return text;
}

void QuarryMapView::dragFilterTo(const QRectF& pixels)
{
    const MapTransform t = renderer().transform();
    const QPointF topLeft = t.toWorld(pixels.topLeft()), bottomRight = t.toWorld(pixels.bottomRight());
    const QuarryMapData::Extent bounds{tenth(topLeft.x()), tenth(bottomRight.x()), tenth(bottomRight.y()),
                                       tenth(topLeft.y())};
    setFilter(mOptions.filterOn || mDrag == Drag::FilterNew, bounds);
    emit filterChanged(bounds);
}

void QuarryMapView::click(const QPointF& pixel, Qt::KeyboardModifiers modifiers)
{
    // An index rather than an optional: g++ 12 sees the optional as maybe unset here.
    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    const std::optional<std::size_t> found = renderer().blastAt(pixel);
    const std::size_t hit = found && mData[*found].listed ? *found : kNone;
    const QStringList before = mData.selection();
    if (modifiers & Qt::ControlModifier) {
        if (hit != kNone)
            mData.setSelected(hit, !mData[hit].selected);
    } else {
        mData.setSelection({});
        if (hit != kNone)
            mData.setSelected(hit, true);
    }
    update();
    if (mData.selection() != before)
        emit selectionChanged(mData.selection());
}

void QuarryMapView::selectIn(const QRectF& pixels, Qt::KeyboardModifiers modifiers)
{
    const QStringList before = mData.selection();
    if (!(modifiers & Qt::ControlModifier))
        mData.setSelection({});
    for (std::size_t i : renderer().blastsIn(pixels)) {
        if (mData[i].listed)
            mData.setSelected(i, true);
    }
    update();
    if (mData.selection() != before)
        emit selectionChanged(mData.selection());
}

} // namespace kilnova
