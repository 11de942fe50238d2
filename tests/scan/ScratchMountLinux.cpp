#include "ScratchMount.h"

#include <sys/mount.h>
#include <unistd.h>

namespace tw::test {

bool mountScratchVolume(const QByteArray& at)
{
    return ::geteuid() == 0 && ::mount("none", at.constData(), "tmpfs", 0, nullptr) == 0;
}

bool unmountScratchVolume(const QByteArray& at)
{
    return ::umount(at.constData()) == 0;
}

} // namespace tw::test
