// Times the chart's layout, hit test and full paint at 1080 by 720 points, at a
// device pixel ratio of 1 and of 2 (a Retina screen), for three foci:
// (a) a folder of 10,000 equal files, (b) a real scanned folder, (c) a chain
// of single folders. Prints medians of many repetitions, and beside the
// chart's own painter a plain QPainter baseline that draws the same sectors
// one anti-aliased polygon at a time, for the ratio. Beside today's frame,
// in the same turns, the frame with the names on the rings (placed and drawn
// anew each frame, as the item does), and, for a drill from a folder into
// one of its children, the frames of the motion.
//
//   chart_bench [REAL_FOLDER]     (default /usr)

#include "chart/DrillMotion.h"
#include "chart/RingLabels.h"
#include "chart/SunburstLayout.h"
#include "scan/Scanner.h"
#include "screens/RingLabelPainter.h"
#include "screens/SunburstPainter.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::shared_ptr<tw::ScanTree> scan(const QByteArray& path)
{
    tw::Scanner::Options options;
    options.workers = 2;
    tw::Scanner scanner({}, options);
    return scanner.scan(path);
}

void writeBytes(const QByteArray& path, int bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const QByteArray data(bytes, 'x');
    if (fd >= 0) {
        if (::write(fd, data.constData(), size_t(bytes)) < 0)
            std::perror("write");
        ::close(fd);
    }
}

// The baseline: each sector a QPainter polygon (arcs as polylines within a
// tenth of a point), filled, stroked thin with a cosmetic pen where it is
// wider than the line, the hit bold.
// Hub and fade as the chart's painter has them.
void paintWithQPainter(QImage& image, const tw::ChartGeometry& g,
                       const std::vector<tw::Segment>& segments, const tw::Segment* hit)
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // Cosmetic pens are in pixels: as wide as the chart's lines at this density.
    const double ratio = image.devicePixelRatio();
    QPen thin(QColor(255, 255, 255, 89), 0.8 * ratio);
    thin.setCosmetic(true);
    QPen bold(Qt::white, 2.2 * ratio);
    bold.setCosmetic(true);
    const tw::SectorStrokes strokes{0, 0.8, 0, 2.2}; // in points, like the geometry
    const tw::FileNode* hovered = hit ? hit->node : nullptr;
    std::vector<QPointF> points;
    for (const tw::Segment& segment : segments) {
        points.clear();
        tw::appendSectorOutline(points,
                                {g.centreX, g.centreY, segment.innerRadius, segment.outerRadius},
                                segment.startAngle, segment.endAngle);
        const QPolygonF outline(QList<QPointF>(points.begin(), points.end()));
        painter.setBrush(tw::sectorFill(segment, hovered));
        // No line on a sector narrower than the line, as the chart has it.
        painter.setPen(tw::hasThinOutline({g.centreX, g.centreY, segment.innerRadius,
                                           segment.outerRadius},
                                          segment.startAngle, segment.endAngle, strokes)
                           ? thin
                           : QPen(Qt::NoPen));
        painter.drawPolygon(outline);
        if (segment.node == hovered) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(bold);
            painter.drawPolygon(outline);
        }
    }
    painter.setBrush(QColor(0xec, 0xec, 0xec, 217));
    painter.setPen(QPen(QColor(255, 255, 255, 38), 1.0));
    painter.drawEllipse(QPointF(g.centreX, g.centreY), g.hubRadius, g.hubRadius);
}

