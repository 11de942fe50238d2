#include "ScanCommand.h"

#include "Commands.h"

#include "app/UnseenSpace.h"
#include "platform/ProcessRunner.h"
#include "platform/VolumeFacts.h"
#include "scan/NameSearch.h"
#include "scan/Scanner.h"
#include "scanfile/ScanFileWriter.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <cstdio>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::cli {

namespace {

struct ScanArgs {
    QByteArray path;
    std::optional<int> workers;
    std::optional<int> depth;
    bool json = false;
    bool quiet = false;
    std::optional<QByteArray> exportTo;
    std::optional<QByteArray> find;
};

// The arguments, or what is wrong with them in `error`.
std::optional<ScanArgs> parse(const QByteArrayList& args, QByteArray& error)
{
    ScanArgs out;
    bool operandsOnly = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray& a = args[i];
        auto number = [&](std::optional<int>& into) {
            bool ok = false;
            if (i + 1 < args.size())
                into = args[++i].toInt(&ok);
            return ok && *into >= 0;
        };
        if (operandsOnly || !a.startsWith("--")) {
            if (!out.path.isEmpty()) {
                error = "takes one PATH, not also " + a;
                return std::nullopt;
            }
            out.path = a; // the argument's own bytes: names need not be UTF-8
        } else if (a == "--")
            operandsOnly = true;
        else if (a == "--json")
            out.json = true;
        else if (a == "--quiet")
            out.quiet = true;
        else if (a == "--export") {
            if (i + 1 >= args.size() || args[i + 1].isEmpty()) {
                error = "--export needs a FILE (- for standard output)";
                return std::nullopt;
            }
            out.exportTo = args[++i];
        } else if (a == "--find") {
            if (i + 1 >= args.size() || args[i + 1].isEmpty()) {
                error = "--find needs a PATTERN";
                return std::nullopt;
            }
            out.find = args[++i];
        } else if (a == "--workers") {
            if (!number(out.workers) || *out.workers < 1) {
                error = "--workers needs a whole number from 1";
                return std::nullopt;
            }
        } else if (a == "--depth") {
            if (!number(out.depth)) {
                error = "--depth needs a whole number from 0";
                return std::nullopt;
            }
        } else {
            error = "unknown option " + a;
            return std::nullopt;
        }
    }
    if (out.path.isEmpty()) {
        error = "needs a PATH to scan";
        return std::nullopt;
    }
    return out;
}

bool isValidUtf8(std::string_view bytes)
{
    const QByteArray raw(bytes.data(), qsizetype(bytes.size()));
    return QString::fromUtf8(raw).toUtf8() == raw;
}

} // namespace

// The text as UTF-8 as a whole (a letter beyond 16 bits is one sequence,
// not two halves), then escaped byte by byte.
void writeJsonString(std::FILE* out, const QString& text)
{
    std::fputc('"', out);
    for (const char c : text.toUtf8()) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            std::fprintf(out, "\\%c", c);
        else if (byte < 0x20)
            std::fprintf(out, "\\u%04x", unsigned(byte));
        else
            std::fputc(c, out);
    }
    std::fputc('"', out);
}

namespace {

// When the root is a mount point: the volume's used space the walk could not
// see, and the parts known to be in it.
void writeUnseen(std::FILE* out, const FileNode& root)
{
    const auto survey = surveyMount(root.path(), systemVolumeFacts(), systemProcessRunner());
    if (!survey)
        return;
    const UnseenSpace unseen = unseenSpaceFrom(*survey, root.size(), root.inaccessibleCount());
    std::fprintf(out, ",\"unseen\":{\"bytes\":%lld,\"unreadableFolders\":%lld,\"localSnapshots\":%lld",
                 static_cast<long long>(unseen.bytes), static_cast<long long>(unseen.unreadableFolders),
                 static_cast<long long>(unseen.localSnapshots));
    if (unseen.purgeable)
        std::fprintf(out, ",\"purgeableBytes\":%lld", static_cast<long long>(*unseen.purgeable));
    if (unseen.reserved)
        std::fprintf(out, ",\"reservedBytes\":%lld", static_cast<long long>(*unseen.reserved));
    std::fprintf(out, ",\"otherBytes\":%lld}", static_cast<long long>(unseen.otherBytes()));
}

void writeJson(std::FILE* out, const FileNode& node, int depth, std::optional<int> maxDepth, bool live)
{
    std::fputs("{\"name\":", out);
    writeJsonString(out, node.displayName());
    const std::string_view raw = node.name();
    // Names need not be UTF-8; the exact bytes ride along when they are not.
    if (!isValidUtf8(raw)) {
        std::fputs(",\"nameHex\":\"", out);
        for (unsigned char b : raw)
            std::fprintf(out, "%02x", b);
        std::fputc('"', out);
    }
    std::fprintf(out, ",\"size\":%lld,\"fileCount\":%lld,\"isDirectory\":%s,\"inaccessible\":%s,\"children\":[",
                 static_cast<long long>(node.size()), static_cast<long long>(node.fileCount()),
                 node.isDirectory() ? "true" : "false", node.isInaccessible() ? "true" : "false");
    if (!maxDepth || depth < *maxDepth) {
        bool first = true;
        for (const FileNode& child : node.children()) {
            if (!first)
                std::fputc(',', out);
            first = false;
            writeJson(out, child, depth + 1, maxDepth, live);
        }
    }
    std::fputc(']', out);
    if (node.isRoot() && live)
        writeUnseen(out, node);
    std::fputc('}', out);
}

void writeText(std::FILE* out, const FileNode& node, int depth, int maxDepth)
{
    if (depth > maxDepth)
        return;
    std::fprintf(out, "%*s%lld\t%lld\t%s%s%s\n", depth * 2, "", static_cast<long long>(node.size()),
                 static_cast<long long>(node.fileCount()), node.displayName().toUtf8().constData(),
                 node.isDirectory() && !node.isRoot() ? "/" : "", node.isInaccessible() ? "\t(inaccessible)" : "");
    for (const FileNode& child : node.children())
        writeText(out, child, depth + 1, maxDepth);
}

// The search's matches, largest first as the app lists them (all of them,
// where the app shows the largest few hundred): size, a tab, the path's own
// bytes.
int writeFound(std::FILE* out, const ScanTree& tree, const QByteArray& typed)
{
    const auto index = NameIndex::build(*tree.root());
    const auto found = index->find(NamePattern(QString::fromUtf8(typed)), std::size_t(index->entryCount()));
    for (const FileNode* node : found->largest) {
        const QByteArray path = node->path();
        std::fprintf(out, "%lld\t", static_cast<long long>(node->size()));
        std::fwrite(path.constData(), 1, std::size_t(path.size()), out);
        std::fputc('\n', out);
    }
    return 0; // a failed write is the exit code's business (main checks the stream)
}

} // namespace

