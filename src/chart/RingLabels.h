#pragma once

#include "chart/SunburstLayout.h"

#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace tw {

// Names on the rings, so the chart reads without hovering. Pure geometry:
// where each name goes inside its sector, and how much of it fits. The
// drawing side supplies the font's measures; every figure is in points,
// angles as the layout has them (from twelve o'clock, clockwise).

struct LabelMetrics {
    double lineHeight = 0;                       // one line of the label font
    std::function<double(const QString&)> width; // advance of a text on one line
};

struct RingLabel {
    std::size_t segment = 0; // index in the segments it was placed for
    QString text;            // the name, or its start and "…" when it had to be cut
    // Along the arc (glyph by glyph on the circle through the ring's middle),
    // else straight: one line tangent to that circle at `angle`.
    bool curved = false;
    // In the lower half the text turns half a turn (curved: runs
    // counter-clockwise) so that it never reads upside down.
    bool flipped = false;
    double angle = 0;  // the text's middle
    double radius = 0; // of the text's centre line
    double width = 0;  // advance of `text`
    double height = 0; // the line height
};

// Clear space kept between a label and its sector's edges.
inline constexpr double kLabelPadding = 2.0;

// Where `name` goes in a sector of the given ring span and angles, or none
// when not even a few characters fit. A name is cut at a character
// (grapheme) boundary, never inside one, and keeps at least two of them.
[[nodiscard]] std::optional<RingLabel> placeLabel(const QString& name, double innerRadius,
                                                  double outerRadius, double startAngle,
                                                  double endAngle, const LabelMetrics& metrics);

// The labels of a laid-out chart, one per sector that has room, in the
// segments' order. Each lies inside its own sector with the padding, so no
// two overlap and none reaches the hub. Reads each node's display name.
[[nodiscard]] std::vector<RingLabel> placeRingLabels(const std::vector<Segment>& segments,
                                                     const LabelMetrics& metrics);

// Relative luminance of an sRGB colour (components 0...1), and which of two
// text luminances reads better on a background of luminance `background`:
// true for the first. Text on a sector follows its fill, hue by hue.
[[nodiscard]] double relativeLuminance(double red, double green, double blue);
[[nodiscard]] bool firstContrastsMore(double first, double second, double background);

} // namespace tw
