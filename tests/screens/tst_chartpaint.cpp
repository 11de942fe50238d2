// Painting the chart: the polygon raster's coverage against exact areas and
// against QPainter, runs of thin sectors painted pixel by pixel against the
// same sectors painted as polygons, bands that do not change a pixel, the
// hit's bold stroke inside a run and the fading of all but its branch, and
// the device pixel ratio.

#include "TestMain.h"
#include "TestFiles.h"
#include "chart/SunburstLayout.h"
#include "screens/CoverageRaster.h"
#include "screens/RingLabelPainter.h"
#include "screens/SunburstPainter.h"
#include "screens/ThinSectors.h"

#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

using namespace tw;
using namespace tw::test;

namespace {

QImage blank(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

PixelBand wholeOf(QImage& image, int firstRow = 0, int endRow = -1)
{
    return {image.bits(), image.width(), image.bytesPerLine(), firstRow,
            endRow < 0 ? image.height() : endRow};
}

double alphaSum(const QImage& image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y)) / 255.0;
    return sum;
}

struct Difference {
    double mean = 0;    // per channel, over pixels either image paints
    int worst = 0;      // largest channel difference
    double share16 = 0; // share of painted pixels off by more than 16
};

Difference compare(const QImage& a, const QImage& b)
{
    Difference d;
    qint64 painted = 0, off = 0;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            if (qAlpha(p) == 0 && qAlpha(q) == 0)
                continue;
            const int channel =
                std::max({std::abs(qAlpha(p) - qAlpha(q)), std::abs(qRed(p) - qRed(q)),
                          std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
            sum += channel;
            d.worst = std::max(d.worst, channel);
            off += channel > 16 ? 1 : 0;
            ++painted;
        }
    }
    d.mean = painted ? sum / double(painted) : 0;
    d.share16 = painted ? double(off) / double(painted) : 0;
    return d;
}

std::vector<QPointF> sectorOutline(const RingFrame& ring, double start, double end)
{
    std::vector<QPointF> outline;
    appendSectorOutline(outline, ring, start, end);
    return outline;
}

// `count` sectors around a whole ring with gaps of `gap` (radians) between
// them, hues spread out, the faded ones translucent.
std::vector<RingSector> ringOf(int count, double gap = 0, int hit = -1)
{
    std::vector<RingSector> sectors;
    const double width = 2 * std::numbers::pi / count;
    for (int i = 0; i < count; ++i) {
        QColor fill = QColor::fromHsvF(float(std::fmod(i * 0.618, 1.0)), 0.55F, 0.95F);
        if (hit >= 0 && i != hit)
            fill.setAlphaF(0.35F);
        sectors.push_back({i * width, (i + 1) * width - gap, qPremultiply(fill.rgba()), i == hit});
    }
    return sectors;
}

SectorStrokes chartStrokes()
{
    return {qPremultiply(qRgba(255, 255, 255, 89)), 0.8, qRgba(255, 255, 255, 255), 2.2};
}

// The pixel in the middle of `s`, or, with `turn` of pi, the one opposite it.
QPoint middleOf(const Segment& s, const ChartGeometry& g, double turn = 0)
{
    const double r = (s.innerRadius + s.outerRadius) / 2;
    const double a = (s.startAngle + s.endAngle) / 2 + turn;
    return QPoint(int(g.centreX + r * std::sin(a)), int(g.centreY - r * std::cos(a)));
}

// The same sectors, one polygon after another.
void paintAsPolygons(const PixelBand& band, const RingFrame& ring,
                     const std::vector<RingSector>& sectors, const SectorStrokes& strokes)
{
    CoverageRaster raster(band);
    for (const RingSector& sector : sectors) {
        const std::vector<QPointF> outline =
            sectorOutline(ring, sector.startAngle, sector.endAngle);
        raster.fill(outline, QColor::fromRgba(qUnpremultiply(sector.fill)));
        if (hasThinOutline(ring, sector.startAngle, sector.endAngle, strokes))
            raster.stroke(outline, strokes.thinWidth,
                          QColor::fromRgba(qUnpremultiply(strokes.thin)));
        if (sector.isHit)
            raster.stroke(outline, strokes.boldWidth, QColor::fromRgba(strokes.bold));
    }
}

} // namespace

