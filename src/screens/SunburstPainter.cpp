#include "screens/SunburstPainter.h"

#include "scan/FileNode.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <numbers>

namespace tw {

namespace {
constexpr double kFadedOpacity = 0.35;
constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

// Chart angles run clockwise from twelve o'clock; Qt's arcs run
// anticlockwise from three o'clock.
QPainterPath sectorPath(const ChartGeometry& g, const Segment& s)
{
    const double sweep = (s.endAngle - s.startAngle) * kDegreesPerRadian;
    const double startQt = 90.0 - s.startAngle * kDegreesPerRadian;
    const double endQt = 90.0 - s.endAngle * kDegreesPerRadian;
    const QRectF outer(g.centreX - s.outerRadius, g.centreY - s.outerRadius, 2 * s.outerRadius, 2 * s.outerRadius);
    const QRectF inner(g.centreX - s.innerRadius, g.centreY - s.innerRadius, 2 * s.innerRadius, 2 * s.innerRadius);
    QPainterPath path;
    path.moveTo(g.centreX + s.outerRadius * std::sin(s.startAngle), g.centreY - s.outerRadius * std::cos(s.startAngle));
    path.arcTo(outer, startQt, -sweep);
    path.lineTo(g.centreX + s.innerRadius * std::sin(s.endAngle), g.centreY - s.innerRadius * std::cos(s.endAngle));
    path.arcTo(inner, endQt, sweep);
    path.closeSubpath();
    return path;
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

void paintSunburst(QPainter& painter, const ChartGeometry& geometry, const std::vector<Segment>& segments,
                   const Segment* hit, const QColor& hubColor)
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    QColor thinStroke(Qt::white);
    thinStroke.setAlphaF(0.35F);
    const QPen thinPen(thinStroke, 0.8);
    const QPen hitPen(Qt::white, 2.2);
    const FileNode* hitNode = hit ? hit->node : nullptr;

    for (const Segment& segment : segments) {
        const bool isHit = hitNode && segment.node == hitNode;
        const bool bright = !hitNode || isHit || isAncestorOf(segment.node, hitNode);
        const Shade shade = shadeForRing(segment.ring);
        QColor fill = QColor::fromHsvF(float(segment.colorHue), float(shade.saturation), float(shade.brightness));
        if (!bright)
            fill.setAlphaF(float(kFadedOpacity));
        const QPainterPath path = sectorPath(geometry, segment);
        painter.fillPath(path, fill);
        painter.strokePath(path, thinPen);
        if (isHit)
            painter.strokePath(path, hitPen);
    }

    QColor hubFill = hubColor;
    hubFill.setAlphaF(0.85F);
    QColor hubStroke(Qt::white);
    hubStroke.setAlphaF(0.15F);
    painter.setPen(QPen(hubStroke, 1.0));
    painter.setBrush(hubFill);
    painter.drawEllipse(QPointF(geometry.centreX, geometry.centreY), geometry.hubRadius, geometry.hubRadius);
}

} // namespace tw
