// The report throttle, the files-per-second rate and the stall rule, driven
// by a clock the test moves by hand.

#include "TestMain.h"
#include "scan/ScanProgress.h"

#include <QtTest>

#include <vector>

using namespace std::chrono_literals;
using tw::ScanMonitor;
using tw::ScanProgress;

namespace {
struct FakeClock {
    ScanMonitor::Clock::time_point at{std::chrono::hours(1000)};
    ScanMonitor::Now now()
    {
        return [this] { return at; };
    }
};
} // namespace

class ScanMonitorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void throttlesReportsButKeepsNewestPath()
    {
        FakeClock clock;
        std::vector<ScanProgress> reports;
        ScanMonitor monitor([&](const ScanProgress& p) { reports.push_back(p); }, clock.now());
        monitor.start();

        // The first report of a scan always leaves.
        monitor.reportPath("/a");
        QCOMPARE(reports.size(), size_t(1));
        QCOMPARE(reports.back().currentPath, QStringLiteral("/a"));

        // Within 0.08 s nothing leaves, whether a path or a file...
        clock.at += 50ms;
        monitor.reportPath("/a/b");
        monitor.addToCounters(4096, 1);
        QCOMPARE(reports.size(), size_t(1));
        // ...but the newer path is what the next report carries.
        clock.at += 30ms;
        monitor.addToCounters(100, 1);
        QCOMPARE(reports.size(), size_t(2));
        QCOMPARE(reports.back().currentPath, QStringLiteral("/a/b"));
        QCOMPARE(reports.back().filesScanned, 2);
        QCOMPARE(reports.back().bytesScanned, 4196);

        // The final report is never throttled and brings the totals.
        monitor.addToCounters(1, 1);
        monitor.reportFinal();
        QCOMPARE(reports.size(), size_t(3));
        QCOMPARE(reports.back().filesScanned, 3);
        QCOMPARE(reports.back().bytesScanned, 4197);
    }

    void finalReportWithoutAnyFiles()
    {
        FakeClock clock;
        std::vector<ScanProgress> reports;
        ScanMonitor monitor([&](const ScanProgress& p) { reports.push_back(p); }, clock.now());
        monitor.start();
        monitor.reportFinal();
        QCOMPARE(reports.size(), size_t(1));
        QCOMPARE(reports[0].filesScanned, 0);
        QCOMPARE(reports[0].filesPerSecond, 0.0);
    }

    void rateIsAWindowOfHalfASecondOrMore()
    {
        FakeClock clock;
        std::vector<ScanProgress> reports;
        ScanMonitor monitor([&](const ScanProgress& p) { reports.push_back(p); }, clock.now());
        monitor.start();
        // Reports within the first half second carry no rate.
        for (int i = 0; i < 4; ++i) {
            clock.at += 100ms;
            monitor.addToCounters(10, 100);
        }
        QCOMPARE(reports.size(), size_t(4));
        for (const auto& r : reports)
            QCOMPARE(r.filesPerSecond, 0.0);
        // At 0.5 s: 500 files over 0.5 s.
        clock.at += 100ms;
        monitor.addToCounters(10, 100);
        QCOMPARE(reports.back().filesPerSecond, 1000.0);
        // The next window starts there: 300 files in 0.6 s, unsmoothed.
        for (int i = 0; i < 3; ++i) {
            clock.at += 200ms;
            monitor.addToCounters(10, 100);
        }
        QCOMPARE(reports.back().filesPerSecond, 500.0);
        // Paths keep the last rate and do not recompute it.
        clock.at += 5s;
        monitor.reportPath("/x");
        QCOMPARE(reports.back().filesPerSecond, 500.0);
    }

    void stallRaisesASkipAfterTheThreshold()
    {
        FakeClock clock;
        ScanMonitor monitor({}, clock.now());
        monitor.setStallThreshold(20s);
        monitor.start();
        clock.at += 20s;
        QVERIFY(!monitor.checkStall()); // exactly at the threshold: not yet
        QVERIFY(!monitor.skipRequested());
        clock.at += 1s;
        QVERIFY(monitor.checkStall());
        QVERIFY(monitor.skipRequested());
        monitor.clearSkip();
        // A fresh period follows the skip.
        clock.at += 19s;
        QVERIFY(!monitor.checkStall());
        // Paths are not headway, charged files are.
        clock.at += 2s;
        monitor.reportPath("/still/walking/empty/folders");
        QVERIFY(monitor.checkStall());
        monitor.clearSkip();
        clock.at += 15s;
        monitor.addToCounters(0, 1);
        clock.at += 15s;
        QVERIFY(!monitor.checkStall());
    }

    void cancelledScanNeverSkips()
    {
        FakeClock clock;
        ScanMonitor monitor({}, clock.now());
        monitor.start();
        monitor.cancel();
        clock.at += 1h;
        QVERIFY(!monitor.checkStall());
        QVERIFY(!monitor.skipRequested());
        QVERIFY(monitor.isCancelled());
    }

    void countersAreExactAcrossThreads()
    {
        std::atomic<int> reports{0};
        ScanMonitor monitor([&](const ScanProgress&) { ++reports; });
        monitor.start();
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 50000; ++i)
                    monitor.addToCounters(3, 1);
            });
        for (auto& t : threads)
            t.join();
        const ScanProgress last = monitor.snapshot();
        QCOMPARE(last.filesScanned, 200000);
        QCOMPARE(last.bytesScanned, 600000);
        QVERIFY(reports >= 1);
    }
};

TIDEWICK_TEST_MAIN(ScanMonitorTest)
#include "tst_scanmonitor.moc"
