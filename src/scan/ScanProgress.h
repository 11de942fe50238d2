#pragma once

#include <QMetaType>
#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace tw {

// What a running scan tells the screen: the counters, the last path a worker
// entered, and a files-per-second rate.
struct ScanProgress {
    qint64 bytesScanned = 0;
    qint64 filesScanned = 0;
    QString currentPath;
    double filesPerSecond = 0;
    bool operator==(const ScanProgress&) const = default;
};

// The shared, lock-guarded state of one running scan: counters, the report
// throttle, the rate, the cancel flag and the stall rule. Every operation is
// safe from any worker thread; the handler is always called outside the lock,
// on whichever thread had a report due.
class ScanMonitor {
public:
    using Clock = std::chrono::steady_clock;
    using Handler = std::function<void(const ScanProgress&)>;
    // Injectable for tests; must be callable from any thread.
    using Now = std::function<Clock::time_point()>;

    // At most 12.5 reports a second.
    static constexpr std::chrono::milliseconds progressInterval{80};
    // The smallest window of a rate computation.
    static constexpr std::chrono::milliseconds rateInterval{500};
    static constexpr std::chrono::seconds defaultStallThreshold{20};

    explicit ScanMonitor(Handler handler, Now now = {});

    // After a file was charged: counts headway, and reports if one is due.
    void addToCounters(qint64 bytes, qint64 files);
    // When a folder is entered (and every 500 children): remembers the path,
    // reports if one is due. Not headway: empty folders count as standing still.
    void reportPath(std::string_view path);
    // Once, when the walk has ended; never throttled.
    void reportFinal();

    // Restarts the stall clock and the rate window; called as the walk starts.
    void start();
    // One watchdog check. Raises the skip request, and returns true, when
    // there was no headway (counters moved, or noteHeadway()) for longer
    // than the stall threshold.
    bool checkStall();
    void setStallThreshold(std::chrono::duration<double> threshold);
    // The walk moved (a file charged, names read) though the counters may
    // not show it yet: restarts the stall clock.
    void noteHeadway() { m_lastCounterBumpAt.store(nowTicks(), std::memory_order_relaxed); }

    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    [[nodiscard]] bool isCancelled() const { return m_cancelled.load(std::memory_order_relaxed); }
    // The walker that sees the request gives up the folder it is in and clears it.
    [[nodiscard]] bool skipRequested() const { return m_skipBranch.load(std::memory_order_relaxed); }
    void clearSkip() { m_skipBranch.store(false, std::memory_order_relaxed); }

    [[nodiscard]] ScanProgress snapshot() const;

private:
    using Ticks = Clock::rep;
    [[nodiscard]] Ticks nowTicks() const;
    // Copies the report fields; caller holds m_lock.
    [[nodiscard]] ScanProgress copyLocked(std::string& pathOut) const;
    void deliver(ScanProgress progress, const std::string& path) const;

    Handler m_handler;
    Now m_now;

    // The hot path (one call a file) touches only these atomics, and takes the
    // lock when a report is due.
    std::atomic<qint64> m_bytes{0};
    std::atomic<qint64> m_files{0};
    std::atomic<Ticks> m_lastProgressTick;
    std::atomic<Ticks> m_lastCounterBumpAt;
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_skipBranch{false};

    mutable std::mutex m_lock;
    std::string m_currentPath;
    qint64 m_lastRateFiles = 0;
    Ticks m_lastRateAt;
    double m_filesPerSecond = 0;
    Ticks m_stallThreshold;
};

} // namespace tw

Q_DECLARE_METATYPE(tw::ScanProgress)
