#include "platform/FileProbe.h"

#include <cerrno>
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
        // macOS's privacy protection may let the folder open and refuse at
        // the first read: only an entry read (or a clean end) counts.
        errno = 0;
        const bool read = ::readdir(dir) != nullptr || errno == 0;
        ::closedir(dir);
        return read;
    }
};
} // namespace

const FileProbe& systemFileProbe()
{
    static const PosixFileProbe probe;
    return probe;
}

} // namespace tw
