// tidewick-screenshot: renders every screen and dialog of the window, in each
// language, to PNG, offscreen, from made-up states. The chart comes from a
// real scan of a small generated tree, so what is drawn is what a user sees.
//
//   tidewick-screenshot OUTPUT_DIR [--language CODE] [--only NAME] [--scale FACTOR]
//                       [--appearance light|dark]

#include "app/AppState.h"
#include "app/DiskAccess.h"
#include "chart/KindsModel.h"
#include "chart/SearchModel.h"
#include "localization/LocalizationManager.h"
#include "platform/ProcessRunner.h"
#include "platform/RunningApplications.h"
#include "platform/SystemAppearance.h"
#include "platform/VolumeFacts.h"
#include "localization/TextFormat.h"
#include "scan/FileNode.h"
#include "screens/ScreensSetup.h"
#include "sponsored/AdService.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

namespace {

using namespace tw;

constexpr qint64 kGB = 1000LL * 1000 * 1000;

// A 500 GB disk with 100 GB used: the figures show "info.circle" only when a
// focus is larger than that.
class MadeUpVolume : public VolumeFacts {
public:
    std::optional<VolumeInfo::Capacity> capacity(const QByteArray&) const override
    {
        return VolumeInfo::Capacity{500 * kGB, 400 * kGB, 400 * kGB};
    }
    VolumeInfo::Medium medium(const QByteArray&) const override
    {
        return VolumeInfo::Medium::solidState;
    }
    // The sample tree stands for a whole volume, with some purgeable space.
    std::optional<VolumeInfo::MountUsage> mountUsage(const QByteArray& path) const override
    {
        if (path != mountPoint)
            return std::nullopt;
        return VolumeInfo::MountUsage{*capacity(path), 12 * kGB, std::nullopt};
    }
    QByteArray mountPoint;
};

// A tmutil with three local snapshots; thinning takes its time.
class MadeUpTmutil : public ProcessRunner {
public:
    std::optional<QByteArray> run(const QString&, const QStringList& arguments) const override
    {
        if (arguments.value(0) == QLatin1String("thinlocalsnapshots"))
            QThread::sleep(2);
        return QByteArray("Snapshots for disk /:\n"
                          "com.apple.TimeMachine.2026-11-20-101500.local\n"
                          "com.apple.TimeMachine.2026-11-21-101500.local\n"
                          "com.apple.TimeMachine.2026-11-22-101500.local\n");
    }
};

// A machine without the grant, so the prompt and the banner can be shown.
class NoGrant : public DiskAccess {
public:
    bool requiresFullDiskAccess(const QByteArray& path) const override
    {
        return path == "/" || path.startsWith("/home");
    }
    bool hasFullDiskAccess() const override { return false; }
};

// The applications screen's made-up machine: a few applications with sizes,
// dates and leftovers, and switches for the slow and the running cases.
struct MadeUpApps : RunningApplications {
    bool slowDiscovery = false;
    bool slowSearch = false;
    std::atomic<bool> running{false};

    bool isRunning(const QString&, const QByteArray&) const override { return running; }
    bool terminate(const QString&, const QByteArray&) override { return running.exchange(false); }

