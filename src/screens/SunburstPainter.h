#pragma once

#include "chart/SunburstLayout.h"

#include <QColor>
#include <vector>

class QImage;

namespace tw {

// Paints a laid-out chart into `canvas` (QImage::Format_ARGB32_Premultiplied,
// whose device pixel ratio turns the geometry's points into pixels): every
// sector in list order (fill, thin white stroke, the hit's bold stroke), then
// the hub. With a `hit`, all but the hit sector and its ancestors fade to
// 0.35. Shared by SunburstView and the chart benchmark so the benchmark
// measures the real thing.
void paintSunburst(QImage& canvas, const ChartGeometry& geometry,
                   const std::vector<Segment>& segments, const Segment* hit,
                   const QColor& hubColor);

} // namespace tw
