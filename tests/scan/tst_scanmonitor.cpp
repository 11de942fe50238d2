// The report throttle, the files-per-second rate and the stall rule, driven
// by a clock the test moves by hand.

#include "TestMain.h"
#include "scan/ScanProgress.h"

#include <QtTest>

#include <thread>
#include <tuple>
#include <vector>

using namespace std::chrono_literals;
using tw::ScanMonitor;
using tw::ScanProgress;

namespace {
// How many reports left, and the last one's path, files, bytes and rate.
using Said = std::tuple<size_t, QString, qint64, qint64, double>;

// A started monitor on a hand-moved clock, keeping every report.
struct Watched {
    ScanMonitor::Clock::time_point at{std::chrono::hours(1000)};
    std::vector<ScanProgress> reports;
    ScanMonitor monitor{[this](const ScanProgress& p) { reports.push_back(p); }, [this] { return at; }};
    Watched() { monitor.start(); }
    // After `wait`, one charge of `files` files and `bytes` bytes.
    void add(std::chrono::milliseconds wait, qint64 bytes, qint64 files)
    {
        at += wait;
        monitor.addToCounters(bytes, files);
    }
    Said said() const
    {
        const ScanProgress& last = reports.back();
        return {reports.size(), last.currentPath, last.filesScanned, last.bytesScanned, last.filesPerSecond};
    }
};
} // namespace

class ScanMonitorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void throttlesReportsButKeepsNewestPath()
    {
        Watched w;
        // The first report of a scan always leaves.
        w.monitor.reportPath("/a");
        QCOMPARE(w.said(), Said(1, "/a", 0, 0, 0));
        // Within 0.08 s nothing leaves, whether a path or a file...
        w.at += 50ms;
        w.monitor.reportPath("/a/b");
        w.add(0ms, 4096, 1);
        QCOMPARE(w.reports.size(), size_t(1));
        // ...but the newer path is what the next report carries.
        w.add(30ms, 100, 1);
        QCOMPARE(w.said(), Said(2, "/a/b", 2, 4196, 0));
        // The final report is never throttled and brings the totals.
        w.add(0ms, 1, 1);
        w.monitor.reportFinal();
        QCOMPARE(w.said(), Said(3, "/a/b", 3, 4197, 0));
        // Even with nothing counted.
        Watched empty;
        empty.monitor.reportFinal();
        QCOMPARE(empty.said(), Said(1, "", 0, 0, 0));
    }

    void rateIsAWindowOfHalfASecondOrMore()
    {
        Watched w;
        // Reports within the first half second carry no rate.
        for (int i = 0; i < 4; ++i)
            w.add(100ms, 10, 100);
        QCOMPARE(w.said(), Said(4, "", 400, 40, 0));
        // At 0.5 s: 500 files over 0.5 s.
        w.add(100ms, 10, 100);
        QCOMPARE(w.said(), Said(5, "", 500, 50, 1000));
        // The next window starts there: 300 files in 0.6 s, unsmoothed.
        for (int i = 0; i < 3; ++i)
            w.add(200ms, 10, 100);
        QCOMPARE(w.said(), Said(8, "", 800, 80, 500));
        // Paths keep the last rate and do not recompute it.
        w.at += 5s;
        w.monitor.reportPath("/x");
        QCOMPARE(w.said(), Said(9, "/x", 800, 80, 500));
    }

    void stallRaisesASkipAfterTheThreshold()
    {
        Watched w; // the default threshold, 20 s
        w.at += 20s;
        QVERIFY(!w.monitor.checkStall()); // exactly at the threshold: not yet
        QVERIFY(!w.monitor.skipRequested());
        w.at += 1s;
        QVERIFY(w.monitor.checkStall() && w.monitor.skipRequested());
        w.monitor.clearSkip();
        // A fresh period follows the skip.
        w.at += 19s;
        QVERIFY(!w.monitor.checkStall());
        // Paths are not headway, charged files are.
        w.at += 2s;
        w.monitor.reportPath("/still/walking/empty/folders");
        QVERIFY(w.monitor.checkStall());
        w.monitor.clearSkip();
        w.add(15s, 0, 1);
        w.at += 15s;
        QVERIFY(!w.monitor.checkStall());
        // A cancelled scan never skips.
        w.monitor.cancel();
        w.at += 1h;
        QVERIFY(!w.monitor.checkStall() && !w.monitor.skipRequested() && w.monitor.isCancelled());
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
        QCOMPARE(monitor.snapshot().filesScanned, 200000);
        QCOMPARE(monitor.snapshot().bytesScanned, 600000);
        QVERIFY(reports >= 1);
    }
};

TIDEWICK_TEST_MAIN(ScanMonitorTest)
#include "tst_scanmonitor.moc"
