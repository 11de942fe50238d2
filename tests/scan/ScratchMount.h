#pragma once

#include <QByteArray>

namespace tw::test {

// Mounts an empty scratch file system on the folder `at` (Linux, as root),
// for the walk's volume boundary. False where that cannot be done here.
bool mountScratchVolume(const QByteArray& at);
bool unmountScratchVolume(const QByteArray& at);

} // namespace tw::test
