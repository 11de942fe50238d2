#include "scan/NameSearch.h"

#include "scan/FileNode.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string.h>

namespace tw {

namespace {

std::size_t nextCodePoint(std::string_view text, std::size_t at)
{
    ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0) == 0x80)
        ++at;
    return at;
}

// `pattern` against the whole of `name`, both folded.
bool wildcardMatch(std::string_view pattern, std::string_view name)
{
    std::size_t p = 0, n = 0;
    std::size_t starP = std::string_view::npos, starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = ++p;
            starN = n;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            n = nextCodePoint(name, n);
        } else if (p < pattern.size() && pattern[p] == name[n]) {
            ++p;
            ++n;
        } else if (starP != std::string_view::npos) {
            // The last star takes one more character and the rest is tried again.
            p = starP;
            starN = nextCodePoint(name, starN);
            n = starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

} // namespace

std::string foldText(const QString& text)
{
    QString folded = text.normalized(QString::NormalizationForm_C).toCaseFolded();
    folded.replace(QChar(0x00df), QStringLiteral("ss"));
    folded.replace(QChar(0x0451), QChar(0x0435));
    return folded.toStdString();
}

std::string foldName(std::string_view bytes)
{
    std::string out(bytes);
    for (char& c : out) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return foldText(QString::fromUtf8(bytes.data(), qsizetype(bytes.size())));
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    }
    return out;
}

NamePattern::NamePattern(const QString& typed) : m_folded(foldText(typed))
{
    m_wild = m_folded.find_first_of("*?") != std::string::npos;
    if (!m_wild) {
        m_anchor = m_folded;
        return;
    }
    const auto firstWild = m_folded.find_first_of("*?");
    const auto lastWild = m_folded.find_last_of("*?");
    if (m_folded.find_first_not_of('*') == std::string::npos)
        m_shape = Shape::everything;
    else if (firstWild == 0 && lastWild == 0 && m_folded[0] == '*')
        m_shape = Shape::endsWith;
    else if (firstWild == m_folded.size() - 1 && m_folded.back() == '*')
        m_shape = Shape::startsWith;
    else
        m_shape = Shape::general;
    std::size_t at = 0;
    while (at < m_folded.size()) {
        const std::size_t end = std::min(m_folded.find_first_of("*?", at), m_folded.size());
        if (end - at > m_anchor.size())
            m_anchor = m_folded.substr(at, end - at);
        at = end + 1;
    }
}

bool NamePattern::matches(std::string_view folded) const
{
    switch (m_shape) {
    case Shape::anywhere:
        return folded.find(m_folded) != std::string_view::npos;
    case Shape::everything:
        return true;
    case Shape::endsWith: // "*.iso": the commonest pattern, without the general matcher
        return folded.size() >= m_anchor.size() &&
               folded.compare(folded.size() - m_anchor.size(), m_anchor.size(), m_anchor) == 0;
    case Shape::startsWith:
        return folded.substr(0, m_anchor.size()) == m_anchor;
    case Shape::general:
        break;
    }
    return wildcardMatch(m_folded, folded);
}

std::unique_ptr<NameIndex> NameIndex::build(const FileNode& root, const std::function<bool()>& stop)
{
    auto index = std::make_unique<NameIndex>();
    const auto expected = std::size_t(std::max<qint64>(root.fileCount(), 0));
    index->m_nodes.reserve(expected);
    index->m_sizes.reserve(expected);
    index->m_starts.reserve(expected + 1);
    std::vector<const FileNode*> pending{&root};
    std::size_t visited = 0;
    while (!pending.empty()) {
        const FileNode* folder = pending.back();
        pending.pop_back();
        for (FileNode& child : folder->children()) {
            if (stop && (++visited & 0xfff) == 0 && stop())
                return nullptr;
            // Offsets are 32 bits: past 4 GiB of names (hundreds of millions
            // of entries) the rest of the tree is not searched.
            if (index->m_names.size() > std::numeric_limits<std::uint32_t>::max() - 4096)
                break;
            index->m_nodes.push_back(&child);
            index->m_sizes.push_back(child.size());
            index->m_starts.push_back(std::uint32_t(index->m_names.size()));
            index->m_names += foldName(child.name());
            index->m_names += '\0';
            if (child.isDirectory())
                pending.push_back(&child);
        }
    }
    index->m_starts.push_back(std::uint32_t(index->m_names.size()));
    index->m_nodes.shrink_to_fit();
    index->m_sizes.shrink_to_fit();
    index->m_starts.shrink_to_fit();
    index->m_names.shrink_to_fit();
    return index;
}

std::optional<NameIndex::Found> NameIndex::find(const NamePattern& pattern, std::size_t limit,
                                                const std::function<bool()>& stop) const
{
    Found found;
    if (pattern.isEmpty() || limit == 0)
        return found;
    // A min-heap of (size, entry) by "larger, or equal and earlier".
    using Candidate = std::pair<qint64, std::size_t>;
    const auto before = [](const Candidate& a, const Candidate& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    };
    std::vector<Candidate> heap;
    const auto take = [&](std::size_t entry) {
        ++found.total;
        const Candidate candidate{m_sizes[entry], entry};
        // Most matches of a short query are small: one comparison turns them away.
        if (heap.size() == limit && candidate.first < heap.front().first)
            return;
        if (heap.size() < limit) {
            heap.push_back(candidate);
            std::push_heap(heap.begin(), heap.end(), before);
        } else if (before(candidate, heap.front())) {
            std::pop_heap(heap.begin(), heap.end(), before);
            heap.back() = candidate;
            std::push_heap(heap.begin(), heap.end(), before);
        }
    };
    const std::string_view names(m_names);
    const auto nameOf = [&](std::size_t entry) {
        return names.substr(m_starts[entry], m_starts[entry + 1] - m_starts[entry] - 1);
    };
    std::size_t checks = 0;
    // A literal part of two bytes or more is found by one pass of memmem
    // over all the names; a shorter one would stop at nearly every name.
    if ((pattern.m_anchor.size() < 2 || pattern.m_shape != NamePattern::Shape::general) && pattern.m_wild) {
        for (std::size_t entry = 0; entry < m_nodes.size(); ++entry) {
            if (stop && (++checks & 0xfff) == 0 && stop())
                return std::nullopt;
            if (pattern.matches(nameOf(entry)))
                take(entry);
        }
    } else {
        // Names end in a NUL, which nothing typed holds, so a hit never spans two.
        const std::string& needle = pattern.m_anchor;
        const char* const base = m_names.data();
        std::size_t entry = 0;
        std::size_t from = 0;
        while (from < m_names.size()) {
            const void* at = ::memmem(base + from, m_names.size() - from, needle.data(), needle.size());
            if (!at)
                break;
            const auto hit = std::size_t(static_cast<const char*>(at) - base);
            while (m_starts[entry + 1] <= hit)
                ++entry;
            if (stop && (++checks & 0x3ff) == 0 && stop())
                return std::nullopt;
            if (!pattern.m_wild || pattern.matches(nameOf(entry)))
                take(entry);
            from = m_starts[entry + 1];
        }
    }
    std::sort(heap.begin(), heap.end(), before);
    found.largest.reserve(heap.size());
    for (const Candidate& candidate : heap)
        found.largest.push_back(m_nodes[candidate.second]);
    return found;
}

std::size_t NameIndex::memoryBytes() const
{
    return sizeof(*this) + m_nodes.capacity() * sizeof(FileNode*) + m_sizes.capacity() * sizeof(qint64) +
           m_starts.capacity() * sizeof(std::uint32_t) + m_names.capacity();
}

} // namespace tw