void measure(const char* label, const tw::FileNode* focus, double ratio)
{
    constexpr double width = 1080, height = 720;
    std::vector<double> layoutMs;
    std::vector<tw::Segment> segments;
    for (int i = 0; i < 101; ++i) {
        const auto start = Clock::now();
        segments = tw::buildSegments(focus, width, height);
        layoutMs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    // Hit tests at random points over the chart's square, the worst spots included.
    const tw::ChartGeometry g = tw::chartGeometry(width, height);
    QRandomGenerator random(7);
    std::vector<double> hitMs;
    int hits = 0;
    for (int i = 0; i < 2001; ++i) {
        const double dx = (random.generateDouble() * 2 - 1) * g.radius;
        const double dy = (random.generateDouble() * 2 - 1) * g.radius;
        const auto start = Clock::now();
        hits += tw::segmentAt(dx, dy, segments) ? 1 : 0;
        hitMs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    // What one mouse movement costs the item: lay out, find the hit, paint
    // everything into the item's image (the hub included), with the mouse on
    // the first ring-0 sector so every sector is tested for the fade.
    QImage image(int(width * ratio), int(height * ratio), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    QImage baseline = image;
    // Blocks of five frames by turns, so both painters see the same machine
    // and each mostly its own warm caches.
    QImage labelled = image;
    const tw::LabelInks inks{QColor(0, 0, 0, 217), QColor(255, 255, 255, 242), QColor(0xec, 0xec, 0xec)};
    std::vector<double> frameMs, baselineMs, labelledMs;
    std::size_t labelCount = 0;
    enum Painter { Ours, Baseline, Labelled };
    for (int block = 0; block < 7; ++block) {
        for (const Painter painter : {Ours, Baseline, Labelled}) {
            for (int i = 0; i < 5; ++i) {
                const auto start = Clock::now();
                const std::vector<tw::Segment> laidOut = tw::buildSegments(focus, width, height);
                const tw::Segment* hit =
                    laidOut.empty() ? nullptr : tw::segmentAt(1, -(g.hubRadius + 2), laidOut);
                QImage& target = painter == Ours ? image : painter == Baseline ? baseline : labelled;
                target.fill(Qt::transparent);
                if (painter == Baseline) {
                    paintWithQPainter(target, g, laidOut, hit);
                } else {
                    tw::paintSunburst(target, g, laidOut, hit, QColor(0xec, 0xec, 0xec));
                }
                if (painter == Labelled) {
                    const std::vector<tw::RingLabel> labels =
                        tw::placeRingLabels(laidOut, tw::ringLabelMetrics(tw::ringLabelFont()));
                    labelCount = labels.size();
                    tw::paintRingLabels(target, g, laidOut, labels, hit ? hit->node : nullptr, inks, false);
                }
                (painter == Ours ? frameMs : painter == Baseline ? baselineMs : labelledMs)
                    .push_back(
                        std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            }
        }
    }
    if (const QByteArray where = qgetenv("CHART_BENCH_PNG"); !where.isEmpty()) {
        const QString name = QString::fromLocal8Bit(where + '/' + QByteArray(label).mid(1, 1)) +
                             (ratio != 1 ? QStringLiteral("@2x") : QString());
        image.save(name + QStringLiteral(".png"));
        labelled.save(name + QStringLiteral("-labels.png"));
        baseline.save(name + QStringLiteral("-qpainter.png"));
    }
    std::printf("%-28s @%.0fx segments %6zu  layout median %.3f ms  hit test median %.4f ms (max %.4f ms, "
                "%d hits)  "
                "layout+paint median %.2f ms (QPainter baseline %.2f ms, %.1fx)  "
                "with %zu labels %.2f ms (+%.2f ms)\n",
                label, ratio, segments.size(), median(layoutMs), median(hitMs),
                *std::max_element(hitMs.begin(), hitMs.end()), hits, median(frameMs),
                median(baselineMs), median(baselineMs) / median(frameMs), labelCount,
                median(labelledMs), median(labelledMs) - median(frameMs));
}

// The frames of a drill from `outer` into `inner` as the item paints them
// (both layouts, the window, the frame, the paint), 16 frames across the
// motion, in turns with the resting frame of `inner`.
void measureDrill(const char* label, const tw::FileNode* outer, const tw::FileNode* inner, double ratio)
{
    constexpr double width = 1080, height = 720;
    const tw::ChartGeometry g = tw::chartGeometry(width, height);
    QImage image(int(width * ratio), int(height * ratio), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    std::vector<double> motionMs, restingMs;
    std::size_t most = 0;
    for (int block = 0; block < 5; ++block) {
        for (int step = 0; step <= 15; ++step) {
            auto start = Clock::now();
            const std::vector<tw::Segment> outerChart = tw::buildSegments(outer, width, height);
            const std::vector<tw::Segment> innerChart = tw::buildSegments(inner, width, height);
            const tw::Segment* window = tw::drillWindow(outerChart, inner);
            if (!window)
                return;
            const std::vector<tw::Segment> frame = tw::drillFrame(
                outerChart, innerChart, *window, g, tw::easeInOut(step / 15.0), false);
            most = std::max(most, frame.size());
            image.fill(Qt::transparent);
            tw::paintSunburst(image, g, frame, nullptr, QColor(0xec, 0xec, 0xec));
            motionMs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            if (const QByteArray where = qgetenv("CHART_BENCH_PNG"); !where.isEmpty() && block == 0 && step == 7)
                image.save(QFile::decodeName(where) + QStringLiteral("/drill") +
                           (ratio != 1 ? QStringLiteral("@2x") : QString()) + QStringLiteral(".png"));

            start = Clock::now();
            const std::vector<tw::Segment> resting = tw::buildSegments(inner, width, height);
            image.fill(Qt::transparent);
            tw::paintSunburst(image, g, resting, nullptr, QColor(0xec, 0xec, 0xec));
            restingMs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        }
    }
    std::printf("%-28s @%.0fx drill frames (up to %zu sectors) median %.2f ms, max %.2f ms; "
                "resting frame median %.2f ms\n",
                label, ratio, most, median(motionMs), *std::max_element(motionMs.begin(), motionMs.end()),
                median(restingMs));
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTemporaryDir dir;
    const QByteArray base = QFile::encodeName(dir.path());

    const QByteArray wide = base + "/above/wide";
    QDir().mkpath(QFile::decodeName(wide));
    QDir().mkpath(QFile::decodeName(base + "/above/other"));
    writeBytes(base + "/above/other/small", 4096 * 400);
    for (int i = 0; i < 10000; ++i)
        writeBytes(wide + "/f" + QByteArray::number(i), 4096);
    const auto wideTree = scan(wide);
    measure("(a) 10,000 equal children", wideTree->root(), 1);
    measure("(a) 10,000 equal children", wideTree->root(), 2);

    // A drill into the folder of 10,000 files from the folder above it.
    const auto above = scan(base + "/above");
    const tw::FileNode* into = above->find(wide);
    measureDrill("(d) drill into 10,000 files", above->root(), into, 1);
    measureDrill("(d) drill into 10,000 files", above->root(), into, 2);

    const QByteArray real = argc > 1 ? QByteArray(argv[1]) : QByteArray("/usr");
    const auto realTree = scan(real);
    measure(QByteArray("(b) " + real).constData(), realTree->root(), 1);
    measure(QByteArray("(b) " + real).constData(), realTree->root(), 2);

    QByteArray chain = base + "/chain";
    for (int i = 0; i < 100; ++i)
        chain += "/c";
    QDir().mkpath(QFile::decodeName(chain));
    writeBytes(chain + "/leaf", 4096);
    const auto chainTree = scan(base + "/chain");
    measure("(c) chain of 100 folders", chainTree->root(), 1);
    measure("(c) chain of 100 folders", chainTree->root(), 2);
    return 0;
}
