#pragma once

#include "screens/CoverageRaster.h"

#include <QRgb>
#include <span>

namespace tw {

// A sector of one ring. Angles are radians from twelve o'clock, clockwise on
// screen, from 0 up to 2π.
struct RingSector {
    double startAngle = 0;
    double endAngle = 0;
    QRgb fill = 0; // premultiplied
    bool isHit = false;
};

// The ring that a run of sectors shares, in pixels.
struct RingFrame {
    double centreX = 0;
    double centreY = 0;
    double innerRadius = 0;
    double outerRadius = 0;
};

// How every sector's outline is stroked, and the hit's once more; colours
// premultiplied, widths in pixels.
struct SectorStrokes {
    QRgb thin = 0;
    double thinWidth = 0;
    QRgb bold = 0;
    double boldWidth = 0;
};

// Whether a sector of `ring` between two angles gets its thin outline: not
// when it is narrower along its outer arc than the line itself. A folder of
// thousands of small files would otherwise draw as a smear of white lines
// wider than the sectors they surround, hiding every fill; without them the
// fills show. The hovered sector's bold line is drawn whatever its width.
[[nodiscard]] inline bool hasThinOutline(const RingFrame& ring, double startAngle,
                                         double endAngle, const SectorStrokes& strokes)
{
    return (endAngle - startAngle) * ring.outerRadius >= strokes.thinWidth;
}

// Paints consecutive sectors of one ring, in increasing angle, each filled and
// stroked in turn over what the band already holds: the picture that painting
// them one by one as polygons gives, within anti-aliasing.
//
// It works pixel by pixel instead of sector by sector. A folder of ten
// thousand files gives ten thousand sectors thinner than a pixel, each as
// long as the ring is thick; painted one by one, every pixel of the ring is
// visited dozens of times over, once for each sector and stroke reaching it.
// Here each pixel is visited once and blends the sectors that reach it, in
// their order.
void paintRingSectors(const PixelBand& band, const RingFrame& ring,
                      std::span<const RingSector> sectors, const SectorStrokes& strokes);

} // namespace tw
