#include "platform/FileProbe.h"

#include <dirent.h>
#include <sys/stat.h>

namespace tw {

namespace {
class PosixFileProbe final : public FileProbe {
public:
    bool exists(const QByteArray& path) const override
    {
        struct stat facts {};
        return ::stat(path.constData(), &facts) == 0;
    }
    bool canList(const QByteArray& path) const override
    {
        DIR* dir = ::opendir(path.constData());
        if (!dir)
            return false;
        ::closedir(dir);
        return true;
    }
};
} // namespace

const FileProbe& systemFileProbe()
{
    static const PosixFileProbe probe;
    return probe;
}

} // namespace tw
