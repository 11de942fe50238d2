#pragma once

// Synthetic signed Mach-O files for the tests: a header, one
// LC_CODE_SIGNATURE, and an embedded signature whose blob index points at an
// entitlements blob. Thin (32 or 64 bit, either byte order) or universal.

#include <QByteArray>
#include <QList>
#include <QStringBuilder>
#include <cstdint>

namespace tw::test {

inline void put32(QByteArray& out, qsizetype at, std::uint32_t value, bool bigEndian)
{
    for (int i = 0; i < 4; ++i)
        out[at + i] = char(bigEndian ? (value >> (24 - 8 * i)) & 0xff : (value >> (8 * i)) & 0xff);
}

// Four bytes of `value`, big-endian unless told otherwise.
inline QByteArray word(std::uint32_t value, bool bigEndian = true)
{
    QByteArray out(4, '\0');
    put32(out, 0, value, bigEndian);
    return out;
}

inline QByteArray entitlementsXml(const QByteArray& groupsArray)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\"><dict>"
           "<key>com.apple.security.app-sandbox</key><true/><key>com.apple.security.application-groups</key>"
        + groupsArray + "</dict></plist>\n";
}

inline QByteArray groupsArray(std::initializer_list<const char*> groups)
{
    QByteArray xml = "<array>";
    for (const char* group : groups)
        xml += QByteArray("<string>") + group + "</string>";
    return xml + "</array>";
}

// One image whose signature carries `entitlements`.
inline QByteArray machOImage(const QByteArray& entitlements, bool wide, bool bigEndian)
{
    const auto ours = [bigEndian](std::uint32_t value) { return word(value, bigEndian); };
    // The signature is big-endian everywhere: a SuperBlob of two slots, the
    // code directory's (pointing at the SuperBlob itself) and the entitlements'.
    const QByteArray ents = word(0xfade7171) + word(std::uint32_t(8 + entitlements.size())) + entitlements;
    const QByteArray index = word(2) + word(0) + word(0) + word(5) + word(28);
    const QByteArray blob = word(0xfade0cc0) + word(std::uint32_t(8 + index.size() + ents.size())) + index + ents;
    // x86_64 (not that it matters), an executable with one load command.
    const QByteArray header = ours(wide ? 0xfeedfacf : 0xfeedface) + ours(0x01000007) + ours(0) + ours(2) + ours(1)
        + ours(16) + ours(0) + (wide ? ours(0) : QByteArray());
    const QByteArray code(64, '\x90');
    const auto signatureAt = std::uint32_t(header.size() + 16 + code.size());
    return header + ours(0x1d) + ours(16) + ours(signatureAt) + ours(std::uint32_t(blob.size())) + code + blob;
}

// A thin 64-bit little-endian image signed with these application groups.
inline QByteArray signedWithGroups(std::initializer_list<const char*> groups)
{
    return machOImage(entitlementsXml(groupsArray(groups)), true, false);
}

// A universal file of the given images (32- or 64-bit fat header), each at a page.
inline QByteArray universal(const QList<QByteArray>& images, bool fat64)
{
    const int entry = fat64 ? 32 : 20;
    QByteArray out = word(fat64 ? 0xcafebabf : 0xcafebabe) + word(std::uint32_t(images.size()))
        + QByteArray(entry * images.size(), '\0');
    for (int i = 0; i < images.size(); ++i) {
        out += QByteArray((4096 - out.size() % 4096) % 4096, '\0');
        const QByteArray offset = word(std::uint32_t(out.size())), size = word(std::uint32_t(images[i].size()));
        const QByteArray place = fat64 ? QByteArray(word(0) + offset + word(0) + size) : QByteArray(offset + size);
        out.replace(8 + entry * i + 8, place.size(), place);
        out += images[i];
    }
    return out;
}

} // namespace tw::test
