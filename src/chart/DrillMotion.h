#pragma once

#include "chart/SunburstLayout.h"

#include <vector>

namespace tw {

// Drilling in and out moves: the sector the user went into grows into the
// whole chart (or the whole shrinks back into it), so the eye follows where
// it went instead of finding a new picture. Pure geometry over two layouts
// of the same view size: the outer focus's and the inner one's, the inner a
// descendant of the outer.

inline constexpr double kDrillMilliseconds = 250;

// Slow at both ends.
[[nodiscard]] double easeInOut(double progress);

// The sector of `outer` the motion grows from: the inner focus's own, else
// its nearest ancestor's that was drawn (the inner focus may lie beyond the
// outer chart's rings or among its thin sectors); null when there is none
// with a width, and then there is nothing to animate.
[[nodiscard]] const Segment* drillWindow(const std::vector<Segment>& outer, const FileNode* innerFocus);

// The picture at `zoom`, from the outer focus's chart (0) to the inner
// focus's (1): the window sector and what lies in it spread over the
// whole, its neighbours squeezed towards the edges and its ancestors into
// the hub. Sectors of the inner chart keep the colours they have in the
// outer one unless `innerColours`; the resting chart at the end recolours.
// Sectors pushed beyond the chart's radius or squeezed to nothing are left
// out. Painter order: the outer chart's sectors, then the inner's.
[[nodiscard]] std::vector<Segment> drillFrame(const std::vector<Segment>& outer,
                                              const std::vector<Segment>& inner,
                                              const Segment& window, const ChartGeometry& geometry,
                                              double zoom, bool innerColours);

} // namespace tw
