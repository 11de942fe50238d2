#include "ScratchMount.h"

namespace tw::test {

// A Mac would need a disk image attached for this; the volume test is
// exercised on Linux.
bool mountScratchVolume(const QByteArray&)
{
    return false;
}

bool unmountScratchVolume(const QByteArray&)
{
    return false;
}

} // namespace tw::test
