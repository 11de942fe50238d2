// The drill's motion: its easing, the sector it grows from, and its frames,
// which start as the outer chart, end as the inner one, and never leave the
// rings between.

#include "TestMain.h"
#include "TestFiles.h"
#include "chart/DrillMotion.h"

#include <QTemporaryDir>
#include <algorithm>

using namespace tw;
using namespace tw::test;

namespace {

bool sameSector(const Segment& a, const Segment& b)
{
    constexpr double e = 1e-9;
    return a.node == b.node && std::abs(a.startAngle - b.startAngle) < e && std::abs(a.endAngle - b.endAngle) < e &&
           std::abs(a.innerRadius - b.innerRadius) < e && std::abs(a.outerRadius - b.outerRadius) < e;
}

// Whether every sector of `expected` is in `frame`, in place.
bool holdsAll(const std::vector<Segment>& frame, const std::vector<Segment>& expected)
{
    return std::all_of(expected.begin(), expected.end(), [&](const Segment& want) {
        return std::any_of(frame.begin(), frame.end(), [&](const Segment& s) { return sameSector(s, want); });
    });
}

} // namespace

class DrillMotionTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::shared_ptr<ScanTree> m_tree;

private Q_SLOTS:
    void initTestCase()
    {
        const QByteArray root = QFile::encodeName(m_dir.path()) + "/t";
        makeTree(root, {{"docs/a/x", 300 * 1024}, {"docs/a/y", 100 * 1024}, {"docs/b", 200 * 1024},
                        {"video/v", 600 * 1024}, {"music", 150 * 1024}});
        makeChain(root + "/docs/deep", 8, "d");
        writeFile(root + "/docs/deep/d/d/d/d/d/d/d/d/leaf", 200 * 1024);
        m_tree = scanTree(root);
    }

    void easing_data()
    {
        QTest::addColumn<double>("progress");
        QTest::addColumn<double>("eased");
        QTest::newRow("before") << -0.5 << 0.0;
        QTest::newRow("start") << 0.0 << 0.0;
        QTest::newRow("slow start") << 0.25 << 0.0625;
        QTest::newRow("middle") << 0.5 << 0.5;
        QTest::newRow("slow end") << 0.75 << 0.9375;
        QTest::newRow("end") << 1.0 << 1.0;
        QTest::newRow("after") << 2.0 << 1.0;
    }
    void easing()
    {
        QFETCH(double, progress);
        QFETCH(double, eased);
        QCOMPARE(easeInOut(progress) + 1, eased + 1);
    }

    // The inner focus, the ring of the sector the motion grows from, at zooms
    // from the outer chart to the inner.
    void frames_data()
    {
        QTest::addColumn<QByteArray>("inner");
        QTest::addColumn<QByteArray>("window"); // the drawn sector it grows from
        QTest::addColumn<double>("zoom");
        for (const double zoom : {0.0, 0.3, 0.7, 1.0}) {
            const QByteArray at = " at " + QByteArray::number(zoom);
            QTest::newRow(QByteArray("into a ring-0 folder" + at).constData()) << QByteArray("docs") << QByteArray("docs") << zoom;
            QTest::newRow(QByteArray("into a ring-1 folder" + at).constData()) << QByteArray("docs/a") << QByteArray("docs/a") << zoom;
            // Beyond the outer chart's rings: it grows from its deepest drawn ancestor.
            QTest::newRow(QByteArray("beyond the rings" + at).constData())
                << QByteArray("docs/deep/d/d/d/d/d/d/d") << QByteArray("docs/deep/d/d/d/d") << zoom;
        }
    }
    void frames()
    {
        QFETCH(QByteArray, inner);
        QFETCH(QByteArray, window);
        QFETCH(double, zoom);
        const QByteArray base = QFile::encodeName(m_dir.path()) + "/t/";
        const FileNode* innerFocus = m_tree->find(base + inner);
        QVERIFY(innerFocus);
        const ChartGeometry g = chartGeometry(800, 600);
        const std::vector<Segment> outer = buildSegments(m_tree->root(), 800, 600);
        const std::vector<Segment> innerChart = buildSegments(innerFocus, 800, 600);
        const Segment* from = drillWindow(outer, innerFocus);
        QVERIFY(from);
        QCOMPARE(from->node, m_tree->find(base + window));

        const std::vector<Segment> frame = drillFrame(outer, innerChart, *from, g, zoom, true);
        for (const Segment& s : frame) {
            QVERIFY(s.startAngle >= 0 && s.endAngle <= kFullCircle && s.startAngle < s.endAngle);
            QVERIFY(s.innerRadius >= g.hubRadius - 1e-9 && s.outerRadius <= g.radius + 1e-9);
            QVERIFY(s.innerRadius < s.outerRadius);
        }
        // Nothing of the window's insides is drawn twice.
        const auto within = [&](const Segment& s) {
            for (const FileNode* at = s.node->parent(); at; at = at->parent())
                if (at == from->node)
                    return true;
            return false;
        };
        const auto insides = std::count_if(frame.begin(), frame.end(), within);
        QVERIFY(insides <= qint64(innerChart.size()));
        if (zoom == 0) {
            // The outer chart as it rests, apart from the window's insides.
            std::vector<Segment> resting;
            std::copy_if(outer.begin(), outer.end(), std::back_inserter(resting),
                         [&](const Segment& s) { return !within(s); });
            QVERIFY(holdsAll(frame, resting));
        }
        if (zoom == 1) {
            // The inner chart as it rests, and nothing else.
            QVERIFY(holdsAll(frame, innerChart));
            QCOMPARE(frame.size(), innerChart.size());
        }
        // The inner chart's outer colours while it moves, its own at rest.
        const std::vector<Segment> recoloured = drillFrame(outer, innerChart, *from, g, zoom, false);
        for (const Segment& s : recoloured)
            QVERIFY(!within(s) || s.colorHue == from->colorHue);
    }
};

TIDEWICK_TEST_MAIN(DrillMotionTest)
#include "tst_drillmotion.moc"
