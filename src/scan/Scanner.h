#pragma once

#include "scan/FileAllocationTracker.h"
#include "scan/FileNode.h"
#include "scan/ScanProgress.h"
#include "scan/VolumeInfo.h"

#include <QByteArray>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace tw {

class BulkLister;
class VolumeFacts;

// Walks one folder or volume and builds its tree of allocated sizes. One
// Scanner serves one scan. scan() blocks its caller for the whole walk, so it
// belongs on a worker thread; cancel() may be called from any thread.
//
// The workers share the walk at every depth, not only at the first level (a
// deliberate change: a home folder's Library, or /Users on a scan of "/",
// holds most of the entries, and a first-level fan-out left all but one core
// idle there). A worker with nothing to do takes folders that a busy one has
// listed but not yet entered; the tree comes out the same whatever the
// number of workers.
//
// The walk never fails: what cannot be read becomes an `inaccessible` flag,
// and a cancelled walk returns what it gathered, sorted like a finished one.
class Scanner {
public:
    struct Options {
        // Forces the worker count (benchmark, tests); otherwise the medium decides.
        std::optional<int> workers;
        // Where the medium comes from; the running system's answers if null.
        const VolumeFacts* volumeFacts = nullptr;
        std::chrono::duration<double> stallThreshold = ScanMonitor::defaultStallThreshold;
        std::chrono::nanoseconds watchdogInterval = std::chrono::seconds(2);
        ScanMonitor::Now now;
        // How folders are listed: unset, with the system's bulk listing where
        // it has one; null, with readdir and a stat an entry.
        std::optional<const BulkLister*> bulkLister;
    };

    // `progressHandler` is called on worker threads, at most every 0.08 s and
    // once at the end.
    explicit Scanner(ScanMonitor::Handler progressHandler, Options options);
    explicit Scanner(ScanMonitor::Handler progressHandler);
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    // The tree of `path` (raw bytes; a relative path is taken from the working
    // directory). A symbolic link is followed only when `path` ends in a
    // slash. Runs once.
    [[nodiscard]] std::shared_ptr<ScanTree> scan(const QByteArray& path);
    // Asks the walk to stop at its next entry; returns at once.
    void cancel();

    // Workers for a medium: solid state gets cpus held to 4..8, rotational and
    // network disks one, unknown media half the cpus (at most 4) or 2.
    [[nodiscard]] static int workerCount(VolumeInfo::Medium medium, int cpus);

    // Facts about the last scan, for the CLI and the benchmark.
    [[nodiscard]] int workersUsed() const { return m_workersUsed; }
    [[nodiscard]] const FileAllocationTracker& allocation() const { return m_allocation; }

    // The paths the walk never enters: virtual entries at the top of the file system.
    [[nodiscard]] static bool isSkippedPath(std::string_view path);

private:
    friend class Walker;
    void startWatchdog();
    void stopWatchdog();

    Options m_options;
    ScanMonitor m_monitor;
    FileAllocationTracker m_allocation;
    int m_workersUsed = 0;
    // The walkers' headway summed, for the watchdog; set for the length of a walk.
    std::function<std::uint64_t()> m_headway;

    std::mutex m_watchdogLock;
    std::condition_variable m_watchdogWake;
    bool m_watchdogStop = false;
    std::thread m_watchdog;
};

} // namespace tw
