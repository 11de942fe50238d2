// The screens follow the system's appearance while they are up: light to
// dark and back, and the user's accent colour, with no restart.

#include "TestMain.h"
#include "screens/ScreensHarness.h"

using namespace tw;
using namespace tw::test;

class AppearanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareScreens(); }
    void init() { recordWarningsFromHere(); }
    void cleanup() { failOnRecordedWarnings(); }

    void screensFollowTheSystemLive()
    {
        QTemporaryDir dir;
        const QByteArray home = makeHomeTree(dir.path());
        FakeVolume volume;
        FakeAccess access;
        ChosenAppearance appearance;
        Window window(volume, access, {}, &appearance);
        QVERIFY(QTest::qWaitForWindowExposed(&window.view));
        const auto pixel = [&](QPoint at) {
            const QImage image = window.view.grabWindow();
            return image.pixelColor(at * image.devicePixelRatio());
        };
        QQuickItem* button = window.item("scanMacButton");
        const QPoint onFill = button->mapToScene(QPointF(5, button->height() / 2)).toPoint();
        const auto near = [](QColor a, QColor b) {
            return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) < 12;
        };
        QVERIFY(near(pixel(onFill), QColor(0x00, 0x7a, 0xff)));

        // The user's accent, then the dark look with the system's own blue.
        appearance.set({false, QColor(0xc0, 0x20, 0xa0)});
        QTRY_VERIFY(near(pixel(onFill), QColor(0xc0, 0x20, 0xa0)));
        appearance.set({true, std::nullopt});
        QTRY_VERIFY(near(pixel(onFill), QColor(0x0a, 0x84, 0xff)));
        QCOMPARE(window.view.rootObject()->property("windowBackground").value<QColor>(), QColor(0x32, 0x32, 0x32));

        // The chart redraws in the dark shades, and back.
        QVERIFY(window.scan(home));
        const QPoint sector = window.pointOf(child(window.state->root(), "docs"));
        const QColor darkSector = pixel(sector);
        appearance.set({false, std::nullopt});
        QTRY_VERIFY(!near(pixel(sector), darkSector));
    }

    // A drill moves unless the system asks for less motion;
    // TIDEWICK_REDUCE_MOTION overrides the system either way.
    void drillMovesUnlessMotionIsReduced_data()
    {
        QTest::addColumn<bool>("systemReduces");
        QTest::addColumn<QByteArray>("override");
        QTest::addColumn<bool>("moves");
        QTest::newRow("no wish") << false << QByteArray() << true;
        QTest::newRow("system reduces") << true << QByteArray() << false;
        QTest::newRow("overridden on") << true << QByteArray("0") << true;
        QTest::newRow("overridden off") << false << QByteArray(" 1\n") << false;
        QTest::newRow("unknown override: the system") << true << QByteArray("yes") << false;
    }
    void drillMovesUnlessMotionIsReduced()
    {
        QFETCH(bool, systemReduces);
        QFETCH(QByteArray, override);
        QTemporaryDir dir;
        const QByteArray home = makeHomeTree(dir.path());
        FakeVolume volume;
        FakeAccess access;
        ChosenAppearance appearance;
        const auto restore = qScopeGuard([] { qunsetenv("TIDEWICK_REDUCE_MOTION"); });
        qputenv("TIDEWICK_REDUCE_MOTION", override);
        appearance.set({false, std::nullopt, systemReduces});
        Window window(volume, access, {}, &appearance);
        QVERIFY(QTest::qWaitForWindowExposed(&window.view) && window.scan(home));
        QQuickItem* chart = window.item("sunburst");
        const FileNode* docs = child(window.state->root(), "docs");
        window.click(window.pointOf(docs));
        QCOMPARE(window.state->focus().get(), docs);
        QTEST(chart->property("drilling").toBool(), "moves");
        // And back up: the motion runs out and the chart rests.
        QTRY_VERIFY(!chart->property("drilling").toBool());
    }
};

TIDEWICK_TEST_MAIN(AppearanceTest)
#include "tst_appearance.moc"
