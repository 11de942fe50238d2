// What the screens say, decided in the core: the progress lines, the
// toolbar's figures and the catalogue's placeholders.

#include "TestMain.h"
#include "app/AppState.h"
#include "chart/ChartScreenModel.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "screens/ScreensModel.h"

#include <QStandardPaths>

using namespace tw;

namespace {
constexpr qint64 kGB = 1000LL * 1000 * 1000;

ScanProgress progressAt(double rate, qint64 files = 0, qint64 bytes = 0)
{
    ScanProgress progress;
    progress.filesPerSecond = rate;
    progress.filesScanned = files;
    progress.bytesScanned = bytes;
    return progress;
}
} // namespace

class ScreenTextsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalizationManager::shared().setCurrent(Language::english);
    }

    void progressRate_data()
    {
        QTest::addColumn<double>("rate");
        QTest::addColumn<QString>("text");
        QTest::newRow("first report") << 0.0 << QString();
        QTest::newRow("below one") << 0.9 << QString();
        QTest::newRow("one, still plural") << 1.0 << QStringLiteral("1 files/s");
        QTest::newRow("half rounds away from zero") << 1234.5 << QStringLiteral("1235 files/s");
        QTest::newRow("just below half") << 1234.49 << QStringLiteral("1234 files/s");
        QTest::newRow("not a number") << std::nan("") << QString();
    }
    void progressRate()
    {
        QFETCH(double, rate);
        QFETCH(QString, text);
        QCOMPARE(progressRateText(progressAt(rate)), text);
    }

    void progressCountsSayItemsForEveryCount()
    {
        QCOMPARE(progressCountsText(progressAt(0, 1, 0)), QStringLiteral("Zero KB • 1 items"));
        QCOMPARE(progressCountsText(progressAt(0, 4567, 12'300'000)),
                 QStringLiteral("12.3 MB • 4567 items"));
        // The word follows the language; the rate's suffix does not.
        LocalizationManager::shared().setCurrent(Language::german);
        QVERIFY(!progressCountsText(progressAt(0, 2, 0)).endsWith(QStringLiteral(" items")));
        QCOMPARE(progressRateText(progressAt(2.0)), QStringLiteral("2 files/s"));
        LocalizationManager::shared().setCurrent(Language::english);
    }

    void figuresShowTheInfoSymbolOnlyAboveTheUsedSpace()
    {
        const VolumeInfo::Capacity disk{500 * kGB, 400 * kGB, 400 * kGB}; // 100 GB used
        ToolbarFigures figures = toolbarFigures(40 * kGB, disk);
        QCOMPARE(figures.fileSizes, QStringLiteral("File sizes: 40 GB"));
        QVERIFY(!figures.showsInfo);
        QCOMPARE(figures.capacity, QStringLiteral("400 GB / 500 GB"));
        QVERIFY(toolbarFigures(120 * kGB, disk).showsInfo);
        // Exactly the used space is not more than it.
        QVERIFY(!toolbarFigures(100 * kGB, disk).showsInfo);
        // free, not rawFree, is shown; rawFree decides the used space.
        const VolumeInfo::Capacity purgeable{500 * kGB, 450 * kGB, 400 * kGB};
        QCOMPARE(toolbarFigures(1, purgeable).capacity, QStringLiteral("450 GB / 500 GB"));
        QVERIFY(toolbarFigures(101 * kGB, purgeable).showsInfo);
        // rawFree above total: used space counts as 0.
        QVERIFY(toolbarFigures(1, VolumeInfo::Capacity{10, 10, 20}).showsInfo);
        // No capacity: only the file sizes.
        figures = toolbarFigures(40 * kGB, std::nullopt);
        QVERIFY(!figures.showsInfo);
        QVERIFY(figures.capacity.isEmpty());
        QCOMPARE(figures.fileSizes, QStringLiteral("File sizes: 40 GB"));
    }

    void placeholdersFillOnce()
    {
        QCOMPARE(fillText(QStringLiteral("Path: %@"), QStringLiteral("/a %@ b")),
                 QStringLiteral("Path: /a %@ b"));
        QCOMPARE(fillCount(QStringLiteral("Some folders were skipped (%d)"), 3),
                 QStringLiteral("Some folders were skipped (3)"));
        QCOMPARE(fillText(QStringLiteral("none"), QStringLiteral("x")), QStringLiteral("none"));
    }
};

TIDEWICK_TEST_MAIN(ScreenTextsTest)
#include "tst_screentexts.moc"
