// Ring geometry over scanned trees: radii, angles, the thin-sector rule and
// its gap, hues and shades, the ring limit, and the hit test's tie rules.

#include "TestMain.h"
#include "TestFiles.h"
#include "chart/SunburstLayout.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <set>

using namespace tw;
using namespace tw::test;

namespace {
const Segment* segmentOf(const std::vector<Segment>& segments, const FileNode* node)
{
    for (const Segment& s : segments)
        if (s.node == node)
            return &s;
    return nullptr;
}

// The segment at radius `r` and angle `a` (clockwise from twelve o'clock).
const Segment* segmentAtPolar(double r, double a, const std::vector<Segment>& segments)
{
    return segmentAt(r * std::sin(a), -r * std::cos(a), segments);
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
        QCOMPARE(std::tuple(g.radius, g.centreX, g.centreY), std::tuple(284.0, 400.0, 300.0));
        QVERIFY(qFuzzyCompare(g.hubRadius, 62.48) && qFuzzyCompare(g.ringThickness, 36.92));
        QVERIFY(qFuzzyCompare(g.hubRadius + 6 * g.ringThickness, g.radius));
    }

    void sectorsShareOutTheirParentsSpan()
    {
        const auto tree = scanTree(makeTree(
            base() + "/share", {{"docs/a", 300 * 1024}, {"docs/b", 100 * 1024}, {"video", 600 * 1024}, {"empty", 0}}));
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
        QVERIFY(empty && empty->startAngle == empty->endAngle);
        QVERIFY(qFuzzyCompare(empty->endAngle, kFullCircle));
    }

    void huesByPositionInheritedOutward()
    {
        const QByteArray root = base() + "/hues";
        for (int i = 0; i < 5; ++i)
            makeTree(root + "/d" + QByteArray::number(i), {{"inner", (10 - i) * 8192}});
        const auto tree = scanTree(root);
        const auto segments = buildSegments(tree->root(), 1000, 1000);
        // Ring 0 steps by the golden ratio's fraction; the ring beyond takes its parent's.
        const std::vector<double> expected = {0, 0.61803398875, 0.2360679775, 0.85410196625, 0.472135955};
        QCOMPARE(segments.size(), 2 * expected.size());
        for (size_t i = 0; i < segments.size(); ++i)
            QVERIFY(segments[i].ring == qint64(i % 2) && std::abs(segments[i].colorHue - expected[i / 2]) < 1e-9);
    }

    void thinSectorsLeaveAGapBeyondRingZero()
    {
        // "tiny" is thin, but ring 0 keeps every child.
        const auto tree = scanTree(makeTree(
            base() + "/thin", {{"big/huge", 8 * 1024 * 1024}, {"big/speck", 4096}, {"big/speck2", 4096}, {"tiny", 4096}}));
        const auto segments = buildSegments(tree->root(), 800, 600);
        const FileNode* big = childNamed(*tree->root(), "big");
        const Segment* bigSegment = segmentOf(segments, big);
        const Segment* huge = segmentOf(segments, childNamed(*big, "huge"));
        QVERIFY(huge && segmentOf(segments, childNamed(*tree->root(), "tiny")));
        QVERIFY(!segmentOf(segments, childNamed(*big, "speck")) && !segmentOf(segments, childNamed(*big, "speck2")));
        // The specks' share stays empty at the end of big's span.
        const double span = bigSegment->endAngle - bigSegment->startAngle;
        const double hugeShare = double(huge->node->size()) / double(big->size());
        QVERIFY(qFuzzyCompare(huge->endAngle, bigSegment->startAngle + span * hugeShare));
        QVERIFY(huge->endAngle < bigSegment->endAngle);
        QVERIFY(!segmentAtPolar((huge->innerRadius + huge->outerRadius) / 2, (huge->endAngle + bigSegment->endAngle) / 2,
                                segments));
    }

    void thinRuleIsStrictAtTheLimit()
    {
        // 300 equal children one ring out: each exactly 1.2 degrees of the full circle.
        // One more equal child and each falls below the limit: ring 1 is empty.
        const QByteArray root = makeTree(base() + "/limit", {{"only"}});
        for (const auto& [children, segments] : {std::pair{300, 301}, {301, 1}}) {
            for (int i = 0; i < children; ++i)
                writeFile(root + "/only/f" + QByteArray::number(i), 4096);
            QCOMPARE(buildSegments(scanTree(root)->root(), 800, 600).size(), size_t(segments));
        }
    }

    void chainsStopAtTheSixthRing()
    {
        writeFile(makeChain(base() + "/chain", 9, "c") + "/leaf", 4096);
        const auto tree = scanTree(base() + "/chain");
        const auto segments = buildSegments(tree->root(), 800, 600);
        QCOMPARE(segments.size(), size_t(kRingCount));
        for (size_t i = 0; i < segments.size(); ++i)
            QCOMPARE(std::tuple(segments[i].ring, segments[i].startAngle, segments[i].endAngle, segments[i].colorHue),
                     std::tuple(qint64(i), 0.0, kFullCircle, 0.0));
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
        const auto tree = scanTree(makeTree(base() + "/nothing", {{"hollow"}, {"zero", 0}}));
        QCOMPARE(tree->root()->size(), 0);
        QVERIFY(buildSegments(tree->root(), 800, 600).empty() && buildSegments(nullptr, 800, 600).empty());
        QVERIFY(!segmentAt(0, 0, {}));
    }

    void hitTestBoundsAndTies()
    {
        const auto tree = scanTree(makeTree(base() + "/hits", {{"left/x", 64 * 1024}, {"right", 64 * 1024}}));
        const auto segments = buildSegments(tree->root(), 800, 600);
        const Segment* left = segmentOf(segments, childNamed(*tree->root(), "left"));
        const Segment* right = segmentOf(segments, childNamed(*tree->root(), "right"));
        QVERIFY(left && right);
        const Segment* x = segmentOf(segments, childNamed(*left->node, "x"));
        QVERIFY(x);
        // Equal halves, in listing order: the first runs from twelve o'clock to six.
        const Segment* first = left->startAngle == 0.0 ? left : right;
        const Segment* second = first == left ? right : left;
        QVERIFY(qFuzzyCompare(first->endAngle, kFullCircle / 2));
        QVERIFY(qFuzzyCompare(second->startAngle, kFullCircle / 2));
        const double inLeft = (left->startAngle + left->endAngle) / 2;
        const double inRight = (right->startAngle + right->endAngle) / 2;
        const auto at = [&](double r, double a) { return segmentAtPolar(r, a, segments); };
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
        QVERIFY(!segmentAt(0, 0, segments) && !at(left->innerRadius - 0.01, inLeft));
        QVERIFY(!at(x->outerRadius + 0.01, inLeft) && !at(x->outerRadius - 0.01, inRight));
        QCOMPARE(at((x->innerRadius + x->outerRadius) / 2, (x->startAngle + x->endAngle) / 2), x);
    }

    void shadesByRing()
    {
        const double saturation[] = {0.55, 0.50, 0.45, 0.40, 0.35, 0.30, 0.30};
        const double brightness[] = {0.95, 0.91, 0.87, 0.83, 0.79, 0.75, 0.75};
        for (int ring = 0; ring < 7; ++ring)
            QVERIFY(std::abs(shadeForRing(ring).saturation - saturation[ring]) < 1e-12
                    && std::abs(shadeForRing(ring).brightness - brightness[ring]) < 1e-12);
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
