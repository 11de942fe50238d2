#include "uninstaller/AppDiscovery.h"

#include "platform/DatalessPolicy.h"
#include "scan/RawFiles.h"
#include "scan/FileAllocationTracker.h"
#include "uninstaller/Bundle.h"
#include "uninstaller/InstalledApp.h"

#include <QCollator>
#include <QDir>
#include <QFile>
#include <algorithm>
#include <sys/stat.h>

namespace tw {

namespace {
constexpr int kDeepestLevel = 2;

// The bundle's own icon: CFBundleIconFile under Contents/Resources, with or
// without its ".icns".
QByteArray iconFileOf(const QByteArray& path, const BundleInfo& bundle)
{
    const auto name = textValue(bundle.info, "CFBundleIconFile");
    if (!name || name->isEmpty() || name->contains(u'/'))
        return {};
    const QByteArray resources = path + "/Contents/Resources/";
    for (const QByteArray& candidate : {QByteArray(resources + name->toUtf8()),
                                        QByteArray(resources + name->toUtf8() + ".icns")}) {
        struct stat facts {};
        if (::stat(candidate.constData(), &facts) == 0 && S_ISREG(facts.st_mode))
            return candidate;
    }
    return {};
}

void collectApps(const QByteArray& directory, int depth, QSet<QByteArray>& seenPaths,
                 std::vector<std::unique_ptr<InstalledApp>>& apps)
{
    if (depth > kDeepestLevel)
        return;
    // An unreadable folder counts as empty; hidden entries are skipped.
    QByteArrayList entries = directoryEntries(directory);
    std::sort(entries.begin(), entries.end());
    for (const QByteArray& name : entries) {
        if (name.startsWith('.'))
            continue;
        const QByteArray path = directory + '/' + name;
        struct stat facts {};
        const bool known = ::lstat(path.constData(), &facts) == 0;
        if (known && S_ISLNK(facts.st_mode))
            continue; // links are neither listed nor followed
        const qsizetype dot = name.lastIndexOf('.');
        if (dot >= 0 && name.mid(dot + 1).toLower() == "app") {
            if (seenPaths.contains(path))
                continue;
            seenPaths.insert(path);
            if (auto app = AppDiscovery::makeInstalledApp(path))
                apps.push_back(std::move(app));
            continue; // never into a bundle: nested applications are not listed
        }
        if (depth == kDeepestLevel)
            continue;
        if (known && S_ISDIR(facts.st_mode))
            collectApps(path, depth + 1, seenPaths, apps);
    }
}
} // namespace

namespace AppDiscovery {

QByteArrayList applicationRoots(const QByteArray& home)
{
    QByteArrayList roots{"/Applications"};
    struct stat facts {};
    if (::stat(QByteArray(home + "/Applications").constData(), &facts) == 0)
        roots.append(home + "/Applications");
    return roots;
}

QByteArrayList applicationRoots()
{
    return applicationRoots(QFile::encodeName(QDir::homePath()));
}

std::vector<std::unique_ptr<InstalledApp>> listInstalledApps(const QByteArrayList& roots)
{
    std::vector<std::unique_ptr<InstalledApp>> apps;
    QSet<QByteArray> seenPaths;
    for (const QByteArray& root : roots)
        collectApps(root, 0, seenPaths, apps);
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(apps.begin(), apps.end(), [&](const auto& a, const auto& b) {
        return collator.compare(a->name(), b->name()) < 0;
    });
    return apps;
}

std::unique_ptr<InstalledApp> makeInstalledApp(const QByteArray& path)
{
    const std::optional<BundleInfo> bundle = openBundle(path);
    if (!bundle || bundle->identifier.isEmpty())
        return nullptr;
    // Only the type is tested: an empty display name stays empty.
    QString name =
        textValue(bundle->info, "CFBundleDisplayName")
            .value_or(textValue(bundle->info, "CFBundleName").value_or(bundleBaseName(path)));
    std::optional<QString> version = textValue(bundle->info, "CFBundleShortVersionString");
    if (!version)
        version = textValue(bundle->info, "CFBundleVersion");
    return std::make_unique<InstalledApp>(path, std::move(name), bundle->identifier,
                                          std::move(version), lastOpenedDate(path),
                                          iconFileOf(path, *bundle));
}

QByteArray bundleIconFile(const QByteArray& path)
{
    const std::optional<BundleInfo> bundle = openBundle(path);
    return bundle ? iconFileOf(path, *bundle) : QByteArray();
}

std::optional<QDateTime> lastOpenedDate(const QByteArray& path)
{
    if (const std::optional<BundleInfo> bundle = openBundle(path); bundle && bundle->executable) {
        if (auto date = lastAccess(*bundle->executable))
            return date;
    }
    return lastAccess(path);
}

} // namespace AppDiscovery

qint64 allocatedSize(const QByteArray& path)
{
    // An application kept in iCloud is measured, never downloaded.
    (void)keepDatalessFilesRemote();
    FileAllocationTracker tracker;
    struct stat facts {};
    if (::lstat(path.constData(), &facts) != 0 || S_ISLNK(facts.st_mode))
        return 0;
    if (!S_ISDIR(facts.st_mode))
        return tracker.allocatedSize(facts);
    if (tracker.claimDirectory(facts) != FileAllocationTracker::Claim::claimed)
        return 0;
    qint64 total = 0;
    QByteArrayList pending{path};
    while (!pending.isEmpty()) {
        const QByteArray folder = pending.takeLast();
        for (const QByteArray& name : directoryEntries(folder)) {
            const QByteArray child = folder + '/' + name;
            struct stat childFacts {};
            if (::lstat(child.constData(), &childFacts) != 0 || S_ISLNK(childFacts.st_mode))
                continue;
            if (S_ISDIR(childFacts.st_mode)) {
                if (tracker.claimDirectory(childFacts) == FileAllocationTracker::Claim::claimed)
                    pending.append(child);
                continue;
            }
            total += tracker.allocatedSize(childFacts);
        }
    }
    return total;
}

} // namespace tw
