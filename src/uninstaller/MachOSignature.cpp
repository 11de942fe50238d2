#include "uninstaller/MachOSignature.h"

#include "uninstaller/PropertyList.h"

#include <cstdint>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {
constexpr std::uint32_t kFatMagic = 0xcafebabe;
constexpr std::uint32_t kFatMagic64 = 0xcafebabf;
constexpr std::uint32_t kMachMagic = 0xfeedface;
constexpr std::uint32_t kMachMagic64 = 0xfeedfacf;
constexpr std::uint32_t kMachCigam = 0xcefaedfe;
constexpr std::uint32_t kMachCigam64 = 0xcffaedfe;
constexpr std::uint32_t kLoadCodeSignature = 0x1d;
constexpr std::uint32_t kEmbeddedSignature = 0xfade0cc0;
constexpr std::uint32_t kEntitlementsBlob = 0xfade7171;
// Real universal binaries hold a handful of slices; Java class files share
// the fat magic and give absurd counts.
constexpr std::uint32_t kMaximumSlices = 64;
constexpr std::uint32_t kMaximumBlobs = 4096;

// Bounds-checked reads from one byte range.
class Bytes {
public:
    explicit Bytes(QByteArrayView data) : m_data(data) {}

    [[nodiscard]] bool has(std::uint64_t offset, std::uint64_t length) const
    {
        const auto size = std::uint64_t(m_data.size());
        return offset <= size && length <= size - offset;
    }
    [[nodiscard]] std::optional<std::uint32_t> u32(std::uint64_t offset, bool bigEndian) const
    {
        if (!has(offset, 4))
            return std::nullopt;
        const auto* p = reinterpret_cast<const unsigned char*>(m_data.data()) + offset;
        return bigEndian ? (std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 |
                            std::uint32_t(p[2]) << 8 | p[3])
                         : (std::uint32_t(p[3]) << 24 | std::uint32_t(p[2]) << 16 |
                            std::uint32_t(p[1]) << 8 | p[0]);
    }
    [[nodiscard]] std::optional<std::uint64_t> u64(std::uint64_t offset, bool bigEndian) const
    {
        const auto high = u32(offset + (bigEndian ? 0 : 4), bigEndian);
        const auto low = u32(offset + (bigEndian ? 4 : 0), bigEndian);
        if (!high || !low)
            return std::nullopt;
        return std::uint64_t(*high) << 32 | *low;
    }
    [[nodiscard]] std::optional<Bytes> slice(std::uint64_t offset, std::uint64_t length) const
    {
        if (!has(offset, length))
            return std::nullopt;
        return Bytes(m_data.sliced(qsizetype(offset), qsizetype(length)));
    }
    [[nodiscard]] QByteArrayView view() const { return m_data; }

private:
    QByteArrayView m_data;
};

