#pragma once

#include <QByteArray>
#include <QString>

namespace tw {

// Shows an item selected in the system's file manager. Fire and forget: the
// call returns at once and reports nothing; the GUI thread never waits.
class FileReveal {
public:
    virtual ~FileReveal() = default;
    virtual void reveal(const QByteArray& path) = 0;
};

// The running system's; lives for the whole process. GUI thread.
[[nodiscard]] FileReveal& systemFileReveal();

// A file:// address for raw path bytes: every byte outside the unreserved set
// is percent-encoded, so names that are not UTF-8 survive exactly.
[[nodiscard]] QString fileUri(const QByteArray& path);

} // namespace tw
