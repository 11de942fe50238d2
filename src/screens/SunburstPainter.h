#pragma once

#include "chart/SunburstLayout.h"
#include "screens/ThinSectors.h"

#include <QColor>
#include <QPointF>
#include <functional>
#include <vector>

class QImage;

namespace tw {

// Paints a laid-out chart into `canvas` (QImage::Format_ARGB32_Premultiplied,
// whose device pixel ratio turns the geometry's points into pixels): every
// sector in list order (fill, thin white stroke, the hit's bold stroke), then
// the hub. With a `hit`, all but the hit sector and its ancestors fade to
// 0.35. Shared by SunburstView and the chart benchmark so the benchmark
// measures the real thing.
// `dark`: the shades and thin strokes for a dark background.
// `marks`, when given, outlines the sectors it names in its colour (the
// picked items of a batch), drawn over the fill so the mark is a shape too.
struct SectorMarks {
    std::function<bool(const FileNode*)> isMarked;
    QColor color;
};
// `restyle`, when given, turns each sector's fill into the one to paint (the
// chart's colouring by kind, and the fading around a chosen kind or item).
using SectorRestyle = std::function<QColor(const Segment& segment, const QColor& fill)>;
void paintSunburst(QImage& canvas, const ChartGeometry& geometry,
                   const std::vector<Segment>& segments, const Segment* hit,
                   const QColor& hubColor, bool dark = false, const SectorRestyle& restyle = {},
                   const SectorMarks* marks = nullptr);

// A sector's fill: its hue at its ring's shade, faded to 0.35 while
// something is hovered unless it is the hovered node or one of its ancestors.
[[nodiscard]] QColor sectorFill(const Segment& segment, const FileNode* hovered, bool dark = false);

// A sector of `ring` as a closed polygon, appended to `points`: the outer arc
// from start to end, then the inner arc back, both as polylines whose chords
// stray at most a tenth of a pixel from the circle.
void appendSectorOutline(std::vector<QPointF>& points, const RingFrame& ring, double startAngle,
                         double endAngle);

} // namespace tw
