// Ring geometry over scanned trees: radii, angles, the thin-sector rule and
// its gap, hues and shades, the ring limit, and the hit test's tie rules.

#include "TestMain.h"
#include "TestFiles.h"
#include "chart/SunburstLayout.h"
#include "scan/Scanner.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <set>

using namespace tw;
using namespace tw::test;

namespace {
std::shared_ptr<ScanTree> scan(const QByteArray& path)
{
    Scanner::Options options;
    options.workers = 1;
    Scanner scanner({}, options);
    return scanner.scan(path);
}

const Segment* segmentOf(const std::vector<Segment>& segments, const FileNode* node)
{
    for (const Segment& s : segments)
        if (s.node == node)
            return &s;
    return nullptr;
}

// A point in the middle of a segment, relative to the centre.
std::pair<double, double> middleOf(const Segment& s)
{
    const double r = (s.innerRadius + s.outerRadius) / 2;
    const double a = (s.startAngle + s.endAngle) / 2;
    return {r * std::sin(a), -r * std::cos(a)};
}
} // namespace

class SunburstTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

private Q_SLOTS:
    void geometryOfTheView()
    {
        const ChartGeometry g = chartGeometry(800, 600);
        QCOMPARE(g.radius, 284.0);
        QVERIFY(qFuzzyCompare(g.hubRadius, 62.48));
        QVERIFY(qFuzzyCompare(g.ringThickness, 36.92));
        QCOMPARE(g.centreX, 400.0);
        QCOMPARE(g.centreY, 300.0);
        QVERIFY(qFuzzyCompare(g.hubRadius + 6 * g.ringThickness, g.radius));
    }

    void sectorsShareOutTheirParentsSpan()
    {
        const QByteArray root = base() + "/share";
        makeDir(root);
        makeDir(root + "/docs");
        writeFile(root + "/docs/a", 300 * 1024);
        writeFile(root + "/docs/b", 100 * 1024);
        writeFile(root + "/video", 600 * 1024);
        writeFile(root + "/empty", 0);
        const auto tree = scan(root);
        const FileNode* focus = tree->root();
        const auto segments = buildSegments(focus, 800, 600);
        const ChartGeometry g = chartGeometry(800, 600);

        // Depth first, in the tree's order: video, docs, docs' children, then empty.
        QCOMPARE(segments.size(), size_t(5));
        std::vector<std::string> order;
        for (const Segment& s : segments)
            order.emplace_back(s.node->name());
        QCOMPARE(order, (std::vector<std::string>{"video", "docs", "a", "b", "empty"}));

        const double total = double(focus->size());
        double angle = 0;
        for (const Segment& s : segments) {
            QCOMPARE(s.depth, s.ring + 1);
            QVERIFY(qFuzzyCompare(s.innerRadius, g.hubRadius + g.ringThickness * double(s.ring)));
            QVERIFY(qFuzzyCompare(s.outerRadius, s.innerRadius + g.ringThickness));
            if (s.ring == 0) {
                QVERIFY(qFuzzyCompare(1 + s.startAngle, 1 + angle));
                angle = s.endAngle;
                QVERIFY(qFuzzyCompare(1 + s.endAngle - s.startAngle,
                                      1 + kFullCircle * double(s.node->size()) / total));
            }
        }
        QVERIFY(qFuzzyCompare(angle, kFullCircle));
        // Children fill their parent's span.
        const Segment* docs = segmentOf(segments, childNamed(*focus, "docs"));
        const Segment* b = segmentOf(segments, childNamed(*docs->node, "b"));
        QVERIFY(qFuzzyCompare(b->endAngle, docs->endAngle));
        // A file of no bytes still has its place on ring 0, of no width.
        const Segment* empty = segmentOf(segments, childNamed(*focus, "empty"));
        QVERIFY(empty);
        QCOMPARE(empty->startAngle, empty->endAngle);
        QVERIFY(qFuzzyCompare(empty->endAngle, kFullCircle));
    }

    void huesByPositionInheritedOutward()
    {
        const QByteArray root = base() + "/hues";
        makeDir(root);
        for (int i = 0; i < 5; ++i) {
            const QByteArray dir = root + "/d" + QByteArray::number(i);
            makeDir(dir);
            writeFile(dir + "/inner", (10 - i) * 8192);
        }
        const auto tree = scan(root);
        const auto segments = buildSegments(tree->root(), 1000, 1000);
        std::vector<double> ringZero;
        double parentHue = -1;
        for (const Segment& s : segments) {
            if (s.ring == 0) {
                ringZero.push_back(s.colorHue);
                parentHue = s.colorHue;
            } else {
                QCOMPARE(s.colorHue, parentHue);
            }
        }
        const std::vector<double> expected = {0, 0.61803398875, 0.2360679775, 0.85410196625, 0.472135955};
        QCOMPARE(ringZero.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i)
            QVERIFY(std::abs(ringZero[i] - expected[i]) < 1e-9);
    }

    void thinSectorsLeaveAGapBeyondRingZero()
    {
        const QByteArray root = base() + "/thin";
        makeDir(root);
        makeDir(root + "/big");
        writeFile(root + "/big/huge", 8 * 1024 * 1024);
        writeFile(root + "/big/speck", 4096);
        writeFile(root + "/big/speck2", 4096);
        writeFile(root + "/tiny", 4096); // thin, but ring 0 keeps every child
        const auto tree = scan(root);
        const auto segments = buildSegments(tree->root(), 800, 600);
        const FileNode* big = childNamed(*tree->root(), "big");
        const Segment* bigSegment = segmentOf(segments, big);
        QVERIFY(segmentOf(segments, childNamed(*tree->root(), "tiny")));
        QVERIFY(!segmentOf(segments, childNamed(*big, "speck")));
        QVERIFY(!segmentOf(segments, childNamed(*big, "speck2")));
        const Segment* huge = segmentOf(segments, childNamed(*big, "huge"));
        QVERIFY(huge);
        // The specks' share stays empty at the end of big's span.
        const double span = bigSegment->endAngle - bigSegment->startAngle;
        const double hugeShare = double(huge->node->size()) / double(big->size());
        QVERIFY(qFuzzyCompare(huge->endAngle, bigSegment->startAngle + span * hugeShare));
        QVERIFY(huge->endAngle < bigSegment->endAngle);
        const double gapAngle = (huge->endAngle + bigSegment->endAngle) / 2;
        const double r = (huge->innerRadius + huge->outerRadius) / 2;
        QVERIFY(!segmentAt(r * std::sin(gapAngle), -r * std::cos(gapAngle), segments));
    }

    void thinRuleIsStrictAtTheLimit()
    {
        // 300 equal children one ring out: each exactly 1.2 degrees of the full circle.
        const QByteArray root = base() + "/limit";
        makeDir(root);
        makeDir(root + "/only");
        for (int i = 0; i < 300; ++i)
            writeFile(root + "/only/f" + QByteArray::number(i), 4096);
        auto tree = scan(root);
        auto segments = buildSegments(tree->root(), 800, 600);
        QCOMPARE(segments.size(), size_t(301));
        // One more equal child and each falls below the limit: ring 1 is empty.
        writeFile(root + "/only/f300", 4096);
        tree = scan(root);
        segments = buildSegments(tree->root(), 800, 600);
        QCOMPARE(segments.size(), size_t(1));
    }

    void chainsStopAtTheSixthRing()
    {
        QByteArray path = base() + "/chain";
        const QByteArray root = path;
        makeDir(path);
        for (int i = 0; i < 9; ++i) {
            path += "/c";
            makeDir(path);
        }
        writeFile(path + "/leaf", 4096);
        const auto tree = scan(root);
        const auto segments = buildSegments(tree->root(), 800, 600);
        QCOMPARE(segments.size(), size_t(kRingCount));
        for (size_t i = 0; i < segments.size(); ++i) {
            QCOMPARE(segments[i].ring, qint64(i));
            QCOMPARE(segments[i].startAngle, 0.0);
            QCOMPARE(segments[i].endAngle, kFullCircle);
            QCOMPARE(segments[i].colorHue, 0.0);
        }
        QCOMPARE(segments.back().depth, qint64(6));
        // Ids are unique, also across layouts.
        const auto again = buildSegments(tree->root(), 800, 600);
        std::set<std::uint64_t> ids;
        for (const auto* list : {&segments, &again})
            for (const Segment& s : *list)
                ids.insert(s.id);
        QCOMPARE(ids.size(), 2 * size_t(kRingCount));
    }

    void nothingToDraw()
    {
        const QByteArray root = base() + "/nothing";
        makeDir(root);
        makeDir(root + "/hollow");
        writeFile(root + "/zero", 0);
        const auto tree = scan(root);
        QCOMPARE(tree->root()->size(), 0);
        QVERIFY(buildSegments(tree->root(), 800, 600).empty());
        QVERIFY(buildSegments(nullptr, 800, 600).empty());
        QVERIFY(!segmentAt(0, 0, {}));
    }

    void hitTestBoundsAndTies()
    {
        const QByteArray root = base() + "/hits";
        makeDir(root);
        makeDir(root + "/left");
        writeFile(root + "/left/x", 64 * 1024);
        writeFile(root + "/right", 64 * 1024);
        const auto tree = scan(root);
        const auto segments = buildSegments(tree->root(), 800, 600);
        const Segment* left = segmentOf(segments, childNamed(*tree->root(), "left"));
        const Segment* right = segmentOf(segments, childNamed(*tree->root(), "right"));
        const Segment* x = segmentOf(segments, childNamed(*left->node, "x"));
        QVERIFY(left && right && x);
        // Equal halves, in listing order: the first runs from twelve o'clock to six.
        const Segment* first = left->startAngle == 0.0 ? left : right;
        const Segment* second = first == left ? right : left;
        QVERIFY(qFuzzyCompare(first->endAngle, kFullCircle / 2));
        QVERIFY(qFuzzyCompare(second->startAngle, kFullCircle / 2));
        const double inLeft = (left->startAngle + left->endAngle) / 2;
        const double inRight = (right->startAngle + right->endAngle) / 2;

        auto at = [&](double r, double a) { return segmentAt(r * std::sin(a), -r * std::cos(a), segments); };
        const double mid = (left->innerRadius + left->outerRadius) / 2;
        QCOMPARE(at(mid, inLeft), left);
        QCOMPARE(at(mid, inRight), right);
        // On the shared angle at six o'clock both match; the earlier one stays.
        QCOMPARE(segmentAt(0, mid, segments), first);
        // On the shared radius between ring 0 and ring 1 the outer ring wins.
        QCOMPARE(at(left->outerRadius, inLeft), x);
        QCOMPARE(at(right->outerRadius, inRight), right);
        // Bounds are inclusive: the hub's edge and the outer edge still hit.
        QCOMPARE(at(left->innerRadius, inLeft), left);
        QCOMPARE(at(x->outerRadius, inLeft), x);
        // The hub, the margin, and rings the tree does not reach: nothing.
        QVERIFY(!segmentAt(0, 0, segments));
        QVERIFY(!at(left->innerRadius - 0.01, inLeft));
        QVERIFY(!at(x->outerRadius + 0.01, inLeft));
        QVERIFY(!at(x->outerRadius - 0.01, inRight));
        const auto [dx, dy] = middleOf(*x);
        QCOMPARE(segmentAt(dx, dy, segments), x);
    }

    void shadesByRing()
    {
        const double saturation[] = {0.55, 0.50, 0.45, 0.40, 0.35, 0.30, 0.30};
        const double brightness[] = {0.95, 0.91, 0.87, 0.83, 0.79, 0.75, 0.75};
        for (int ring = 0; ring < 7; ++ring) {
            QVERIFY(std::abs(shadeForRing(ring).saturation - saturation[ring]) < 1e-12);
            QVERIFY(std::abs(shadeForRing(ring).brightness - brightness[ring]) < 1e-12);
        }
    }

    void darkShadesStandApart_data()
    {
        QTest::addColumn<double>("hue");
        // The first hues a focus hands out, around the wheel.
        for (double hue : {0.0, 0.61803398875, 0.2360679775, 0.85410196625, 0.472135955, 0.09016994375})
            QTest::newRow(qPrintable(QString::number(hue))) << hue;
    }
    void darkShadesStandApart()
    {
        QFETCH(double, hue);
        // Contrast of relative luminances, as for text on a background.
        const auto luminance = [hue](qint64 ring) {
            const Shade shade = shadeForRing(ring, true);
            // HSV to RGB: each channel from the hue's place on the wheel.
            const auto channel = [&](double n) {
                const double k = std::fmod(n + hue * 6, 6);
                const double v = shade.brightness;
                return v - v * shade.saturation * std::max(0.0, std::min({k, 4 - k, 1.0}));
            };
            const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
            return 0.2126 * linear(channel(5)) + 0.7152 * linear(channel(3)) + 0.0722 * linear(channel(1));
        };
        const auto contrast = [](double a, double b) { return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05); };
        const double window = 0.0319; // the dark window background, #323232
        for (qint64 ring = 0; ring < 6; ++ring) {
            QVERIFY2(contrast(luminance(ring), window) >= 1.9, qPrintable(QString::number(ring)));
            // Outer rings darker, each step one the eye can tell.
            if (ring < 5)
                QVERIFY2(luminance(ring + 1) < luminance(ring) && contrast(luminance(ring), luminance(ring + 1)) >= 1.15,
                         qPrintable(QString::number(ring)));
        }
    }
};

TIDEWICK_TEST_MAIN(SunburstTest)
#include "tst_sunburst.moc"
