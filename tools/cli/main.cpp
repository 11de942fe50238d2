// tidewick-cli: runs Tidewick's own engines from a shell, for inspection and
// for the benchmarks. Not part of the app.

#include "AppsCommand.h"
#include "FeedCommand.h"
#include "ScanCommand.h"
#include "TrashCommand.h"
#include "UninstallCommand.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {
void printUsage()
{
    std::fputs("usage: tidewick-cli scan PATH [--workers N] [--json] [--depth N] [--quiet]\n"
               "       tidewick-cli trash [--json] PATH...\n"
               "       tidewick-cli apps [ROOT...]\n"
               "       tidewick-cli related BUNDLE [--home DIR] [--system-library DIR]\n"
               "       tidewick-cli uninstall BUNDLE [--home DIR] [--system-library DIR] [--include-shared]\n"
               "                              [--dry-run] [--json]\n"
               "       tidewick-cli feed [--base URL] [--locale CODE]\n",
               stderr);
}
} // namespace

namespace {
// Output that did not reach its file (a full disk, a closed pipe) fails the
// command, whatever the command itself thought of its work.
int finish(int code)
{
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "tidewick-cli: cannot write the output: %s\n",
                     errno ? std::strerror(errno) : "write error");
        return code ? code : 1;
    }
    return code;
}

int run(int argc, char* argv[])
{
    if (argc < 2) {
        printUsage();
        return 2;
    }
    const QByteArray command(argv[1]);
    // File names are bytes: take them from argv as they came.
    QByteArrayList raw;
    for (int i = 2; i < argc; ++i)
        raw.append(QByteArray(argv[i]));
    if (command == "scan")
        return tw::cli::runScan(raw);
    if (command == "trash")
        return tw::cli::runTrash(raw);
    if (command == "apps")
        return tw::cli::runApps(raw);
    if (command == "related")
        return tw::cli::runRelated(raw);
    if (command == "feed") {
        QStringList args;
        for (const QByteArray& arg : raw)
            args.append(QString::fromLocal8Bit(arg));
        return tw::cli::runFeed(args);
    }
    if (command == "uninstall")
        return tw::cli::runUninstall(raw);
    printUsage();
    return 2;
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    return finish(run(argc, argv));
}
