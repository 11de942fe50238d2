#include "scanfile/ScanDiff.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace tw::scanfile {

namespace {
struct Pair {
    const FileNode* before;
    const FileNode* after;
    QByteArray path;
};

QByteArray join(const QByteArray& folder, std::string_view name)
{
    QByteArray out = folder;
    if (!out.isEmpty())
        out.append('/');
    out.append(name.data(), qsizetype(name.size()));
    return out;
}
} // namespace

Diff diffTrees(const FileNode& before, const FileNode& after)
{
    Diff diff;
    diff.before = before.size();
    diff.after = after.size();
    std::vector<Pair> folders{{&before, &after, {}}};
    std::unordered_map<std::string_view, const FileNode*> earlier;
    while (!folders.empty()) {
        const Pair pair = std::move(folders.back());
        folders.pop_back();
        earlier.clear();
        for (const FileNode& child : pair.before->children())
            earlier.emplace(child.name(), &child);
        for (const FileNode& child : pair.after->children()) {
            const auto found = earlier.find(child.name());
            const QByteArray path = join(pair.path, child.name());
            if (found == earlier.end()) {
                diff.changes.push_back({path, 0, child.size(), Change::Kind::added, child.isDirectory()});
                continue;
            }
            const FileNode& old = *found->second;
            earlier.erase(found);
            if (old.isDirectory() && child.isDirectory()) {
                folders.push_back({&old, &child, path});
            } else if (old.isDirectory() != child.isDirectory()) {
                // A file became a folder or the other way: one went, one came.
                diff.changes.push_back({path, old.size(), 0, Change::Kind::removed, old.isDirectory()});
                diff.changes.push_back({path, 0, child.size(), Change::Kind::added, child.isDirectory()});
            } else if (old.size() != child.size()) {
                diff.changes.push_back({path, old.size(), child.size(),
                                        child.size() > old.size() ? Change::Kind::grown : Change::Kind::shrunk,
                                        false});
            }
        }
        for (const auto& [name, old] : earlier)
            diff.changes.push_back(
                {join(pair.path, name), old->size(), 0, Change::Kind::removed, old->isDirectory()});
    }
    std::sort(diff.changes.begin(), diff.changes.end(), [](const Change& a, const Change& b) {
        const qint64 da = a.delta() < 0 ? -a.delta() : a.delta();
        const qint64 db = b.delta() < 0 ? -b.delta() : b.delta();
        if (da != db)
            return da > db;
        return a.path != b.path ? a.path < b.path : a.kind < b.kind;
    });
    return diff;
}

} // namespace tw::scanfile