    static std::vector<std::unique_ptr<InstalledApp>> list()
    {
        struct Made {
            const char* name;
            const char* id;
            const char* version;
            int daysAgo; // -1: never opened
        };
        static constexpr Made kApps[] = {
            {"Affinity Photo", "com.seriflabs.affinityphoto", "2.4.1", 3},
            {"Blender", "org.blenderfoundation.blender", "4.1", 40},
            {"Calculator", "com.apple.calculator", "", -1},
            {"Docker", "com.docker.docker", "4.29.0", 1},
            {"Firefox", "org.mozilla.firefox", "125.0", 0},
            {"Slack", "com.tinyspeck.slackmacgap", "4.37.101", 9},
            {"Visual Studio Code", "com.microsoft.VSCode", "1.89.0", 400},
            {"Xcode", "com.apple.dt.Xcode", "15.3", 120},
        };
        std::vector<std::unique_ptr<InstalledApp>> apps;
        const QDateTime now = QDateTime::currentDateTime();
        for (const Made& made : kApps) {
            const QString name = QString::fromUtf8(made.name);
            apps.push_back(std::make_unique<InstalledApp>(
                QFile::encodeName(QStringLiteral("/Applications/") + name + QStringLiteral(".app")), name,
                QString::fromUtf8(made.id),
                made.version[0] ? std::optional<QString>(QString::fromUtf8(made.version)) : std::nullopt,
                made.daysAgo < 0 ? std::nullopt : std::optional<QDateTime>(now.addSecs(-made.daysAgo * 86400LL - 7200)),
                QByteArray()));
        }
        return apps;
    }
    static qint64 size(const QByteArray& url) { return 40'000'000 + qint64(qHash(url) % 3000) * 1'000'000; }
    static QList<RelatedFile> related(const QString& id, const QString& name)
    {
        const QByteArray home = "/Users/alex/Library/";
        const QByteArray bid = id.toUtf8();
        const auto file = [](QByteArray url, RelatedCategory category, qint64 size, MatchReason::Kind kind,
                             const QString& identifier, bool shared = false) {
            RelatedFile made;
            made.url = std::move(url);
            made.category = category;
            made.size = size;
            made.isShared = shared;
            made.reason = {kind, identifier};
            return made;
        };
        return {file(home + "Application Support/" + name.toUtf8(), RelatedCategory::applicationSupport,
                     812'000'000, MatchReason::Kind::namedAfterName, name),
                file(home + "Caches/" + bid, RelatedCategory::caches, 301'000'000, MatchReason::Kind::namedAfterID, id),
                file(home + "Containers/" + bid, RelatedCategory::containers, 96'000'000,
                     MatchReason::Kind::containerNamedAfterID, id),
                file(home + "Group Containers/group." + bid, RelatedCategory::groupContainers, 54'000'000,
                     MatchReason::Kind::groupContainerSigned, QStringLiteral("group.") + id, true),
                file(home + "Preferences/" + bid + ".plist", RelatedCategory::preferences, 8192,
                     MatchReason::Kind::preferencesOfID, id),
                file(home + "LaunchAgents/" + bid + ".helper.plist", RelatedCategory::launchAgents, 4096,
                     MatchReason::Kind::launchdProgramInBundle,
                     QStringLiteral("/Applications/") + name + QStringLiteral(".app/Contents/MacOS/helper"))};
    }
};

bool writeFile(const QByteArray& path, qint64 bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const QByteArray chunk(64 * 1024, 'x');
    for (qint64 left = bytes; left > 0;) {
        const auto n = ::write(fd, chunk.constData(), size_t(std::min<qint64>(left, chunk.size())));
        if (n <= 0)
            break;
        left -= n;
    }
    ::close(fd);
    return true;
}

// A home-like tree of about 40 MB with a few levels, so the chart has rings.
bool buildSampleTree(const QByteArray& root)
{
    struct Entry {
        const char* path;
        qint64 kib;
    };
    static constexpr Entry kFiles[] = {
        {"Movies/Holiday 2025.mov", 9000},
        {"Movies/Clips/intro.mp4", 2400},
        {"Movies/Clips/outro.mp4", 1300},
        {"Pictures/Library/raw-0001.dng", 3200},
        {"Pictures/Library/raw-0002.dng", 2900},
        {"Pictures/Library/raw-0003.dng", 2100},
        {"Pictures/Screenshots/shot.png", 600},
        {"Documents/Thesis/draft.pdf", 1800},
        {"Documents/Thesis/figures/plot.svg", 700},
        {"Documents/Taxes/2025.pdf", 450},
        {"Documents/notes.txt", 40},
        {"Library/Caches/browser/cache.db", 4200},
        {"Library/Caches/builds/obj.o", 1500},
        {"Library/Application Support/Editor/index", 1900},
        {"Music/Albums/Side A.flac", 2600},
        {"Music/Albums/Side B.flac", 2300},
        {"Downloads/installer.dmg", 3100},
        {"Downloads/archive.zip", 800},
        {"Projects/tidewick/build/app", 1200},
        {"Projects/tidewick/src/main.cpp", 30},
        // Four levels of long names, for the breadcrumb.
        {"Documents/Очень длинное название папки с проектами/Ausgesprochen lange "
         "Ordnerbezeichnung für Beispiele/Ещё одна папка с весьма длинным именем/Noch ein "
         "ziemlich langer Ordnername mit Zusatz/Zusammenfassung.pdf",
         300},
    };
    for (const Entry& entry : kFiles) {
        const QByteArray path = root + '/' + entry.path;
        if (!QDir().mkpath(QFile::decodeName(path.left(path.lastIndexOf('/')))))
            return false;
        if (!writeFile(path, entry.kib * 1024))
            return false;
    }
    // Beside the home folder, one with a folder deeper than a walk goes,
    // which stays unread whoever renders: the banners have a real count.
    QByteArray shared = root.left(root.lastIndexOf('/')) + "/Shared";
    if (!QDir().mkpath(QFile::decodeName(shared + "/Archive")) ||
        !writeFile(shared + "/Archive/backup.tar", 2400 * 1024) ||
        !writeFile(shared + "/notes.txt", 60 * 1024))
        return false;
    QByteArray deep = shared + "/Archive/nested";
    for (int i = 0; i < 130; ++i)
        deep += "/n";
    if (!QDir().mkpath(QFile::decodeName(deep)))
        return false;
    // A folder of thousands of small files, for the dense ring.
    const QByteArray dense = root + "/Library/Caches/thumbnails";
    if (!QDir().mkpath(QFile::decodeName(dense)))
        return false;
    for (int i = 0; i < 3000; ++i) {
        if (!writeFile(dense + "/t" + QByteArray::number(i), 1 + i % 5000))
            return false;
    }
    return true;
}

bool waitFor(const std::function<bool()>& done, int ms = 20000)
{
    return QTest::qWaitFor(done, ms);
}

class Renderer {
public:
    Renderer(QString outputDir, QByteArray sampleTree)
        : m_outputDir(std::move(outputDir)), m_sampleTree(std::move(sampleTree))
    {
    }

