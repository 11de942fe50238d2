// Times the uninstaller's two searches on generated trees:
//  - discovery of 300 application bundles (Info.plists XML and binary, some
//    in vendor folders), without sizing;
//  - the related-file search for one application over Library folders with
//    thousands of entries in every location (launchd folders full of
//    property lists that must be opened), with only a handful of matches.
// Prints medians of several runs.
//
//   uninstaller_bench [BUNDLES] [ENTRIES_PER_LOCATION]   (default 300 2000)

#include "uninstaller/AppDiscovery.h"
#include "uninstaller/AppRelatedFiles.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/PropertyList.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {

void writeBytes(const QByteArray& path, const QByteArray& data)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0 || ::write(fd, data.constData(), size_t(data.size())) != data.size())
        std::perror(path.constData());
    if (fd >= 0)
        ::close(fd);
}

void mkpath(const QByteArray& path)
{
    QDir().mkpath(QFile::decodeName(path));
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int bundles = argc > 1 ? std::atoi(argv[1]) : 300;
    const int entries = argc > 2 ? std::atoi(argv[2]) : 2000;
    QTemporaryDir dir;
    const QByteArray base = QFile::encodeName(dir.path());

    // Applications: a third in vendor folders, half with binary plists.
    const QByteArray root = base + "/Applications";
    for (int i = 0; i < bundles; ++i) {
        const QByteArray folder = i % 3 == 0 ? root + "/Vendor" + QByteArray::number(i % 7) : root;
        const QByteArray bundle = folder + "/App" + QByteArray::number(i) + ".app";
        mkpath(bundle + "/Contents/MacOS");
        mkpath(bundle + "/Contents/Resources");
        const QVariantMap info{
            {QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.bench.app%1").arg(i)},
            {QStringLiteral("CFBundleName"), QStringLiteral("App %1").arg(i)},
            {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.%1").arg(i)},
            {QStringLiteral("CFBundleExecutable"), QStringLiteral("main")}};
        writeBytes(bundle + "/Contents/Info.plist", tw::writePropertyList(info, i % 2 == 0));
        writeBytes(bundle + "/Contents/MacOS/main", QByteArray(4096, 'x'));
    }
    std::vector<double> discoveryMs;
    std::size_t found = 0;
    for (int run = 0; run < 7; ++run) {
        const auto start = Clock::now();
        found = tw::AppDiscovery::listInstalledApps({root}).size();
        discoveryMs.push_back(
            std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }

    // Library folders, user and system, every location full of strangers.
    const char* locations[] = {"Application Support",
                               "Caches",
                               "Preferences",
                               "Preferences/ByHost",
                               "Containers",
                               "Group Containers",
                               "Application Scripts",
                               "Saved Application State",
                               "Logs",
                               "Cookies",
                               "WebKit",
                               "HTTPStorages",
                               "LaunchAgents",
                               "LaunchDaemons",
                               "PrivilegedHelperTools"};
    const QByteArray home = base + "/home";
    for (const QByteArray& library :
         {QByteArray(home + "/Library"), QByteArray(base + "/Library")}) {
        for (const char* location : locations) {
            const QByteArray folder = library + '/' + location;
            mkpath(folder);
            const bool launchd = QByteArray(location).startsWith("Launch");
            for (int i = 0; i < entries; ++i) {
                const QByteArray name = "com.stranger" + QByteArray::number(i);
                if (launchd) {
                    writeBytes(folder + '/' + name + ".agent.plist",
                               tw::writePropertyList(
                                   QVariantMap{{QStringLiteral("Label"), QString::fromLatin1(name)},
                                               {QStringLiteral("Program"),
                                                QStringLiteral("/usr/local/bin/stranger")}},
                                   i % 2 == 0));
                } else if (i % 2) {
                    mkpath(folder + '/' + name);
                } else {
                    writeBytes(folder + '/' + name + ".plist", "x");
                }
            }
        }
        // The few that belong to the application searched for.
        mkpath(library + "/Application Support/com.bench.app7");
        writeBytes(library + "/Preferences/com.bench.app7.plist", "x");
    }
    const QByteArray target = root + "/App7.app";
    std::vector<double> searchMs;
    qsizetype matches = 0;
    for (int run = 0; run < 7; ++run) {
        const auto start = Clock::now();
        const auto identity = tw::AppRelatedFiles::Identity::build(QStringLiteral("com.bench.app7"),
                                                                   QStringLiteral("App 7"), target);
        matches = tw::AppRelatedFiles::search(identity, home, base + "/Library").size();
        searchMs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::printf("discovery: %zu bundles in median %.1f ms (min %.1f, max %.1f)\n", found,
                median(discoveryMs), *std::min_element(discoveryMs.begin(), discoveryMs.end()),
                *std::max_element(discoveryMs.begin(), discoveryMs.end()));
    std::printf("related search: %d entries in each of 30 folders, %lld matches, median %.1f ms "
                "(min %.1f, max %.1f)\n",
                entries, static_cast<long long>(matches), median(searchMs),
                *std::min_element(searchMs.begin(), searchMs.end()),
                *std::max_element(searchMs.begin(), searchMs.end()));
    return 0;
}
