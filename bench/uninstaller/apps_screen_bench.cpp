// The applications screen's speed, on generated application bundles:
//
//   - first rows: from switching the window to Applications (real discovery
//     of the bundles, offscreen window) to the first frame that shows rows;
//   - a keystroke: the list model refiltering and re-sorting 1,000
//     applications as a query is typed, one character at a time;
//   - the sizing pass of all bundles (four at a time) beside `du -s` run over
//     the same bundles one after another.
//
// Prints medians of several runs.
//
//   apps_screen_bench [BUNDLES] [FILES_PER_BUNDLE]   (default 300 40)

#include "app/AppState.h"
#include "screens/ScreensSetup.h"
#include "uninstaller/AppDiscovery.h"
#include "uninstaller/AppsListModel.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/PropertyList.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

using namespace tw;

namespace {

bool writeBytes(const QByteArray& path, qint64 size)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const QByteArray chunk(size_t(std::min<qint64>(size, 1 << 16)), 'x');
    bool ok = true;
    for (qint64 left = size; left > 0 && ok;) {
        const auto n = ::write(fd, chunk.constData(), size_t(std::min<qint64>(left, chunk.size())));
        ok = n > 0;
        left -= n;
    }
    ::close(fd);
    return ok;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Bundles with an Info.plist, an executable and resources in a few folders.
bool makeBundles(const QByteArray& root, int count, int files)
{
    for (int i = 0; i < count; ++i) {
        const QByteArray bundle = root + "/App " + QByteArray::number(i) + ".app";
        const QByteArray resources = bundle + "/Contents/Resources";
        for (const char* folder : {"/Contents/MacOS", "/Contents/Resources/en.lproj", "/Contents/Frameworks/Lib"})
            QDir().mkpath(QFile::decodeName(bundle + folder));
        const QVariantMap info{{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.bench.app%1").arg(i)},
                               {QStringLiteral("CFBundleName"), QStringLiteral("App %1").arg(i)},
                               {QStringLiteral("CFBundleExecutable"), QStringLiteral("main")}};
        QFile plist(QFile::decodeName(bundle + "/Contents/Info.plist"));
        if (!plist.open(QIODevice::WriteOnly) || plist.write(writePropertyList(info, false)) <= 0)
            return false;
        if (!writeBytes(bundle + "/Contents/MacOS/main", 200'000 + 1000 * i))
            return false;
        for (int f = 0; f < files; ++f) {
            const QByteArray folder = f % 3 == 0 ? resources + "/en.lproj" : f % 3 == 1 ? resources
                                                                                       : bundle + "/Contents/Frameworks/Lib";
            if (!writeBytes(folder + "/file" + QByteArray::number(f), 3000 + 700 * f))
                return false;
        }
    }
    return true;
}

// From setMode(apps) to the first frame with rows.
double firstRowsMs(const QByteArray& root)
{
    AppState::Services services;
    services.discoverApps = [root] { return AppDiscovery::listInstalledApps({root}); };
    AppState state(services);
    QQuickView view;
    loadContentView(view, {{QStringLiteral("appState"), QVariant::fromValue(&state)}});
    view.show();
    QEventLoop settle;
    QTimer::singleShot(300, &settle, &QEventLoop::quit);
    settle.exec();
    QQuickItem* list = view.rootObject()->findChild<QQuickItem*>(QStringLiteral("appsList"));
    if (!list)
        return -1;
    QElapsedTimer clock;
    double shown = -1;
    QEventLoop loop;
    QObject::connect(&view, &QQuickWindow::frameSwapped, &loop, [&] {
        if (shown < 0 && list->property("count").toInt() > 0 && list->isVisible()) {
            shown = double(clock.nsecsElapsed()) / 1e6;
            loop.quit();
        }
    });
    QTimer::singleShot(10'000, &loop, &QEventLoop::quit);
    clock.start();
    state.setMode(AppState::Mode::apps);
    loop.exec();
    return shown;
}

double sizingPassMs(const QByteArray& root)
{
    AppState::Services services;
    services.discoverApps = [root] { return AppDiscovery::listInstalledApps({root}); };
    AppState state(services);
    QElapsedTimer clock;
    QEventLoop loop;
    int sized = 0;
    QObject::connect(&state, &AppState::appsChanged, &loop, [&] { clock.start(); });
    QObject::connect(&state, &AppState::appDataChanged, &loop, [&] {
        if (++sized == state.appCount())
            loop.quit();
    });
    state.loadApps();
    loop.exec();
    return double(clock.nsecsElapsed()) / 1e6;
}

double duSequentialMs(const QByteArray& root)
{
    const QStringList bundles = QDir(QFile::decodeName(root)).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QElapsedTimer clock;
    clock.start();
    for (const QString& bundle : bundles) {
        QProcess du;
        du.start(QStringLiteral("du"), {QStringLiteral("-s"), QFile::decodeName(root) + u'/' + bundle});
        du.waitForFinished();
    }
    return double(clock.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    const int count = argc > 1 ? std::atoi(argv[1]) : 300;
    const int files = argc > 2 ? std::atoi(argv[2]) : 40;
    QTemporaryDir dir;
    const QByteArray root = QFile::encodeName(dir.path()) + "/Applications";
    if (!dir.isValid() || !makeBundles(root, count, files))
        return 1;

    std::vector<double> first;
    for (int run = 0; run < 5; ++run)
        first.push_back(firstRowsMs(root));
    std::printf("first rows on screen, %d applications: median %.1f ms (runs %.1f-%.1f)\n", count, median(first),
                *std::min_element(first.begin(), first.end()), *std::max_element(first.begin(), first.end()));

    // A thousand applications, sized, in discovery order; typing "app 12".
    {
        AppState state;
        std::vector<std::unique_ptr<InstalledApp>> apps;
        for (int i = 0; i < 1000; ++i) {
            apps.push_back(std::make_unique<InstalledApp>(QByteArray("/Applications/x") + QByteArray::number(i),
                                                          QStringLiteral("App %1").arg(i),
                                                          QStringLiteral("com.bench.app%1").arg(i), std::nullopt,
                                                          std::nullopt, QByteArray()));
            apps.back()->setBundleSize(qint64((i * 7919) % 1000) * 1'000'000);
        }
        QList<InstalledApp*> list;
        for (auto& made : apps)
            list.append(made.get());
        std::vector<double> keystroke;
        const QString typed = QStringLiteral("app 12");
        for (int sort : {0, 2}) {
            AppsListModel model;
            model.setSort(sort);
            for (int run = 0; run < 20; ++run) {
                for (qsizetype n = 0; n <= typed.size(); ++n) {
                    QElapsedTimer clock;
                    clock.start();
                    const auto rows = visibleApps(list, typed.left(n), AppSort(sort));
                    keystroke.push_back(double(clock.nsecsElapsed()) / 1e6);
                    if (rows.empty() && n == 0)
                        return 1;
                }
            }
        }
        std::printf("keystroke over 1000 applications (filter + sort, size and name orders): median %.3f ms, max %.3f ms\n",
                    median(keystroke), *std::max_element(keystroke.begin(), keystroke.end()));
    }

    std::vector<double> ours;
    std::vector<double> du;
    for (int run = 0; run < 5; ++run) {
        ours.push_back(sizingPassMs(root));
        du.push_back(duSequentialMs(root));
    }
    std::printf("sizing pass of %d bundles: median %.1f ms; du -s one after another: median %.1f ms (ratio %.2f)\n",
                count, median(ours), median(du), median(du) / median(ours));
    return 0;
}