    // One screen: a fresh window and state, prepared by `setUp`, then saved.
    void setSuffix(QString suffix) { m_suffix = std::move(suffix); }
    // Pictures of states at rest: a drill is shown where it ends, not mid-way.
    void setDark(bool dark) { m_appearance.set({dark, std::nullopt, true}); }

    bool shoot(const QString& name, const std::function<bool(AppState&, QQuickView&)>& setUp,
               const DiskAccess* access = nullptr, const QByteArray& unseenRoot = {})
    {
        if (!m_only.isEmpty() && name != m_only)
            return true;
        AppState::Services services;
        services.volumes = &m_volume;
        services.processes = &m_tool;
        m_volume.mountPoint = unseenRoot;
        services.diskAccess = access;
        services.running = &m_apps;
        const bool slowDiscovery = m_apps.slowDiscovery;
        const bool slowSearch = m_apps.slowSearch;
        services.discoverApps = [slowDiscovery] {
            if (slowDiscovery)
                std::this_thread::sleep_for(std::chrono::seconds(3));
            return MadeUpApps::list();
        };
        services.bundleSize = MadeUpApps::size;
        services.findRelated = [slowSearch](const QString& id, const QString& name, const QByteArray&) {
            if (slowSearch)
                std::this_thread::sleep_for(std::chrono::seconds(3));
            return MadeUpApps::related(id, name);
        };
        AppState state(services);
        QQuickView view;
        loadContentView(view, {{QStringLiteral("appState"), QVariant::fromValue(&state)}}, &m_appearance);
        if (view.status() != QQuickView::Ready)
            return false;
        view.setColor(view.rootObject()->property("windowBackground").value<QColor>());
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            return false;
        if (!setUp(state, view)) {
            std::fprintf(stderr, "screenshot: could not prepare %s\n", qPrintable(name));
            return false;
        }
        QTest::qWait(350); // transitions settle
        const QString file = m_outputDir + u'/' + name + u'-' +
                             languageCode(LocalizationManager::shared().current()) + m_suffix +
                             ".png";
        const bool saved = view.grabWindow().save(file);
        std::printf("%s %s\n", saved ? "wrote" : "FAILED", qPrintable(file));
        state.cancelScan();
        return saved;
    }

