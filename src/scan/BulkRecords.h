#pragma once

// Reads the records macOS's getattrlistbulk(2) puts in its buffer: one
// variable-length record a directory entry, each a 32-bit length (the whole
// record's), the returned-attributes set, then the returned attributes in
// the order of their bits, group by group (common, volume, directory, file),
// every one on a 4-byte boundary. A name is an attribute reference: a signed
// 32-bit offset from the reference itself and a length that counts the
// terminating NUL. Attributes the file system did not return are absent
// from the record, not left as gaps. Host byte order, like the call.
//
// Shared code: the buffer comes from the system on a Mac and from a test
// lister elsewhere, and nothing here trusts it. Any thread.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tw::bulk {

// Bits of the attribute groups, as sys/attr.h numbers them.
inline constexpr std::uint32_t kCommonName = 0x00000001;
inline constexpr std::uint32_t kCommonDevice = 0x00000002;
inline constexpr std::uint32_t kCommonObjectType = 0x00000008;
inline constexpr std::uint32_t kCommonFlags = 0x00040000;
inline constexpr std::uint32_t kCommonFileId = 0x02000000;
inline constexpr std::uint32_t kCommonError = 0x20000000;
inline constexpr std::uint32_t kCommonReturned = 0x80000000;
inline constexpr std::uint32_t kDirAllocatedSize = 0x00000008;
inline constexpr std::uint32_t kFileLinkCount = 0x00000001;
inline constexpr std::uint32_t kFileAllocatedSize = 0x00000004;

// Object types (fsobj_type_t): the vnode types of sys/vnode.h.
inline constexpr std::uint32_t kRegular = 1, kDirectory = 2, kBlock = 3, kCharacter = 4, kLink = 5, kSocket = 6,
                               kFifo = 7;

// The SF_DATALESS file flag: the contents live with a file provider.
inline constexpr std::uint32_t kDatalessFlag = 0x40000000;

// attribute_set_t, and the attributes the walk asks for.
struct AttributeSet {
    std::uint32_t common = 0;
    std::uint32_t volume = 0;
    std::uint32_t directory = 0;
    std::uint32_t file = 0;
    std::uint32_t fork = 0;
};
inline constexpr AttributeSet kRequested{
    kCommonReturned | kCommonName | kCommonDevice | kCommonObjectType | kCommonFlags | kCommonFileId | kCommonError,
    0, kDirAllocatedSize, kFileLinkCount | kFileAllocatedSize, 0};

// One entry. `name` points into the buffer; the other fields hold only
// where `returned` has their bit.
struct Entry {
    std::string_view name;
    AttributeSet returned;
    std::int32_t device = 0;
    std::uint32_t objectType = 0;
    std::uint32_t flags = 0;
    std::uint64_t fileId = 0;
    std::uint32_t error = 0;
    std::uint32_t linkCount = 0;
    std::int64_t allocatedSize = 0;

    // Whether every attribute the walk needs for this kind of entry came
    // back without an error; if not, the walker asks the file system itself.
    [[nodiscard]] bool complete() const;
};

// Walks the `count` records the call reported. A buffer that breaks the
// layout (a record running past the end, a length that is not a multiple
// of 4, a name outside its record or without its NUL, an attribute the walk
// never asked for) ends the reading and marks it malformed: the rest of
// that buffer cannot be trusted.
class RecordReader {
public:
    RecordReader(const unsigned char* buffer, std::size_t size, int count)
        : m_at(buffer), m_end(buffer + size), m_left(count < 0 ? 0 : count) {}

    // The next entry; false at the end or on a malformed record.
    bool next(Entry& entry);
    [[nodiscard]] bool malformed() const { return m_malformed; }

private:
    const unsigned char* m_at;
    const unsigned char* m_end;
    int m_left;
    bool m_malformed = false;
};

} // namespace tw::bulk
