#include "scan/FileAllocationTracker.h"

namespace tw {

namespace {
FileAllocationTracker::Identity identityOf(const struct stat& facts)
{
    return {static_cast<std::uint32_t>(facts.st_dev), static_cast<std::uint64_t>(facts.st_ino)};
}
} // namespace

bool FileAllocationTracker::carriesBlocks(const struct stat& facts)
{
    // Sockets, pipes and devices count as files but cost nothing.
    if (!S_ISREG(facts.st_mode))
        return false;
    // The first path to reach a hard-linked file carries all of its blocks.
    if (facts.st_nlink >= 2) {
        const std::lock_guard guard(m_lock);
        return m_linkedFiles.insert(identityOf(facts)).second;
    }
    return true;
}

qint64 FileAllocationTracker::allocatedSize(const QByteArray& path, std::optional<qint64> reportedSize)
{
    struct stat facts {};
    if (::lstat(path.constData(), &facts) != 0 || !carriesBlocks(facts))
        return 0;
    if (reportedSize)
        return *reportedSize < 0 ? 0 : *reportedSize;
    return facts.st_blocks < 0 ? 0 : qint64(facts.st_blocks) * 512;
}

qint64 FileAllocationTracker::allocatedSize(const struct stat& facts)
{
    if (!carriesBlocks(facts))
        return 0;
    return facts.st_blocks < 0 ? 0 : qint64(facts.st_blocks) * 512;
}

FileAllocationTracker::Claim FileAllocationTracker::claimDirectory(const QByteArray& path)
{
    struct stat facts {};
    if (::lstat(path.constData(), &facts) != 0)
        return Claim::unreadable;
    return claimDirectory(facts);
}

FileAllocationTracker::Claim FileAllocationTracker::claimDirectory(const struct stat& facts)
{
    if (!S_ISDIR(facts.st_mode))
        return Claim::alreadySeen;
    const std::lock_guard guard(m_lock);
    return m_directories.insert(identityOf(facts)).second ? Claim::claimed : Claim::alreadySeen;
}

std::size_t FileAllocationTracker::directoryCount() const
{
    const std::lock_guard guard(m_lock);
    return m_directories.size();
}

std::size_t FileAllocationTracker::linkedFileCount() const
{
    const std::lock_guard guard(m_lock);
    return m_linkedFiles.size();
}

} // namespace tw
