#pragma once

// Synthetic signed Mach-O files for the tests and the fuzz corpus: a header,
// one LC_CODE_SIGNATURE, and an embedded signature whose blob index points at
// an entitlements blob. Thin (32 or 64 bit, either byte order) or universal.

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

inline QByteArray entitlementsXml(const QByteArray& groupsArray)
{
    return QByteArray(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD "
               "PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\"><dict>"
               "<key>com.apple.security.app-sandbox</key><true/>"
               "<key>com.apple.security.application-groups</key>") +
           groupsArray + "</dict></plist>\n";
}

inline QByteArray groupsArray(std::initializer_list<const char*> groups)
{
    QByteArray xml = "<array>";
    for (const char* group : groups)
        xml += QByteArray("<string>") + QByteArray(group) + QByteArray("</string>");
    return xml + QByteArray("</array>");
}

// One image whose signature carries `entitlements`.
inline QByteArray machOImage(const QByteArray& entitlements, bool wide, bool bigEndian)
{
    const int header = wide ? 32 : 28;
    const int commandSize = 16;
    QByteArray image(header + commandSize, '\0');
    put32(image, 0, wide ? 0xfeedfacf : 0xfeedface, bigEndian);
    put32(image, 4, 0x01000007, bigEndian); // x86_64, not that it matters
    put32(image, 12, 2, bigEndian);         // executable
    put32(image, 16, 1, bigEndian);         // one load command
    put32(image, 20, commandSize, bigEndian);
    put32(image, header, 0x1d, bigEndian); // LC_CODE_SIGNATURE
    put32(image, header + 4, commandSize, bigEndian);
    image.append(QByteArray(64, '\x90')); // "code"
    const qsizetype signatureAt = image.size();
    // SuperBlob: magic, length, count, then the index (a dummy slot first).
    QByteArray blob(12 + 2 * 8, '\0');
    put32(blob, 0, 0xfade0cc0, true);
    put32(blob, 8, 2, true);
    put32(blob, 12, 0, true);
    put32(blob, 16, 0, true); // code directory slot: points at itself
    put32(blob, 20, 5, true);
    put32(blob, 24, std::uint32_t(blob.size()), true); // entitlements slot
    QByteArray ents(8, '\0');
    put32(ents, 0, 0xfade7171, true);
    put32(ents, 4, std::uint32_t(8 + entitlements.size()), true);
    blob += ents;
    blob += entitlements;
    put32(blob, 4, std::uint32_t(blob.size()), true);
    image += blob;
    put32(image, header + 8, std::uint32_t(signatureAt), bigEndian);
    put32(image, header + 12, std::uint32_t(blob.size()), bigEndian);
    return image;
}

// A thin 64-bit little-endian image signed with these application groups.
inline QByteArray signedWithGroups(std::initializer_list<const char*> groups)
{
    return machOImage(entitlementsXml(groupsArray(groups)), true, false);
}

// A universal file of the given images (32- or 64-bit fat header).
inline QByteArray universal(const QList<QByteArray>& images, bool fat64)
{
    const int entry = fat64 ? 32 : 20;
    QByteArray out(8 + entry * images.size(), '\0');
    put32(out, 0, fat64 ? 0xcafebabf : 0xcafebabe, true);
    put32(out, 4, std::uint32_t(images.size()), true);
    for (int i = 0; i < images.size(); ++i) {
        while (out.size() % 4096)
            out.append('\0');
        const qsizetype at = 8 + entry * i;
        if (fat64) {
            put32(out, at + 8, 0, true);
            put32(out, at + 12, std::uint32_t(out.size()), true);
            put32(out, at + 16, 0, true);
            put32(out, at + 20, std::uint32_t(images[i].size()), true);
        } else {
            put32(out, at + 8, std::uint32_t(out.size()), true);
            put32(out, at + 12, std::uint32_t(images[i].size()), true);
        }
        out += images[i];
    }
    return out;
}

} // namespace tw::test
