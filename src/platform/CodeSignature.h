#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

namespace tw {

// The application-group identifiers ("com.apple.security.application-groups")
// in the code signature of the bundle or executable at `path`, exactly as
// signed. Read statically, not validated; empty when there is no signature
// or it cannot be read. macOS asks the Security framework; elsewhere our own
// Mach-O reader reads the bundle's main executable. Thread-safe.
[[nodiscard]] QSet<QString> codeSigningGroups(const QByteArray& path);

} // namespace tw
