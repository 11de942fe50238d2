#include "scan/FileKinds.h"

#include "scan/FileNode.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tw {

namespace {

using K = FileKind;
using R = KindRule;

// Lower case throughout; names are compared without regard to ASCII case.
constexpr KindEntry kTable[] = {
    // Video
    {R::extension, "mp4", K::video}, {R::extension, "m4v", K::video}, {R::extension, "mov", K::video},
    {R::extension, "avi", K::video}, {R::extension, "mkv", K::video}, {R::extension, "wmv", K::video},
    {R::extension, "flv", K::video}, {R::extension, "webm", K::video}, {R::extension, "mpg", K::video},
    {R::extension, "mpeg", K::video}, {R::extension, "m2ts", K::video}, {R::extension, "mts", K::video},
    {R::extension, "3gp", K::video}, {R::extension, "vob", K::video}, {R::extension, "ogv", K::video},
    {R::extension, "hevc", K::video}, {R::extension, "rmvb", K::video}, {R::extension, "braw", K::video},
    {R::folderExtension, "fcpbundle", K::video}, {R::folderExtension, "imovielibrary", K::video},
    {R::folderExtension, "tvlibrary", K::video},
    // Audio
    {R::extension, "mp3", K::audio}, {R::extension, "m4a", K::audio}, {R::extension, "m4b", K::audio},
    {R::extension, "aac", K::audio}, {R::extension, "wav", K::audio}, {R::extension, "aif", K::audio},
    {R::extension, "aiff", K::audio}, {R::extension, "flac", K::audio}, {R::extension, "ogg", K::audio},
    {R::extension, "oga", K::audio}, {R::extension, "opus", K::audio}, {R::extension, "wma", K::audio},
    {R::extension, "caf", K::audio}, {R::extension, "mid", K::audio}, {R::extension, "midi", K::audio},
    {R::extension, "amr", K::audio}, {R::extension, "ape", K::audio},
    {R::folderExtension, "logicx", K::audio}, {R::folderExtension, "band", K::audio},
    {R::folderExtension, "musiclibrary", K::audio},
    // Pictures
    {R::extension, "jpg", K::pictures}, {R::extension, "jpeg", K::pictures}, {R::extension, "png", K::pictures},
    {R::extension, "gif", K::pictures}, {R::extension, "bmp", K::pictures}, {R::extension, "tif", K::pictures},
    {R::extension, "tiff", K::pictures}, {R::extension, "heic", K::pictures}, {R::extension, "heif", K::pictures},
    {R::extension, "webp", K::pictures}, {R::extension, "avif", K::pictures}, {R::extension, "raw", K::pictures},
    {R::extension, "cr2", K::pictures}, {R::extension, "cr3", K::pictures}, {R::extension, "nef", K::pictures},
    {R::extension, "arw", K::pictures}, {R::extension, "dng", K::pictures}, {R::extension, "orf", K::pictures},
    {R::extension, "rw2", K::pictures}, {R::extension, "raf", K::pictures}, {R::extension, "psd", K::pictures},
    {R::extension, "svg", K::pictures}, {R::extension, "ico", K::pictures}, {R::extension, "icns", K::pictures},
    {R::extension, "xcf", K::pictures}, {R::extension, "jxl", K::pictures},
    {R::folderExtension, "photoslibrary", K::pictures}, {R::folderExtension, "aplibrary", K::pictures},
    // Documents
    {R::extension, "pdf", K::documents}, {R::extension, "doc", K::documents}, {R::extension, "docx", K::documents},
    {R::extension, "xls", K::documents}, {R::extension, "xlsx", K::documents}, {R::extension, "ppt", K::documents},
    {R::extension, "pptx", K::documents}, {R::extension, "odt", K::documents}, {R::extension, "ods", K::documents},
    {R::extension, "odp", K::documents}, {R::extension, "rtf", K::documents}, {R::extension, "txt", K::documents},
    {R::extension, "md", K::documents}, {R::extension, "pages", K::documents},
    {R::extension, "numbers", K::documents}, {R::extension, "key", K::documents},
    {R::extension, "epub", K::documents}, {R::extension, "mobi", K::documents}, {R::extension, "csv", K::documents},
    {R::extension, "tex", K::documents}, {R::extension, "eml", K::documents}, {R::extension, "emlx", K::documents},
    {R::extension, "mbox", K::documents}, {R::extension, "vcf", K::documents}, {R::extension, "ics", K::documents},
    // Archives and disk images
    {R::extension, "zip", K::archives}, {R::extension, "tar", K::archives}, {R::extension, "gz", K::archives},
    {R::extension, "tgz", K::archives}, {R::extension, "bz2", K::archives}, {R::extension, "xz", K::archives},
    {R::extension, "txz", K::archives}, {R::extension, "7z", K::archives}, {R::extension, "rar", K::archives},
    {R::extension, "zst", K::archives}, {R::extension, "lz", K::archives}, {R::extension, "lzma", K::archives},
    {R::extension, "lz4", K::archives}, {R::extension, "cab", K::archives}, {R::extension, "iso", K::archives},
    {R::extension, "dmg", K::archives}, {R::extension, "img", K::archives}, {R::extension, "vmdk", K::archives},
    {R::extension, "vdi", K::archives}, {R::extension, "qcow2", K::archives}, {R::extension, "vhd", K::archives},
    {R::extension, "vhdx", K::archives}, {R::extension, "sparseimage", K::archives},
    {R::extension, "cpio", K::archives}, {R::extension, "sit", K::archives}, {R::extension, "sitx", K::archives},
    {R::folderExtension, "sparsebundle", K::archives},
    // Code and packages
    {R::extension, "c", K::code}, {R::extension, "h", K::code}, {R::extension, "cc", K::code},
    {R::extension, "cpp", K::code}, {R::extension, "cxx", K::code}, {R::extension, "hpp", K::code},
    {R::extension, "m", K::code}, {R::extension, "mm", K::code}, {R::extension, "swift", K::code},
    {R::extension, "java", K::code}, {R::extension, "kt", K::code}, {R::extension, "go", K::code},
    {R::extension, "rs", K::code}, {R::extension, "py", K::code}, {R::extension, "pyc", K::code},
    {R::extension, "rb", K::code}, {R::extension, "php", K::code}, {R::extension, "pl", K::code},
    {R::extension, "js", K::code}, {R::extension, "mjs", K::code}, {R::extension, "cjs", K::code},
    {R::extension, "ts", K::code}, {R::extension, "tsx", K::code}, {R::extension, "jsx", K::code},
    {R::extension, "vue", K::code}, {R::extension, "css", K::code}, {R::extension, "scss", K::code},
    {R::extension, "html", K::code}, {R::extension, "htm", K::code}, {R::extension, "xml", K::code},
    {R::extension, "json", K::code}, {R::extension, "yaml", K::code}, {R::extension, "yml", K::code},
    {R::extension, "toml", K::code}, {R::extension, "sh", K::code}, {R::extension, "zsh", K::code},
    {R::extension, "lua", K::code}, {R::extension, "cs", K::code}, {R::extension, "sql", K::code},
    {R::extension, "proto", K::code}, {R::extension, "o", K::code}, {R::extension, "a", K::code},
    {R::extension, "so", K::code}, {R::extension, "dylib", K::code}, {R::extension, "dll", K::code},
    {R::extension, "class", K::code}, {R::extension, "jar", K::code}, {R::extension, "wasm", K::code},
    {R::extension, "map", K::code}, {R::extension, "ipynb", K::code}, {R::extension, "whl", K::code},
    {R::extension, "gem", K::code}, {R::extension, "deb", K::code}, {R::extension, "rpm", K::code},
    {R::extension, "nupkg", K::code}, {R::extension, "crate", K::code}, {R::extension, "pack", K::code},
    {R::extension, "idx", K::code},
    {R::fileName, "makefile", K::code}, {R::fileName, "dockerfile", K::code},
    {R::fileName, "cmakelists.txt", K::code}, {R::fileName, "package.json", K::code},
    {R::fileName, "package-lock.json", K::code},
    {R::folderName, "node_modules", K::code}, {R::folderName, ".git", K::code},
    {R::folderName, "site-packages", K::code}, {R::folderName, ".cargo", K::code},
    {R::folderExtension, "xcodeproj", K::code}, {R::folderExtension, "framework", K::code},
    {R::folderExtension, "xcarchive", K::code}, {R::folderExtension, "dsym", K::code},
    // Applications
    {R::extension, "exe", K::applications}, {R::extension, "msi", K::applications},
    {R::extension, "apk", K::applications}, {R::extension, "ipa", K::applications},
    {R::extension, "appimage", K::applications}, {R::extension, "pkg", K::applications},
    {R::extension, "mpkg", K::applications}, {R::extension, "snap", K::applications},
    {R::extension, "flatpak", K::applications},
    {R::folderExtension, "app", K::applications}, {R::folderName, "Applications", K::applications},
    // Caches and logs
    {R::extension, "log", K::caches}, {R::extension, "cache", K::caches}, {R::extension, "tmp", K::caches},
    {R::extension, "crash", K::caches}, {R::extension, "dmp", K::caches},
    {R::fileName, "thumbs.db", K::caches},
    {R::folderName, "caches", K::caches}, {R::folderName, "cache", K::caches}, {R::folderName, ".cache", K::caches},
    {R::folderName, "cacheddata", K::caches}, {R::folderName, "code cache", K::caches},
    {R::folderName, "gpucache", K::caches}, {R::folderName, "deriveddata", K::caches},
    {R::folderName, "__pycache__", K::caches}, {R::folderName, ".npm", K::caches},
    {R::folderName, "logs", K::caches}, {R::folderName, "log", K::caches},
    {R::folderName, "diagnosticreports", K::caches},
    // System
    {R::extension, "plist", K::system}, {R::extension, "kext", K::system}, {R::extension, "ko", K::system},
    {R::extension, "efi", K::system}, {R::extension, "sys", K::system},
    {R::fileName, ".ds_store", K::system}, {R::fileName, "sleepimage", K::system},
    {R::fileName, "desktop.ini", K::system},
    {R::folderExtension, "kext", K::system}, {R::folderExtension, "bundle", K::system},
    {R::topFolder, "system", K::system}, {R::topFolder, "usr", K::system}, {R::topFolder, "bin", K::system},
    {R::topFolder, "sbin", K::system}, {R::topFolder, "lib", K::system}, {R::topFolder, "lib64", K::system},
    {R::topFolder, "boot", K::system}, {R::topFolder, "etc", K::system}, {R::topFolder, "private", K::system},
    {R::topFolder, "cores", K::system}, {R::topFolder, "opt", K::system},
};

std::string lowered(std::string_view text)
{
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    return out;
}

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

// One hash map a rule: a file costs a hash of its extension and of its
// name, whatever the size of the table.
struct Lookup {
    std::array<std::unordered_map<std::string, K, TextHash, std::equal_to<>>, 5> maps;
    Lookup()
    {
        for (const KindEntry& entry : kTable)
            if (!maps[std::size_t(entry.rule)].emplace(lowered(entry.text), entry.kind).second)
                qFatal("the kind table names \"%s\" twice", lowered(entry.text).c_str());
    }
    [[nodiscard]] std::optional<K> find(R rule, std::string_view text) const
    {
        // Longer than any entry: no need to lower it.
        constexpr std::size_t kLongest = 24;
        if (text.empty() || text.size() > kLongest)
            return std::nullopt;
        char buffer[kLongest];
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            buffer[i] = c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
        }
        const auto& map = maps[std::size_t(rule)];
        const auto at = map.find(std::string_view(buffer, text.size()));
        if (at == map.end())
            return std::nullopt;
        return at->second;
    }
};

