// Kinds and search over one scanned tree, side by side with what the tree
// costs today. Prints medians of repeated runs:
//   - a plain walk over every node (the least any pass over the tree costs)
//   - the kinds summary of the root, and its memory
//   - the search index's build, and its memory per entry
//   - each keystroke of a few typed queries: the search as the window runs
//     it (index built, largest 500 kept)
//
//   findit_bench TREE [RUNS]

#include "scan/FileKinds.h"
#include "scan/NameSearch.h"
#include "scan/Scanner.h"

#include <QCoreApplication>
#include <QString>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double timeMs(const std::function<void()>& work)
{
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

qint64 walk(const tw::FileNode& node)
{
    qint64 count = 1;
    for (const tw::FileNode& child : node.children())
        count += walk(child);
    return count;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: findit_bench TREE [RUNS]\n");
        return 2;
    }
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 9;
    tw::Scanner::Options options;
    options.workers = 2;
    const auto tree = tw::Scanner({}, options).scan(argv[1]);
    const tw::FileNode& root = *tree->root();
    const qint64 nodes = tree->nodeCount();
    std::printf("tree: %lld entries, %.1f bytes an entry (tree, names included)\n", static_cast<long long>(nodes),
                double(tree->memoryBytes()) / double(nodes));

    std::vector<double> walkMs, kindsMs, buildMs;
    std::size_t kindsBytes = 0, indexBytes = 0;
    for (int i = 0; i < runs; ++i) {
        qint64 seen = 0;
        walkMs.push_back(timeMs([&] { seen = walk(root); }));
        if (seen != nodes)
            std::fprintf(stderr, "walk saw %lld of %lld\n", static_cast<long long>(seen), static_cast<long long>(nodes));
        kindsMs.push_back(timeMs([&] {
            const auto summary = tw::summariseKinds(root, 6, 0.020943951023931952 / 6.283185307179586);
            kindsBytes = summary->memoryBytes();
        }));
    }
    std::unique_ptr<tw::NameIndex> index;
    for (int i = 0; i < std::max(3, runs / 3); ++i)
        buildMs.push_back(timeMs([&] { index = tw::NameIndex::build(root); }));
    indexBytes = index->memoryBytes();
    std::printf("walk of every node (today's least pass):  %8.1f ms\n", median(walkMs));
    std::printf("kinds summary of the root:                %8.1f ms, %zu bytes held (%.3f an entry)\n",
                median(kindsMs), kindsBytes, double(kindsBytes) / double(nodes));
    std::printf("search index build (once a tree):         %8.1f ms, %.1f bytes an entry\n", median(buildMs),
                double(indexBytes) / double(nodes));

    const std::vector<std::vector<QString>> typed = {
        {"r", "re", "rep", "repo", "repor", "report"},
        {"*", "*.", "*.j", "*.jp", "*.jpg"},
        {QString::fromUtf8("о"), QString::fromUtf8("от"), QString::fromUtf8("отч"), QString::fromUtf8("ОТЧЁТ")},
        {"i", "im", "img", "img_", "img_?", "img_????.jpg"},
        {"STRASSE", "node_modules", "zzzz-not-there"},
    };
    std::vector<double> all;
    for (const auto& word : typed) {
        for (const QString& query : word) {
            std::vector<double> times;
            qint64 total = 0;
            const tw::NamePattern pattern(query);
            for (int i = 0; i < runs; ++i)
                times.push_back(timeMs([&] { total = index->find(pattern, 500)->total; }));
            all.push_back(median(times));
            std::printf("keystroke %-16s %8.1f ms  (%lld matches)\n", query.toUtf8().constData(), median(times),
                        static_cast<long long>(total));
        }
    }
    std::printf("keystroke median over all: %.1f ms, slowest median %.1f ms\n", median(all),
                *std::max_element(all.begin(), all.end()));
    return 0;
}
