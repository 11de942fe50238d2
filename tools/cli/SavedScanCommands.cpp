#include "SavedScanCommands.h"

#include "Commands.h"
#include "ScanCommand.h"

#include "scanfile/ScanDiff.h"
#include "scanfile/ScanFileReader.h"

#include <QString>

#include <cstdio>
#include <optional>

namespace tw::cli {

namespace {

struct Parsed {
    QByteArrayList operands;
    bool json = false;
    std::optional<int> number; // --depth or --top
};

std::optional<Parsed> parse(const QByteArrayList& args, const char* numberOption, QByteArray& error)
{
    Parsed out;
    bool operandsOnly = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray& a = args[i];
        if (operandsOnly || !a.startsWith("--")) {
            out.operands.append(a);
        } else if (a == "--") {
            operandsOnly = true;
        } else if (a == "--json") {
            out.json = true;
        } else if (a == numberOption) {
            bool ok = false;
            const int n = i + 1 < args.size() ? args[++i].toInt(&ok) : -1;
            if (!ok || n < 0) {
                error = QByteArray(numberOption) + " needs a whole number from 0";
                return std::nullopt;
            }
            out.number = n;
        } else {
            error = "unknown option " + a;
            return std::nullopt;
        }
    }
    return out;
}

std::shared_ptr<ScanTree> load(const QByteArray& path)
{
    const scanfile::ReadResult read = scanfile::readScanFile(path);
    if (!read.tree) {
        std::fprintf(stderr, "tidewick-cli: cannot open %s: %s\n", path.constData(),
                     scanfile::describe(read).toLocal8Bit().constData());
        return nullptr;
    }
    return read.tree;
}

const char* kindWord(scanfile::Change::Kind kind)
{
    switch (kind) {
    case scanfile::Change::Kind::grown: return "grown";
    case scanfile::Change::Kind::shrunk: return "shrunk";
    case scanfile::Change::Kind::added: return "new";
    case scanfile::Change::Kind::removed: return "gone";
    }
    return "";
}

} // namespace

int runOpen(const QByteArrayList& args)
{
    QByteArray error;
    const auto parsed = parse(args, "--depth", error);
    if (!parsed)
        return usageError("open", error);
    if (parsed->operands.size() != 1)
        return usageError("open", "takes one FILE");
    const auto tree = load(parsed->operands.front());
    if (!tree)
        return 1;
    if (parsed->json) {
        printTreeJson(stdout, *tree, 0, parsed->number, false);
    } else {
        const FileNode& root = *tree->root();
        std::printf("path: %s\nsize: %lld\nfiles: %lld\nnodes: %lld\ninaccessible: %lld\n", root.path().constData(),
                    static_cast<long long>(root.size()), static_cast<long long>(root.fileCount()),
                    static_cast<long long>(tree->nodeCount()), static_cast<long long>(root.inaccessibleCount()));
        std::printf("tree_bytes: %zu\n", tree->memoryBytes());
    }
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? 0 : 1;
}

int runDiff(const QByteArrayList& args)
{
    QByteArray error;
    const auto parsed = parse(args, "--top", error);
    if (!parsed)
        return usageError("diff", error);
    if (parsed->operands.size() != 2)
        return usageError("diff", "takes OLD and NEW");
    const auto before = load(parsed->operands[0]);
    const auto after = before ? load(parsed->operands[1]) : nullptr;
    if (!after)
        return 1;
    const scanfile::Diff diff = scanfile::diffTrees(*before->root(), *after->root());
    const std::size_t shown = parsed->number ? std::min<std::size_t>(std::size_t(*parsed->number), diff.changes.size())
                                             : diff.changes.size();
    if (parsed->json) {
        std::printf("{\"before\":%lld,\"after\":%lld,\"changes\":[", static_cast<long long>(diff.before),
                    static_cast<long long>(diff.after));
        for (std::size_t i = 0; i < shown; ++i) {
            const scanfile::Change& change = diff.changes[i];
            std::printf("%s{\"path\":", i ? "," : "");
            writeJsonString(stdout, QString::fromUtf8(change.path));
            if (QString::fromUtf8(change.path).toUtf8() != change.path)
                std::printf(",\"pathHex\":\"%s\"", change.path.toHex().constData());
            std::printf(",\"change\":\"%s\",\"before\":%lld,\"after\":%lld,\"delta\":%lld,\"isDirectory\":%s}",
                        kindWord(change.kind), static_cast<long long>(change.before),
                        static_cast<long long>(change.after), static_cast<long long>(change.delta()),
                        change.isDirectory ? "true" : "false");
        }
        std::printf("],\"count\":%zu}\n", diff.changes.size());
    } else {
        std::printf("before: %lld\nafter: %lld\ndelta: %+lld\nchanges: %zu\n", static_cast<long long>(diff.before),
                    static_cast<long long>(diff.after), static_cast<long long>(diff.after - diff.before),
                    diff.changes.size());
        for (std::size_t i = 0; i < shown; ++i) {
            const scanfile::Change& change = diff.changes[i];
            std::printf("%+lld\t%s\t%s%s\n", static_cast<long long>(change.delta()), kindWord(change.kind),
                        change.path.constData(), change.isDirectory ? "/" : "");
        }
    }
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? 0 : 1;
}

} // namespace tw::cli
