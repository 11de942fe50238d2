#include "chart/RingLabels.h"

#include "scan/FileNode.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double kPi = std::numbers::pi;
const QString kEllipsis(QChar(0x2026));

// The grapheme boundaries of `text` after its first: cutting only there keeps
// combining marks with their letter and surrogate pairs whole.
std::vector<qsizetype> graphemeEnds(const QString& text)
{
    std::vector<qsizetype> ends;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    while (finder.toNextBoundary() > 0)
        ends.push_back(finder.position());
    return ends;
}

// The longest start of `name` that, with "…", fits `room`; at least two
// characters, else nothing.
std::optional<QString> elided(const QString& name, double room, const LabelMetrics& metrics)
{
    const std::vector<qsizetype> ends = graphemeEnds(name);
    if (ends.size() < 3) // two characters and the ellipsis are no shorter than the name
        return std::nullopt;
    const auto cut = [&](std::size_t count) -> QString { return name.left(ends[count - 1]) + kEllipsis; };
    std::size_t fits = 0;
    std::size_t low = 2, high = ends.size() - 1; // the whole name did not fit
    while (low <= high) {
        const std::size_t middle = (low + high) / 2;
        if (metrics.width(cut(middle)) <= room) {
            fits = middle;
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    if (fits == 0)
        return std::nullopt;
    // No blank just before the ellipsis.
    QString text = cut(fits);
    while (text.size() > 1 && text[text.size() - 2].isSpace())
        text.remove(text.size() - 2, 1);
    return text;
}

} // namespace

std::optional<RingLabel> placeLabel(const QString& name, double innerRadius, double outerRadius,
                                    double startAngle, double endAngle,
                                    const LabelMetrics& metrics)
{
    const double h = metrics.lineHeight;
    const double pad = kLabelPadding;
    if (name.isEmpty() || h <= 0 || outerRadius - innerRadius < h + 2 * pad)
        return std::nullopt;
    const double middle = (innerRadius + outerRadius) / 2;
    const double half = (endAngle - startAngle) / 2;
    const double innerEdge = middle - h / 2; // the text's side nearest the centre
    // Along the arc: the span at the text's inner side, less the padding at
    // both ends; at most half a circle, so a full ring's name reads as one line.
    const double curvedRoom =
        middle * (std::min(2 * half, kPi) - 2 * pad / std::max(innerEdge, pad));
    // Most sectors of a dense folder are far too thin for any text: leave
    // them before measuring anything.
    if (curvedRoom < h)
        return std::nullopt;
    // Straight, tangent at the middle: its outer corners stay inside the
    // outer circle, its inner corners off the sector's sides.
    const double outerLimit = outerRadius - pad;
    double straightHalf =
        std::sqrt(std::max(0.0, outerLimit * outerLimit - (middle + h / 2) * (middle + h / 2)));
    if (half < kPi / 2)
        straightHalf =
            std::min(straightHalf, (innerEdge * std::sin(half) - pad) / std::cos(half));
    const double straightRoom = std::max(0.0, 2 * straightHalf);

    RingLabel label;
    label.angle = startAngle + half;
    label.radius = middle;
    label.height = h;
    label.flipped = label.angle > kPi / 2 && label.angle < 3 * kPi / 2;
    const double natural = metrics.width(name);
    if (natural <= straightRoom) {
        label.text = name;
        label.width = natural;
        return label;
    }
    label.curved = curvedRoom > straightRoom;
    const double room = label.curved ? curvedRoom : straightRoom;
    if (natural <= room) {
        label.text = name;
        label.width = natural;
        return label;
    }
    std::optional<QString> text = elided(name, room, metrics);
    if (!text)
        return std::nullopt;
    label.text = std::move(*text);
    label.width = metrics.width(label.text);
    return label;
}

std::vector<RingLabel> placeRingLabels(const std::vector<Segment>& segments,
                                       const LabelMetrics& metrics)
{
    std::vector<RingLabel> labels;
    for (std::size_t index = 0; index < segments.size(); ++index) {
        const Segment& segment = segments[index];
        // The cheap test first: the name is decoded only for sectors with room.
        const double middle = (segment.innerRadius + segment.outerRadius) / 2;
        if ((segment.endAngle - segment.startAngle) * middle < 2 * metrics.lineHeight)
            continue;
        std::optional<RingLabel> label =
            placeLabel(segment.node->displayName(), segment.innerRadius, segment.outerRadius,
                       segment.startAngle, segment.endAngle, metrics);
        if (!label)
            continue;
        label->segment = index;
        labels.push_back(std::move(*label));
    }
    return labels;
}

double relativeLuminance(double red, double green, double blue)
{
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}

bool firstContrastsMore(double first, double second, double background)
{
    const auto contrast = [background](double text) {
        return (std::max(text, background) + 0.05) / (std::min(text, background) + 0.05);
    };
    return contrast(first) >= contrast(second);
}

} // namespace tw
