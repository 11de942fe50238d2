#pragma once

#include <QtGlobal>
#include <cstdint>
#include <optional>
#include <vector>

namespace tw {

class FileNode;

// One drawn ring sector of the chart. Angles are radians from twelve o'clock,
// growing clockwise on screen; radii are points from the chart's centre.
struct Segment {
    // Unique across every layout of the process; nothing may rely on an id
    // surviving a layout.
    std::uint64_t id = 0;
    FileNode* node = nullptr; // never null; lives as long as the tree does
    qint64 ring = 0;          // 0 innermost .. 5 outermost
    double startAngle = 0;
    double endAngle = 0;
    double innerRadius = 0;
    double outerRadius = 0;
    qint64 depth = 1;    // ring + 1
    double colorHue = 0; // 0 up to 1; set on ring 0, inherited outward
};

// The chart's frame for a view of the given size, in points.
struct ChartGeometry {
    double radius = 0;        // R: half the shorter side less a 16-point margin
    double hubRadius = 0;     // R × 0.22
    double ringThickness = 0; // (R − hub) / 6: six rings fill hub to R exactly
    double centreX = 0;
    double centreY = 0;
};

inline constexpr int kRingCount = 6;
// Below this width (1.2 degrees) a sector beyond ring 0 is not drawn; its
// share stays an empty gap at the end of its parent's span.
inline constexpr double kMinimumSectorAngle = 0.020943951023931952;
inline constexpr double kFullCircle = 6.283185307179586;

[[nodiscard]] ChartGeometry chartGeometry(double width, double height);

// The sectors of `focus` in a view of width × height points, depth first:
// each sector comes just before the sectors of its children. Empty when the
// focus is null or has no bytes. Reads sizes and children; changes nothing.
[[nodiscard]] std::vector<Segment> buildSegments(const FileNode* focus, double width,
                                                 double height);

// The one hit test. (dx, dy) is relative to the chart's centre, y down. All
// four bounds are inclusive; at a ring boundary the outer ring wins, between
// sectors of one ring the earlier one. Null for the hub, the margin, the gaps.
[[nodiscard]] const Segment* segmentAt(double dx, double dy, const std::vector<Segment>& segments);

// How a ring is shaded: outer rings of a branch are paler and darker.
struct Shade {
    double saturation;
    double brightness;
};
// On a dark background the rings keep one softer saturation (paling them
// there would lighten them) and step down in brightness twice as fast, so
// that neighbours stay apart; the floor keeps the outer ring off the window.
[[nodiscard]] Shade shadeForRing(qint64 ring, bool dark = false);

} // namespace tw
