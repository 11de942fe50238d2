#include "screens/SunburstPainter.h"

#include "scan/FileNode.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace tw {

namespace {
constexpr double kFadedOpacity = 0.35;

// The outline of a sector: the outer arc from start to end, a line in to the
// inner arc, the inner arc back, closed. Arcs are drawn as polylines whose
// chords stray at most a tenth of a point from the true circle: the same
// picture as curves, at a fraction of the cost with thousands of sectors.
void addArc(QPolygonF& outline, const ChartGeometry& g, double radius, double from, double to)
{
    constexpr double kMaxDeviation = 0.1;
    const double step =
        radius > kMaxDeviation ? 2 * std::acos(1 - kMaxDeviation / radius) : std::numbers::pi / 2;
    const int pieces = std::max(1, int(std::ceil(std::abs(to - from) / step)));
    for (int i = 0; i <= pieces; ++i) {
        const double a = from + (to - from) * i / pieces;
        outline.append(QPointF(g.centreX + radius * std::sin(a), g.centreY - radius * std::cos(a)));
    }
}

QPolygonF sectorOutline(const ChartGeometry& g, const Segment& s)
{
    QPolygonF outline;
    addArc(outline, g, s.outerRadius, s.startAngle, s.endAngle);
    addArc(outline, g, s.innerRadius, s.endAngle, s.startAngle);
    return outline;
}

bool isAncestorOf(const FileNode* candidate, const FileNode* node)
{
    for (const FileNode* at = node->parent(); at; at = at->parent()) {
        if (at == candidate)
            return true;
    }
    return false;
}
} // namespace

void paintSunburst(QPainter& painter, const ChartGeometry& geometry,
                   const std::vector<Segment>& segments, const Segment* hit, const QColor& hubColor)
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    // Strokes are cosmetic pens of the same width in device pixels: the
    // general stroker costs several times more per sector, which matters
    // with thousands of thin sectors redrawn on each mouse movement.
    const double scale = std::max(painter.deviceTransform().m11(), 1e-6);
    QColor thinStroke(Qt::white);
    thinStroke.setAlphaF(0.35F);
    QPen thinPen(thinStroke, 0.8 * scale);
    thinPen.setCosmetic(true);
    QPen hitPen(Qt::white, 2.2 * scale);
    hitPen.setCosmetic(true);
    const FileNode* hitNode = hit ? hit->node : nullptr;

    for (const Segment& segment : segments) {
        const bool isHit = hitNode && segment.node == hitNode;
        const bool bright = !hitNode || isHit || isAncestorOf(segment.node, hitNode);
        const Shade shade = shadeForRing(segment.ring);
        QColor fill = QColor::fromHsvF(float(segment.colorHue), float(shade.saturation),
                                       float(shade.brightness));
        if (!bright)
            fill.setAlphaF(float(kFadedOpacity));
        const QPolygonF outline = sectorOutline(geometry, segment);
        // Filled, then stroked thin; the hit once more in bold.
        painter.setBrush(fill);
        painter.setPen(thinPen);
        painter.drawPolygon(outline);
        if (isHit) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(hitPen);
            painter.drawPolygon(outline);
        }
    }

    QColor hubFill = hubColor;
    hubFill.setAlphaF(0.85F);
    QColor hubStroke(Qt::white);
    hubStroke.setAlphaF(0.15F);
    painter.setPen(QPen(hubStroke, 1.0));
    painter.setBrush(hubFill);
    painter.drawEllipse(QPointF(geometry.centreX, geometry.centreY), geometry.hubRadius,
                        geometry.hubRadius);
}

} // namespace tw
