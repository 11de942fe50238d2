#pragma once

// Application bundles on disk for the uninstaller's tests: an Info.plist
// and, if given, a main executable.

#include "TestFiles.h"
#include "uninstaller/PropertyList.h"

#include <QVariantMap>

namespace tw::test {

inline void writePlist(const QByteArray& path, const QVariantMap& map, bool binary = false)
{
    const QByteArray data = writePropertyList(map, binary);
    QVERIFY(!data.isEmpty());
    writeBytes(path, data);
}

inline void makeBundle(const QByteArray& path, QVariantMap info, const QByteArray& executable = {},
                       bool binary = false)
{
    if (!executable.isEmpty()) {
        info.insert(QStringLiteral("CFBundleExecutable"), QStringLiteral("main"));
        writeBytes(path + "/Contents/MacOS/main", executable);
    }
    writePlist(path + "/Contents/Info.plist", info, binary);
}

} // namespace tw::test
