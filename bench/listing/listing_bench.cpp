// The walk of one folder listed two ways, side by side: readdir with an
// fstatat an entry, and getattrlistbulk. Built on macOS only, where both
// exist; docs/macos-smoke-test.md says when to run it.
//
//   listing_bench FOLDER [RUNS]     (default 7 runs of each, alternating)
//
// Prints the median and the range of each, their ratio, and checks that both
// found the same files and bytes.

#include "platform/BulkLister.h"
#include "scan/Scanner.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {
struct Run {
    double seconds;
    qint64 files;
    qint64 bytes;
};

Run walk(const QByteArray& folder, const tw::BulkLister* lister)
{
    tw::Scanner::Options options;
    options.workers = 1; // one thread: the listing's cost, not the sharing
    options.bulkLister = lister;
    tw::Scanner scanner({}, options);
    const auto start = std::chrono::steady_clock::now();
    const auto tree = scanner.scan(folder);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    return {took.count(), tree->root()->fileCount(), tree->root()->size()};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2 || !tw::systemBulkLister()) {
        std::fprintf(stderr, "usage: listing_bench FOLDER [RUNS] (macOS only)\n");
        return 2;
    }
    const QByteArray folder = QFile::encodeName(QString::fromLocal8Bit(argv[1]));
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 7;
    (void)walk(folder, nullptr); // warms the caches for both
    std::vector<double> byNames, byRecords;
    Run names{}, records{};
    for (int i = 0; i < runs; ++i) {
        names = walk(folder, nullptr);
        records = walk(folder, tw::systemBulkLister());
        byNames.push_back(names.seconds);
        byRecords.push_back(records.seconds);
    }
    const auto [namesMin, namesMax] = std::minmax_element(byNames.begin(), byNames.end());
    const auto [recordsMin, recordsMax] = std::minmax_element(byRecords.begin(), byRecords.end());
    std::printf("files: %lld, bytes: %lld, runs: %d each\n", static_cast<long long>(records.files),
                static_cast<long long>(records.bytes), runs);
    std::printf("readdir + fstatat: %.3f s (%.3f-%.3f)\n", median(byNames), *namesMin, *namesMax);
    std::printf("getattrlistbulk:   %.3f s (%.3f-%.3f)\n", median(byRecords), *recordsMin, *recordsMax);
    std::printf("ratio (readdir / bulk): %.2f\n", median(byNames) / median(byRecords));
    if (names.files != records.files || names.bytes != records.bytes) {
        std::printf("MISMATCH: readdir found %lld files, %lld bytes\n", static_cast<long long>(names.files),
                    static_cast<long long>(names.bytes));
        return 1;
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
