// Two measurements of the window, offscreen:
//
//   window_bench startup         time from process start to the first frame
//                                of the welcome screen (the app's own setup:
//                                style, engine, Main.qml)
//   window_bench frames TREE [N] scans TREE with N workers while the window
//                                shows the progress screen, and reports the
//                                gaps between frames (the GUI thread must
//                                never stall for long)

#include "app/AppState.h"
#include "screens/ScreensSetup.h"

#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

namespace {

// The steady clock in nanoseconds: one clock for the whole system on both
// Linux and macOS, so a parent's reading and its child's compare.
qint64 steadyNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Starts this program again as `startup-child T0`: the child's first frame is
// measured from before its exec, so loading the program and its libraries
// counts, as it does for a user who starts the app.
int relaunchForStartup(const char* self)
{
    const QByteArray started = QByteArray::number(steadyNanoseconds());
    const pid_t child = ::fork();
    if (child < 0)
        return 1;
    if (child == 0) {
        const char* argv[] = {self, "startup-child", started.constData(), nullptr};
        ::execv(self, const_cast<char* const*>(argv));
        ::_exit(127);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child)
        return 1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

QQuickWindow* loadWindow(QQmlApplicationEngine& engine, tw::AppState& state)
{
    tw::installScreens(engine);
    engine.setInitialProperties({{QStringLiteral("appState"), QVariant::fromValue(&state)}});
    engine.load(QUrl(QStringLiteral("qrc:/Tidewick/Main.qml")));
    return engine.rootObjects().isEmpty()
               ? nullptr
               : qobject_cast<QQuickWindow*>(engine.rootObjects().first());
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc >= 2 && std::strcmp(argv[1], "startup") == 0)
        return relaunchForStartup(argv[0]);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    const QStringList args = QCoreApplication::arguments();
    if (args.size() < 2) {
        std::fputs("usage: window_bench startup | frames TREE [WORKERS]\n", stderr);
        return 2;
    }

    if (args[1] == QLatin1String("startup-child") && args.size() >= 3) {
        const qint64 started = args[2].toLongLong();
        tw::AppState state;
        QQmlApplicationEngine engine;
        QQuickWindow* window = loadWindow(engine, state);
        if (!window)
            return 1;
        QObject::connect(window, &QQuickWindow::frameSwapped, &app, [&] {
            std::printf("first frame %.0f ms after process start\n",
                        double(steadyNanoseconds() - started) / 1e6);
            QCoreApplication::quit();
        });
        return QGuiApplication::exec();
    }

    if (args[1] == QLatin1String("frames") && args.size() >= 3) {
        tw::AppState::Services services;
        services.scannerOptions.workers = args.size() > 3 ? args[3].toInt() : 0;
        tw::AppState state(services);
        QQmlApplicationEngine engine;
        QQuickWindow* window = loadWindow(engine, state);
        if (!window)
            return 1;
        using Clock = std::chrono::steady_clock;
        std::vector<double> gapsMs;
        Clock::time_point last{};
        QObject::connect(window, &QQuickWindow::frameSwapped, &app, [&] {
            // Only gaps between two frames of the progress screen count: an
            // idle window before the scan draws nothing and is not a stall.
            const auto now = Clock::now();
            const bool scanning = state.phase() == tw::AppState::Phase::scanning;
            if (scanning && last != Clock::time_point{})
                gapsMs.push_back(std::chrono::duration<double, std::milli>(now - last).count());
            last = scanning ? now : Clock::time_point{};
        });
        const auto started = Clock::now();
        QTimer::singleShot(200, &app, [&] { state.requestScan(QFile::encodeName(args[2])); });
        QObject::connect(&state, &tw::AppState::phaseChanged, &app, [&] {
            if (state.phase() == tw::AppState::Phase::ready)
                QTimer::singleShot(100, &app, &QCoreApplication::quit);
        });
        QGuiApplication::exec();
        if (gapsMs.empty())
            return 1;
        std::vector<double> sorted = gapsMs;
        std::sort(sorted.begin(), sorted.end());
        const auto over =
            std::count_if(gapsMs.begin(), gapsMs.end(), [](double gap) { return gap > 50; });
        std::printf("scan of %s: %.2f s, %zu frames while scanning, gap median %.1f ms, p99 %.1f "
                    "ms, max %.1f ms, "
                    "%ld gaps over 50 ms\n",
                    qPrintable(args[2]),
                    std::chrono::duration<double>(Clock::now() - started).count(), gapsMs.size(),
                    sorted[sorted.size() / 2], sorted[sorted.size() * 99 / 100], sorted.back(),
                    long(over));
        return 0;
    }
    return 2;
}
