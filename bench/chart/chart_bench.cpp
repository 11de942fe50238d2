// Times the chart's layout, hit test and full paint at 1080 by 720 points, at a
// device pixel ratio of 1 and of 2 (a Retina screen), for three foci:
// (a) a folder of 10,000 equal files, (b) a real scanned folder, (c) a chain
// of single folders. Prints medians of many repetitions, and beside the
// chart's own painter a plain QPainter baseline that draws the same sectors
// one anti-aliased polygon at a time, for the ratio.
//
//   chart_bench [REAL_FOLDER]     (default /usr)

#include "chart/SunburstLayout.h"
#include "scan/Scanner.h"
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
    std::vector<double> frameMs, baselineMs;
    for (int block = 0; block < 7; ++block) {
        for (const bool ours : {true, false}) {
            for (int i = 0; i < 5; ++i) {
                const auto start = Clock::now();
                const std::vector<tw::Segment> laidOut = tw::buildSegments(focus, width, height);
                const tw::Segment* hit =
                    laidOut.empty() ? nullptr : tw::segmentAt(1, -(g.hubRadius + 2), laidOut);
                QImage& target = ours ? image : baseline;
                target.fill(Qt::transparent);
                if (ours)
                    tw::paintSunburst(target, g, laidOut, hit, QColor(0xec, 0xec, 0xec));
                else
                    paintWithQPainter(target, g, laidOut, hit);
                (ours ? frameMs : baselineMs)
                    .push_back(
                        std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            }
        }
    }
    if (const QByteArray where = qgetenv("CHART_BENCH_PNG"); !where.isEmpty()) {
        const QString name = QString::fromLocal8Bit(where + '/' + QByteArray(label).mid(1, 1)) +
                             (ratio != 1 ? QStringLiteral("@2x") : QString());
        image.save(name + QStringLiteral(".png"));
        baseline.save(name + QStringLiteral("-qpainter.png"));
    }
    std::printf("%-28s @%.0fx segments %6zu  layout median %.3f ms  hit test median %.4f ms (max %.4f ms, "
                "%d hits)  "
                "layout+paint median %.2f ms (QPainter baseline %.2f ms, %.1fx)\n",
                label, ratio, segments.size(), median(layoutMs), median(hitMs),
                *std::max_element(hitMs.begin(), hitMs.end()), hits, median(frameMs),
                median(baselineMs), median(baselineMs) / median(frameMs));
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTemporaryDir dir;
    const QByteArray base = QFile::encodeName(dir.path());

    const QByteArray wide = base + "/wide";
    QDir().mkpath(QFile::decodeName(wide));
    for (int i = 0; i < 10000; ++i)
        writeBytes(wide + "/f" + QByteArray::number(i), 4096);
    const auto wideTree = scan(wide);
    measure("(a) 10,000 equal children", wideTree->root(), 1);
    measure("(a) 10,000 equal children", wideTree->root(), 2);

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
