#include "platform/VolumeBoundary.h"

#include <cstdio>
#include <cstring>

#include <sys/stat.h>

namespace tw {

namespace {
// Mount paths in the mount table escape space, tab, newline and backslash
// as three octal digits.
std::string unescapeMountPath(const char* text)
{
    std::string out;
    for (const char* at = text; *at; ++at) {
        if (at[0] == '\\' && at[1] >= '0' && at[1] <= '3' && at[2] >= '0' && at[2] <= '7' && at[3] >= '0'
            && at[3] <= '7') {
            out.push_back(char((at[1] - '0') * 64 + (at[2] - '0') * 8 + (at[3] - '0')));
            at += 3;
        } else {
            out.push_back(*at);
        }
    }
    return out;
}
} // namespace

// On Linux a volume is a device number, as `du -x` has it (a btrfs subvolume
// is another volume too), and every mount point is another volume, even a
// bind mount of the same file system.
VolumeNames systemVolumeNames(const std::string& rootPath)
{
    VolumeNames names;
    names.volumeOf = [](const std::string& path) -> std::optional<std::string> {
        struct stat facts {};
        if (::lstat(path.c_str(), &facts) != 0)
            return std::nullopt;
        return std::to_string(static_cast<unsigned long long>(facts.st_dev));
    };
    std::FILE* table = std::fopen("/proc/self/mountinfo", "re");
    if (!table)
        return names;
    const std::string below = rootPath == "/" ? rootPath : rootPath + "/";
    char* line = nullptr;
    size_t capacity = 0;
    while (::getline(&line, &capacity, table) > 0) {
        // "ID PARENT MAJ:MIN ROOT MOUNTPOINT ...": the fifth field.
        char* field = line;
        for (int skip = 0; skip < 4 && field; ++skip) {
            field = std::strchr(field, ' ');
            if (field)
                ++field;
        }
        if (!field)
            continue;
        if (char* end = std::strchr(field, ' '))
            *end = 0;
        std::string mountPoint = unescapeMountPath(field);
        if (mountPoint.size() > below.size() && mountPoint.compare(0, below.size(), below) == 0)
            names.mountPoints.push_back(std::move(mountPoint));
    }
    std::free(line);
    std::fclose(table);
    return names;
}

} // namespace tw
