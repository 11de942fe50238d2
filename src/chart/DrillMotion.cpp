#include "chart/DrillMotion.h"

#include "scan/FileNode.h"

#include <algorithm>

namespace tw {

double easeInOut(double progress)
{
    const double t = std::clamp(progress, 0.0, 1.0);
    const double u = 2 - 2 * t;
    return t < 0.5 ? 4 * t * t * t : 1 - u * u * u / 2;
}

const Segment* drillWindow(const std::vector<Segment>& outer, const FileNode* innerFocus)
{
    for (const FileNode* at = innerFocus; at; at = at->parent())
        for (const Segment& segment : outer)
            if (segment.node == at)
                return segment.endAngle > segment.startAngle ? &segment : nullptr;
    return nullptr;
}

std::vector<Segment> drillFrame(const std::vector<Segment>& outer,
                                const std::vector<Segment>& inner, const Segment& window,
                                const ChartGeometry& geometry, double zoom, bool innerColours)
{
    // The span of the outer chart that fills the circle at this zoom, and
    // how many rings have gone into the hub.
    const double from = zoom * window.startAngle;
    const double to = kFullCircle + zoom * (window.endAngle - kFullCircle);
    const double spread = kFullCircle / (to - from);
    const double sunk = zoom * double(window.ring + 1);

    std::vector<Segment> frame;
    frame.reserve(outer.size() + inner.size());
    // `ring` may be fractional here: a position in the outer chart's rings.
    const auto place = [&](Segment segment, double start, double end, double ring) {
        const double position = ring - sunk;
        if (position >= kRingCount)
            return;
        segment.startAngle = std::clamp((start - from) * spread, 0.0, kFullCircle);
        segment.endAngle = std::clamp((end - from) * spread, 0.0, kFullCircle);
        segment.innerRadius = geometry.hubRadius + std::max(0.0, position) * geometry.ringThickness;
        segment.outerRadius =
            geometry.hubRadius +
            std::clamp(position + 1, 0.0, double(kRingCount)) * geometry.ringThickness;
        if (segment.endAngle > segment.startAngle && segment.outerRadius > segment.innerRadius)
            frame.push_back(segment);
    };

    for (const Segment& segment : outer) {
        // What lies inside the window is drawn from the inner chart.
        const FileNode* at = segment.node;
        for (qint64 up = segment.ring; up > window.ring && at; --up)
            at = at->parent();
        if (segment.ring > window.ring && at == window.node)
            continue;
        place(segment, segment.startAngle, segment.endAngle, double(segment.ring));
    }
    const double share = (window.endAngle - window.startAngle) / kFullCircle;
    for (Segment segment : inner) {
        const double ring = double(segment.ring + window.ring + 1);
        if (!innerColours) {
            segment.colorHue = window.colorHue;
            segment.ring = std::min<qint64>(segment.ring + window.ring + 1, kRingCount - 1);
        }
        place(segment, window.startAngle + segment.startAngle * share,
              window.startAngle + segment.endAngle * share, ring);
    }
    return frame;
}

} // namespace tw
