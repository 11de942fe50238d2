#include "scan/BulkRecords.h"

#include <cstring>

namespace tw::bulk {

namespace {

// Reads fixed-size fields of one record in order; the buffer itself may sit
// at any address, so every read is a copy.
class Fields {
public:
    Fields(const unsigned char* record, std::size_t length) : m_record(record), m_length(length) {}

    template<typename T>
    bool read(T& value)
    {
        if (m_length - m_offset < sizeof(T))
            return false;
        std::memcpy(&value, m_record + m_offset, sizeof(T));
        m_offset += sizeof(T);
        return true;
    }
    // An attribute reference: its data must lie inside the record.
    bool readName(std::string_view& name)
    {
        const std::size_t at = m_offset;
        std::int32_t offset = 0;
        std::uint32_t length = 0;
        if (!read(offset) || !read(length))
            return false;
        if (offset < 0 || length < 2 || std::size_t(offset) > m_length - at
            || length > m_length - at - std::size_t(offset))
            return false;
        const char* data = reinterpret_cast<const char*>(m_record + at + std::size_t(offset));
        name = std::string_view(data, length - 1);
        // One component, ending in its NUL: anything else could not be
        // opened again by that name.
        return data[length - 1] == 0 && name.find('\0') == std::string_view::npos
               && name.find('/') == std::string_view::npos;
    }

private:
    const unsigned char* m_record;
    std::size_t m_length;
    std::size_t m_offset = sizeof(std::uint32_t);
};

constexpr std::uint32_t kKnownCommon =
    kCommonName | kCommonDevice | kCommonObjectType | kCommonFlags | kCommonFileId | kCommonError | kCommonReturned;

} // namespace

bool Entry::complete() const
{
    constexpr std::uint32_t common = kCommonDevice | kCommonObjectType | kCommonFileId;
    if ((returned.common & common) != common || ((returned.common & kCommonError) && error != 0))
        return false;
    if (objectType == kDirectory)
        return true;
    if (objectType != kRegular)
        return objectType >= kBlock && objectType <= kFifo;
    constexpr std::uint32_t file = kFileLinkCount | kFileAllocatedSize;
    return (returned.file & file) == file;
}

bool RecordReader::next(Entry& entry)
{
    if (m_left == 0 || m_malformed)
        return false;
    std::uint32_t length = 0;
    const std::size_t room = std::size_t(m_end - m_at);
    if (room >= sizeof length)
        std::memcpy(&length, m_at, sizeof length);
    // Every attribute is padded to 4 bytes, so a record is too; the least
    // a record holds is its length, the returned set and a name reference.
    constexpr std::uint32_t kSmallest = 4 + sizeof(AttributeSet) + 8;
    if (room < sizeof length || length > room || length < kSmallest || length % 4 != 0) {
        m_malformed = true;
        return false;
    }
    Fields fields(m_at, length);
    entry = Entry{};
    AttributeSet& set = entry.returned;
    bool good = fields.read(set.common) && fields.read(set.volume) && fields.read(set.directory)
                && fields.read(set.file) && fields.read(set.fork);
    // The walk asked for no volume or fork attributes and needs a name.
    good = good && (set.common & kCommonName) && (set.common & ~kKnownCommon) == 0 && set.volume == 0
           && set.fork == 0 && (set.directory & ~kDirAllocatedSize) == 0
           && (set.file & ~(kFileLinkCount | kFileAllocatedSize)) == 0;
    good = good && fields.readName(entry.name);
    if (good && (set.common & kCommonDevice))
        good = fields.read(entry.device);
    if (good && (set.common & kCommonObjectType))
        good = fields.read(entry.objectType);
    if (good && (set.common & kCommonFlags))
        good = fields.read(entry.flags);
    if (good && (set.common & kCommonFileId))
        good = fields.read(entry.fileId);
    if (good && (set.common & kCommonError))
        good = fields.read(entry.error);
    if (good && (set.directory & kDirAllocatedSize))
        good = fields.read(entry.allocatedSize);
    if (good && (set.file & kFileLinkCount))
        good = fields.read(entry.linkCount);
    if (good && (set.file & kFileAllocatedSize))
        good = fields.read(entry.allocatedSize);
    if (!good) {
        m_malformed = true;
        return false;
    }
    m_at += length;
    --m_left;
    return true;
}

} // namespace tw::bulk
