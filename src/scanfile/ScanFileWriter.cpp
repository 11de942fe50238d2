#include "scanfile/ScanFileWriter.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

namespace tw::scanfile {

namespace {

constexpr std::size_t kFlushAt = 1 << 20;
constexpr qint64 kWriteProgressEvery = 16384;

// The length of the valid UTF-8 sequence at `at`, or 0.
std::size_t utf8Length(const unsigned char* at, const unsigned char* end)
{
    const unsigned char c = at[0];
    std::size_t n = 0;
    std::uint32_t min = 0;
    if (c >= 0xC2 && c <= 0xDF) {
        n = 2;
        min = 0x80;
    } else if (c >= 0xE0 && c <= 0xEF) {
        n = 3;
        min = 0x800;
    } else if (c >= 0xF0 && c <= 0xF4) {
        n = 4;
        min = 0x10000;
    } else {
        return 0;
    }
    if (std::size_t(end - at) < n)
        return 0;
    std::uint32_t cp = c & (0xFF >> (n + 1));
    for (std::size_t i = 1; i < n; ++i) {
        if ((at[i] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (at[i] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0;
    return n;
}

const char* exclusionWord(ScanTree::Exclusion why)
{
    switch (why) {
    case ScanTree::Exclusion::otherVolume: return "otherfs";
    case ScanTree::Exclusion::systemVirtual: return "kernfs";
    case ScanTree::Exclusion::firmlink: return "frmlnk";
    case ScanTree::Exclusion::pattern: break;
    }
    return "pattern";
}

class Writer {
public:
    Writer(const ScanTree& tree, QIODevice& out, const WriteOptions& options)
        : m_tree(tree), m_out(out), m_options(options)
    {
        m_buffer.reserve(kFlushAt + 4096);
        for (const ScanTree::Excluded& entry : tree.excluded())
            m_excluded[std::string(entry.folder.constData(), std::size_t(entry.folder.size()))].push_back(&entry);
    }

    WriteOutcome run(QString* error)
    {
        m_buffer += "[1,2,{\"progname\":\"tidewick\",\"progver\":\"";
        appendJsonName(m_buffer, m_options.progver.toStdString());
        m_buffer += "\",\"timestamp\":";
        m_buffer += std::to_string(m_options.timestamp);
        m_buffer += "},\n";
        const FileNode& root = *m_tree.root();
        const QByteArray rootPath = root.path();
        m_path.assign(rootPath.constData(), std::size_t(rootPath.size()));
        const WriteOutcome outcome = writeTree(root);
        if (outcome != WriteOutcome::written)
            return finishWith(outcome, error);
        m_buffer += "]\n";
        return finishWith(flush() ? WriteOutcome::written : WriteOutcome::failed, error);
    }

private:
    WriteOutcome finishWith(WriteOutcome outcome, QString* error)
    {
        if (outcome == WriteOutcome::failed && error)
            *error = m_out.errorString();
        return outcome;
    }

    bool flush()
    {
        qint64 at = 0;
        while (at < qint64(m_buffer.size())) {
            const qint64 wrote = m_out.write(m_buffer.data() + at, qint64(m_buffer.size()) - at);
            if (wrote <= 0)
                return false;
            at += wrote;
        }
        m_buffer.clear();
        return true;
    }

    void entry(const FileNode& node, bool isRoot)
    {
        m_buffer += "{\"name\":\"";
        if (isRoot) {
            const QByteArray path = node.path();
            appendJsonName(m_buffer, std::string_view(path.constData(), std::size_t(path.size())));
        } else {
            appendJsonName(m_buffer, node.name());
        }
        m_buffer += '"';
        if (!node.isDirectory()) {
            m_buffer += ",\"asize\":";
            m_buffer += std::to_string(node.apparentSize());
            m_buffer += ",\"dsize\":";
            if (const FileNode::LinkFacts* link = node.linkFacts()) {
                // Every name of a linked file carries its blocks: readers
                // count them once by device and inode, as the scan did.
                m_buffer += std::to_string(node.size() > 0 ? node.size() : linkedSize(*link));
                m_buffer += ",\"dev\":";
                m_buffer += std::to_string(link->device);
                m_buffer += ",\"ino\":";
                m_buffer += std::to_string(link->inode);
                m_buffer += ",\"hlnkc\":true,\"nlink\":";
                m_buffer += std::to_string(link->linkCount);
            } else {
                m_buffer += std::to_string(node.size());
            }
        }
        if (node.isInaccessible())
            m_buffer += ",\"read_error\":true";
        m_buffer += '}';
    }

    // The blocks of a linked file whose charge went to another of its names.
    qint64 linkedSize(const FileNode::LinkFacts& link)
    {
        const auto found = m_linkSizes.find({link.device, link.inode});
        return found == m_linkSizes.end() ? 0 : found->second;
    }

    void collectLinkSizes(const FileNode& node)
    {
        // Only where a scan met linked files: a folder walk of the tree,
        // cheap beside writing it.
        std::vector<const FileNode*> stack{&node};
        while (!stack.empty()) {
            const FileNode* at = stack.back();
            stack.pop_back();
            for (const FileNode& child : at->children()) {
                if (child.isDirectory())
                    stack.push_back(&child);
                else if (const FileNode::LinkFacts* link = child.linkFacts(); link && child.size() > 0)
                    m_linkSizes[{link->device, link->inode}] = child.size();
            }
        }
    }

    void writeExcluded()
    {
        const auto found = m_excluded.find(m_path);
        if (found == m_excluded.end())
            return;
        for (const ScanTree::Excluded* entry : found->second) {
            m_buffer += ",\n{\"name\":\"";
            appendJsonName(m_buffer, std::string_view(entry->name.constData(), std::size_t(entry->name.size())));
            m_buffer += "\",\"excluded\":\"";
            m_buffer += exclusionWord(entry->why);
            m_buffer += "\"}";
        }
    }

    WriteOutcome writeTree(const FileNode& root)
    {
        collectLinkSizes(root);
        const qint64 total = m_tree.nodeCount();
        qint64 done = 0;
        if (!root.isDirectory()) {
            entry(root, true);
            return WriteOutcome::written;
        }
        struct Open {
            FileNode::ChildRange::iterator next, end;
            std::size_t pathLength;
        };
        std::vector<Open> stack;
        m_buffer += '[';
        entry(root, true);
        writeExcluded();
        const FileNode::ChildRange top = root.children();
        stack.push_back({top.begin(), top.end(), m_path.size()});
        while (!stack.empty()) {
            Open& open = stack.back();
            if (open.next == open.end) {
                m_buffer += ']';
                m_path.resize(open.pathLength);
                stack.pop_back();
                continue;
            }
            const FileNode& node = *open.next;
            ++open.next;
            m_buffer += ",\n";
            if (++done % kWriteProgressEvery == 0) {
                if (m_options.cancel && m_options.cancel->load(std::memory_order_relaxed))
                    return WriteOutcome::cancelled;
                if (m_options.progress)
                    m_options.progress(done, total);
            }
            if (m_buffer.size() >= kFlushAt && !flush())
                return WriteOutcome::failed;
            if (!node.isDirectory()) {
                entry(node, false);
                continue;
            }
            m_buffer += '[';
            entry(node, false);
            const std::size_t length = m_path.size();
            if (m_path.empty() || m_path.back() != '/')
                m_path.push_back('/');
            m_path.append(node.name());
            if (!m_excluded.empty())
                writeExcluded();
            const FileNode::ChildRange children = node.children();
            stack.push_back({children.begin(), children.end(), length});
        }
        if (m_options.progress)
            m_options.progress(total, total);
        return WriteOutcome::written;
    }

    struct IdentityHash {
        std::size_t operator()(const std::pair<std::uint32_t, std::uint64_t>& id) const
        {
            return std::hash<std::uint64_t>()(id.second * 31 + id.first);
        }
    };

    const ScanTree& m_tree;
    QIODevice& m_out;
    const WriteOptions& m_options;
    std::string m_buffer;
    std::string m_path;
    std::unordered_map<std::string, std::vector<const ScanTree::Excluded*>> m_excluded;
    std::unordered_map<std::pair<std::uint32_t, std::uint64_t>, qint64, IdentityHash> m_linkSizes;
};

} // namespace

void appendJsonName(std::string& out, std::string_view name)
{
    static constexpr char kHex[] = "0123456789abcdef";
    const auto* at = reinterpret_cast<const unsigned char*>(name.data());
    const auto* end = at + name.size();
    while (at < end) {
        const unsigned char c = *at;
        if (c >= 0x20 && c < 0x80 && c != '"' && c != '\\') {
            out.push_back(char(c));
            ++at;
        } else if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(char(c));
            ++at;
        } else if (c < 0x20) {
            out += "\\u00";
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 15]);
            ++at;
        } else if (const std::size_t n = utf8Length(at, end)) {
            out.append(reinterpret_cast<const char*>(at), n);
            at += n;
        } else {
            out += "\\udc";
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 15]);
            ++at;
        }
    }
}

WriteOutcome writeScan(const ScanTree& tree, QIODevice& out, const WriteOptions& options, QString* error)
{
    return Writer(tree, out, options).run(error);
}

WriteOutcome writeScanFile(const ScanTree& tree, const QString& path, const WriteOptions& options, QString* error)
{
    if (path == QLatin1String("-")) {
        QFile out;
        if (!out.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            if (error)
                *error = out.errorString();
            return WriteOutcome::failed;
        }
        WriteOutcome outcome = writeScan(tree, out, options, error);
        // A closed pipe or a full disk shows only when the bytes leave.
        if (outcome == WriteOutcome::written && !out.flush()) {
            if (error)
                *error = out.errorString();
            outcome = WriteOutcome::failed;
        }
        return outcome;
    }
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly)) {
        if (error)
            *error = out.errorString();
        return WriteOutcome::failed;
    }
    const WriteOutcome outcome = writeScan(tree, out, options, error);
    if (outcome != WriteOutcome::written) {
        out.cancelWriting();
        return outcome;
    }
    if (!out.commit()) {
        if (error)
            *error = out.errorString();
        return WriteOutcome::failed;
    }
    return WriteOutcome::written;
}

} // namespace tw::scanfile
