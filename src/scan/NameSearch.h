#pragma once

// Finding items of a finished scan by name. Names are the tree's bytes; they
// are decoded and folded once, into an index, and every search after that
// runs over the folded text. Folding: the name in Unicode normalisation form
// C (so a decomposed "é" from a Mac's disk meets a typed one), then Unicode
// simple case folding (Qt's toCaseFolded: "Ä" → "ä", "Ж" → "ж", "Σ"/"ς" →
// "σ"), then the full folding of "ß" and "ẞ" to "ss", and "ё" to "е", which
// Russian writers use interchangeably. ASCII names are only lower-cased.

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

class FileNode;

// The folded form of a name's bytes (UTF-8; bytes that are not UTF-8 become U+FFFD).
[[nodiscard]] std::string foldName(std::string_view bytes);
[[nodiscard]] std::string foldText(const QString& text);

// What the user typed. Without `*` or `?` it matches anywhere in a name;
// with them it is matched against the whole name (`*.iso` ends in ".iso"),
// `*` standing for any run of characters and `?` for exactly one.
class NamePattern {
public:
    explicit NamePattern(const QString& typed);
    [[nodiscard]] bool isEmpty() const { return m_folded.empty(); }
    // `folded`: a name as foldName gives it.
    [[nodiscard]] bool matches(std::string_view folded) const;

private:
    friend class NameIndex;
    std::string m_folded;
    bool m_wild = false;
    enum class Shape { anywhere, everything, endsWith, startsWith, general };
    Shape m_shape = Shape::anywhere;
    std::string m_anchor; // the longest run without wildcards: every match holds it
};

// Every node of a tree below its root, with its folded name and size. Built
// on a worker; read by any number of searches after that. Holds node
// addresses: its owner keeps the tree alive and builds it again after the
// tree changes.
class NameIndex {
public:
    // Null when `stop` said so; asked every few thousand nodes.
    [[nodiscard]] static std::unique_ptr<NameIndex> build(const FileNode& root,
                                                         const std::function<bool()>& stop = {});

    struct Found {
        std::vector<FileNode*> largest; // at most the limit, largest first, ties in tree order
        qint64 total = 0;               // every match
    };
    // Empty when `stop` said so.
    [[nodiscard]] std::optional<Found> find(const NamePattern& pattern, std::size_t limit,
                                            const std::function<bool()>& stop = {}) const;

    [[nodiscard]] qint64 entryCount() const { return qint64(m_nodes.size()); }
    [[nodiscard]] std::size_t memoryBytes() const;

private:
    std::vector<FileNode*> m_nodes;
    // The sizes as built: ranking reads them here, not from nodes all over memory.
    std::vector<qint64> m_sizes;
    std::vector<std::uint32_t> m_starts; // one past the last entry, too
    std::string m_names;                 // the folded names, each ended by a NUL
};

} // namespace tw