const Lookup& lookup()
{
    static const Lookup table;
    return table;
}

// The text after the last dot, empty for none or for a name that only
// starts with one (".profile").
std::string_view extensionOf(std::string_view name)
{
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {};
    return name.substr(dot + 1);
}

} // namespace

std::span<const KindEntry> kindTable()
{
    return kTable;
}

QString kindKey(FileKind kind)
{
    static constexpr const char* kKeys[kFileKindCount] = {
        "kind.video", "kind.audio", "kind.pictures", "kind.documents", "kind.archives",
        "kind.code",  "kind.applications", "kind.caches", "kind.system", "kind.other"};
    return QString::fromLatin1(kKeys[std::size_t(kind)]);
}

std::optional<FileKind> folderKind(std::string_view name, bool atTop)
{
    const Lookup& table = lookup();
    if (atTop)
        if (auto kind = table.find(R::topFolder, name))
            return kind;
    if (auto kind = table.find(R::folderName, name))
        return kind;
    return table.find(R::folderExtension, extensionOf(name));
}

FileKind fileKindByName(std::string_view name)
{
    const Lookup& table = lookup();
    if (auto kind = table.find(R::fileName, name))
        return *kind;
    return table.find(R::extension, extensionOf(name)).value_or(K::other);
}

std::optional<FileKind> kindOfFolderPath(std::string_view path)
{
    std::optional<FileKind> kind;
    std::size_t at = 0;
    while (at < path.size()) {
        const auto slash = path.find('/', at);
        const auto end = slash == std::string_view::npos ? path.size() : slash;
        // The first name after the leading "/" stands right below the root.
        if (end > at)
            if (auto folder = folderKind(path.substr(at, end - at), at == 1 && path[0] == '/'))
                kind = folder;
        at = end + 1;
    }
    return kind;
}

