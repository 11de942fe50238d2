#pragma once

// A bulk lister for systems that have none: readdir and fstatat underneath,
// the records written byte by byte as getattrlistbulk(2) and getattrlist(2)
// lay them out, so that the walk's bulk path runs on Linux too.

#include "platform/BulkLister.h"
#include "scan/BulkRecords.h"

#include <QByteArray>
#include <atomic>
#include <cerrno>
#include <cstring>
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
    QByteArray out = le32(0) + le32(returned.common) + le32(returned.volume) +
                     le32(returned.directory) + le32(returned.file) + le32(returned.fork);
    out += le32(std::uint32_t(8 + fields.size())) + le32(std::uint32_t(name.size() + 1)) + fields +
           name + '\0';
    while (out.size() % 8)
        out += '\0';
    const QByteArray length = le32(std::uint32_t(out.size()));
    out.replace(0, 4, length);
    return out;
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
        if (const auto refused = refusedFolders.find(folder.st_ino);
            refused != refusedFolders.end()) {
            errno = refused->second;
            return -1;
        }
        Cursor& cursor = cursorOfThisThread();
        if (cursor.device != folder.st_dev || cursor.inode != folder.st_ino) {
            cursor.reset();
            const int own = ::openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            cursor.dir = own < 0 ? nullptr : ::fdopendir(own);
            if (!cursor.dir) {
                if (own >= 0)
                    ::close(own);
                return -1;
            }
            cursor.device = folder.st_dev;
            cursor.inode = folder.st_ino;
        }
        int count = 0;
        std::size_t used = 0;
        while (cursor.dir) {
            if (cursor.pending.isEmpty()) {
                errno = 0;
                const dirent* entry = ::readdir(cursor.dir);
                if (!entry) {
                    if (errno)
                        return -1;
                    ::closedir(cursor.dir); // ended: the next call gives 0
                    cursor.dir = nullptr;
                    break;
                }
                if (!std::strcmp(entry->d_name, ".") || !std::strcmp(entry->d_name, ".."))
                    continue;
                cursor.pending = record(fd, entry->d_name);
            }
            if (used + std::size_t(cursor.pending.size()) > size) {
                if (count == 0) {
                    errno = ERANGE;
                    return -1;
                }
                return count;
            }
            std::memcpy(buffer + used, cursor.pending.constData(),
                        std::size_t(cursor.pending.size()));
            used += std::size_t(cursor.pending.size());
            cursor.pending.clear();
            ++count;
        }
        if (count == 0)
            cursor.reset();
        return count;
    }

private:
    struct Cursor {
        DIR* dir = nullptr;
        dev_t device = 0;
        ino_t inode = 0;
        QByteArray pending; // the record that did not fit
        void reset()
        {
            if (dir)
                ::closedir(dir);
            dir = nullptr;
            device = 0;
            inode = 0;
            pending.clear();
        }
        ~Cursor() { reset(); }
    };
    // A walker lists one folder at a time on its thread.
    static Cursor& cursorOfThisThread()
    {
        thread_local Cursor cursor;
        return cursor;
    }

    QByteArray record(int fd, const char* name) const
    {
        using namespace bulk;
        struct stat facts {};
        if (::fstatat(fd, name, &facts, AT_SYMLINK_NOFOLLOW) != 0)
            return bulkRecord({kCommonReturned | kCommonName | kCommonError, 0, 0, 0, 0}, name,
                              le32(std::uint32_t(errno)));
        const std::uint32_t flags = dataless.count(name) ? kDatalessFlag : 0;
        const bool dropped = dropEvery > 0 && ++m_seen % dropEvery == 0;
        std::uint32_t type = kFifo;
        if (S_ISREG(facts.st_mode))
            type = kRegular;
        else if (S_ISDIR(facts.st_mode))
            type = kDirectory;
        else if (S_ISLNK(facts.st_mode))
            type = kLink;
        AttributeSet set{kCommonReturned | kCommonName | kCommonDevice | kCommonFlags |
                             kCommonFileId | kCommonError,
                         0, 0, 0, 0};
        const std::uint64_t allocated = std::uint64_t(facts.st_blocks) * 512;
        QByteArray fields = le32(std::uint32_t(facts.st_dev));
        if (!dropped) {
            set.common |= kCommonObjectType;
            fields += le32(type);
        }
        fields += le32(flags) + le64(facts.st_ino) + le32(0);
        if (dropped)
            return bulkRecord(set, name, fields);
        if (type == kDirectory) {
            set.directory = kDirAllocatedSize;
            fields += le64(allocated);
        } else {
            set.file = kFileLinkCount | kFileAllocatedSize;
            fields += le32(std::uint32_t(facts.st_nlink)) + le64(allocated);
        }
        return bulkRecord(set, name, fields);
    }

    mutable std::atomic<int> m_seen{0};
};

} // namespace tw::test