class TestChartPaint : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rasterCoverageIsTheCoveredArea()
    {
        // A rectangle from x 10.25 to 20.5 and y 3 to 7.75, opaque white.
        QImage image = blank(32, 12);
        CoverageRaster raster(wholeOf(image));
        const std::vector<QPointF> rect{{10.25, 3}, {20.5, 3}, {20.5, 7.75}, {10.25, 7.75}};
        raster.fill(rect, Qt::white);
        // Three quarters covered at x 10, a half at 20, 0.75 × 0.75 at (10, 7).
        const QList<std::tuple<int, int, int>> coverage{{9, 5, 0},   {10, 5, 191}, {15, 5, 255}, {20, 5, 128}, {21, 5, 0},
                                                        {15, 7, 191}, {10, 7, 143}, {15, 2, 0},   {15, 8, 0}};
        for (const auto& [x, y, alpha] : coverage)
            QCOMPARE(qAlpha(image.pixel(x, y)), alpha);
        // Premultiplied colour, blended over what is there.
        CoverageRaster(wholeOf(image)).fill(rect, QColor(255, 0, 0, 128));
        QCOMPARE(image.pixel(15, 5), qRgba(255, 127, 127, 255));

        // Random polygons, both windings, some crossing the image's sides: the
        // ink equals the area within the image.
        QRandomGenerator random(11);
        for (int round = 0; round < 40; ++round) {
            QImage canvas = blank(64, 48);
            std::vector<QPointF> triangle;
            for (int i = 0; i < 3; ++i)
                triangle.emplace_back(random.generateDouble() * 104 - 20,
                                      random.generateDouble() * 78 - 15);
            CoverageRaster(wholeOf(canvas)).fill(triangle, Qt::white);
            // The same triangle clipped exactly by QPainter's polygon logic.
            const QPolygonF clipped = QPolygonF(QList<QPointF>(triangle.begin(), triangle.end()))
                                          .intersected(QPolygonF(QRectF(0, 0, 64, 48)));
            double area = 0;
            for (qsizetype i = 0; i + 1 < clipped.size(); ++i)
                area += clipped[i].x() * clipped[i + 1].y() - clipped[i + 1].x() * clipped[i].y();
            area = std::abs(area) / 2;
            QVERIFY2(std::abs(alphaSum(canvas) - area) < 0.5 + area * 0.005,
                     qPrintable(QStringLiteral("round %1: %2 vs %3").arg(round).arg(alphaSum(canvas)).arg(area)));
        }
        // Wholly outside: nothing, and nothing breaks.
        QImage untouched = blank(16, 16);
        CoverageRaster(wholeOf(untouched))
            .fill(std::vector<QPointF>{{-9, 2}, {-1, 2}, {-1, 9}}, Qt::white);
        CoverageRaster(wholeOf(untouched))
            .fill(std::vector<QPointF>{{2, 17}, {9, 17}, {9, 30}}, Qt::white);
        QCOMPARE(alphaSum(untouched), 0.0);
    }

    void rasterAgreesWithQPainter()
    {
        // Sectors of all sizes, filled and stroked, against QPainter's own
        // anti-aliasing: the same picture, bar the odd edge pixel.
        const RingFrame ring{160, 120, 40, 100};
        QImage ours = blank(320, 240);
        QImage theirs = blank(320, 240);
        CoverageRaster raster(wholeOf(ours));
        QPainter painter(&theirs);
        painter.setRenderHint(QPainter::Antialiasing);
        QPen pen(QColor(255, 255, 255, 89), 1.5);
        pen.setJoinStyle(Qt::MiterJoin);
        double at = 0;
        for (int i = 0; i < 9; ++i) {
            const double end = at + 0.05 * (i + 1);
            const std::vector<QPointF> outline = sectorOutline(ring, at, end);
            const QColor fill = QColor::fromHsvF(float(i) / 9, 0.6F, 0.9F);
            raster.fill(outline, fill);
            raster.stroke(outline, 1.5, pen.color());
            painter.setBrush(fill);
            painter.setPen(pen);
            painter.drawPolygon(QPolygonF(QList<QPointF>(outline.begin(), outline.end())));
            at = end + 0.02;
        }
        painter.end();
        const Difference d = compare(ours, theirs);
        QVERIFY2(d.mean < 2.0, qPrintable(QString::number(d.mean)));
        QVERIFY2(d.share16 < 0.02, qPrintable(QString::number(d.share16)));
    }

    void strokeIsABandAroundTheOutline()
    {
        QImage image = blank(40, 40);
        const std::vector<QPointF> square{{10, 10}, {30, 10}, {30, 30}, {10, 30}};
        CoverageRaster(wholeOf(image)).stroke(square, 2, Qt::white);
        // Nothing inside, away from the line; all astride the top edge.
        for (const auto& [y, alpha] : {std::pair{20, 0}, {10, 255}, {9, 255}, {11, 0}, {7, 0}})
            QCOMPARE(qAlpha(image.pixel(20, y)), alpha);
        // Overlaps at the corners are painted once: the ink is the band's area.
        QVERIFY(std::abs(alphaSum(image) - (22 * 22 - 18 * 18 - 4)) < 1.0);
    }

    void bandsPaintTheSamePixels()
    {
        const RingFrame ring{100.3, 80.6, 30, 70};
        const std::vector<RingSector> sectors = ringOf(700, 0, 123);
        QImage whole = blank(200, 160);
        QImage banded = blank(200, 160);
        paintRingSectors(wholeOf(whole), ring, sectors, chartStrokes());
        paintAsPolygons(wholeOf(whole), {100.3, 80.6, 72, 78}, ringOf(40), chartStrokes());
        for (const auto& [first, end] : {std::pair{0, 37}, {37, 80}, {80, 81}, {81, 160}}) {
            paintRingSectors(wholeOf(banded, first, end), ring, sectors, chartStrokes());
            paintAsPolygons(wholeOf(banded, first, end), {100.3, 80.6, 72, 78}, ringOf(40),
                            chartStrokes());
        }
        QCOMPARE(banded, whole);
    }

    void thinSectorRunsMatchPolygons_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<double>("gap");
        QTest::addColumn<int>("hit");
        // Wide enough for their outlines: narrower ones tile without lines,
        // which polygons blended one over another cannot show.
        QTest::newRow("700 touching") << 700 << 0.0 << -1;
        QTest::newRow("700 with the hit") << 700 << 0.0 << 697;
        QTest::newRow("400 with gaps") << 400 << 0.006 << 0;
        QTest::newRow("500, faded") << 500 << 0.0 << 250;
    }

    void thinSectorRunsMatchPolygons()
    {
        QFETCH(int, count);
        QFETCH(double, gap);
        QFETCH(int, hit);
        // Over something already painted, so blending onto it counts too.
        const RingFrame ring{130, 120, 60, 105};
        QImage perPixel = blank(260, 240);
        perPixel.fill(qRgba(20, 60, 200, 255));
        QImage polygons = perPixel.copy();
        const std::vector<RingSector> sectors = ringOf(count, gap, hit);
        paintRingSectors(wholeOf(perPixel), ring, sectors, chartStrokes());
        paintAsPolygons(wholeOf(polygons), ring, sectors, chartStrokes());
        const Difference d = compare(perPixel, polygons);
        // Polygons paint a thin sector's two strokes as two bands summed, more
        // ink than their union where a sector is narrower than the line; hence
        // the translucent row's sectors are wider than that at every radius.
        QVERIFY2(d.mean < 3.0, qPrintable(QString::number(d.mean)));
        QVERIFY2(d.share16 < 0.03, qPrintable(QString::number(d.share16)));
    }

    void chartPaintsTheHitInARunBold()
    {
        QTemporaryDir dir;
        const QByteArray root = QFile::encodeName(dir.path());
        for (int i = 0; i < 3000; ++i)
            writeFile(root + "/f" + QByteArray::number(i), 4096);
        const auto tree = scanTree(root);
        const std::vector<Segment> segments = buildSegments(tree->root(), 800, 600);
        QCOMPARE(segments.size(), std::size_t(3000));
        const ChartGeometry g = chartGeometry(800, 600);
        const Segment& hit = segments[750]; // at three o'clock
        const QPoint atHit = middleOf(hit, g), opposite = middleOf(hit, g, std::numbers::pi);

        QImage plain = blank(800, 600);
        paintSunburst(plain, g, segments, nullptr, Qt::white);
        QImage withHit = blank(800, 600);
        paintSunburst(withHit, g, segments, &hit, Qt::white);
        // The bold white line through the hit; elsewhere the sectors fade.
        const auto whiteness = [](QRgb p) { return std::min({qRed(p), qGreen(p), qBlue(p)}); };
        // Later sectors of the run paint over part of it, as they would one by
        // one, yet the line stands out from the pale run on either side.
        const int atLine = whiteness(withHit.pixel(atHit));
        QVERIFY2(atLine >= whiteness(plain.pixel(atHit)) + 15, qPrintable(QString::number(atLine)));
        for (const QPoint& beside : {atHit + QPoint(0, 6), atHit - QPoint(0, 6)})
            QVERIFY2(atLine >= whiteness(withHit.pixel(beside)) + 10,
                     qPrintable(QString::number(atLine)));
        // That the rest fades is hitFadesAllButItsBranch's. Neighbours sharing
        // a pixel leave a seam of a few levels, as painting them one by one does.
        QVERIFY(qAlpha(plain.pixel(opposite)) >= 240);
        // Sectors narrower than their outline go without it, so the ring shows
        // its fills rather than a smear of white lines: over a patch, the
        // colour painted is the colour of the sectors found there.
        const auto channels = [](QColor c) { return std::array<int, 3>{c.red(), c.green(), c.blue()}; };
        std::array<double, 3> painted{}, found{};
        for (int dy = -4; dy <= 4; ++dy) {
            for (int dx = -4; dx <= 4; ++dx) {
                const QPoint at = opposite + QPoint(dx, dy);
                const Segment* under = segmentAt(at.x() + 0.5 - g.centreX, at.y() + 0.5 - g.centreY, segments);
                QVERIFY(under);
                for (std::size_t c = 0; c < 3; ++c) {
                    painted[c] += channels(plain.pixelColor(at))[c];
                    found[c] += channels(sectorFill(*under, nullptr))[c];
                }
            }
        }
        for (std::size_t c = 0; c < 3; ++c)
            QVERIFY2(std::abs(painted[c] - found[c]) / 81 < 6,
                     qPrintable(QString::number(painted[c] / 81) + u' ' + QString::number(found[c] / 81)));
        // The hub sits on top, 0.85 opaque.
        QCOMPARE(qAlpha(plain.pixel(int(g.centreX), int(g.centreY))), 217);
    }

    void hitFadesAllButItsBranch()
    {
        QTemporaryDir dir;
        const QByteArray root = makeTree(QFile::encodeName(dir.path()), {{"docs/deep/a", 400 * 1024},
                                         {"docs/deep/b", 100 * 1024}, {"docs/report", 300 * 1024}, {"movie", 700 * 1024}});
        const auto tree = scanTree(root);
        const std::vector<Segment> segments = buildSegments(tree->root(), 800, 600);
        const ChartGeometry g = chartGeometry(800, 600);
        const auto segmentOf = [&](const char* path) {
            const FileNode* node = tree->find(root + '/' + path);
            return &*std::find_if(segments.begin(), segments.end(), [&](const Segment& s) { return s.node == node; });
        };
        QImage plain = blank(800, 600), faded = blank(800, 600);
        paintSunburst(plain, g, segments, nullptr, Qt::white);
        paintSunburst(faded, g, segments, segmentOf("docs/deep"), Qt::white);
        // No hit: nothing fades. On "deep": it and its ancestor stay bright;
        // its sibling, its own children and the other branch fade.
        for (const auto& [path, alpha] :
             {std::pair{"docs", 255}, {"docs/deep", 255}, {"docs/report", 89}, {"docs/deep/a", 89}, {"movie", 89}}) {
            const QPoint at = middleOf(*segmentOf(path), g);
            QCOMPARE(qAlpha(plain.pixel(at)), 255);
            QVERIFY2(std::abs(qAlpha(faded.pixel(at)) - alpha) <= 3, path);
        }
    }

    void chartFollowsThePixelRatio()
    {
        QTemporaryDir dir;
        const auto tree = scanTree(makeTree(QFile::encodeName(dir.path()), {{"big", 400000}, {"small", 40000}}));
        const std::vector<Segment> segments = buildSegments(tree->root(), 300, 200);
        const ChartGeometry g = chartGeometry(300, 200);
        QImage single = blank(300, 200);
        paintSunburst(single, g, segments, nullptr, Qt::white);
        QImage doubled = blank(600, 400);
        doubled.setDevicePixelRatio(2);
        paintSunburst(doubled, g, segments, nullptr, Qt::white);
        QVERIFY(std::abs(alphaSum(doubled) / alphaSum(single) - 4) < 0.05);
        const double middle = g.hubRadius + g.ringThickness / 2; // inside the big file's sector
        // Clear of the stroke where the big file's sector begins at twelve.
        const QPoint inside(int(g.centreX) + 10, int(g.centreY - middle));
        QCOMPARE(doubled.pixel(2 * inside), single.pixel(inside));
        QCOMPARE(qAlpha(single.pixel(inside)), 255);
    }

    // A sector's name fades with it while another is hovered, and keeps the
    // ink that reads on it at scale 1 and 2.
    void namesFadeWithTheirSectors_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QByteArray>("hovered"); // empty: none
        QTest::addColumn<bool>("faded");
        for (const double scale : {1.0, 2.0}) {
            const QByteArray at = scale == 1 ? " @1x" : " @2x";
            QTest::newRow(QByteArray("nothing hovered" + at).constData()) << scale << QByteArray() << false;
            QTest::newRow(QByteArray("itself hovered" + at).constData()) << scale << QByteArray("Documents") << false;
            QTest::newRow(QByteArray("another hovered" + at).constData()) << scale << QByteArray("Pictures") << true;
        }
    }
    void namesFadeWithTheirSectors()
    {
        QFETCH(double, scale);
        QFETCH(QByteArray, hovered);
        QTemporaryDir dir;
        const auto tree = scanTree(makeTree(QFile::encodeName(dir.path()) + "/t",
                                            {{"Documents/a", 400 * 1024}, {"Pictures/b", 300 * 1024}}));
        const std::vector<Segment> segments = buildSegments(tree->root(), 800, 600);
        const std::vector<RingLabel> labels = placeRingLabels(segments, ringLabelMetrics(ringLabelFont()));
        const FileNode* documents = childNamed(*tree->root(), "Documents");
        const auto label = std::find_if(labels.begin(), labels.end(),
                                        [&](const RingLabel& l) { return segments[l.segment].node == documents; });
        QVERIFY(label != labels.end() && label->text == QStringLiteral("Documents"));
        QImage image = blank(int(800 * scale), int(600 * scale));
        image.setDevicePixelRatio(scale);
        paintRingLabels(image, chartGeometry(800, 600), segments, {*label},
                        hovered.isEmpty() ? nullptr : childNamed(*tree->root(), hovered.constData()),
                        {QColor(0, 0, 0, 217), QColor(255, 255, 255, 242), QColor(0xec, 0xec, 0xec)}, false);
        // The darkest ink of the name: the pale ring-0 fill takes the dark one.
        int strongest = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (const QRgb p = image.pixel(x, y); qAlpha(p) > strongest) {
                    strongest = qAlpha(p);
                    QVERIFY(qRed(p) < 40 && qGreen(p) < 40 && qBlue(p) < 40);
                }
        QFETCH(bool, faded);
        QVERIFY2(faded ? strongest <= 80 : strongest >= 190, qPrintable(QString::number(strongest)));
    }
};

TIDEWICK_TEST_MAIN(TestChartPaint)
#include "tst_chartpaint.moc"
