// tidewick-screenshot: renders every screen and dialog of the window, in each
// language, to PNG, offscreen, from made-up states. The chart comes from a
// real scan of a small generated tree, so what is drawn is what a user sees.
//
//   tidewick-screenshot OUTPUT_DIR [--language CODE] [--only NAME]

#include "app/AppState.h"
#include "app/DiskAccess.h"
#include "localization/LocalizationManager.h"
#include "platform/VolumeFacts.h"
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
#include <cstdio>
#include <fcntl.h>
#include <functional>
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
    };
    for (const Entry& entry : kFiles) {
        const QByteArray path = root + '/' + entry.path;
        if (!QDir().mkpath(QFile::decodeName(path.left(path.lastIndexOf('/')))))
            return false;
        if (!writeFile(path, entry.kib * 1024))
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
    bool shoot(const QString& name, const std::function<bool(AppState&, QQuickView&)>& setUp,
               const DiskAccess* access = nullptr)
    {
        if (!m_only.isEmpty() && name != m_only)
            return true;
        AppState::Services services;
        services.volumes = &m_volume;
        services.diskAccess = access;
        AppState state(services);
        QQuickView view;
        installScreens(*view.engine());
        view.setInitialProperties({{QStringLiteral("appState"), QVariant::fromValue(&state)}});
        view.setColor(QColor(0xec, 0xec, 0xec));
        view.setResizeMode(QQuickView::SizeRootObjectToView);
        view.resize(1080, 720);
        view.setSource(QUrl(QStringLiteral("qrc:/Tidewick/ContentView.qml")));
        if (view.status() != QQuickView::Ready)
            return false;
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            return false;
        if (!setUp(state, view)) {
            std::fprintf(stderr, "screenshot: could not prepare %s\n", qPrintable(name));
            return false;
        }
        QTest::qWait(350); // transitions settle
        const QString file = m_outputDir + u'/' + name + u'-' +
                             languageCode(LocalizationManager::shared().current()) + ".png";
        const bool saved = view.grabWindow().save(file);
        std::printf("%s %s\n", saved ? "wrote" : "FAILED", qPrintable(file));
        state.cancelScan();
        return saved;
    }

    void setOnly(QString only) { m_only = std::move(only); }
    [[nodiscard]] const QByteArray& sampleTree() const { return m_sampleTree; }

private:
    QString m_outputDir;
    QByteArray m_sampleTree;
    QString m_only;
    MadeUpVolume m_volume;
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
    ok &= renderer.shoot(QStringLiteral("welcome"), [](AppState&, QQuickView&) { return true; });
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
    ok &= renderer.shoot(
        QStringLiteral("fda-prompt"),
        [](AppState& state, QQuickView&) {
            state.requestScan(QByteArrayLiteral("/"));
            return state.fdaPromptForURL().has_value();
        },
        &noGrant);
    ok &= renderer.shoot(QStringLiteral("fda-banner"), [&](AppState& state, QQuickView&) {
        if (!scanSample(state, tree))
            return false;
        state.setNeedsFullDiskAccess(true);
        return true;
    });
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
    ok &= renderer.shoot(QStringLiteral("apps-mode"), [](AppState& state, QQuickView&) {
        state.setMode(AppState::Mode::apps);
        return true;
    });
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

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // Switching languages here must not change the user's own choice.
    QStandardPaths::setTestModeEnabled(true);
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    QStringList args = QGuiApplication::arguments();
    args.removeFirst();
    if (args.isEmpty()) {
        std::fputs("usage: tidewick-screenshot OUTPUT_DIR [--language CODE] [--only NAME]\n",
                   stderr);
        return 2;
    }
    const QString output = args.takeFirst();
    QString onlyLanguage;
    QString onlyScreen;
    while (!args.isEmpty()) {
        const QString flag = args.takeFirst();
        if (args.isEmpty())
            return 2;
        (flag == QLatin1String("--language") ? onlyLanguage : onlyScreen) = args.takeFirst();
    }
    if (!QDir().mkpath(output))
        return 1;
    QTemporaryDir scratch;
    const QByteArray tree = QFile::encodeName(scratch.path()) + "/Users/alex";
    if (!scratch.isValid() || !buildSampleTree(tree))
        return 1;

    Renderer renderer(output, tree);
    renderer.setOnly(onlyScreen);
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
