#include "screens/SunburstPainter.h"

#include "scan/FileNode.h"
#include "screens/CoverageRaster.h"
#include "screens/ThinSectors.h"

#include <QImage>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <thread>

namespace tw {

namespace {
constexpr double kFadedOpacity = 0.35;
// Sectors narrower than this many pixels along their outer arc are painted
// pixel by pixel, a run of them at a time (see paintRingSectors).
constexpr double kThinSector = 2.0;

// Arcs become polylines whose chords stray at most a tenth of a pixel from
// the true circle: the same picture as curves.
void addArc(std::vector<QPointF>& outline, double centreX, double centreY, double radius,
            double from, double to)
{
    constexpr double kMaxDeviation = 0.1;
    const double step =
        radius > kMaxDeviation ? 2 * std::acos(1 - kMaxDeviation / radius) : std::numbers::pi / 2;
    const int pieces = std::max(1, int(std::ceil(std::abs(to - from) / step)));
    for (int i = 0; i <= pieces; ++i) {
        const double a = from + (to - from) * i / pieces;
        outline.emplace_back(centreX + radius * std::sin(a), centreY - radius * std::cos(a));
    }
}

// What is painted, in order: runs of thin sectors of one ring, and single
// sectors as polygons.
struct Step {
    std::size_t firstSector = 0;
    std::size_t sectorCount = 0; // a run when above zero
    std::size_t firstPoint = 0;  // else an outline
    std::size_t pointCount = 0;
    RingFrame ring;
};

struct Picture {
    std::vector<Step> steps;
    std::vector<RingSector> sectors; // the runs'
    std::vector<QPointF> points;     // the outlines'
    std::vector<QColor> fills;       // the outlines'
    std::vector<bool> hits;          // the outlines'
    std::vector<bool> marked;        // the outlines'
    QColor markColor;
    std::vector<bool> outlined;      // the outlines': wide enough for the thin line
    std::size_t hubFirst = 0;
    SectorStrokes strokes;
    QColor hubFill;
    double hubStrokeWidth = 1;
};

void paintBand(const Picture& picture, const PixelBand& band)
{
    CoverageRaster raster(band);
    QColor thinStroke = QColor::fromRgba(qUnpremultiply(picture.strokes.thin));
    std::size_t outline = 0;
    for (const Step& step : picture.steps) {
        if (step.sectorCount > 0) {
            paintRingSectors(band, step.ring,
                             std::span(picture.sectors).subspan(step.firstSector, step.sectorCount),
                             picture.strokes);
            continue;
        }
        const std::span<const QPointF> points(picture.points.data() + step.firstPoint,
                                              step.pointCount);
        // Filled, then stroked thin; the hit once more in bold.
        raster.fill(points, picture.fills[outline]);
        if (picture.outlined[outline])
            raster.stroke(points, picture.strokes.thinWidth, thinStroke);
        if (picture.marked[outline])
            raster.stroke(points, picture.strokes.boldWidth * 1.4, picture.markColor);
        if (picture.hits[outline])
            raster.stroke(points, picture.strokes.boldWidth, Qt::white);
        ++outline;
    }
    const std::span<const QPointF> hub(picture.points.data() + picture.hubFirst,
                                       picture.points.size() - picture.hubFirst);
    QColor hubStroke(Qt::white);
    hubStroke.setAlphaF(0.15F);
    raster.fill(hub, picture.hubFill);
    raster.stroke(hub, picture.hubStrokeWidth, hubStroke);
}
} // namespace

QColor sectorFill(const Segment& segment, const FileNode* hovered, bool dark)
{
    const Shade shade = shadeForRing(segment.ring, dark);
    QColor fill =
        QColor::fromHsvF(float(segment.colorHue), float(shade.saturation), float(shade.brightness));
    bool bright = !hovered || segment.node == hovered;
    for (const FileNode* at = hovered ? hovered->parent() : nullptr; at && !bright;
         at = at->parent())
        bright = at == segment.node;
    if (!bright)
        fill.setAlphaF(float(kFadedOpacity));
    return fill;
}

void appendSectorOutline(std::vector<QPointF>& points, const RingFrame& ring, double startAngle,
                         double endAngle)
{
    addArc(points, ring.centreX, ring.centreY, ring.outerRadius, startAngle, endAngle);
    addArc(points, ring.centreX, ring.centreY, ring.innerRadius, endAngle, startAngle);
}

void paintSunburst(QImage& canvas, const ChartGeometry& geometry,
                   const std::vector<Segment>& segments, const Segment* hit, const QColor& hubColor,
                   bool dark, const SectorRestyle& restyle, const SectorMarks* marks)
{
    Q_ASSERT(canvas.format() == QImage::Format_ARGB32_Premultiplied);
    const double scale = canvas.devicePixelRatio();
    const double cx = geometry.centreX * scale;
    const double cy = geometry.centreY * scale;
    const FileNode* hitNode = hit ? hit->node : nullptr;

    Picture picture;
    // Sectors part with a line of the background's kind: white on light, black on dark.
    QColor thinStroke(dark ? Qt::black : Qt::white);
    thinStroke.setAlphaF(0.35F);
    picture.strokes = {qPremultiply(thinStroke.rgba()), 0.8 * scale, qRgba(255, 255, 255, 255),
                       2.2 * scale};
    picture.hubFill = hubColor;
    picture.hubFill.setAlphaF(0.85F);
    picture.hubStrokeWidth = scale;
    if (marks)
        picture.markColor = marks->color;

    for (const Segment& segment : segments) {
        const bool isHit = hitNode && segment.node == hitNode;
        const QColor fill =
            restyle ? restyle(segment, sectorFill(segment, hitNode, dark)) : sectorFill(segment, hitNode, dark);
        const double outer = segment.outerRadius * scale;
        const double inner = segment.innerRadius * scale;
        if ((segment.endAngle - segment.startAngle) * outer < kThinSector) {
            // Joins the run before it when that run is of the same ring.
            Step* run = picture.steps.empty() ? nullptr : &picture.steps.back();
            if (!run || run->sectorCount == 0 || run->ring.innerRadius != inner) {
                picture.steps.push_back({picture.sectors.size(), 0, 0, 0, {cx, cy, inner, outer}});
                run = &picture.steps.back();
            }
            picture.sectors.push_back(
                {segment.startAngle, segment.endAngle, qPremultiply(fill.rgba()), isHit});
            ++run->sectorCount;
            continue;
        }
        Step step;
        step.firstPoint = picture.points.size();
        appendSectorOutline(picture.points, {cx, cy, inner, outer}, segment.startAngle,
                            segment.endAngle);
        step.pointCount = picture.points.size() - step.firstPoint;
        picture.steps.push_back(step);
        picture.fills.push_back(fill);
        picture.hits.push_back(isHit);
        picture.marked.push_back(marks && marks->isMarked && marks->isMarked(segment.node));
        picture.outlined.push_back(hasThinOutline({cx, cy, inner, outer}, segment.startAngle,
                                                  segment.endAngle, picture.strokes));
    }
    picture.hubFirst = picture.points.size();
    addArc(picture.points, cx, cy, geometry.hubRadius * scale, 0, 2 * std::numbers::pi);

    // Horizontal bands, one a core, each painting everything within its rows.
    // The pixels are the same however many there are.
    const int bands = int(std::clamp(std::thread::hardware_concurrency(), 1U, 4U));
    const auto bandOf = [&](int index) {
        return PixelBand{canvas.bits(), canvas.width(), canvas.bytesPerLine(),
                         canvas.height() * index / bands, canvas.height() * (index + 1) / bands};
    };
    std::vector<std::thread> helpers;
    for (int index = 1; index < bands; ++index)
        helpers.emplace_back([&picture, band = bandOf(index)] { paintBand(picture, band); });
    paintBand(picture, bandOf(0));
    for (std::thread& helper : helpers)
        helper.join();
}

} // namespace tw