FileKind kindOf(const FileNode& file)
{
    const FileNode* parent = file.parent();
    if (parent) {
        const QByteArray path = parent->path();
        if (auto kind = kindOfFolderPath(std::string_view(path.constData(), std::size_t(path.size()))))
            return *kind;
    }
    return fileKindByName(file.name());
}

std::optional<FileKind> KindSummary::dominantKind(const FileNode* node) const
{
    const auto found = drawn.find(node);
    if (found == drawn.end())
        return std::nullopt;
    const auto largest = std::max_element(found->second.begin(), found->second.end());
    if (*largest <= 0)
        return std::nullopt;
    return FileKind(largest - found->second.begin());
}

std::optional<double> KindSummary::shareOf(const FileNode* node, FileKind kind) const
{
    const auto found = drawn.find(node);
    if (found == drawn.end())
        return std::nullopt;
    qint64 total = 0;
    for (qint64 bytes : found->second)
        total += bytes;
    return total > 0 ? double(found->second[std::size_t(kind)]) / double(total) : 0.0;
}

std::size_t KindSummary::memoryBytes() const
{
    std::size_t bytes = sizeof(*this);
    for (const auto& files : largest)
        bytes += files.capacity() * sizeof(const FileNode*);
    // A node of the map: key, value, the next link and the cached hash, plus its bucket.
    bytes += drawn.size() * (sizeof(std::pair<const FileNode*, KindBytes>) + 2 * sizeof(void*)) +
             drawn.bucket_count() * sizeof(void*);
    return bytes;
}

