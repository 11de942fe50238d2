#include "screens/ThinSectors.h"

#include <QRectF>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace tw {

namespace {
constexpr double kTwoPi = 2 * std::numbers::pi;

// Colour channels from 0 to 1, premultiplied. A pixel here takes dozens of
// layers; blending them in floats and rounding once keeps the thin strokes
// from drifting as 8-bit rounding would on every layer.
struct Channels {
    float alpha = 0, red = 0, green = 0, blue = 0;

    static Channels of(QRgb colour)
    {
        return {float(qAlpha(colour)) / 255, float(qRed(colour)) / 255, float(qGreen(colour)) / 255,
                float(qBlue(colour)) / 255};
    }

    void paintOver(const Channels& over, float coverage)
    {
        const float keep = 1 - over.alpha * coverage;
        alpha = over.alpha * coverage + alpha * keep;
        red = over.red * coverage + red * keep;
        green = over.green * coverage + green * keep;
        blue = over.blue * coverage + blue * keep;
    }

    [[nodiscard]] std::uint32_t pixel() const
    {
        const auto byte = [](float value) {
            return std::uint32_t(std::clamp(value * 255 + 0.5F, 0.0F, 255.0F));
        };
        return byte(alpha) << 24 | byte(red) << 16 | byte(green) << 8 | byte(blue);
    }
};

// The length of [from, to] within [low, high].
double overlap(double from, double to, double low, double high)
{
    return std::max(0.0, std::min(to, high) - std::max(from, low));
}

// The length of the union of two intervals of the same width within [low, high].
double unionOverlap(double from1, double to1, double from2, double to2, double low, double high)
{
    if (from2 < from1) {
        std::swap(from1, from2);
        std::swap(to1, to2);
    }
    if (from2 <= to1)
        return overlap(from1, std::max(to1, to2), low, high);
    return overlap(from1, to1, low, high) + overlap(from2, to2, low, high);
}

// A stroke is taken as the union of one band for each edge, centred on it,
// as long as the edge and as wide as the line: two bands across the ring
// along the radial edges, two along the arcs. The pixel is taken as a unit
// square aligned with the radius.

// What of a pixel at radius r the ring's radial extents cover, for one line
// width. The same for every sector of the ring.
struct RadialShares {
    double ring;       // between the inner and the outer radius
    double arcs;       // under the arcs' bands
    double arcsInRing; // under the arcs' bands and within the ring
};

RadialShares radialShares(const RingFrame& ring, double r, double half)
{
    const double low = r - 0.5, high = r + 0.5;
    const auto arcsWithin = [&](double from, double to) {
        return unionOverlap(ring.innerRadius - half, ring.innerRadius + half,
                            ring.outerRadius - half, ring.outerRadius + half, from, to);
    };
    return {overlap(ring.innerRadius, ring.outerRadius, low, high), arcsWithin(low, high),
            arcsWithin(std::max(low, ring.innerRadius), std::min(high, ring.outerRadius))};
}

// The share of the pixel under a sector's stroke; `start` and `end` are
// where the sector's radial edges pass the pixel, in pixels along the circle
// from its centre.
float strokeShare(const RadialShares& radial, double start, double end, double half)
{
    const auto radialBandsWithin = [&](double from, double to) {
        return unionOverlap(start - half, start + half, end - half, end + half, from, to);
    };
    const double across = radialBandsWithin(-0.5, 0.5);
    const double acrossInSector = radialBandsWithin(std::max(-0.5, start), std::min(0.5, end));
    const double along = overlap(start, end, -0.5, 0.5);
    // Both kinds of band, less the corners where they cross.
    return float(std::min(1.0, across * radial.ring + radial.arcs * along -
                                   acrossInSector * radial.arcsInRing));
}
// The box around the part of a disc of `radius` between two angles (clockwise
// from twelve o'clock), with the centre: the ends of its arc, any of the four
// compass points the arc passes, and the centre itself.
QRectF runBox(const RingFrame& ring, double from, double to, double radius)
{
    if (to - from >= kTwoPi)
        return {ring.centreX - radius, ring.centreY - radius, 2 * radius, 2 * radius};
    double left = ring.centreX, right = ring.centreX, top = ring.centreY, bottom = ring.centreY;
    const auto include = [&](double angle) {
        const double x = ring.centreX + radius * std::sin(angle);
        const double y = ring.centreY - radius * std::cos(angle);
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
    };
    include(from);
    include(to);
    for (int quarter = int(std::ceil(from / (kTwoPi / 4))); quarter * (kTwoPi / 4) < to; ++quarter)
        include(quarter * (kTwoPi / 4));
    return {left, top, right - left, bottom - top};
}
} // namespace

