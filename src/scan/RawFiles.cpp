#include "scan/DirectoryEntries.h"

#include <dirent.h>

namespace tw {

QByteArrayList directoryEntries(const QByteArray& folder)
{
    QByteArrayList names;
    if (DIR* dir = ::opendir(folder.constData())) {
        while (const dirent* entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                names.append(name);
        }
        ::closedir(dir);
    }
    return names;
}

} // namespace tw