// The entitlements of one Mach-O image (not a fat file).
std::optional<QByteArray> imageEntitlements(const Bytes& image)
{
    const auto magic = image.u32(0, true);
    if (!magic)
        return std::nullopt;
    bool bigEndian = true;
    bool wide = false;
    switch (*magic) {
    case kMachMagic:
        break;
    case kMachMagic64:
        wide = true;
        break;
    case kMachCigam:
        bigEndian = false;
        break;
    case kMachCigam64:
        bigEndian = false;
        wide = true;
        break;
    default:
        return std::nullopt;
    }
    const auto commands = image.u32(16, bigEndian);
    const auto commandBytes = image.u32(20, bigEndian);
    if (!commands || !commandBytes)
        return std::nullopt;
    std::uint64_t at = wide ? 32 : 28;
    const std::uint64_t end = at + *commandBytes;
    if (!image.has(at, *commandBytes))
        return std::nullopt;
    for (std::uint32_t i = 0; i < *commands; ++i) {
        const auto command = image.u32(at, bigEndian);
        const auto size = image.u32(at + 4, bigEndian);
        if (!command || !size || *size < 8 || at + *size > end)
            return std::nullopt;
        if (*command == kLoadCodeSignature) {
            const auto dataOffset = image.u32(at + 8, bigEndian);
            const auto dataSize = image.u32(at + 12, bigEndian);
            if (*size < 16 || !dataOffset || !dataSize)
                return std::nullopt;
            const auto signature = image.slice(*dataOffset, *dataSize);
            if (!signature)
                return std::nullopt;
            // The signature's own structures are big-endian whatever the image's order.
            if (signature->u32(0, true) != kEmbeddedSignature)
                return std::nullopt;
            const auto length = signature->u32(4, true);
            const auto count = signature->u32(8, true);
            if (!length || !count || *count > kMaximumBlobs)
                return std::nullopt;
            const auto superBlob =
                signature->slice(0, std::min<std::uint64_t>(*length, signature->view().size()));
            if (!superBlob)
                return std::nullopt;
            for (std::uint32_t b = 0; b < *count; ++b) {
                const auto offset = superBlob->u32(12 + std::uint64_t(b) * 8 + 4, true);
                if (!offset)
                    return std::nullopt;
                if (superBlob->u32(*offset, true) != kEntitlementsBlob)
                    continue;
                const auto blobLength = superBlob->u32(*offset + 4, true);
                if (!blobLength || *blobLength < 8)
                    return std::nullopt;
                const auto body = superBlob->slice(*offset + 8, *blobLength - 8);
                if (!body)
                    return std::nullopt;
                return body->view().toByteArray();
            }
            return std::nullopt;
        }
        at += *size;
    }
    return std::nullopt;
}
} // namespace

std::vector<QByteArray> machOEntitlements(QByteArrayView binary)
{
    std::vector<QByteArray> found;
    const Bytes file(binary);
    const auto magic = file.u32(0, true);
    if (magic == kFatMagic || magic == kFatMagic64) {
        const bool wide = *magic == kFatMagic64;
        const auto slices = file.u32(4, true);
        if (!slices || *slices > kMaximumSlices)
            return found;
        const std::uint64_t entry = wide ? 32 : 20;
        for (std::uint32_t i = 0; i < *slices; ++i) {
            const std::uint64_t at = 8 + i * entry;
            const auto offset = wide ? file.u64(at + 8, true)
                                     : std::optional<std::uint64_t>(file.u32(at + 8, true));
            const auto size = wide ? file.u64(at + 16, true)
                                   : std::optional<std::uint64_t>(file.u32(at + 12, true));
            if (!offset || !size || !*offset || !*size)
                break;
            if (const auto image = file.slice(*offset, *size)) {
                if (auto entitlements = imageEntitlements(*image))
                    found.push_back(std::move(*entitlements));
            }
        }
        return found;
    }
    if (auto entitlements = imageEntitlements(file))
        found.push_back(std::move(*entitlements));
    return found;
}

QSet<QString> machOApplicationGroups(QByteArrayView binary)
{
    QSet<QString> groups;
    for (const QByteArray& entitlements : machOEntitlements(binary)) {
        const std::optional<QVariantMap> dict = asDictionary(parsePropertyList(entitlements));
        if (!dict)
            continue;
        const QVariant value = dict->value(QStringLiteral("com.apple.security.application-groups"));
        if (value.typeId() != QMetaType::QVariantList)
            continue;
        QSet<QString> slice;
        bool allText = true;
        for (const QVariant& item : value.toList()) {
            if (item.typeId() != QMetaType::QString) {
                allText = false;
                break;
            }
            slice.insert(item.toString());
        }
        if (allText)
            groups.unite(slice);
    }
    return groups;
}

QSet<QString> applicationGroupsOfFile(const QByteArray& path)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {};
    struct stat facts {};
    if (::fstat(fd, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size < 32) {
        ::close(fd);
        return {};
    }
    void* mapped = ::mmap(nullptr, size_t(facts.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    ::close(fd);
    if (mapped == MAP_FAILED)
        return {};
    QSet<QString> groups = machOApplicationGroups(
        QByteArrayView(static_cast<const char*>(mapped), qsizetype(facts.st_size)));
    ::munmap(mapped, size_t(facts.st_size));
    return groups;
}

} // namespace tw
