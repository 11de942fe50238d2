#pragma once

#include "chart/SunburstLayout.h"

#include <QColor>
#include <vector>

class QPainter;

namespace tw {

// Paints a laid-out chart: every sector in list order (fill, thin white
// stroke, the hit's bold stroke), then the hub. With a `hit`, all but the hit
// sector and its ancestors fade to 0.35. Shared by SunburstView and the chart
// benchmark so the benchmark measures the real thing.
void paintSunburst(QPainter& painter, const ChartGeometry& geometry,
                   const std::vector<Segment>& segments, const Segment* hit,
                   const QColor& hubColor);

} // namespace tw
