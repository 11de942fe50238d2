#pragma once

// What sort of thing a file is (video, caches, code ...), for the Kinds view
// and the chart's colouring by kind. One table decides, by the file's
// extension, a few well-known names, and the folders that give everything
// beneath them one kind (an application bundle, a cache folder, the system's
// own folders). Any thread: the table is built once and never changed.

#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tw {

class FileNode;

enum class FileKind : std::uint8_t {
    video,
    audio,
    pictures,
    documents,
    archives,     // archives and disk images
    code,         // code and packages
    applications,
    caches,       // caches and logs
    system,
    other,
};
inline constexpr int kFileKindCount = 10;

// What a table entry is compared with, always without regard to ASCII case.
enum class KindRule : std::uint8_t {
    extension,       // a file's last extension
    fileName,        // a file's whole name
    folderName,      // a folder's whole name, anywhere: everything beneath takes the kind
    folderExtension, // a folder's extension ("Foo.app"): everything beneath takes the kind
    topFolder,       // a folder right below the file system's root ("/usr")
};

struct KindEntry {
    KindRule rule;
    std::string_view text;
    FileKind kind;
};

// The table itself, for those who list it.
[[nodiscard]] std::span<const KindEntry> kindTable();

// The catalogue key of a kind's name ("kind.video").
[[nodiscard]] QString kindKey(FileKind kind);

// The kind a folder gives to everything beneath it, if any. `atTop`: the
// folder's parent is the file system's root.
[[nodiscard]] std::optional<FileKind> folderKind(std::string_view name, bool atTop);
// A file's kind by its own name alone.
[[nodiscard]] FileKind fileKindByName(std::string_view name);
// The kind the folders of `path` (a folder's full path, as bytes) give to what
// lies beneath it; the innermost folder with a rule wins.
[[nodiscard]] std::optional<FileKind> kindOfFolderPath(std::string_view path);
// A file's kind where it stands: the innermost enclosing folder with a rule,
// else its own name. Walks to the root: for single nodes.
[[nodiscard]] FileKind kindOf(const FileNode& file);

using KindBytes = std::array<qint64, kFileKindCount>;

// Bytes and files of each kind at and beneath one folder, and what the chart
// needs to colour and fade by kind. Made by summariseKinds on a worker.
struct KindSummary {
    static constexpr std::size_t kLargestPerKind = 12;

    KindBytes bytes{};
    KindBytes files{};
    // Each kind's largest files, largest first.
    std::array<std::vector<const FileNode*>, kFileKindCount> largest;
    // Bytes by kind of every node the chart can draw: the folder's direct
    // children, and anything within `depth` levels that holds at least
    // `minimumShare` of the folder (a chart draws no sector thinner), so the
    // map stays small however large the tree.
    std::unordered_map<const FileNode*, KindBytes> drawn;

    // The node's largest kind, if the summary knows the node and it has bytes.
    [[nodiscard]] std::optional<FileKind> dominantKind(const FileNode* node) const;
    // The share of `kind` in the node's bytes (0 to 1); empty if unknown.
    [[nodiscard]] std::optional<double> shareOf(const FileNode* node, FileKind kind) const;
    [[nodiscard]] std::size_t memoryBytes() const;
};

// One pass over `folder`'s subtree. `stop` is asked now and then; when it
// says true the pass gives up and answers nothing. Reads the tree only: the
// caller keeps it from being edited meanwhile (TreeGate).
[[nodiscard]] std::optional<KindSummary> summariseKinds(const FileNode& folder, int depth,
                                                        double minimumShare,
                                                        const std::function<bool()>& stop = {});

} // namespace tw
