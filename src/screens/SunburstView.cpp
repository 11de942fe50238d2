#include "screens/SunburstView.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "chart/SunburstLayout.h"
#include "screens/SunburstPainter.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace tw {

SunburstView::SunburstView(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAntialiasing(true);
}

void SunburstView::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        // Sizes change in place after a deletion; the root is re-assigned then.
        // A new focus is hovered afresh where the pointer stands.
        connect(&followed, &AppState::focusChanged, this, [this] {
            if (m_mouseLocation && !m_holdsHover)
                moveMouse(*m_mouseLocation);
            update();
        });
        connect(&followed, &AppState::rootChanged, this, [this] { update(); });
        connect(&followed, &AppState::selectionChanged, this, [this] { update(); });
    });
    if (!moved)
        return;
    update();
    Q_EMIT stateChanged();
}

void SunburstView::setMarkColor(const QColor& color)
{
    if (m_markColor == color)
        return;
    m_markColor = color;
    update();
    Q_EMIT markColorChanged();
}

void SunburstView::setDark(bool dark)
{
    if (m_dark == dark)
        return;
    m_dark = dark;
    Q_EMIT darkChanged();
    update();
}

void SunburstView::setHubColor(const QColor& color)
{
    if (m_hubColor == color)
        return;
    m_hubColor = color;
    update();
    Q_EMIT hubColorChanged();
}

double SunburstView::hubRadius() const
{
    return chartGeometry(width(), height()).hubRadius;
}

void SunburstView::paint(QPainter* painter)
{
    const ChartGeometry geometry = chartGeometry(width(), height());
    const FileNode* focus = m_state && m_state->focus() ? m_state->focus().get() : nullptr;
    const std::vector<Segment> segments = buildSegments(focus, width(), height());
    const Segment* hit = nullptr;
    if (m_mouseLocation)
        hit = segmentAt(m_mouseLocation->x() - geometry.centreX,
                        m_mouseLocation->y() - geometry.centreY, segments);
    // The chart is painted into an image of our own at the painter's pixel
    // density and copied over in one go.
    const double scale = std::max(painter->deviceTransform().m11(), 1e-6);
    const QSize pixels(int(std::ceil(width() * scale)), int(std::ceil(height() * scale)));
    if (m_canvas.size() != pixels)
        m_canvas = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    m_canvas.setDevicePixelRatio(scale);
    m_canvas.fill(Qt::transparent);
    const AppState* state = m_state;
    const SectorMarks marks{[state](const FileNode* node) { return state && state->isSelected(node); },
                            m_markColor};
    paintSunburst(m_canvas, geometry, segments, hit, m_hubColor, m_dark, &marks);
    painter->drawImage(QPointF(0, 0), m_canvas);
}

void SunburstView::setHoldsHover(bool holds)
{
    if (m_holdsHover == holds)
        return;
    m_holdsHover = holds;
    Q_EMIT holdsHoverChanged();
}

bool SunburstView::hoveredSectorMeets(const QRectF& rect) const
{
    if (!m_state || !m_state->hovered())
        return false;
    const ChartGeometry geometry = chartGeometry(width(), height());
    for (const Segment& segment : buildSegments(m_state->focus().get(), width(), height())) {
        if (segment.node != m_state->hovered().get())
            continue;
        std::vector<QPointF> points;
        appendSectorOutline(points,
                            {geometry.centreX, geometry.centreY, segment.innerRadius,
                             segment.outerRadius},
                            segment.startAngle, segment.endAngle);
        QPainterPath path;
        path.addPolygon(QPolygonF(QList<QPointF>(points.begin(), points.end())));
        path.closeSubpath();
        return path.intersects(rect);
    }
    return false;
}

void SunburstView::moveMouse(const QPointF& location)
{
    if (m_holdsHover)
        return;
    m_mouseLocation = location;
    if (m_state) {
        const ChartGeometry geometry = chartGeometry(width(), height());
        const NodeRef& focus = m_state->focus();
        const std::vector<Segment> segments = buildSegments(focus.get(), width(), height());
        const Segment* hit =
            segmentAt(location.x() - geometry.centreX, location.y() - geometry.centreY, segments);
        m_state->setHovered(hit ? focus.sibling(hit->node) : NodeRef());
    }
    update();
}

void SunburstView::hoverEnterEvent(QHoverEvent* event)
{
    moveMouse(event->position());
}

void SunburstView::hoverMoveEvent(QHoverEvent* event)
{
    moveMouse(event->position());
}

void SunburstView::hoverLeaveEvent(QHoverEvent*)
{
    if (m_holdsHover)
        return;
    m_mouseLocation.reset();
    if (m_state)
        m_state->setHovered({});
    update();
}

void SunburstView::mousePressEvent(QMouseEvent* event)
{
    // A press is where the mouse is, even if no hover event came first.
    moveMouse(event->position());
    if (event->button() == Qt::RightButton)
        Q_EMIT contextMenuRequested(event->position().x(), event->position().y());
    event->accept();
}

void SunburstView::mouseReleaseEvent(QMouseEvent* event)
{
    // Ctrl-click (⌘-click on a Mac, which Qt reports as Control) picks the
    // sector for a batch instead of drilling in.
    if (event->button() == Qt::LeftButton && contains(event->position()))
        click(event->modifiers() & Qt::ControlModifier);
    event->accept();
}

void SunburstView::click(bool pick)
{
    // The stored location, as hover left it; nothing when the mouse is outside.
    if (!m_mouseLocation || !m_state || !m_state->focus())
        return;
    const ChartGeometry geometry = chartGeometry(width(), height());
    const NodeRef& focus = m_state->focus();
    const std::vector<Segment> segments = buildSegments(focus.get(), width(), height());
    const Segment* hit = segmentAt(m_mouseLocation->x() - geometry.centreX,
                                   m_mouseLocation->y() - geometry.centreY, segments);
    if (hit && pick)
        m_state->toggleSelected(focus.sibling(hit->node));
    else if (hit)
        m_state->focusOn(
            focus.sibling(hit->node)); // the guarded change refuses files and empty folders
}

void SunburstView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        Q_EMIT hubRadiusChanged();
}

} // namespace tw
