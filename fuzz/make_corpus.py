#!/usr/bin/env python3
"""Writes the fuzzers' seed inputs: signed Mach-O images (thin 32/64-bit in
both byte orders, universal) and property lists (XML, binary)."""
import os
import plistlib
import struct

HERE = os.path.dirname(os.path.abspath(__file__))


def entitlements(groups):
    return plistlib.dumps({"com.apple.security.app-sandbox": True,
                           "com.apple.security.application-groups": groups})


def image(ents, wide, big):
    e = ">" if big else "<"
    header = 32 if wide else 28
    out = bytearray(header + 16)
    struct.pack_into(e + "IIIIII", out, 0, 0xfeedfacf if wide else 0xfeedface, 0x01000007, 3, 2, 1, 16)
    out += b"\x90" * 64
    at = len(out)
    blob = bytearray(12 + 16)
    struct.pack_into(">IIIIIII", blob, 0, 0xfade0cc0, 0, 2, 0, 0, 5, len(blob))
    blob += struct.pack(">II", 0xfade7171, 8 + len(ents)) + ents
    struct.pack_into(">I", blob, 4, len(blob))
    out += blob
    struct.pack_into(e + "IIII", out, header, 0x1d, 16, at, len(blob))
    return bytes(out)


def universal(images, fat64):
    entry = 32 if fat64 else 20
    out = bytearray(8 + entry * len(images))
    struct.pack_into(">II", out, 0, 0xcafebabf if fat64 else 0xcafebabe, len(images))
    for i, img in enumerate(images):
        while len(out) % 4096:
            out.append(0)
        if fat64:
            struct.pack_into(">IIQQ", out, 8 + entry * i, 0, 0, len(out), len(img))
        else:
            struct.pack_into(">IIII", out, 8 + entry * i, 0, 0, len(out), len(img))
        out += img
    return bytes(out)


def write(folder, name, data):
    os.makedirs(os.path.join(HERE, "corpus", folder), exist_ok=True)
    with open(os.path.join(HERE, "corpus", folder, name), "wb") as f:
        f.write(data)


ents = entitlements(["ABCDE12345.com.example.shared", "group.com.example"])
for wide in (False, True):
    for big in (False, True):
        write("macho", f"thin-{'64' if wide else '32'}-{'be' if big else 'le'}", image(ents, wide, big))
write("macho", "fat32", universal([image(ents, True, False), image(ents, False, False)], False))
write("macho", "fat64", universal([image(ents, True, False)], True))

sample = {"CFBundleIdentifier": "com.example.app", "CFBundleName": "Example", "CFBundleVersion": "1",
          "SMPrivilegedExecutables": {"com.example.helper": "anchor apple"},
          "ProgramArguments": ["/Applications/Example.app/Contents/MacOS/example", "--x"],
          "Data": b"\x00\x01\x02", "Real": 1.5, "Flag": False, "Count": -3}
write("plist", "xml.plist", plistlib.dumps(sample, fmt=plistlib.FMT_XML))
write("plist", "binary.plist", plistlib.dumps(sample, fmt=plistlib.FMT_BINARY))
write("plist", "entitlements.plist", ents)
# XML as Macs also write it: a UTF-8 byte-order mark, and UTF-16.
xml = plistlib.dumps(sample, fmt=plistlib.FMT_XML)
write("plist", "xml-bom.plist", b"\xef\xbb\xbf" + xml)
write("plist", "xml-utf16.plist",
      xml.decode("utf-8").replace('encoding="UTF-8"', 'encoding="UTF-16"').encode("utf-16"))


# Bulk listing buffers (getattrlistbulk(2)), little-endian as on every Mac:
# the first byte is the record count the call returned.
def bulk_record(common, dirattr, fileattr, name, fields):
    head = struct.pack("<IIIII", common, 0, dirattr, fileattr, 0)
    body = struct.pack("<iI", 8 + len(fields), len(name) + 1) + fields + name + b"\0"
    out = struct.pack("<I", 0) + head + body
    out += b"\0" * (-len(out) % 8)
    return struct.pack("<I", len(out)) + out[4:]


COMMON = 0x80000000 | 0x1 | 0x2 | 0x8 | 0x40000 | 0x2000000 | 0x20000000
regular = bulk_record(COMMON, 0, 0x1 | 0x4, b"report.pdf", struct.pack("<iIIQIIq", 7, 1, 0, 42, 0, 2, 8192))
folder = bulk_record(COMMON, 0x8, 0, b"Photos", struct.pack("<iIIQIq", 7, 2, 0x40000000, 43, 0, 4096))
failed = bulk_record(0x80000000 | 0x1 | 0x20000000, 0, 0, b"gone", struct.pack("<I", 13))
write("bulk", "one-file", bytes([1]) + regular)
write("bulk", "mixed", bytes([3]) + regular + folder + failed)
write("bulk", "truncated", bytes([2]) + regular + folder[:20])
