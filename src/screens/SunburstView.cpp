#include "screens/SunburstView.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "chart/DrillMotion.h"
#include "chart/RingLabels.h"
#include "chart/ChartEmphasis.h"
#include "chart/SunburstLayout.h"
#include "screens/RingLabelPainter.h"
#include "screens/SunburstPainter.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tw {

SunburstView::SunburstView(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAntialiasing(true);
    m_drill.setStartValue(0.0);
    m_drill.setEndValue(1.0);
    m_drill.setDuration(int(kDrillMilliseconds));
    connect(&m_drill, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(&m_drill, &QAbstractAnimation::finished, this, [this] {
        m_drillOuter = m_drillInner = {};
    });
    connect(&m_drill, &QAbstractAnimation::stateChanged, this, [this] {
        update();
        Q_EMIT drillingChanged();
    });
}

void SunburstView::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        // Sizes change in place after a deletion; the root is re-assigned then.
        // A new focus is hovered afresh where the pointer stands.
        connect(&followed, &AppState::focusChanged, this, [this] {
            focusMoved();
            if (m_mouseLocation && !m_holdsHover)
                moveMouse(*m_mouseLocation);
            update();
        });
        connect(&followed, &AppState::rootChanged, this, [this] {
            m_drill.stop();
            m_drillOuter = m_drillInner = {}; // a replaced tree is not kept alive
            m_shownFocus = m_state ? m_state->focus() : NodeRef();
            update();
        });
        connect(&followed, &AppState::selectionChanged, this, [this] { update(); });
    });
    if (!moved)
        return;
    m_drill.stop();
    m_shownFocus = m_state ? m_state->focus() : NodeRef();
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

void SunburstView::setLabelDark(const QColor& color)
{
    if (m_labelDark == color)
        return;
    m_labelDark = color;
    update();
    Q_EMIT labelInksChanged();
}

void SunburstView::setLabelLight(const QColor& color)
{
    if (m_labelLight == color)
        return;
    m_labelLight = color;
    update();
    Q_EMIT labelInksChanged();
}

void SunburstView::setAnimatesDrill(bool animates)
{
    if (m_animatesDrill == animates)
        return;
    m_animatesDrill = animates;
    if (!animates)
        m_drill.stop();
    Q_EMIT animatesDrillChanged();
}

bool SunburstView::drilling() const
{
    return m_drill.state() == QAbstractAnimation::Running;
}

void SunburstView::focusMoved()
{
    const NodeRef now = m_state ? m_state->focus() : NodeRef();
    const NodeRef before = std::exchange(m_shownFocus, now);
    // A motion under way ends where it was going; the next starts there.
    m_drill.stop();
    if (!m_animatesDrill || !before || !now || before == now || before.tree() != now.tree())
        return;
    const auto within = [](const FileNode* node, const FileNode* ancestor) {
        for (const FileNode* at = node->parent(); at; at = at->parent())
            if (at == ancestor)
                return true;
        return false;
    };
    m_drillingIn = within(now.get(), before.get());
    if (!m_drillingIn && !within(before.get(), now.get()))
        return; // a jump elsewhere in the tree: no place to move from
    m_drillOuter = m_drillingIn ? before : now;
    m_drillInner = m_drillingIn ? now : before;
    if (drillWindow(buildSegments(m_drillOuter.get(), width(), height()), m_drillInner.get()))
        m_drill.start();
}

void SunburstView::setEmphasis(ChartEmphasis* emphasis)
{
    if (m_emphasis == emphasis)
        return;
    if (m_emphasis)
        disconnect(m_emphasis, nullptr, this, nullptr);
    m_emphasis = emphasis;
    if (m_emphasis)
        connect(m_emphasis, &ChartEmphasis::changed, this, [this] { update(); });
    update();
    Q_EMIT emphasisChanged();
}

QVariantList SunburstView::kindColours() const
{
    QVariantList colours;
    for (const QColor& colour : m_kindColours)
        colours.append(colour);
    return colours;
}

void SunburstView::setKindColours(const QVariantList& given)
{
    QList<QColor> colours;
    for (const QVariant& colour : given)
        colours.append(colour.typeId() == QMetaType::QString ? QColor(colour.toString()) : colour.value<QColor>());
    if (m_kindColours == colours)
        return;
    m_kindColours = colours;
    update();
    Q_EMIT emphasisChanged();
}

double SunburstView::hubRadius() const
{
    return chartGeometry(width(), height()).hubRadius;
}

void SunburstView::paint(QPainter* painter)
{
    const ChartGeometry geometry = chartGeometry(width(), height());
    const FileNode* focus = m_state && m_state->focus() ? m_state->focus().get() : nullptr;
    std::vector<Segment> segments = buildSegments(focus, width(), height());
    // During a drill: the frame of the motion, with no fading and no names
    // (they would flicker as sectors pass); both come back at rest.
    const bool moving = drilling();
    if (moving) {
        const std::vector<Segment> outer = buildSegments(m_drillOuter.get(), width(), height());
        const std::vector<Segment> inner = buildSegments(m_drillInner.get(), width(), height());
        if (const Segment* window = drillWindow(outer, m_drillInner.get())) {
            const double eased = easeInOut(m_drill.currentValue().toDouble());
            segments = drillFrame(outer, inner, *window, geometry,
                                  m_drillingIn ? eased : 1 - eased, !m_drillingIn);
        }
    }
    const Segment* hit = nullptr;
    if (m_mouseLocation && !moving)
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
    SectorRestyle restyle;
    if (m_emphasis && m_emphasis->active())
        restyle = [this](const Segment& segment, const QColor& fill) {
            const SectorLook look = m_emphasis->look(segment.node);
            QColor out = fill;
            if (look.colourKind >= 0 && look.colourKind < m_kindColours.size()) {
                // A kind's colour, a step paler (lighter, or darker on a dark
                // background) each ring out, so that rings stay apart.
                const QColor kind = m_kindColours[look.colourKind];
                const int step = int(segment.ring) * (m_dark ? 9 : 7);
                out = m_dark ? kind.darker(100 + step) : kind.lighter(100 + step);
                out.setAlphaF(fill.alphaF());
            }
            out.setAlphaF(std::min(out.alphaF(), float(look.opacity)));
            return out;
        };
    const AppState* state = m_state;
    const SectorMarks marks{[state](const FileNode* node) { return state && state->isSelected(node); },
                            m_markColor};
    paintSunburst(m_canvas, geometry, segments, hit, m_hubColor, m_dark, restyle, &marks);
    // Names on the rings, so that the chart reads without hovering.
    if (!moving)
        paintRingLabels(m_canvas, geometry, segments,
                        placeRingLabels(segments, ringLabelMetrics(ringLabelFont())),
                        hit ? hit->node : nullptr, {m_labelDark, m_labelLight, m_hubColor}, m_dark, restyle);
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
