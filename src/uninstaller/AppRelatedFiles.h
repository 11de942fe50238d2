#pragma once

// Which files in the Library folders an application left behind, and it
// alone. Only the top level of fixed folders is looked at (one level more
// under Application Support), and every entry is decided by exact comparison
// with the application's identity: a search would rather miss a leftover
// than offer another application's data. Runs on worker threads; no state.

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QUuid>
#include <optional>

namespace tw {

enum class RelatedCategory {
    applicationSupport,
    caches,
    preferences,
    containers,
    groupContainers,
    applicationScripts,
    savedState,
    logs,
    cookies,
    webkit,
    httpStorages,
    launchAgents,
    launchDaemons,
    privilegedHelpers,
};
// The title, fixed English in every language ("Application Support").
[[nodiscard]] QString relatedCategoryTitle(RelatedCategory category);
[[nodiscard]] QString relatedCategorySymbol(RelatedCategory category);

// Why a leftover is offered: the rule that matched it and the identifier or
// name it matched, so that the user can judge an item before it goes.
struct MatchReason {
    enum class Kind {
        namedAfterID,
        namedAfterName,
        preferencesOfID,
        byHostPreferencesOfID,
        containerNamedAfterID,
        containerMetadataNamesID,
        groupContainerSigned,
        groupContainerOfID,
        scriptsOfID,
        scriptsOfGroup,
        savedStateOfID,
        cookiesOfID,
        launchdFileNamedAfterID,
        launchdLabel,
        launchdProgramInBundle,
        privilegedHelperDeclared,
    };
    Kind kind = Kind::namedAfterID;
    QString identifier; // the identifier, name or program path that matched
    bool operator==(const MatchReason&) const = default;
};
// The catalogue key of the reason's text, with one "%@" for the identifier.
[[nodiscard]] const char* matchReasonKey(MatchReason::Kind kind);
// A short stable word for machine output ("namedAfterID").
[[nodiscard]] QString matchReasonCode(MatchReason::Kind kind);

struct RelatedFile {
    QUuid id = QUuid::createUuid();
    QByteArray url; // the path's bytes
    RelatedCategory category = RelatedCategory::applicationSupport;
    qint64 size = 0;
    bool isShared = false;
    MatchReason reason;
    // Equal by id alone.
    bool operator==(const RelatedFile& other) const { return id == other.id; }
};

// The files by category, in category order, empty categories left out;
// within a category largest first, equal sizes in the list's order. The
// pointers point into `files`.
[[nodiscard]] QList<QList<const RelatedFile*>> groupedByCategory(const QList<RelatedFile>& files);

namespace AppRelatedFiles {

// Every identifier and name an application may have used for its files.
struct Identity {
    QSet<QString> bundleIDs;
    QSet<QString> names;
    QSet<QString> groupIDs;
    QSet<QString> privilegedHelperIDs;
    std::optional<QByteArray> appURL;

    // From the identifier and name alone, or also from the bundle at
    // `appURL` (nested .app/.appex/.xpc bundles, names, privileged helpers,
    // code-signing groups). Reads the disk.
    static Identity build(const QString& bundleID, const QString& name,
                          const std::optional<QByteArray>& appURL);
};

enum class MatchRule {
    idOnly,
    idOrName,
    preferencePlist,
    byHostPlist,
    container,
    groupContainer,
    applicationScripts,
    savedState,
    cookies,
    httpStorages,
    launchdPlist,
    privilegedHelper,
};

// Why the entry at `path` belongs to the application by `rule`, or nothing
// when it does not.
[[nodiscard]] std::optional<MatchReason> matchReason(const QByteArray& path, const Identity& identity,
                                                     MatchRule rule);
// Whether the entry at `path` belongs to the application by `rule`.
[[nodiscard]] inline bool entryMatches(const QByteArray& path, const Identity& identity, MatchRule rule)
{
    return matchReason(path, identity, rule).has_value();
}

// The walk over the fifteen locations in `home`/Library and then
// `systemLibrary`, sorted by path (code points).
[[nodiscard]] QList<RelatedFile> search(const Identity& identity, const QByteArray& home,
                                        const QByteArray& systemLibrary);

// The identity, then the search in the user's home and "/Library".
[[nodiscard]] QList<RelatedFile> find(const QString& bundleID, const QString& name,
                                      const std::optional<QByteArray>& appURL);

// A path with "." and ".." resolved and duplicate slashes removed, as bytes.
[[nodiscard]] QByteArray standardizedPath(const QByteArray& path);

} // namespace AppRelatedFiles

} // namespace tw
