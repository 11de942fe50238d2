#pragma once

#include "scan/FileNode.h"

#include <QByteArray>

#include <memory>
#include <optional>
#include <string_view>

namespace tw {

// Builds a tree like a walk's from entries given in listing order: the
// children of a folder come between its openFolder() and closeFolder().
// Sizes roll up on closing, hard-linked files are charged once (the first
// name met carries the blocks), children are sorted as a scan sorts them.
// One builder makes one tree, on one thread.
class TreeBuilder {
public:
    // `rootPath` is the root's whole path, as a scan's root keeps it.
    TreeBuilder(const QByteArray& rootPath, bool rootIsDirectory);
    ~TreeBuilder();
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;

    enum class Fault { none, sizeOverflow, tooManyChildren, duplicateName };

    struct Entry {
        std::string_view name;
        qint64 size = 0;         // allocated bytes
        qint64 apparentSize = 0; // logical length
        bool inaccessible = false;
        // For a file with several names: charged only the first time its
        // identity is met.
        std::optional<FileNode::LinkFacts> link;
    };
    // A file in the open folder (or, for a root that is no folder, the root itself).
    [[nodiscard]] Fault addFile(const Entry& entry);
    void openFolder(std::string_view name, bool inaccessible);
    // Closes the innermost open folder; at the root, closes nothing.
    [[nodiscard]] Fault closeFolder();
    // An entry of the open folder that was seen and not entered.
    void exclude(std::string_view name, ScanTree::Exclusion why);
    // The root's own flag.
    void setRootInaccessible();

    // Folders open below the root.
    [[nodiscard]] int depth() const { return m_depth; }
    [[nodiscard]] qint64 entries() const { return m_entries; }

    // The finished tree; closes the root's level. Null with `fault` set when
    // it could not be closed; the builder is spent either way.
    [[nodiscard]] std::shared_ptr<ScanTree> finish(Fault* fault);

private:
    struct State;
    FileNode& push(std::string_view name, bool isDirectory);
    Fault close(FileNode& folder);

    std::shared_ptr<ScanTree> m_tree;
    std::unique_ptr<State> m_state;
    int m_depth = 0;
    qint64 m_entries = 0;
};

} // namespace tw
