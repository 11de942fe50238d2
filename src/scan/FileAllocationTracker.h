#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include <sys/stat.h>

namespace tw {

// Keeps one walk from counting the same blocks twice: it remembers the
// folders already entered and the multiply-linked files already charged.
// One tracker per walk, shared by all its workers; every operation is safe
// from any thread and holds a lock for one set insert only.
class FileAllocationTracker {
public:
    struct Identity {
        std::uint32_t device = 0;
        std::uint64_t inode = 0;
        bool operator==(const Identity&) const = default;
    };

    enum class Claim { claimed, alreadySeen, unreadable };

    // Bytes to charge for the file at `path` (never negative): its allocated
    // blocks, or `reportedSize` when the caller already has the platform's
    // figure. Files that are not regular, and every link to a hard-linked file
    // after the first one reached, cost 0.
    [[nodiscard]] qint64 allocatedSize(const QByteArray& path, std::optional<qint64> reportedSize = {});
    // The same, for a walker that already holds the entry's lstat facts.
    [[nodiscard]] qint64 allocatedSize(const struct stat& facts);

    // Whether a walk should enter the folder at `path`.
    [[nodiscard]] Claim claimDirectory(const QByteArray& path);
    [[nodiscard]] Claim claimDirectory(const struct stat& facts);
    // The same, for a folder known to be one by its identity alone.
    [[nodiscard]] Claim claimDirectory(const Identity& folder);
    [[nodiscard]] static Identity identityOf(const struct stat& facts);

    [[nodiscard]] std::size_t directoryCount() const;
    [[nodiscard]] std::size_t linkedFileCount() const;

private:
    // Whether this file's blocks are charged here: a regular file, reached
    // for the first time if it has several links.
    [[nodiscard]] bool carriesBlocks(const struct stat& facts);

    // A compact set of identities: one open-addressed table of inodes per
    // device, 8 bytes a slot. A scan of a disk enters hundreds of thousands
    // of folders, and a node-based set would cost more than the tree does.
    class IdentitySet {
    public:
        // True when the identity was not there yet.
        bool insert(const Identity& id);
        [[nodiscard]] std::size_t size() const { return m_size; }

    private:
        struct Table {
            std::uint32_t device = 0;
            bool hasZero = false; // inode 0 marks an empty slot, so it is kept apart
            std::size_t count = 0;
            std::vector<std::uint64_t> slots;
        };
        static bool insertInto(Table& table, std::uint64_t inode);
        std::vector<Table> m_tables;
        std::size_t m_size = 0;
    };

    // Every worker claims every folder it enters, so one lock over one table
    // had the workers queue for it and trade its cache lines. The set is
    // split by identity into parts, each under a lock of its own.
    class SharedIdentitySet {
    public:
        bool insert(const Identity& id);
        [[nodiscard]] std::size_t size() const;

    private:
        static constexpr std::size_t kParts = 64;
        struct alignas(64) Part {
            mutable std::mutex lock;
            IdentitySet set;
        };
        std::array<Part, kParts> m_parts;
    };

    SharedIdentitySet m_directories;
    SharedIdentitySet m_linkedFiles;
};

} // namespace tw
