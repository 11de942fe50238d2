#pragma once

// What the uninstaller reads of a bundle without the system's bundle class:
// its Info.plist (Contents/Info.plist, or Info.plist at the top for flat
// bundles) and its main executable. Paths are raw bytes. Thread-safe.

#include <QByteArray>
#include <QVariantMap>
#include <optional>

namespace tw {

struct BundleInfo {
    QVariantMap info;                     // the Info.plist's dictionary (empty when absent)
    QString identifier;                   // CFBundleIdentifier when it is text, else empty
    std::optional<QByteArray> executable; // the main executable's path, if it exists
};

// Empty when `path` is not a directory (a bundle cannot be opened there).
[[nodiscard]] std::optional<BundleInfo> openBundle(const QByteArray& path);

// The value of `key` when it is text, else empty.
[[nodiscard]] std::optional<QString> textValue(const QVariantMap& map, const char* key);

// The last path component without its extension ("Foo" for ".../Foo.app").
[[nodiscard]] QString bundleBaseName(const QByteArray& path);

} // namespace tw
