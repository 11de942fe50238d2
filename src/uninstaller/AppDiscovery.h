#pragma once

// Finding the installed applications: two fixed roots walked three levels
// deep, each bundle's facts from its Info.plist, the list sorted by name.
// Everything here blocks on the disk: call from worker threads. Paths are
// raw bytes.

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <memory>
#include <optional>

namespace tw {

class InstalledApp;

namespace AppDiscovery {

// "/Applications", then `home`/Applications when it exists.
[[nodiscard]] QByteArrayList applicationRoots(const QByteArray& home);
[[nodiscard]] QByteArrayList applicationRoots();

// The applications under `roots`, sorted by name (case-insensitive, in the
// locale's order, stable). The objects have no parent and live on the
// calling thread until moved; sizes and related files are left to later.
[[nodiscard]] std::vector<std::unique_ptr<InstalledApp>>
listInstalledApps(const QByteArrayList& roots);

// One application, or none for a bundle without an identifier or one that
// cannot be opened.
[[nodiscard]] std::unique_ptr<InstalledApp> makeInstalledApp(const QByteArray& path);

// The bundle's own icon file: CFBundleIconFile under Contents/Resources,
// with or without ".icns"; empty when it names none that exists.
[[nodiscard]] QByteArray bundleIconFile(const QByteArray& path);

// When the executable was last read (launching reads it), else the bundle
// folder's own access date.
[[nodiscard]] std::optional<QDateTime> lastOpenedDate(const QByteArray& path);

} // namespace AppDiscovery

// Allocated bytes under `path`, hard links and repeated folders counted once
// within this one call; 0 for a link or what cannot be read.
[[nodiscard]] qint64 allocatedSize(const QByteArray& path);

} // namespace tw
