#include "chart/SunburstLayout.h"

#include "scan/FileNode.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace tw {

namespace {

constexpr double kGoldenFraction = 0.61803398875;

std::uint64_t nextId()
{
    static std::atomic<std::uint64_t> counter{0};
    return counter.fetch_add(1, std::memory_order_relaxed) + 1;
}

struct Placed {
    FileNode* node; // null for the rest of the thin children
    double fraction;
    double hue;
};

class Layout {
public:
    Layout(const ChartGeometry& geometry, std::vector<Segment>& out)
        : m_geometry(geometry), m_out(out)
    {
    }

    void run(const FileNode& node, qint64 ring, double startAngle, double endAngle, double hue)
    {
        if (ring >= kRingCount || node.size() < 1 || !node.hasChildren())
            return;
        qint64 total = 0;
        for (const FileNode& child : node.children())
            total += child.size();
        if (total < 1)
            return;

        const double span = endAngle - startAngle;
        // Each level keeps its own list, reused for the next sibling at that level.
        std::vector<Placed>& placed = m_placed[std::size_t(ring)];
        placed.clear();
        qint64 index = 0;
        for (FileNode& child : node.children()) {
            const double fraction = double(child.size()) / double(total);
            if (span * fraction >= kMinimumSectorAngle || ring == 0) {
                double childHue = hue;
                if (ring == 0) {
                    const double turns = double(index) * kGoldenFraction;
                    childHue = turns - std::floor(turns);
                }
                placed.push_back({&child, fraction, childHue});
            }
            ++index;
        }
        if (placed.empty())
            return;
        // The rest of the thin children is the last share of the span: it
        // makes no sector, so nothing needs to be added for it.

        const double innerRadius = m_geometry.hubRadius + m_geometry.ringThickness * double(ring);
        const double outerRadius = m_geometry.ringThickness + innerRadius;
        double angle = startAngle;
        // Copy out: the recursion below reuses the lists of deeper levels only.
        for (std::size_t i = 0; i < placed.size(); ++i) {
            const Placed entry = placed[i];
            const double from = angle;
            angle += span * entry.fraction;
            m_out.push_back(Segment{nextId(), entry.node, ring, from, angle, innerRadius,
                                    outerRadius, ring + 1, entry.hue});
            if (entry.node->isDirectory() && entry.node->hasChildren())
                run(*entry.node, ring + 1, from, angle, entry.hue);
        }
    }

private:
    const ChartGeometry& m_geometry;
    std::vector<Segment>& m_out;
    std::vector<Placed> m_placed[kRingCount];
};

} // namespace

ChartGeometry chartGeometry(double width, double height)
{
    ChartGeometry g;
    g.radius = std::min(width, height) * 0.5 - 16;
    g.hubRadius = g.radius * 0.22;
    g.ringThickness = (g.radius - g.hubRadius) / kRingCount;
    g.centreX = width * 0.5;
    g.centreY = height * 0.5;
    return g;
}

std::vector<Segment> buildSegments(const FileNode* focus, double width, double height)
{
    std::vector<Segment> segments;
    if (!focus || focus->size() < 1)
        return segments;
    const ChartGeometry geometry = chartGeometry(width, height);
    Layout layout(geometry, segments);
    layout.run(*focus, 0, 0, kFullCircle, 0);
    return segments;
}

const Segment* segmentAt(double dx, double dy, const std::vector<Segment>& segments)
{
    const double radius = std::hypot(dx, dy);
    double angle = std::atan2(dx, -dy);
    if (angle < 0)
        angle += kFullCircle;
    const Segment* result = nullptr;
    for (const Segment& s : segments) {
        if (s.innerRadius <= radius && radius <= s.outerRadius && s.startAngle <= angle &&
            angle <= s.endAngle) {
            if (!result || s.ring > result->ring)
                result = &s;
        }
    }
    return result;
}

Shade shadeForRing(qint64 ring, bool dark)
{
    if (dark)
        return {0.45, std::max(0.95 - 0.08 * double(ring), 0.55)};
    return {std::max(0.55 - 0.05 * double(ring), 0.3), std::max(0.95 - 0.04 * double(ring), 0.75)};
}

} // namespace tw
