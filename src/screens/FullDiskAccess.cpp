#include "screens/FullDiskAccess.h"

#include "platform/FileProbe.h"

#include <QDir>
#include <QFile>
#include <array>

namespace tw {

bool requiresFullDiskAccess(const QByteArray& path, const QByteArray& home)
{
    if (path == "/" || path == home || path.startsWith(QByteArray(home + "/Library")))
        return true;
    static constexpr std::array<const char*, 5> kSystemTrees = {"/Library", "/System", "/private",
                                                                "/usr", "/var"};
    for (const char* prefix : kSystemTrees)
        if (path.startsWith(prefix))
            return true;
    return false;
}

bool hasFullDiskAccess(const QByteArray& home, const FileProbe& probe)
{
    const std::array<QByteArray, 4> probes = {
        QByteArray(home + "/Library/Mail"),
        QByteArray(home + "/Library/Safari"),
        QByteArray(home + "/Library/Messages"),
        QByteArray("/Library/Application Support/com.apple.TCC"),
    };
    for (const QByteArray& path : probes) {
        if (probe.exists(path) && probe.canList(path))
            return true;
    }
    return false;
}

namespace {
QUrl settingsUrl(const char* primary, const char* fallback)
{
    for (const char* text : {primary, fallback}) {
        const QUrl url(QString::fromLatin1(text), QUrl::StrictMode);
        if (url.isValid())
            return url;
    }
    // Both are constants: failing both is a fault in the program.
    qFatal("no System Settings address could be built");
}
} // namespace

QUrl fullDiskAccessSettingsUrl()
{
    return settingsUrl(
        "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_AllFiles",
        "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles");
}

QUrl appManagementSettingsUrl()
{
    return settingsUrl(
        "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_AppBundles",
        "x-apple.systempreferences:com.apple.preference.security?Privacy_AppBundles");
}

SystemDiskAccess::SystemDiskAccess() : m_home(QFile::encodeName(QDir::homePath())) {}

bool SystemDiskAccess::requiresFullDiskAccess(const QByteArray& path) const
{
    return tw::requiresFullDiskAccess(path, m_home);
}

bool SystemDiskAccess::hasFullDiskAccess() const
{
    return !systemHasPrivacyPermissions() || tw::hasFullDiskAccess(m_home, systemFileProbe());
}

} // namespace tw
