// Names on the rings: which sectors get one, straight or along the arc, how a
// name is cut, that every label stays inside its sector and off every other,
// and which ink reads on a fill.

#include "TestMain.h"
#include "TestFiles.h"
#include "chart/RingLabels.h"

#include <QPointF>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextBoundaryFinder>
#include <cmath>
#include <numbers>

using namespace tw;
using namespace tw::test;

namespace {

constexpr double kPi = std::numbers::pi;

// A stand-in font: 6 points a character, 11 for a CJK one, lines of 13.
LabelMetrics fakeMetrics()
{
    return {13, [](const QString& text) {
                double width = 0;
                QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
                qsizetype from = 0;
                while (finder.toNextBoundary() > 0) {
                    width += text[from].unicode() >= 0x2e80 ? 11 : 6;
                    from = finder.position();
                }
                return width;
            }};
}

// A point of a label's area in the chart's frame (y down), from its own:
// `along` the text from its middle, `across` outward from its centre line.
QPointF labelPoint(const RingLabel& label, double along, double across)
{
    if (label.curved) {
        const double angle = label.angle + along / label.radius;
        const double r = label.radius + across;
        return {r * std::sin(angle), -r * std::cos(angle)};
    }
    const double r = label.radius + across;
    return {r * std::sin(label.angle) + along * std::cos(label.angle),
            -r * std::cos(label.angle) + along * std::sin(label.angle)};
}

// The label's outline, densely sampled.
std::vector<QPointF> outlineOf(const RingLabel& label)
{
    std::vector<QPointF> points;
    constexpr int steps = 24;
    for (int i = 0; i <= steps; ++i) {
        const double along = -label.width / 2 + label.width * i / steps;
        const double across = -label.height / 2 + label.height * i / steps;
        points.push_back(labelPoint(label, along, -label.height / 2));
        points.push_back(labelPoint(label, along, label.height / 2));
        points.push_back(labelPoint(label, -label.width / 2, across));
        points.push_back(labelPoint(label, label.width / 2, across));
    }
    return points;
}

double chartAngle(const QPointF& p)
{
    const double angle = std::atan2(p.x(), -p.y());
    return angle < 0 ? angle + 2 * kPi : angle;
}

bool insideSector(const QPointF& p, double inner, double outer, double start, double end)
{
    constexpr double slack = 1e-9;
    const double r = std::hypot(p.x(), p.y());
    const double a = chartAngle(p);
    return r >= inner - slack && r <= outer + slack && a >= start - slack && a <= end + slack;
}

// Whether `p` lies strictly within the label's area.
bool insideLabel(const QPointF& p, const RingLabel& label)
{
    double along = 0, across = 0;
    if (label.curved) {
        double turn = chartAngle(p) - label.angle;
        turn -= 2 * kPi * std::round(turn / (2 * kPi));
        along = turn * label.radius;
        across = std::hypot(p.x(), p.y()) - label.radius;
    } else {
        const QPointF centre(label.radius * std::sin(label.angle), -label.radius * std::cos(label.angle));
        const QPointF d = p - centre;
        along = d.x() * std::cos(label.angle) + d.y() * std::sin(label.angle);
        across = d.x() * std::sin(label.angle) - d.y() * std::cos(label.angle);
    }
    return std::abs(along) < label.width / 2 - 1e-6 && std::abs(across) < label.height / 2 - 1e-6;
}

} // namespace

class RingLabelsTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void oneSector_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("inner");
        QTest::addColumn<double>("outer");
        QTest::addColumn<double>("fromDegrees");
        QTest::addColumn<double>("toDegrees");
        QTest::addColumn<QString>("text"); // empty: no label
        QTest::addColumn<bool>("curved");
        QTest::addColumn<bool>("flipped");

        // Ring 0 and ring 5 of an 800 by 600 view (hub 62.48, rings 36.92).
        QTest::newRow("fits straight") << "Documents" << 62.48 << 99.40 << 0.0 << 90.0 << "Documents" << false << false;
        QTest::newRow("cut along the arc")
            << "A very long folder name indeed" << 62.48 << 99.40 << 0.0 << 90.0 << "A very long folder…" << true << false;
        QTest::newRow("long outer arc, whole")
            << "A very long folder name indeed" << 247.08 << 284.0 << 100.0 << 150.0 << "A very long folder name indeed" << true << true;
        QTest::newRow("lower half reads upright") << "Music" << 247.08 << 284.0 << 170.0 << 190.0 << "Music" << false << true;
        QTest::newRow("two characters stay whole") << "Go" << 247.08 << 284.0 << 0.0 << 4.0 << "Go" << false << false;
        QTest::newRow("too thin for two characters and the ellipsis")
            << "Library" << 247.08 << 284.0 << 0.0 << 3.0 << "" << false << false;
        QTest::newRow("ring thinner than a line") << "Documents" << 100.0 << 115.0 << 0.0 << 90.0 << "" << false << false;
        QTest::newRow("CJK cut by its own widths")
            << "照片和视频的备份文件夹" << 247.08 << 284.0 << 0.0 << 20.0 << "照片和视频的备…" << true << false;
        QTest::newRow("marks stay with their letter")
            << "e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301" << 247.08 << 284.0
            << 0.0 << 8.0 << "e\u0301e\u0301e\u0301e\u0301…" << true << false;
        QTest::newRow("full ring: at most half of it") << QString(60, QLatin1Char('x')) << 62.48 << 99.40
                                                      << 0.0 << 360.0 << QString(40, QLatin1Char('x')) + "…"
                                                      << true << true;
    }

    void oneSector()
    {
        QFETCH(QString, name);
        QFETCH(double, inner);
        QFETCH(double, outer);
        QFETCH(double, fromDegrees);
        QFETCH(double, toDegrees);
        QFETCH(QString, text);
        const double start = fromDegrees * kPi / 180, end = toDegrees * kPi / 180;
        const LabelMetrics metrics = fakeMetrics();
        const std::optional<RingLabel> label = placeLabel(name, inner, outer, start, end, metrics);
        QCOMPARE(label ? label->text : QString(), text);
        if (!label)
            return;
        QTEST(label->curved, "curved");
        QTEST(label->flipped, "flipped");
        QCOMPARE(label->width, metrics.width(label->text));
        for (const QPointF& p : outlineOf(*label))
            QVERIFY2(insideSector(p, inner + kLabelPadding, outer - kLabelPadding, start, end),
                     qPrintable(QStringLiteral("%1, %2").arg(p.x()).arg(p.y())));
    }

    void wholeChart_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::newRow("800 by 600") << 800.0 << 600.0;
        QTest::newRow("large window") << 1600.0 << 1000.0;
    }

    void wholeChart()
    {
        // Folders of names short, long and Chinese, of random sizes.
        const QByteArray root = QFile::encodeName(m_dir.path()) + "/tree";
        if (!QFile::exists(QFile::decodeName(root))) {
            QRandomGenerator random(5);
            const QList<QByteArray> names{"a", "Downloads", "Library caches of a long-running app", "照片备份",
                                          "node_modules", "Übergrößenträger", "x y z"};
            for (int i = 0; i < 160; ++i) {
                QByteArray path = root;
                for (int depth = 0, levels = 1 + int(random.bounded(4)); depth < levels; ++depth)
                    path += '/' + names[random.bounded(int(names.size()))] + QByteArray::number(random.bounded(3));
                QDir().mkpath(QFile::decodeName(path));
                writeFile(path + "/f" + QByteArray::number(i), qint64(random.bounded(1, 400)) * 4096);
            }
        }
        const auto tree = scanTree(root);
        QFETCH(double, width);
        QFETCH(double, height);
        const std::vector<Segment> segments = buildSegments(tree->root(), width, height);
        const std::vector<RingLabel> labels = placeRingLabels(segments, fakeMetrics());
        // Enough of every kind to mean something.
        const auto count = [&](auto test) { return std::count_if(labels.begin(), labels.end(), test); };
        QVERIFY(labels.size() >= 5);
        QVERIFY(count([](const RingLabel& l) { return l.curved; }) > 0);
        QVERIFY(count([](const RingLabel& l) { return !l.curved; }) > 0);
        QVERIFY(count([](const RingLabel& l) { return l.text.endsWith(QChar(0x2026)); }) > 0);

        for (const RingLabel& label : labels) {
            const Segment& s = segments[label.segment];
            QVERIFY(label.text == s.node->displayName() ||
                    (label.text.endsWith(QChar(0x2026)) && s.node->displayName().startsWith(label.text.chopped(1))));
            const std::vector<QPointF> outline = outlineOf(label);
            for (const QPointF& p : outline)
                QVERIFY(insideSector(p, s.innerRadius, s.outerRadius, s.startAngle, s.endAngle));
            for (const RingLabel& other : labels)
                for (const QPointF& p : outline)
                    QVERIFY(&other == &label || !insideLabel(p, other));
        }
    }

    void inkThatReads_data()
    {
        // A fill's sRGB components, and whether white reads better than black on it.
        QTest::addColumn<double>("red");
        QTest::addColumn<double>("green");
        QTest::addColumn<double>("blue");
        QTest::addColumn<bool>("light");
        QTest::newRow("yellow") << 1.0 << 0.9 << 0.3 << false;
        QTest::newRow("pale blue of ring 0") << 0.4275 << 0.605 << 0.95 << false;
        QTest::newRow("navy") << 0.08 << 0.12 << 0.47 << true;
        QTest::newRow("deep red") << 0.6 << 0.08 << 0.08 << true;
        QTest::newRow("dark window") << 0.196 << 0.196 << 0.196 << true;
    }

    void inkThatReads()
    {
        QFETCH(double, red);
        QFETCH(double, green);
        QFETCH(double, blue);
        const double background = relativeLuminance(red, green, blue);
        QTEST(firstContrastsMore(relativeLuminance(1, 1, 1), relativeLuminance(0, 0, 0), background), "light");
    }
};

TIDEWICK_TEST_MAIN(RingLabelsTest)
#include "tst_ringlabels.moc"
