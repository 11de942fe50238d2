// tidewick-cli: runs Tidewick's own engines from a shell, for inspection and
// for the benchmarks. Not part of the app.

#include "AppsCommand.h"
#include "FeedCommand.h"
#include "ScanCommand.h"
#include "TrashCommand.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace {
void printUsage()
{
    std::fputs("usage: tidewick-cli scan PATH [--workers N] [--json] [--depth N] [--quiet]\n"
               "       tidewick-cli trash [--json] PATH...\n"
               "       tidewick-cli apps [ROOT...]\n"
               "       tidewick-cli related BUNDLE [--home DIR] [--system-library DIR]\n"
               "       tidewick-cli feed [--base URL] [--locale CODE]\n",
               stderr);
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty()) {
        printUsage();
        return 2;
    }
    const QString command = args.takeFirst();
    if (command == QLatin1String("scan"))
        return tw::cli::runScan(args);
    if (command == QLatin1String("feed"))
        return tw::cli::runFeed(args);
    // File names are bytes: take them from argv as they came.
    QByteArrayList raw;
    for (int i = 2; i < argc; ++i)
        raw.append(QByteArray(argv[i]));
    if (command == QLatin1String("trash"))
        return tw::cli::runTrash(raw);
    if (command == QLatin1String("apps"))
        return tw::cli::runApps(raw);
    if (command == QLatin1String("related"))
        return tw::cli::runRelated(raw);
    printUsage();
    return 2;
}
