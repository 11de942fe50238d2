#include "scan/ScanProgress.h"

#include <QtGlobal>

#include <limits>

namespace tw {

namespace {
using Ticks = ScanMonitor::Clock::rep;

constexpr Ticks ticks(std::chrono::duration<double> d)
{
    return std::chrono::duration_cast<ScanMonitor::Clock::duration>(d).count();
}
// "The distant past": the first report of a scan always leaves.
constexpr Ticks kDistantPast = std::numeric_limits<Ticks>::min() / 2;
} // namespace

ScanMonitor::ScanMonitor(Handler handler, Now now)
    : m_handler(std::move(handler)),
      m_now(now ? std::move(now) : Now([] { return Clock::now(); })),
      m_lastProgressTick(kDistantPast),
      m_lastCounterBumpAt(nowTicks()),
      m_lastRateAt(nowTicks()),
      m_stallThreshold(ticks(defaultStallThreshold))
{
}

ScanMonitor::Ticks ScanMonitor::nowTicks() const
{
    return m_now().time_since_epoch().count();
}

void ScanMonitor::addToCounters(qint64 bytes, qint64 files)
{
    const qint64 oldBytes = m_bytes.fetch_add(bytes, std::memory_order_relaxed);
    const qint64 oldFiles = m_files.fetch_add(files, std::memory_order_relaxed);
    qint64 ignored;
    if (qAddOverflow(oldBytes, bytes, &ignored) || qAddOverflow(oldFiles, files, &ignored))
        qFatal("scan counters overflowed");

    const Ticks now = nowTicks();
    m_lastCounterBumpAt.store(now, std::memory_order_relaxed);
    if (now - m_lastProgressTick.load(std::memory_order_relaxed) < ticks(progressInterval))
        return;

    std::string path;
    ScanProgress progress;
    {
        const std::lock_guard guard(m_lock);
        // Another worker may have reported since the unlocked test.
        if (now - m_lastProgressTick.load(std::memory_order_relaxed) < ticks(progressInterval))
            return;
        m_lastProgressTick.store(now, std::memory_order_relaxed);
        const Ticks elapsed = now - m_lastRateAt;
        if (elapsed >= ticks(rateInterval)) {
            const qint64 filesNow = m_files.load(std::memory_order_relaxed);
            const double seconds = std::chrono::duration<double>(Clock::duration(elapsed)).count();
            m_filesPerSecond = double(filesNow - m_lastRateFiles) / seconds;
            m_lastRateFiles = filesNow;
            m_lastRateAt = now;
        }
        progress = copyLocked(path);
    }
    deliver(std::move(progress), path);
}

void ScanMonitor::reportPath(std::string_view path)
{
    std::string copy;
    ScanProgress progress;
    {
        // Every worker passes here once a folder. When another one holds the
        // lock, its path is as new as this one: go on rather than queue,
        // unless a report is due.
        const Ticks now = nowTicks();
        std::unique_lock guard(m_lock, std::try_to_lock);
        if (!guard.owns_lock()) {
            if (now - m_lastProgressTick.load(std::memory_order_relaxed) < ticks(progressInterval))
                return;
            guard.lock();
        }
        m_currentPath.assign(path);
        if (now - m_lastProgressTick.load(std::memory_order_relaxed) < ticks(progressInterval))
            return;
        m_lastProgressTick.store(now, std::memory_order_relaxed);
        progress = copyLocked(copy);
    }
    deliver(std::move(progress), copy);
}

void ScanMonitor::reportFinal()
{
    std::string path;
    ScanProgress progress;
    {
        const std::lock_guard guard(m_lock);
        m_lastProgressTick.store(nowTicks(), std::memory_order_relaxed);
        progress = copyLocked(path);
    }
    deliver(std::move(progress), path);
}

void ScanMonitor::start()
{
    const std::lock_guard guard(m_lock);
    const Ticks now = nowTicks();
    m_lastCounterBumpAt.store(now, std::memory_order_relaxed);
    m_lastRateAt = now;
    m_lastRateFiles = m_files.load(std::memory_order_relaxed);
}

bool ScanMonitor::checkStall()
{
    const std::lock_guard guard(m_lock);
    if (isCancelled())
        return false;
    const Ticks now = nowTicks();
    if (now - m_lastCounterBumpAt.load(std::memory_order_relaxed) <= m_stallThreshold)
        return false;
    m_skipBranch.store(true, std::memory_order_relaxed);
    // A fresh period before the next skip.
    m_lastCounterBumpAt.store(now, std::memory_order_relaxed);
    return true;
}

void ScanMonitor::setStallThreshold(std::chrono::duration<double> threshold)
{
    const std::lock_guard guard(m_lock);
    m_stallThreshold = ticks(threshold);
}

ScanProgress ScanMonitor::snapshot() const
{
    std::string path;
    ScanProgress progress;
    {
        const std::lock_guard guard(m_lock);
        progress = copyLocked(path);
    }
    progress.currentPath = QString::fromUtf8(path);
    return progress;
}

ScanProgress ScanMonitor::copyLocked(std::string& pathOut) const
{
    ScanProgress progress;
    progress.bytesScanned = m_bytes.load(std::memory_order_relaxed);
    progress.filesScanned = m_files.load(std::memory_order_relaxed);
    progress.filesPerSecond = m_filesPerSecond;
    pathOut = m_currentPath;
    return progress;
}

void ScanMonitor::deliver(ScanProgress progress, const std::string& path) const
{
    // Decoding happens outside the lock; paths are bytes until shown.
    progress.currentPath = QString::fromUtf8(path);
    if (m_handler)
        m_handler(progress);
}

} // namespace tw