    void setOnly(QString only) { m_only = std::move(only); }
    // The next shots' applications: slow to find, slow to search, running.
    void setApps(bool slowDiscovery, bool slowSearch, bool running)
    {
        m_apps.slowDiscovery = slowDiscovery;
        m_apps.slowSearch = slowSearch;
        m_apps.running = running;
    }
    [[nodiscard]] const QByteArray& sampleTree() const { return m_sampleTree; }

private:
    QString m_outputDir;
    QByteArray m_sampleTree;
    QString m_only;
    QString m_suffix;
    ChosenAppearance m_appearance{{false, std::nullopt, true}};
    MadeUpVolume m_volume;
    MadeUpTmutil m_tool;
    MadeUpApps m_apps;
};

bool scanSample(AppState& state, const QByteArray& path)
{
    state.requestScan(path);
    return waitFor([&] { return state.phase() == AppState::Phase::ready; });
}

QQuickItem* findItem(QQuickView& view, const char* objectName)
{
    return view.rootObject()->findChild<QQuickItem*>(QString::fromLatin1(objectName));
}

// Moves the mouse onto the chart at a given angle (clockwise from twelve
// o'clock) and fraction of the radius, twice, as a user's pointer would arrive.
bool hoverChart(QQuickView& view, double degrees, double fraction)
{
    QTest::qWait(100); // the new screen's first layout
    QQuickItem* chart = findItem(view, "sunburst");
    if (!chart)
        return false;
    const double radius = std::min(chart->width(), chart->height()) / 2 - 16;
    const double angle = degrees * M_PI / 180.0;
    const QPointF local(chart->width() / 2 + radius * fraction * std::sin(angle),
                        chart->height() / 2 - radius * fraction * std::cos(angle));
    const QPoint at = chart->mapToScene(local).toPoint();
    QTest::mouseMove(&view, at - QPoint(2, 2));
    QTest::mouseMove(&view, at);
    return true;
}

// The applications mode with its list sized; `select` opens the detail panel
// of the first row after its leftovers have been found.
bool showApps(AppState& state, QQuickView& view, bool select)
{
    state.setMode(AppState::Mode::apps);
    if (!waitFor([&] {
            return state.appCount() > 0 &&
                   std::all_of(state.apps().cbegin(), state.apps().cend(),
                               [](const InstalledApp* app) { return app->bundleSize() > 0; });
        }))
        return false;
    if (!select)
        return true;
    InstalledApp* app = state.apps().first();
    findItem(view, "appsScreen")->setProperty("selected", QVariant::fromValue(app));
    state.loadRelatedIfNeeded(app);
    return waitFor([&] { return app->relatedLoaded(); });
}

bool renderAppScreens(Renderer& renderer)
{
    bool ok = true;
    renderer.setApps(false, false, false);
    ok &= renderer.shoot(QStringLiteral("apps-list"),
                         [](AppState& state, QQuickView& view) { return showApps(state, view, false); });
    ok &= renderer.shoot(QStringLiteral("apps-detail"),
                         [](AppState& state, QQuickView& view) { return showApps(state, view, true); });
    ok &= renderer.shoot(QStringLiteral("apps-search"), [](AppState& state, QQuickView& view) {
        if (!showApps(state, view, false))
            return false;
        findItem(view, "appsSearch")->setProperty("text", QStringLiteral(" com.apple "));
        return true;
    });
    ok &= renderer.shoot(QStringLiteral("apps-menu"), [](AppState& state, QQuickView& view) {
        if (!showApps(state, view, false))
            return false;
        QQuickItem* list = findItem(view, "appsList");
        QTest::mouseClick(&view, Qt::RightButton, {}, list->mapToScene(QPointF(200, 30)).toPoint());
        return true;
    });
    ok &= renderer.shoot(QStringLiteral("uninstall"), [](AppState& state, QQuickView& view) {
        if (!showApps(state, view, true))
            return false;
        state.setUninstallCandidate(state.apps().first());
        return true;
    });
    ok &= renderer.shoot(QStringLiteral("permission-prompt"), [](AppState& state, QQuickView& view) {
        if (!showApps(state, view, true))
            return false;
        InstalledApp* app = state.apps().first();
        BatchOutcome outcome;
        for (const RelatedFile& file : app->related().mid(0, 3))
            outcome.succeeded.append(file.url);
        outcome.failed.append({app->url(), QStringLiteral("Operation not permitted")});
        outcome.failed.append({QFile::encodeName(QDir::homePath()) +
                                   "/Library/Group Containers/group.com.seriflabs.affinityphoto.shared-settings-store",
                               QStringLiteral("Operation not permitted")});
        state.applyUninstallResult(app, app->url(), outcome);
        return state.permissionPrompt().has_value();
    });
    renderer.setApps(true, false, false);
    ok &= renderer.shoot(QStringLiteral("apps-loading"), [](AppState& state, QQuickView&) {
        state.setMode(AppState::Mode::apps);
        return state.appsLoading();
    });
    renderer.setApps(false, true, false);
    ok &= renderer.shoot(QStringLiteral("uninstall-searching"), [](AppState& state, QQuickView& view) {
        if (!showApps(state, view, false))
            return false;
        InstalledApp* app = state.apps().first();
        state.loadRelatedIfNeeded(app);
        state.setUninstallCandidate(app);
        return true;
    });
    renderer.setApps(false, false, true);
    ok &= renderer.shoot(QStringLiteral("uninstall-running"), [](AppState& state, QQuickView& view) {
        if (!showApps(state, view, true))
            return false;
        state.setUninstallCandidate(state.apps().at(3));
        state.loadRelatedIfNeeded(state.apps().at(3));
        return waitFor([&] { return state.apps().at(3)->relatedLoaded(); });
    });
    renderer.setApps(false, false, false);
    return ok;
}

// The sponsored bar in both forms, with its image and with one that never
// loads. The items are set directly: the feed is never asked.
bool renderAdBars(Renderer& renderer)
{
    AdService::Options options;
    options.apiBase = QUrl(); // a language change's refresh fails at once, offline
    AdService ads(LocalizationManager::shared(), options);
    const QUrl link(QStringLiteral("https://example.com/offer?from=tidewick"));
    const auto text = [&](std::optional<QUrl> icon) {
        return Ad{QStringLiteral("t1"), link, QStringLiteral("en"),
                  {AdContent::Text{std::move(icon), QStringLiteral("Back up every Mac in the house to one encrypted "
                                                                   "drive, automatically, without a subscription or "
                                                                   "an account, in less than a minute a day, from the menu bar or the command line, "
                                                                   "with every copy checked twice")}},
                  std::nullopt, std::nullopt};
    };
    const auto banner = [&](QUrl image) {
        return Ad{QStringLiteral("b1"), link, QStringLiteral("en"),
                  {AdContent::Banner{std::move(image), 728, 90, QStringLiteral("Tidewick")}}, std::nullopt, std::nullopt};
    };
    const std::pair<const char*, Ad> shots[] = {
        {"adbar-text", text(std::nullopt)},
        {"adbar-text-icon", text(QUrl(QStringLiteral("qrc:/Tidewick/app_icon.png")))},
        {"adbar-banner", banner(QUrl(QStringLiteral("qrc:/Tidewick/main_logo.png")))},
        {"adbar-banner-failed", banner(QUrl(QStringLiteral("qrc:/Tidewick/missing.png")))},
    };
    bool ok = true;
    for (const auto& [name, ad] : shots) {
        ok &= renderer.shoot(QString::fromLatin1(name), [&ads, ad = ad](AppState&, QQuickView& view) {
            ads.setCurrentAd(ad);
            return view.rootObject()->setProperty("adService", QVariant::fromValue(&ads));
        });
    }
    ads.setCurrentAd(std::nullopt);
    return ok;
}

bool renderAll(Renderer& renderer)
{
    NoGrant noGrant;
    const QByteArray tree = renderer.sampleTree();
    bool ok = true;
    ok &= renderer.shoot(QStringLiteral("welcome"), [](AppState& state, QQuickView&) {
        return waitFor([&] { return state.localSnapshotCount() == 3; });
    });
    ok &= renderer.shoot(QStringLiteral("welcome-reclaiming"), [](AppState& state, QQuickView&) {
        if (!waitFor([&] { return state.localSnapshotCount() == 3; }))
            return false;
        state.thinSnapshots();
        return state.thinningSnapshots();
    });
    ok &= renderer.shoot(QStringLiteral("scanning"), [](AppState& state, QQuickView&) {
        // A real walk of a large folder, caught mid-way.
        state.requestScan(QByteArrayLiteral("/usr"));
        return waitFor([&] { return state.progress().filesScanned > 2000; });
    });
    ok &= renderer.shoot(QStringLiteral("chart"),
                         [&](AppState& state, QQuickView&) { return scanSample(state, tree); });
    ok &= renderer.shoot(QStringLiteral("chart-hover"), [&](AppState& state, QQuickView& view) {
        return scanSample(state, tree) && hoverChart(view, 40, 0.42) && bool(state.hovered());
    });
    ok &= renderer.shoot(QStringLiteral("chart-drilled"), [&](AppState& state, QQuickView& view) {
        if (!scanSample(state, tree))
            return false;
        for (FileNode& child : state.root()->children()) {
            if (child.displayName() == QLatin1String("Documents"))
                state.focusOn(state.root().sibling(&child));
        }
        return hoverChart(view, 100, 0.5);
    });
    ok &= renderer.shoot(QStringLiteral("chart-menu"), [&](AppState& state, QQuickView& view) {
        if (!scanSample(state, tree) || !hoverChart(view, 40, 0.42))
            return false;
        QQuickItem* chart = findItem(view, "sunburst");
        const double radius = std::min(chart->width(), chart->height()) / 2 - 16;
        const QPointF local(chart->width() / 2 + radius * 0.42 * std::sin(40 * M_PI / 180),
                            chart->height() / 2 - radius * 0.42 * std::cos(40 * M_PI / 180));
        QTest::mouseClick(&view, Qt::RightButton, {}, chart->mapToScene(local).toPoint());
        return true;
    });
    const auto focusOnPath = [&](AppState& state, const QByteArray& relative) {
        FileNode* node = state.root().tree()->find(tree + '/' + relative);
        return node && state.focusOn(state.root().sibling(node));
    };
    ok &= renderer.shoot(QStringLiteral("chart-longpath"), [&](AppState& state, QQuickView&) {
        return scanSample(state, tree) &&
               focusOnPath(state, "Documents/Очень длинное название папки с проектами/"
                                  "Ausgesprochen lange Ordnerbezeichnung für Beispiele/Ещё одна "
                                  "папка с весьма длинным именем/Noch ein ziemlich langer "
                                  "Ordnername mit Zusatz");
    });
    ok &= renderer.shoot(QStringLiteral("chart-dense"), [&](AppState& state, QQuickView&) {
        return scanSample(state, tree) && focusOnPath(state, "Library/Caches/thumbnails");
    });
    // The keyboard: Tab into the Largest list, one row down.
    ok &= renderer.shoot(QStringLiteral("chart-keyboard"), [&](AppState& state, QQuickView& view) {
        if (!scanSample(state, tree))
            return false;
        QTest::qWait(100);
        QQuickItem* list = findItem(view, "largestList");
        if (!list)
            return false;
        list->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(&view, Qt::Key_Down);
        return bool(state.hovered());
    });
    // The Kinds tab with the largest kind chosen; then the chart coloured by kind.
    const auto kindsTab = [&](AppState& state, QQuickView& view) -> KindsModel* {
        if (!scanSample(state, tree))
            return nullptr;
        QTest::qWait(100);
        QQuickItem* tabs = findItem(view, "sideTabs");
        QQuickItem* list = findItem(view, "kindsList");
        if (!tabs || !list || !tabs->setProperty("currentIndex", 1))
            return nullptr;
        auto* kinds = qobject_cast<KindsModel*>(list->property("model").value<QObject*>());
        return kinds && waitFor([&] { return kinds->rowCount() > 0; }) ? kinds : nullptr;
    };
    ok &= renderer.shoot(QStringLiteral("chart-kinds"), [&](AppState& state, QQuickView& view) {
        KindsModel* kinds = kindsTab(state, view);
        if (!kinds)
            return false;
        kinds->choose(0);
        return !kinds->selectedKey().isEmpty();
    });
    ok &= renderer.shoot(QStringLiteral("chart-kind-colours"), [&](AppState& state, QQuickView& view) {
        KindsModel* kinds = kindsTab(state, view);
        if (!kinds || !kinds->emphasis())
            return false;
        kinds->emphasis()->setColourByKind(true);
        return true;
    });
    // ⌘F / Ctrl+F, a pattern typed, the results listed.
    ok &= renderer.shoot(QStringLiteral("chart-search"), [&](AppState& state, QQuickView& view) {
        if (!scanSample(state, tree))
            return false;
        QTest::qWait(100);
        QTest::keySequence(&view, QKeySequence::Find);
        QQuickItem* results = findItem(view, "searchResults");
        if (!results || !findItem(view, "searchField")->hasActiveFocus())
            return false;
        for (const char key : {'*', '.', 'm', 'p', '4'})
            QTest::keyClick(&view, key);
        auto* search = qobject_cast<SearchModel*>(results->property("model").value<QObject*>());
        return search && waitFor([&] { return search->rowCount() > 0; });
    });
    ok &= renderer.shoot(QStringLiteral("welcome-focus"), [](AppState&, QQuickView& view) {
        QTest::keyClick(&view, Qt::Key_Tab);
        QTest::keyClick(&view, Qt::Key_Tab);
        QTest::keyClick(&view, Qt::Key_Tab);
        return true;
    });
    ok &= renderer.shoot(
        QStringLiteral("fda-prompt"),
        [](AppState& state, QQuickView&) {
            state.requestScan(QByteArrayLiteral("/"));
            return state.fdaPromptForURL().has_value();
        },
        &noGrant);
    const QByteArray shared = tree.left(tree.lastIndexOf('/')) + "/Shared";
    ok &= renderer.shoot(QStringLiteral("unreadable-banner"), [&](AppState& state, QQuickView&) {
        return scanSample(state, shared) && state.showsUnreadableNotice();
    });
    ok &= renderer.shoot(
        QStringLiteral("fda-banner"),
        [&](AppState& state, QQuickView&) {
            state.startScan(shared, std::nullopt);
            return waitFor([&] { return state.phase() == AppState::Phase::ready; }) &&
                   state.needsFullDiskAccess();
        },
        &noGrant);
    for (const char* which : {"Movies", "Documents/notes.txt"}) {
        const QString name = QLatin1String(which).contains(u'/') ? QStringLiteral("delete-file")
                                                                 : QStringLiteral("delete-folder");
        ok &= renderer.shoot(name, [&, which](AppState& state, QQuickView&) {
            if (!scanSample(state, tree))
                return false;
            const NodeRef node =
                state.root().sibling(state.root().tree()->find(tree + '/' + which));
            state.setDeleteCandidate(node);
            return bool(node);
        });
    }
    ok &= renderer.shoot(QStringLiteral("alert-error"), [&](AppState& state, QQuickView&) {
        if (!scanSample(state, tree))
            return false;
        state.setErrorMessage(QStringLiteral("Operation not permitted"));
        return true;
    });
    ok &= renderer.shoot(QStringLiteral("alert-thin-confirm"), [](AppState& state, QQuickView&) {
        state.setConfirmThinSnapshots(true);
        return true;
    });
    ok &= renderer.shoot(QStringLiteral("alert-thin-result"), [](AppState& state, QQuickView&) {
        state.setThinResultMessage(
            LocalizationManager::shared().string(QStringLiteral("snapshots.result.none")));
        return true;
    });
    ok &= renderer.shoot(QStringLiteral("alert-thin-freed"), [](AppState& state, QQuickView&) {
        state.setThinResultMessage(fillText(
            LocalizationManager::shared().string(QStringLiteral("snapshots.result.freed")), formatBytes(7340032000)));
        return true;
    });
    ok &= renderer.shoot(
        QStringLiteral("chart-unseen"),
        [&](AppState& state, QQuickView& view) {
            if (!scanSample(state, tree) || !state.unseenSpace())
                return false;
            QTest::qWait(100);
            QQuickItem* info = findItem(view, "unseenInfo");
            if (!info || !info->isVisible())
                return false;
            // As a keyboard user reaches it: the help shows at once.
            info->forceActiveFocus(Qt::TabFocusReason);
            QTest::qWait(700);
            return true;
        },
        nullptr, tree);
    ok &= renderAppScreens(renderer);
    ok &= renderer.shoot(QStringLiteral("language-menu"), [](AppState&, QQuickView& view) {
        QQuickItem* button = findItem(view, "languageButton");
        if (!button)
            return false;
        QTest::mouseClick(
            &view, Qt::LeftButton, {},
            button->mapToScene(QPointF(button->width() / 2, button->height() / 2)).toPoint());
        return true;
    });
    ok &= renderAdBars(renderer);
    return ok;
}

constexpr const char* kUsage =
    "usage: tidewick-screenshot OUTPUT_DIR [--language CODE] [--only NAME] [--scale FACTOR]\n"
    "                           [--appearance light|dark]\n"
    "Renders every screen and dialog, in each language (or only CODE: en, ru, de, zh),\n"
    "to OUTPUT_DIR/NAME-CODE.png. --scale 2 renders at a device pixel ratio of 2;\n"
    "--appearance dark in the dark appearance, to NAME-CODE-dark.png.\n";

struct Options {
    QString output;
    QString language;
    QString only;
    QByteArray scale;
    bool dark = false;
};

// Reads the command line before Qt starts, since the scale must be known
// then. Anything it does not know is refused rather than taken for a folder.
std::optional<Options> parseOptions(int argc, char* argv[], bool& help)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg(argv[i]);
        if (arg == "--help" || arg == "-h") {
            help = true;
            return std::nullopt;
        }
        if (arg == "--appearance") {
            const QByteArray value = i + 1 < argc ? QByteArray(argv[++i]) : QByteArray();
            if (value != "light" && value != "dark")
                return std::nullopt;
            options.dark = value == "dark";
            continue;
        }
        if (arg == "--language" || arg == "--only" || arg == "--scale") {
            if (i + 1 >= argc)
                return std::nullopt;
            const QByteArray value(argv[++i]);
            if (arg == "--language")
                options.language = QString::fromLocal8Bit(value);
            else if (arg == "--only")
                options.only = QString::fromLocal8Bit(value);
            else
                options.scale = value;
            continue;
        }
        if (arg.startsWith('-') || !options.output.isEmpty())
            return std::nullopt;
        options.output = QString::fromLocal8Bit(arg);
    }
    if (options.output.isEmpty())
        return std::nullopt;
    if (!options.scale.isEmpty()) {
        bool number = false;
        const double factor = options.scale.toDouble(&number);
        if (!number || factor < 1 || factor > 4)
            return std::nullopt;
    }
    return options;
}

} // namespace

