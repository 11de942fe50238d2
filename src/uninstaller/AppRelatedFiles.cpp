#include "uninstaller/AppRelatedFiles.h"

#include "platform/CodeSignature.h"
#include "platform/DatalessPolicy.h"
#include "scan/RawFiles.h"
#include "uninstaller/AppDiscovery.h"
#include "uninstaller/Bundle.h"
#include "uninstaller/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <sys/stat.h>

namespace tw {

namespace {

struct SearchLocation {
    const char* relativePath;
    AppRelatedFiles::MatchRule rule;
    RelatedCategory category;
};

using Rule = AppRelatedFiles::MatchRule;
constexpr std::array<SearchLocation, 15> kLocations{{
    {"Application Support", Rule::idOrName, RelatedCategory::applicationSupport},
    {"Caches", Rule::idOrName, RelatedCategory::caches},
    {"Preferences", Rule::preferencePlist, RelatedCategory::preferences},
    {"Preferences/ByHost", Rule::byHostPlist, RelatedCategory::preferences},
    {"Containers", Rule::container, RelatedCategory::containers},
    {"Group Containers", Rule::groupContainer, RelatedCategory::groupContainers},
    {"Application Scripts", Rule::applicationScripts, RelatedCategory::applicationScripts},
    {"Saved Application State", Rule::savedState, RelatedCategory::savedState},
    {"Logs", Rule::idOrName, RelatedCategory::logs},
    {"Cookies", Rule::cookies, RelatedCategory::cookies},
    {"WebKit", Rule::idOnly, RelatedCategory::webkit},
    {"HTTPStorages", Rule::httpStorages, RelatedCategory::httpStorages},
    {"LaunchAgents", Rule::launchdPlist, RelatedCategory::launchAgents},
    {"LaunchDaemons", Rule::launchdPlist, RelatedCategory::launchDaemons},
    {"PrivilegedHelperTools", Rule::privilegedHelper, RelatedCategory::privilegedHelpers},
}};

bool isUuid(QStringView text)
{
    static const QRegularExpression pattern(QStringLiteral(
        "^[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}$"));
    return pattern.match(text).hasMatch();
}

QSet<QString> nonEmpty(const QSet<QString>& ids)
{
    QSet<QString> kept = ids;
    kept.remove(QString());
    return kept;
}

using Reason = std::optional<MatchReason>;
using Kind = MatchReason::Kind;

Reason because(Kind kind, const QString& identifier)
{
    return MatchReason{kind, identifier};
}

// The identifier of `ids` that `name` is with `suffix` appended.
Reason idWithSuffix(const QString& name, const QSet<QString>& ids, QStringView suffix, Kind kind)
{
    if (name.endsWith(suffix) && ids.contains(name.chopped(suffix.size())))
        return because(kind, name.chopped(suffix.size()));
    return std::nullopt;
}

Reason containerMatches(const QByteArray& path, const QString& name, const QSet<QString>& ids)
{
    if (ids.contains(name))
        return because(Kind::containerNamedAfterID, name);
    if (!isUuid(name))
        return std::nullopt;
    const auto metadata =
        asDictionary(readPropertyList(path + "/.com.apple.containermanagerd.metadata.plist"));
    if (!metadata)
        return std::nullopt;
    const auto identifier = textValue(*metadata, "MCMMetadataIdentifier");
    if (identifier && ids.contains(*identifier))
        return because(Kind::containerMetadataNamesID, *identifier);
    return std::nullopt;
}

Reason launchdMatches(const QByteArray& path, const QString& name,
                      const AppRelatedFiles::Identity& identity, const QSet<QString>& ids)
{
    if (Reason named = idWithSuffix(name, ids, u".plist", Kind::launchdFileNamedAfterID))
        return named;
    if (!name.endsWith(QLatin1String(".plist")) || name.size() <= 6 ||
        name.lastIndexOf(u'.') != name.size() - 6)
        return std::nullopt;
    const auto plist = asDictionary(readPropertyList(path));
    if (!plist)
        return std::nullopt;
    if (const auto label = textValue(*plist, "Label"); label && ids.contains(*label))
        return because(Kind::launchdLabel, *label);
    if (!identity.appURL)
        return std::nullopt;
    std::optional<QString> program = textValue(*plist, "Program");
    if (!program) {
        const QVariant arguments = plist->value(QStringLiteral("ProgramArguments"));
        if (arguments.typeId() == QMetaType::QVariantList) {
            const QVariantList list = arguments.toList();
            const bool allText = std::all_of(list.cbegin(), list.cend(), [](const QVariant& item) {
                return item.typeId() == QMetaType::QString;
            });
            if (!list.isEmpty() && allText)
                program = list.first().toString();
        }
    }
    if (!program || !program->startsWith(u'/'))
        return std::nullopt;
    // The trailing slash keeps /Applications/Foo.app2 out of /Applications/Foo.app.
    const QByteArray inside = AppRelatedFiles::standardizedPath(*identity.appURL) + '/';
    if (AppRelatedFiles::standardizedPath(program->toUtf8()).startsWith(inside))
        return because(Kind::launchdProgramInBundle, *program);
    return std::nullopt;
}

bool isRealDirectory(const QByteArray& path)
{
    struct stat facts {};
    return ::lstat(path.constData(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

} // namespace

QString relatedCategoryTitle(RelatedCategory category)
{
    static const std::array<const char*, 14> kTitles{"Application Support",
                                                     "Caches",
                                                     "Preferences",
                                                     "Containers",
                                                     "Group Containers",
                                                     "Application Scripts",
                                                     "Saved State",
                                                     "Logs",
                                                     "Cookies",
                                                     "WebKit",
                                                     "HTTP Storages",
                                                     "Launch Agents",
                                                     "Launch Daemons",
                                                     "Privileged Helpers"};
    return QString::fromLatin1(kTitles[std::size_t(category)]);
}

QString relatedCategorySymbol(RelatedCategory category)
{
    static const std::array<const char*, 14> kSymbols{"tray.full",
                                                      "externaldrive.badge.timemachine",
                                                      "slider.horizontal.3",
                                                      "cube.box",
                                                      "cube.box.fill",
                                                      "applescript",
                                                      "archivebox",
                                                      "doc.text",
                                                      "circle.grid.2x2",
                                                      "globe",
                                                      "network",
                                                      "bolt.horizontal",
                                                      "bolt.fill",
                                                      "gearshape.2"};
    return QString::fromLatin1(kSymbols[std::size_t(category)]);
}

namespace {
struct ReasonName {
    const char* key;
    const char* code;
};
constexpr std::array<ReasonName, 16> kReasonNames{{
    {"reason.namedAfterID", "namedAfterID"},
    {"reason.namedAfterName", "namedAfterName"},
    {"reason.preferencesOfID", "preferencesOfID"},
    {"reason.byHostPreferencesOfID", "byHostPreferencesOfID"},
    {"reason.containerNamedAfterID", "containerNamedAfterID"},
    {"reason.containerMetadataNamesID", "containerMetadataNamesID"},
    {"reason.groupContainerSigned", "groupContainerSigned"},
    {"reason.groupContainerOfID", "groupContainerOfID"},
    {"reason.scriptsOfID", "scriptsOfID"},
    {"reason.scriptsOfGroup", "scriptsOfGroup"},
    {"reason.savedStateOfID", "savedStateOfID"},
    {"reason.cookiesOfID", "cookiesOfID"},
    {"reason.launchdFileNamedAfterID", "launchdFileNamedAfterID"},
    {"reason.launchdLabel", "launchdLabel"},
    {"reason.launchdProgramInBundle", "launchdProgramInBundle"},
    {"reason.privilegedHelperDeclared", "privilegedHelperDeclared"},
}};
} // namespace

QList<QList<const RelatedFile*>> groupedByCategory(const QList<RelatedFile>& files)
{
    QList<QList<const RelatedFile*>> groups(int(RelatedCategory::privilegedHelpers) + 1);
    for (const RelatedFile& file : files)
        groups[int(file.category)].append(&file);
    groups.removeIf([](const QList<const RelatedFile*>& group) { return group.isEmpty(); });
    for (auto& group : groups)
        std::stable_sort(group.begin(), group.end(),
                         [](const RelatedFile* a, const RelatedFile* b) { return a->size > b->size; });
    return groups;
}

const char* matchReasonKey(MatchReason::Kind kind)
{
    return kReasonNames[std::size_t(kind)].key;
}

QString matchReasonCode(MatchReason::Kind kind)
{
    return QString::fromLatin1(kReasonNames[std::size_t(kind)].code);
}

namespace AppRelatedFiles {

QByteArray standardizedPath(const QByteArray& path)
{
    QByteArrayList kept;
    for (const QByteArray& part : path.split('/')) {
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..") {
            if (!kept.isEmpty())
                kept.removeLast();
            continue;
        }
        kept.append(part);
    }
    return (path.startsWith('/') ? QByteArray("/") : QByteArray()) + kept.join('/');
}

Identity Identity::build(const QString& bundleID, const QString& name,
                         const std::optional<QByteArray>& appURL)
{
    Identity identity;
    identity.bundleIDs.insert(bundleID);
    identity.names.insert(name);
    identity.appURL = appURL;
    if (!appURL)
        return identity;
    identity.names.insert(bundleBaseName(*appURL));

    // The code bundles: the application, then every .app/.appex/.xpc inside
    // it, links not followed, frameworks (the vendor's, not ours) skipped.
    QByteArrayList bundles{*appURL};
    QByteArrayList pending{*appURL + "/Contents"};
    while (!pending.isEmpty()) {
        const QByteArray folder = pending.takeFirst();
        for (const QByteArray& entry : directoryEntries(folder)) {
            const QByteArray path = folder + '/' + entry;
            struct stat facts {};
            if (::lstat(path.constData(), &facts) != 0)
                continue;
            if (S_ISLNK(facts.st_mode))
                continue;
            const qsizetype dot = entry.lastIndexOf('.');
            const QByteArray extension = dot >= 0 ? entry.mid(dot + 1) : QByteArray();
            const QByteArray lower = extension.toLower();
            if (lower == "app" || lower == "appex" || lower == "xpc")
                bundles.append(path);
            else if (extension == "framework")
                continue;
            if (S_ISDIR(facts.st_mode))
                pending.append(path);
        }
    }

    for (const QByteArray& url : bundles) {
        if (const std::optional<BundleInfo> bundle = openBundle(url)) {
            if (!bundle->identifier.isEmpty())
                identity.bundleIDs.insert(bundle->identifier);
            if (url == *appURL) {
                for (const char* key : {"CFBundleName", "CFBundleDisplayName"}) {
                    if (const auto text = textValue(bundle->info, key); text && !text->isEmpty())
                        identity.names.insert(*text);
                }
                const QVariant helpers =
                    bundle->info.value(QStringLiteral("SMPrivilegedExecutables"));
                if (helpers.typeId() == QMetaType::QVariantMap) {
                    for (const QString& helper : helpers.toMap().keys()) {
                        identity.privilegedHelperIDs.insert(helper);
                        identity.bundleIDs.insert(helper);
                    }
                }
            }
        }
        // Also where the bundle could not be opened.
        identity.groupIDs.unite(codeSigningGroups(url));
    }
    return identity;
}

std::optional<MatchReason> matchReason(const QByteArray& path, const Identity& identity, MatchRule rule)
{
    const QString name = QFile::decodeName(path.mid(path.lastIndexOf('/') + 1));
    const QSet<QString> ids = nonEmpty(identity.bundleIDs);
    switch (rule) {
    case MatchRule::idOnly:
        return ids.contains(name) ? because(Kind::namedAfterID, name) : std::nullopt;
    case MatchRule::idOrName: {
        if (ids.contains(name))
            return because(Kind::namedAfterID, name);
        const auto known = std::find_if(
            identity.names.cbegin(), identity.names.cend(), [&](const QString& candidate) {
                return !candidate.isEmpty() && candidate.compare(name, Qt::CaseInsensitive) == 0;
            });
        return known != identity.names.cend() ? because(Kind::namedAfterName, *known) : std::nullopt;
    }
    case MatchRule::preferencePlist:
        return idWithSuffix(name, ids, u".plist", Kind::preferencesOfID);
    case MatchRule::byHostPlist: {
        const auto id = std::find_if(ids.cbegin(), ids.cend(), [&](const QString& candidate) {
            const qsizetype head = candidate.size() + 1;
            if (!name.startsWith(candidate + u'.') || !name.endsWith(QLatin1String(".plist")) ||
                name.size() < head + 6)
                return false;
            return isUuid(QStringView(name).mid(head, name.size() - head - 6));
        });
        return id != ids.cend() ? because(Kind::byHostPreferencesOfID, *id) : std::nullopt;
    }
    case MatchRule::container:
        return containerMatches(path, name, ids);
    case MatchRule::groupContainer: {
        if (identity.groupIDs.contains(name))
            return because(Kind::groupContainerSigned, name);
        const auto id = std::find_if(ids.cbegin(), ids.cend(), [&](const QString& candidate) {
            return name == candidate || name.endsWith(u'.' + candidate);
        });
        return id != ids.cend() ? because(Kind::groupContainerOfID, *id) : std::nullopt;
    }
    case MatchRule::applicationScripts:
        if (ids.contains(name))
            return because(Kind::scriptsOfID, name);
        return identity.groupIDs.contains(name) ? because(Kind::scriptsOfGroup, name) : std::nullopt;
    case MatchRule::savedState:
        return idWithSuffix(name, ids, u".savedState", Kind::savedStateOfID);
    case MatchRule::cookies:
        return idWithSuffix(name, ids, u".binarycookies", Kind::cookiesOfID);
    case MatchRule::httpStorages:
        if (ids.contains(name))
            return because(Kind::namedAfterID, name);
        return idWithSuffix(name, ids, u".binarycookies", Kind::cookiesOfID);
    case MatchRule::launchdPlist:
        return launchdMatches(path, name, identity, ids);
    case MatchRule::privilegedHelper:
        return identity.privilegedHelperIDs.contains(name)
                   ? because(Kind::privilegedHelperDeclared, name)
                   : std::nullopt;
    }
    return std::nullopt;
}

QList<RelatedFile> search(const Identity& identity, const QByteArray& home,
                          const QByteArray& systemLibrary)
{
    // Library folders synced by a file provider are looked at, never downloaded.
    (void)keepDatalessFilesRemote();
    QSet<QByteArray> seen;
    QList<RelatedFile> found;
    for (const QByteArray& root : {QByteArray(home + "/Library"), systemLibrary}) {
        for (const SearchLocation& location : kLocations) {
            const QByteArray folder = root + '/' + location.relativePath;
            const bool descends = qstrcmp(location.relativePath, "Application Support") == 0;
            for (const QByteArray& entry : directoryEntries(folder)) {
                const QByteArray path = folder + '/' + entry;
                QList<std::pair<QByteArray, MatchReason>> candidates;
                if (const Reason reason = matchReason(path, identity, location.rule)) {
                    candidates.append({path, *reason});
                } else if (descends && isRealDirectory(path)) {
                    // One level, only here: Application Support/Vendor/Product.
                    for (const QByteArray& child : directoryEntries(path)) {
                        const QByteArray inner = path + '/' + child;
                        if (const Reason reason = matchReason(inner, identity, MatchRule::idOrName))
                            candidates.append({inner, *reason});
                    }
                }
                for (const auto& [candidate, reason] : candidates) {
                    const QByteArray standard = standardizedPath(candidate);
                    if (seen.contains(standard))
                        continue; // the first row to find a path names its category
                    seen.insert(standard);
                    RelatedFile file;
                    file.url = candidate;
                    file.category = location.category;
                    file.reason = reason;
                    file.size = allocatedSize(candidate);
                    const QString name =
                        QFile::decodeName(candidate.mid(candidate.lastIndexOf('/') + 1));
                    file.isShared = location.rule == MatchRule::groupContainer ||
                                    identity.groupIDs.contains(name);
                    found.append(file);
                }
            }
        }
    }
    // Byte order of UTF-8 is code-point order; case counts.
    std::sort(found.begin(), found.end(),
              [](const RelatedFile& a, const RelatedFile& b) { return a.url < b.url; });
    return found;
}

QList<RelatedFile> find(const QString& bundleID, const QString& name,
                        const std::optional<QByteArray>& appURL)
{
    return search(Identity::build(bundleID, name, appURL), QFile::encodeName(QDir::homePath()),
                  "/Library");
}

} // namespace AppRelatedFiles

} // namespace tw
