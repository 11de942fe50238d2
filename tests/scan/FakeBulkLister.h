#pragma once

// A bulk lister for systems that have none: readdir and fstatat underneath,
// the records written byte by byte as getattrlistbulk(2) and getattrlist(2)
// lay them out, so that the walk's bulk path runs on Linux too.

#include "platform/BulkLister.h"
#include "scan/BulkRecords.h"

#include <QByteArray>
#include <QStringBuilder>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {

inline QByteArray le32(std::uint32_t value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), 4); // host order, as the call writes
}
inline QByteArray le64(std::uint64_t value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), 8);
}

// One record: its length, the returned set, the name's attribute reference,
// the other attributes in bit order (`fields`), then the name with its NUL,
// padded to 8 bytes as the system does.
inline QByteArray bulkRecord(const bulk::AttributeSet& returned, const QByteArray& name,
                             const QByteArray& fields)
{
    QByteArray out = le32(returned.common) + le32(returned.volume) + le32(returned.directory)
        + le32(returned.file) + le32(returned.fork) + le32(std::uint32_t(8 + fields.size()))
        + le32(std::uint32_t(name.size() + 1)) + fields + name + '\0';
    out.append((12 - out.size() % 8) % 8, '\0');
    return le32(std::uint32_t(out.size() + 4)) + out;
}

class FakeBulkLister final : public BulkLister {
public:
    std::set<std::string> dataless;      // names given the dataless flag
    std::map<ino_t, int> refusedFolders; // folders whose listing fails, with the errno
    int dropEvery = 0;                   // every Nth entry comes back without its sizes and type

    int fill(int fd, unsigned char* buffer, std::size_t size) const override
    {
        struct stat folder {};
        if (::fstat(fd, &folder) != 0)
            return -1;
        if (const auto refused = refusedFolders.find(folder.st_ino); refused != refusedFolders.end()) {
            errno = refused->second;
            return -1;
        }
        // A walker lists one folder at a time on its thread: the whole listing
        // is read at the first call, then handed out as the buffers allow.
        thread_local Listing listing;
        if (listing.device != folder.st_dev || listing.inode != folder.st_ino) {
            listing = {folder.st_dev, folder.st_ino, {}};
            DIR* dir = ::fdopendir(::openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            if (!dir)
                return -1;
            while (const dirent* entry = ::readdir(dir))
                if (std::strcmp(entry->d_name, ".") && std::strcmp(entry->d_name, ".."))
                    listing.records.push_back(record(fd, entry->d_name));
            ::closedir(dir);
        }
        int count = 0;
        for (std::size_t used = 0; !listing.records.empty(); ++count) {
            const QByteArray& next = listing.records.front();
            if (used + std::size_t(next.size()) > size) {
                errno = ERANGE; // read only when not even one record fits
                return count ? count : -1;
            }
            std::memcpy(buffer + used, next.constData(), std::size_t(next.size()));
            used += std::size_t(next.size());
            listing.records.pop_front();
        }
        if (count == 0)
            listing = {};
        return count;
    }

private:
    struct Listing {
        dev_t device = 0;
        ino_t inode = 0;
        std::deque<QByteArray> records;
    };

    QByteArray record(int fd, const char* name) const
    {
        using namespace bulk;
        struct stat facts {};
        if (::fstatat(fd, name, &facts, AT_SYMLINK_NOFOLLOW) != 0)
            return bulkRecord({kCommonReturned | kCommonName | kCommonError, 0, 0, 0, 0}, name,
                              le32(std::uint32_t(errno)));
        const std::uint32_t type = S_ISREG(facts.st_mode) ? kRegular
            : S_ISDIR(facts.st_mode)                      ? kDirectory
            : S_ISLNK(facts.st_mode)                      ? kLink
                                                          : kFifo;
        const QByteArray flags = le32(dataless.count(name) ? kDatalessFlag : 0) + le64(facts.st_ino) + le32(0);
        const QByteArray device = le32(std::uint32_t(facts.st_dev));
        AttributeSet set{kCommonReturned | kCommonName | kCommonDevice | kCommonFlags | kCommonFileId | kCommonError,
                         0, 0, 0, 0};
        if (dropEvery > 0 && ++m_seen % dropEvery == 0)
            return bulkRecord(set, name, device + flags);
        set.common |= kCommonObjectType;
        const QByteArray allocated = le64(std::uint64_t(facts.st_blocks) * 512);
        if (type == kDirectory)
            set.directory = kDirAllocatedSize;
        else
            set.file = kFileLinkCount | kFileAllocatedSize;
        return bulkRecord(set, name, device + le32(type) + flags
                              + (type == kDirectory ? allocated : le32(std::uint32_t(facts.st_nlink)) + allocated));
    }

    mutable std::atomic<int> m_seen{0};
};

} // namespace tw::test