int main(int argc, char* argv[])
{
    bool help = false;
    const std::optional<Options> options = parseOptions(argc, argv, help);
    if (!options) {
        std::fputs(kUsage, help ? stdout : stderr);
        return help ? (std::fflush(stdout) == 0 ? 0 : 1) : 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!options->scale.isEmpty())
        qputenv("QT_SCALE_FACTOR", options->scale);
    QGuiApplication app(argc, argv);
    // Switching languages here must not change the user's own choice.
    QStandardPaths::setTestModeEnabled(true);
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    const QString output = options->output;
    const QString onlyLanguage = options->language;
    if (!QDir().mkpath(output))
        return 1;
    QTemporaryDir scratch;
    const QByteArray tree = QFile::encodeName(scratch.path()) + "/Users/alex";
    if (!scratch.isValid() || !buildSampleTree(tree))
        return 1;

    Renderer renderer(output, tree);
    renderer.setOnly(options->only);
    renderer.setDark(options->dark);
    QString suffix = options->dark ? QStringLiteral("-dark") : QString();
    if (!options->scale.isEmpty() && options->scale.toDouble() != 1.0)
        suffix += u'@' + QString::fromLatin1(options->scale) + u'x';
    renderer.setSuffix(suffix);
    bool ok = true;
    for (const Language language :
         {Language::english, Language::russian, Language::german, Language::chinese}) {
        LocalizationManager::shared().setCurrent(language);
        if (!onlyLanguage.isEmpty() &&
            languageCode(LocalizationManager::shared().current()) != onlyLanguage)
            continue;
        ok &= renderAll(renderer);
    }
    return ok ? 0 : 1;
}
