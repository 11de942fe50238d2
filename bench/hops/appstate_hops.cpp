// Counts what a scan costs the GUI thread: the queued report hops AppState
// handles while it scans a tree, and the smallest gap between two of them
// (80 ms or more means at most 12.5 a second). The last report of a scan is
// never held back, so the gap before it is shown apart.
//
//   appstate_hops PATH [WORKERS]

#include "app/AppState.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <vector>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fputs("usage: appstate_hops PATH [WORKERS]\n", stderr);
        return 2;
    }
    tw::AppState::Services services;
    if (argc > 2)
        services.scannerOptions.workers = std::atoi(argv[2]);
    tw::AppState state(services);

    QElapsedTimer clock;
    std::vector<qint64> at;
    clock.start();
    // Counted from here on: startScan's own reset of the progress is no hop.
    state.requestScan(QByteArray(argv[1]));
    QObject::connect(&state, &tw::AppState::progressChanged, &app, [&] {
        if (state.phase() != tw::AppState::Phase::scanning)
            return;
        at.push_back(clock.nsecsElapsed());
    });
    QObject::connect(&state, &tw::AppState::phaseChanged, &app, [&] {
        if (state.phase() == tw::AppState::Phase::ready)
            QCoreApplication::quit();
    });
    QCoreApplication::exec();
    const double seconds = double(clock.elapsed()) / 1000.0;
    // Gaps are seen on the GUI thread, so delivery jitter shows in the
    // smallest one; the throttle itself works where reports are made.
    double smallestGap = 1e9;
    for (size_t i = 1; i + 1 < at.size(); ++i)
        smallestGap = std::min(smallestGap, double(at[i] - at[i - 1]) / 1e6);
    const double throttledRate = at.size() >= 3
        ? double(at.size() - 2) / (double(at[at.size() - 2] - at.front()) / 1e9) : 0;
    const double lastGap = at.size() >= 2 ? double(at.back() - at[at.size() - 2]) / 1e6 : 0;
    std::printf("files: %lld\nseconds: %.2f\nhops: %zu\nhops_per_second: %.2f\n"
                "throttled_hops_per_second: %.2f\nsmallest_gap_ms: %.1f\nfinal_gap_ms: %.1f\n",
                static_cast<long long>(state.root()->fileCount()), seconds, at.size(),
                double(at.size()) / seconds, throttledRate, smallestGap, lastGap);
    return 0;
}
