#pragma once

#include <QByteArray>

namespace tw {

// Existence and readability tests on folders, as the running user sees them.
// Callable from any thread.
class FileProbe {
public:
    virtual ~FileProbe() = default;
    [[nodiscard]] virtual bool exists(const QByteArray& path) const = 0;
    // Whether the folder's entries can be read now (one entry is read).
    [[nodiscard]] virtual bool canList(const QByteArray& path) const = 0;
};

// The running system's answers; lives for the whole process.
[[nodiscard]] const FileProbe& systemFileProbe();

// Whether this system keeps folders behind a privacy permission that the user
// grants in its settings (macOS's Full Disk Access). Where it does not, the
// grant is taken as present.
[[nodiscard]] bool systemHasPrivacyPermissions();

} // namespace tw
