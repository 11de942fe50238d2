#include "scan/FileAllocationTracker.h"

namespace tw {

namespace {
std::size_t slotOf(std::uint64_t inode, std::size_t mask)
{
    return std::size_t((inode * 0x9E3779B97F4A7C15ull) >> 17) & mask;
}
} // namespace

bool FileAllocationTracker::IdentitySet::insertInto(Table& table, std::uint64_t inode)
{
    if (inode == 0) {
        const bool fresh = !table.hasZero;
        table.hasZero = true;
        return fresh;
    }
    // Grow at a load of 0.7; linear probing with a multiplicative hash.
    if ((table.count + 1) * 10 > table.slots.size() * 7) {
        std::vector<std::uint64_t> old = std::move(table.slots);
        table.slots.assign(old.empty() ? 64 : old.size() * 2, 0);
        const std::size_t mask = table.slots.size() - 1;
        for (std::uint64_t kept : old) {
            if (kept == 0)
                continue;
            std::size_t at = slotOf(kept, mask);
            while (table.slots[at] != 0)
                at = (at + 1) & mask;
            table.slots[at] = kept;
        }
    }
    const std::size_t mask = table.slots.size() - 1;
    for (std::size_t at = slotOf(inode, mask);; at = (at + 1) & mask) {
        if (table.slots[at] == inode)
            return false;
        if (table.slots[at] == 0) {
            table.slots[at] = inode;
            ++table.count;
            return true;
        }
    }
}

bool FileAllocationTracker::IdentitySet::insert(const Identity& id)
{
    Table* table = nullptr;
    for (Table& t : m_tables)
        if (t.device == id.device)
            table = &t;
    if (!table) {
        table = &m_tables.emplace_back();
        table->device = id.device;
    }
    const bool fresh = insertInto(*table, id.inode);
    m_size += fresh ? 1 : 0;
    return fresh;
}

bool FileAllocationTracker::SharedIdentitySet::insert(const Identity& id)
{
    // The top bits of the product pick the part; the tables index by lower ones.
    const std::uint64_t mixed = (id.inode ^ (std::uint64_t(id.device) << 32)) * 0x9E3779B97F4A7C15ull;
    Part& part = m_parts[std::size_t(mixed >> 58) % kParts];
    const std::lock_guard guard(part.lock);
    return part.set.insert(id);
}

std::size_t FileAllocationTracker::SharedIdentitySet::size() const
{
    std::size_t total = 0;
    for (const Part& part : m_parts) {
        const std::lock_guard guard(part.lock);
        total += part.set.size();
    }
    return total;
}

bool FileAllocationTracker::carriesBlocks(const struct stat& facts)
{
    // Sockets, pipes and devices count as files but cost nothing.
    if (!S_ISREG(facts.st_mode))
        return false;
    // The first path to reach a hard-linked file carries all of its blocks.
    if (facts.st_nlink >= 2)
        return m_linkedFiles.insert(identityOf(facts));
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
    return m_directories.insert(identityOf(facts)) ? Claim::claimed : Claim::alreadySeen;
}

FileAllocationTracker::Claim FileAllocationTracker::claimDirectory(const Identity& folder)
{
    return m_directories.insert(folder) ? Claim::claimed : Claim::alreadySeen;
}

FileAllocationTracker::Identity FileAllocationTracker::identityOf(const struct stat& facts)
{
    return {static_cast<std::uint32_t>(facts.st_dev), static_cast<std::uint64_t>(facts.st_ino)};
}

std::size_t FileAllocationTracker::directoryCount() const
{
    return m_directories.size();
}

std::size_t FileAllocationTracker::linkedFileCount() const
{
    return m_linkedFiles.size();
}

} // namespace tw