void paintRingSectors(const PixelBand& band, const RingFrame& ring,
                      std::span<const RingSector> sectors, const SectorStrokes& strokes)
{
    if (sectors.empty())
        return;
    const auto hit =
        std::find_if(sectors.begin(), sectors.end(), [](const RingSector& s) { return s.isHit; });
    const bool anyHit = hit != sectors.end();
    const double thinHalf = strokes.thinWidth / 2;
    const double boldHalf = strokes.boldWidth / 2;
    // How far from a sector's outline a pixel centre can still be touched.
    const double thinReach = 0.5 + thinHalf + 1e-6;
    const double reach = 0.5 + std::max(thinHalf, anyHit ? boldHalf : 0.0) + 1e-6;
    const double nearest = std::max(0.0, ring.innerRadius - reach);
    const double farthest = ring.outerRadius + reach;
    const double runStart = sectors.front().startAngle;
    const double runEnd = sectors.back().endAngle;
    const Channels thin = Channels::of(strokes.thin);
    const Channels bold = Channels::of(strokes.bold);

    // Only the box around the run's part of the ring, and only the annulus
    // within it: the hole in the middle is left alone.
    const QRectF box =
        runBox(ring, runStart, runEnd, farthest).adjusted(-reach, -reach, reach, reach);
    const int firstRow = std::max(band.firstRow, int(std::floor(box.top())));
    const int endRow = std::min(band.endRow, int(std::ceil(box.bottom())));
    const int boxLeft = std::max(0, int(std::floor(box.left())));
    const int boxRight = std::min(band.width, int(std::ceil(box.right())));
    for (int y = firstRow; y < endRow; ++y) {
        const double dy = y + 0.5 - ring.centreY;
        if (std::abs(dy) > farthest)
            continue;
        const double halfChord = std::sqrt(farthest * farthest - dy * dy);
        const double holeChord =
            std::abs(dy) < nearest ? std::sqrt(nearest * nearest - dy * dy) : 0.0;
        const int firstColumn = std::max(boxLeft, int(std::floor(ring.centreX - halfChord)));
        const int endColumn = std::min(boxRight, int(std::ceil(ring.centreX + halfChord)));
        const int holeFirst = int(std::ceil(ring.centreX - holeChord));
        const int holeEnd = int(std::floor(ring.centreX + holeChord));
        std::uint32_t* pixels = band.row(y);
        for (int x = firstColumn; x < endColumn; ++x) {
            if (x >= holeFirst && x < holeEnd) {
                x = holeEnd - 1;
                continue;
            }
            const double dx = x + 0.5 - ring.centreX;
            const double r = std::hypot(dx, dy);
            if (r < nearest || r > farthest)
                continue;
            double angle = std::atan2(dx, -dy);
            if (angle < 0)
                angle += kTwoPi;
            const double window = reach / r;
            const double thinWindow = thinReach / r;
            const RadialShares thinShares = radialShares(ring, r, thinHalf);
            const RadialShares boldShares =
                anyHit ? radialShares(ring, r, boldHalf) : RadialShares{};
            Channels colour;
            bool touched = false;
            // Fills of neighbours that tile the pixel without a line between
            // them add up by their shares, as they would drawn finer than a
            // pixel; blended one over another they would leave the background
            // showing through. They join the pixel before any line.
            Channels tiled;
            float tiledShare = 0;
            const auto joinTiled = [&] {
                if (tiledShare <= 0)
                    return;
                const float keep = 1 - tiled.alpha;
                colour = {tiled.alpha + colour.alpha * keep, tiled.red + colour.red * keep,
                          tiled.green + colour.green * keep, tiled.blue + colour.blue * keep};
                tiled = {};
                tiledShare = 0;
            };
            const auto paint = [&](const RingSector& sector, double at) {
                if (!touched) {
                    colour = Channels::of(pixels[x]);
                    touched = true;
                }
                const double start = (sector.startAngle - at) * r;
                const double end = (sector.endAngle - at) * r;
                const float fill = float(thinShares.ring * overlap(start, end, -0.5, 0.5));
                const bool outlined = hasThinOutline(ring, sector.startAngle, sector.endAngle, strokes);
                if (fill > 0) {
                    if (outlined) {
                        joinTiled();
                        colour.paintOver(Channels::of(sector.fill), fill);
                    } else {
                        const Channels over = Channels::of(sector.fill);
                        tiled.alpha += over.alpha * fill;
                        tiled.red += over.red * fill;
                        tiled.green += over.green * fill;
                        tiled.blue += over.blue * fill;
                        tiledShare += fill;
                    }
                }
                if (outlined) {
                    if (const float share = strokeShare(thinShares, start, end, thinHalf);
                        share > 0)
                        colour.paintOver(thin, share);
                }
                if (sector.isHit) {
                    if (const float share = strokeShare(boldShares, start, end, boldHalf);
                        share > 0) {
                        joinTiled();
                        colour.paintOver(bold, share);
                    }
                }
            };
            // Near twelve o'clock the sectors at both ends of the circle reach
            // the pixel; those near 0 come first in the run.
            for (const double turn : {-kTwoPi, 0.0, kTwoPi}) {
                const double at = angle + turn;
                if (at + window < runStart || at - window > runEnd)
                    continue;
                // The sectors whose thin lines can reach the pixel, and the
                // hit, whose bold line reaches farther, in its place among them.
                const auto first = std::lower_bound(
                    sectors.begin(), sectors.end(), at - thinWindow,
                    [](const RingSector& s, double value) { return s.endAngle < value; });
                auto end = first;
                while (end != sectors.end() && end->startAngle <= at + thinWindow)
                    ++end;
                const bool hitReaches = anyHit && (hit < first || hit >= end) &&
                                        hit->endAngle >= at - window &&
                                        hit->startAngle <= at + window;
                if (hitReaches && hit < first)
                    paint(*hit, at);
                for (auto sector = first; sector != end; ++sector)
                    paint(*sector, at);
                if (hitReaches && hit >= end)
                    paint(*hit, at);
            }
            joinTiled();
            if (touched)
                pixels[x] = colour.pixel();
        }
    }
}

} // namespace tw
