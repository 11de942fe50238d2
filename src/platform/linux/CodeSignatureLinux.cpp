#include "platform/CodeSignature.h"
#include "uninstaller/Bundle.h"
#include "uninstaller/MachOSignature.h"

namespace tw {

QSet<QString> codeSigningGroups(const QByteArray& path)
{
    // A bundle's code is its main executable; a bare file is code itself.
    if (const std::optional<BundleInfo> bundle = openBundle(path))
        return bundle->executable ? applicationGroupsOfFile(*bundle->executable) : QSet<QString>();
    return applicationGroupsOfFile(path);
}

} // namespace tw