std::optional<KindSummary> summariseKinds(const FileNode& folder, int depth, double minimumShare,
                                          const std::function<bool()>& stop)
{
    KindSummary summary;
    const QByteArray folderPath = folder.path();
    const std::optional<FileKind> outer =
        kindOfFolderPath(std::string_view(folderPath.constData(), std::size_t(folderPath.size())));
    const double threshold = double(folder.size()) * minimumShare;
    const bool folderAtRoot = folderPath == "/";

    struct Frame {
        const FileNode* node;
        FileNode::ChildRange::iterator next;
        FileNode::ChildRange::iterator end;
        std::optional<FileKind> context;
        KindBytes bytes{};
        int level; // 0 for the folder summarised
    };
    const auto recordDrawn = [&](const FileNode& node, int level, const KindBytes& bytes) {
        if (level == 1 || (level > 1 && level <= depth && double(node.size()) >= threshold))
            summary.drawn.emplace(&node, bytes);
    };
    const auto countFile = [&](const FileNode& file, FileKind kind) {
        const auto k = std::size_t(kind);
        summary.bytes[k] += file.size();
        summary.files[k] += file.fileCount();
        auto& largest = summary.largest[k];
        const auto bySize = [](const FileNode* a, const FileNode* b) { return a->size() > b->size(); };
        // A min-heap by size of at most kLargestPerKind.
        if (largest.size() < KindSummary::kLargestPerKind) {
            largest.push_back(&file);
            std::push_heap(largest.begin(), largest.end(), bySize);
        } else if (file.size() > largest.front()->size()) {
            std::pop_heap(largest.begin(), largest.end(), bySize);
            largest.back() = &file;
            std::push_heap(largest.begin(), largest.end(), bySize);
        }
    };

    if (!folder.isDirectory()) {
        const FileKind kind = outer.value_or(fileKindByName(folder.name()));
        countFile(folder, kind);
    } else {
        std::vector<Frame> stack;
        const FileNode::ChildRange top = folder.children();
        stack.push_back({&folder, top.begin(), top.end(), outer, {}, 0});
        std::size_t visited = 0;
        while (!stack.empty()) {
            Frame& frame = stack.back();
            if (frame.next == frame.end) {
                const Frame done = std::move(frame);
                stack.pop_back();
                if (!stack.empty()) {
                    for (int k = 0; k < kFileKindCount; ++k)
                        stack.back().bytes[std::size_t(k)] += done.bytes[std::size_t(k)];
                    recordDrawn(*done.node, done.level, done.bytes);
                }
                continue;
            }
            const FileNode& child = *frame.next;
            ++frame.next;
            if (stop && (++visited & 0xfff) == 0 && stop())
                return std::nullopt;
            if (child.isDirectory()) {
                const bool atTop = frame.level == 0 ? folderAtRoot : false;
                std::optional<FileKind> context = frame.context;
                if (auto own = folderKind(child.name(), atTop))
                    context = own;
                const FileNode::ChildRange range = child.children();
                const int level = frame.level + 1;
                stack.push_back({&child, range.begin(), range.end(), context, {}, level});
                continue;
            }
            const FileKind kind = frame.context.value_or(fileKindByName(child.name()));
            countFile(child, kind);
            frame.bytes[std::size_t(kind)] += child.size();
            KindBytes own{};
            own[std::size_t(kind)] = child.size();
            recordDrawn(child, frame.level + 1, own);
        }
    }
    for (auto& largest : summary.largest)
        std::sort(largest.begin(), largest.end(),
                  [](const FileNode* a, const FileNode* b) { return a->size() > b->size(); });
    return summary;
}

} // namespace tw