void printTreeJson(std::FILE* out, const ScanTree& tree, int workers, std::optional<int> depth, bool live)
{
    const FileNode& root = *tree.root();
    std::fprintf(out, "{\"path\":");
    writeJsonString(out, root.displayPath());
    std::fprintf(out, ",\"workers\":%d,\"nodes\":%lld,\"inaccessibleCount\":%lld,\"root\":", workers,
                 static_cast<long long>(tree.nodeCount()), static_cast<long long>(root.inaccessibleCount()));
    writeJson(out, root, 0, depth, live);
    std::fputs("}\n", out);
}

int runScan(const QByteArrayList& args)
{
    QByteArray error;
    const auto parsed = parse(args, error);
    if (!parsed)
        return usageError("scan", error);
    // A root that is missing or closed is an error, not an empty tree.
    struct stat rootFacts {};
    if (::stat(parsed->path.constData(), &rootFacts) != 0 ||
        (S_ISDIR(rootFacts.st_mode) && ::access(parsed->path.constData(), R_OK | X_OK) != 0)) {
        std::fprintf(stderr, "tidewick-cli: cannot scan %s: %s\n", parsed->path.constData(),
                     std::strerror(errno));
        return 1;
    }
    // A progress line is for a person at a terminal; in a log or a pipe its
    // control codes would be noise.
    const bool quiet = parsed->quiet || ::isatty(STDERR_FILENO) != 1;
    Scanner::Options options;
    options.workers = parsed->workers;
    Scanner scanner(
        [quiet](const ScanProgress& p) {
            if (quiet)
                return;
            std::fprintf(stderr, "\r\033[K%lld files, %lld bytes, %.0f files/s  %s",
                         static_cast<long long>(p.filesScanned), static_cast<long long>(p.bytesScanned),
                         p.filesPerSecond, p.currentPath.toUtf8().constData());
        },
        options);

    const auto started = std::chrono::steady_clock::now();
    const std::shared_ptr<ScanTree> tree = scanner.scan(parsed->path);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (!quiet)
        std::fputs("\r\033[K", stderr);

    const FileNode& root = *tree->root();
    if (root.isInaccessible()) {
        std::fprintf(stderr, "tidewick-cli: cannot read %s\n", parsed->path.constData());
        return 1;
    }
    std::FILE* out = stdout;
    if (parsed->exportTo) {
        scanfile::WriteOptions options;
        options.progver = QStringLiteral(TIDEWICK_VERSION);
        options.timestamp = std::chrono::duration_cast<std::chrono::seconds>(
                                std::chrono::system_clock::now().time_since_epoch())
                                .count();
        QString why;
        const QString target = QFile::decodeName(*parsed->exportTo);
        if (scanfile::writeScanFile(*tree, target, options, &why) != scanfile::WriteOutcome::written) {
            std::fprintf(stderr, "tidewick-cli: cannot write %s: %s\n", parsed->exportTo->constData(),
                         why.toLocal8Bit().constData());
            return 1;
        }
        // The file went to standard output: nothing else may follow it there.
        if (*parsed->exportTo == "-")
            return 0;
    }
    if (parsed->find)
        return writeFound(out, *tree, *parsed->find);
    if (parsed->json) {
        printTreeJson(out, *tree, scanner.workersUsed(), parsed->depth, true);
        return 0;
    }
    const auto nodes = tree->nodeCount();
    std::fprintf(out, "path: %s\n", root.path().constData());
    std::fprintf(out, "size: %lld\n", static_cast<long long>(root.size()));
    std::fprintf(out, "files: %lld\n", static_cast<long long>(root.fileCount()));
    std::fprintf(out, "nodes: %lld\n", static_cast<long long>(nodes));
    std::fprintf(out, "inaccessible: %lld\n", static_cast<long long>(root.inaccessibleCount()));
    std::fprintf(out, "tree_bytes: %zu\n", tree->memoryBytes());
    std::fprintf(out, "bytes_per_node: %.1f\n", nodes ? double(tree->memoryBytes()) / double(nodes) : 0.0);
    std::fprintf(out, "workers: %d\n", scanner.workersUsed());
    std::fprintf(out, "seconds: %.3f\n", seconds);
    writeText(out, root, 0, parsed->depth.value_or(2));
    return 0;
}

} // namespace tw::cli
