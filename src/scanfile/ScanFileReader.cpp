#include "scanfile/ScanFileReader.h"

#include "scan/TreeBuilder.h"
#include "scanfile/Decompressor.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::scanfile {

namespace {

constexpr std::size_t kChunk = 1 << 20;
// Deeper than any real tree (a path of 4,096 one-letter folders is twice
// what Linux accepts), and shallow enough that the levels stay small.
constexpr int kMaxDepth = 4096;
// A name is at most 255 bytes on the systems we know, a path 4,096 (Linux)
// or 1,024 (macOS); longer strings are refused, not kept.
constexpr std::size_t kMaxString = 32 * 1024;
// No disk holds 2^56 bytes (64 PiB) in one entry or one tree.
constexpr qint64 kMaxBytes = qint64(1) << 56;
constexpr qint64 kReadProgressEvery = 16384;

// Where the bytes come from: a file or memory, before decompression.
class Source {
public:
    virtual ~Source() = default;
    // Bytes read into `into`: 0 at the end, -1 on a failed read.
    virtual qint64 read(char* into, std::size_t size) = 0;
    [[nodiscard]] virtual qint64 size() const = 0;
};

class FileSource final : public Source {
public:
    explicit FileSource(int fd) : m_fd(fd)
    {
        struct stat facts {};
        if (::fstat(fd, &facts) == 0 && S_ISREG(facts.st_mode))
            m_size = facts.st_size;
    }
    ~FileSource() override { ::close(m_fd); }
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    qint64 read(char* into, std::size_t size) override
    {
        while (true) {
            const ssize_t got = ::read(m_fd, into, size);
            if (got >= 0 || errno != EINTR)
                return got;
        }
    }
    [[nodiscard]] qint64 size() const override { return m_size; }

private:
    int m_fd;
    qint64 m_size = 0;
};

class MemorySource final : public Source {
public:
    explicit MemorySource(const QByteArray& bytes) : m_bytes(bytes) {}
    qint64 read(char* into, std::size_t size) override
    {
        const std::size_t left = std::size_t(m_bytes.size()) - m_at;
        const std::size_t n = std::min(left, size);
        if (n)
            std::memcpy(into, m_bytes.constData() + m_at, n);
        m_at += n;
        return qint64(n);
    }
    [[nodiscard]] qint64 size() const override { return m_bytes.size(); }

private:
    const QByteArray& m_bytes;
    std::size_t m_at = 0;
};

struct Info {
    std::string name;
    qint64 asize = 0;
    qint64 dsize = -1;
    std::optional<std::uint64_t> dev;
    std::optional<std::uint64_t> ino;
    qint64 nlink = 0;
    bool hlnkc = false;
    bool readError = false;
    bool notreg = false;
    std::optional<ScanTree::Exclusion> excluded;
};

class Parser {
public:
    Parser(Source& source, const ReadOptions& options) : m_source(source), m_options(options)
    {
        m_raw.resize(kChunk);
    }

    ReadResult run();

private:
    // The text, refilled as it is consumed.
    bool fill();
    int peek()
    {
        if (m_at == m_end && !fill())
            return -1;
        return static_cast<unsigned char>(*m_at);
    }
    int peekSolid()
    {
        while (true) {
            while (m_at != m_end) {
                const char c = *m_at;
                if (c != ' ' && c != '\n' && c != '\r' && c != '\t')
                    return static_cast<unsigned char>(c);
                ++m_at;
            }
            if (!fill())
                return -1;
        }
    }
    // The next byte that is not white space, taken.
    int nextSolid()
    {
        const int c = peekSolid();
        if (c >= 0)
            ++m_at;
        return c;
    }
    bool take(char expected, ReadError error = ReadError::syntax)
    {
        const int c = peekSolid();
        if (c == expected) {
            ++m_at;
            return true;
        }
        return fail(c < 0 ? ReadError::truncated : error, QStringLiteral("expected '%1'").arg(QChar(expected)));
    }
    bool fail(ReadError error, const QString& detail)
    {
        if (m_error == ReadError::none) {
            m_error = error;
            m_detail = detail;
            m_errorOffset = offset();
        }
        return false;
    }
    [[nodiscard]] qint64 offset() const { return m_textBefore + (m_at - m_text); }

    bool readString(std::string& out, std::size_t limit);
    bool skipString();
    bool readInteger(qint64& out, bool allowNegative = false);
    bool readBool(bool& out);
    bool skipValue();
    bool readInfo(Info& info);
    bool readMetadata(ReadResult& result);
    bool addItem(TreeBuilder& builder, const Info& info, bool isFolder);
    bool checkName(const std::string& name, bool isRoot);
    bool note(TreeBuilder::Fault fault);
    bool skipRestOfArray();
    // After an object's member: `more` when a ',' brings another, not when '}' ends it.
    bool moreMembers(bool& more)
    {
        const int c = nextSolid();
        more = c == ',';
        if (c == ',' || c == '}')
            return true;
        return fail(c < 0 ? ReadError::truncated : ReadError::syntax, QStringLiteral("expected ',' or '}'"));
    }
    bool tick();

    Source& m_source;
    const ReadOptions& m_options;
    std::unique_ptr<Decompressor> m_decompressor;
    bool m_started = false;
    bool m_sourceDone = false;
    std::vector<char> m_raw;        // compressed input
    std::size_t m_rawAt = 0, m_rawEnd = 0;
    std::vector<char> m_inflated;   // decompressed text
    const char* m_text = nullptr;   // the current text chunk
    const char* m_at = nullptr;
    const char* m_end = nullptr;
    qint64 m_textBefore = 0;        // text offset of m_text
    qint64 m_rawRead = 0;
    bool m_compressed = false;
    bool m_frameEnded = true;

    ReadError m_error = ReadError::none;
    QString m_detail;
    qint64 m_errorOffset = 0;
    qint64 m_sinceTick = 0;
    qint64 m_folderBytes = 0;
    std::string m_key;
    std::vector<std::uint64_t> m_devices; // the device in force at each depth
    bool m_laterNamesFlagged = false;
    qint64 m_claimedBytes = 0; // every dsize so far, each below kMaxBytes: no overflow
};

bool Parser::fill()
{
    if (m_error != ReadError::none)
        return false;
    m_textBefore += m_end - m_text;
    while (true) {
        if (m_rawAt == m_rawEnd && !m_sourceDone) {
            const qint64 got = m_source.read(m_raw.data(), m_raw.size());
            if (got < 0)
                return fail(ReadError::cannotOpen, QString::fromLocal8Bit(std::strerror(errno)));
            m_rawRead += got;
            m_rawAt = 0;
            m_rawEnd = std::size_t(got);
            m_sourceDone = got == 0;
            if (!m_started && got > 0) {
                m_started = true;
                m_compressed = looksZstd(reinterpret_cast<const unsigned char*>(m_raw.data()), m_rawEnd);
                if (m_compressed) {
                    m_decompressor = makeZstdDecompressor();
                    if (!m_decompressor)
                        return fail(ReadError::compressed, QStringLiteral("this build cannot read zstd"));
                    m_inflated.resize(kChunk);
                }
            }
        }
        if (m_rawAt == m_rawEnd && m_sourceDone) {
            if (m_compressed && !m_frameEnded)
                return fail(ReadError::truncated, QStringLiteral("the compressed data ends early"));
            m_text = m_at = m_end = nullptr;
            return false;
        }
        if (!m_compressed) {
            m_text = m_at = m_raw.data() + m_rawAt;
            m_end = m_raw.data() + m_rawEnd;
            m_rawAt = m_rawEnd;
            return true;
        }
        Decompressor::Step step;
        if (!m_decompressor->step(m_raw.data() + m_rawAt, m_rawEnd - m_rawAt, m_inflated.data(), m_inflated.size(),
                                  step))
            return fail(ReadError::compressed, m_decompressor->error());
        m_rawAt += step.consumed;
        m_frameEnded = step.frameEnded;
        if (step.produced) {
            m_text = m_at = m_inflated.data();
            m_end = m_text + step.produced;
            return true;
        }
    }
}

bool Parser::readString(std::string& out, std::size_t limit)
{
    out.clear();
    if (peekSolid() != '"')
        return fail(peek() < 0 ? ReadError::truncated : ReadError::wrongType, QStringLiteral("expected a string"));
    ++m_at;
    while (true) {
        // Plain bytes go over in runs; bytes that are not UTF-8 are kept as
        // they are, as older writers leave them.
        const char* start = m_at;
        while (m_at != m_end && *m_at != '"' && *m_at != '\\')
            ++m_at;
        out.append(start, std::size_t(m_at - start));
        if (out.size() > limit)
            return fail(ReadError::badName, QStringLiteral("a string longer than %1 bytes").arg(limit));
        const int c = peek();
        if (c < 0)
            return fail(ReadError::truncated, QStringLiteral("the file ends inside a string"));
        if (c != '"' && c != '\\')
            continue; // the run reached the end of a chunk
        ++m_at;
        if (c == '"')
            return true;
        const int e = peek();
        if (e < 0)
            return fail(ReadError::truncated, QStringLiteral("the file ends inside a string"));
        ++m_at;
        switch (e) {
        case '"': out.push_back('"'); break;
        case '\\': out.push_back('\\'); break;
        case '/': out.push_back('/'); break;
        case 'b': out.push_back('\b'); break;
        case 'f': out.push_back('\f'); break;
        case 'n': out.push_back('\n'); break;
        case 'r': out.push_back('\r'); break;
        case 't': out.push_back('\t'); break;
        case 'u': {
            const auto hex4 = [this](std::uint32_t& value) {
                value = 0;
                for (int i = 0; i < 4; ++i) {
                    const int h = peek();
                    if (h < 0)
                        return fail(ReadError::truncated, QStringLiteral("the file ends inside a string"));
                    ++m_at;
                    const int digit = h >= '0' && h <= '9' ? h - '0'
                        : h >= 'a' && h <= 'f'             ? h - 'a' + 10
                        : h >= 'A' && h <= 'F'             ? h - 'A' + 10
                                                           : -1;
                    if (digit < 0)
                        return fail(ReadError::syntax, QStringLiteral("a bad \\u escape"));
                    value = value * 16 + std::uint32_t(digit);
                }
                return true;
            };
            std::uint32_t cp = 0;
            if (!hex4(cp))
                return false;
            if (cp >= 0xDC80 && cp <= 0xDCFF) {
                // A byte that was not UTF-8 in the name, as Tidewick writes it.
                out.push_back(char(cp - 0xDC00));
                break;
            }
            if (cp >= 0xD800 && cp <= 0xDBFF && peek() == '\\') {
                ++m_at;
                std::uint32_t low = 0;
                if (peek() != 'u')
                    return fail(ReadError::syntax, QStringLiteral("a bad surrogate pair"));
                ++m_at;
                if (!hex4(low))
                    return false;
                cp = (low >= 0xDC00 && low <= 0xDFFF) ? 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00) : 0xFFFD;
            } else if (cp >= 0xD800 && cp <= 0xDFFF) {
                cp = 0xFFFD;
            }
            char utf8[4];
            int n = 0;
            if (cp < 0x80) {
                utf8[n++] = char(cp);
            } else if (cp < 0x800) {
                utf8[n++] = char(0xC0 | (cp >> 6));
                utf8[n++] = char(0x80 | (cp & 0x3F));
            } else if (cp < 0x10000) {
                utf8[n++] = char(0xE0 | (cp >> 12));
                utf8[n++] = char(0x80 | ((cp >> 6) & 0x3F));
                utf8[n++] = char(0x80 | (cp & 0x3F));
            } else {
                utf8[n++] = char(0xF0 | (cp >> 18));
                utf8[n++] = char(0x80 | ((cp >> 12) & 0x3F));
                utf8[n++] = char(0x80 | ((cp >> 6) & 0x3F));
                utf8[n++] = char(0x80 | (cp & 0x3F));
            }
            out.append(utf8, std::size_t(n));
            break;
        }
        default:
            return fail(ReadError::syntax, QStringLiteral("a bad escape in a string"));
        }
    }
}

bool Parser::skipString()
{
    ++m_at; // the opening quote
    while (true) {
        while (m_at != m_end && *m_at != '"' && *m_at != '\\')
            ++m_at;
        const int c = peek();
        if (c < 0)
            return fail(ReadError::truncated, QStringLiteral("the file ends inside a string"));
        if (c != '"' && c != '\\')
            continue;
        ++m_at;
        if (c == '"')
            return true;
        if (peek() < 0)
            return fail(ReadError::truncated, QStringLiteral("the file ends inside a string"));
        ++m_at;
    }
}

bool Parser::readInteger(qint64& out, bool allowNegative)
{
    int c = peekSolid();
    bool negative = false;
    if (c == '-') {
        negative = true;
        ++m_at;
        c = peek();
    }
    if (c < '0' || c > '9')
        return fail(c < 0 ? ReadError::truncated : ReadError::wrongType, QStringLiteral("expected a number"));
    quint64 value = 0;
    while ((c = peek()) >= '0' && c <= '9') {
        if (value > (quint64(INT64_MAX) - quint64(c - '0')) / 10)
            return fail(ReadError::badNumber, QStringLiteral("a number too large"));
        value = value * 10 + quint64(c - '0');
        ++m_at;
    }
    if (c == '.' || c == 'e' || c == 'E')
        return fail(ReadError::badNumber, QStringLiteral("a number that is not whole"));
    if (negative && !allowNegative && value != 0)
        return fail(ReadError::badNumber, QStringLiteral("a negative number"));
    out = negative ? -qint64(value) : qint64(value);
    return true;
}

bool Parser::readBool(bool& out)
{
    const int c = peekSolid();
    const char* word = c == 't' ? "true" : c == 'f' ? "false" : nullptr;
    if (!word)
        return skipValue(); // ncdu's own reader takes anything here; so do we
    for (const char* w = word; *w; ++w) {
        if (peek() != *w)
            return fail(peek() < 0 ? ReadError::truncated : ReadError::syntax, QStringLiteral("a bad literal"));
        ++m_at;
    }
    out = c == 't';
    return true;
}

bool Parser::skipValue()
{
    // Iterative, so that nesting costs no stack: only the count of open
    // brackets is kept, and each must close with its own kind.
    std::vector<char> open;
    bool expectValue = true;
    while (true) {
        int c = peekSolid();
        if (c < 0)
            return fail(ReadError::truncated, QStringLiteral("the file ends inside a value"));
        if (expectValue) {
            if (c == '{' || c == '[') {
                if (open.size() >= std::size_t(kMaxDepth))
                    return fail(ReadError::tooDeep, QStringLiteral("values nested too deep"));
                open.push_back(char(c));
                ++m_at;
                if (peekSolid() == (c == '{' ? '}' : ']')) {
                    ++m_at;
                    open.pop_back();
                    expectValue = false;
                } else if (c == '{') {
                    if (peekSolid() != '"')
                        return fail(ReadError::syntax, QStringLiteral("expected a key"));
                    if (!skipString() || !take(':'))
                        return false;
                }
                if (expectValue)
                    continue;
            } else if (c == '"') {
                if (!skipString())
                    return false;
                expectValue = false;
            } else if (c == '-' || (c >= '0' && c <= '9')) {
                while ((c = peek()) == '-' || c == '+' || c == '.' || c == 'e' || c == 'E' || (c >= '0' && c <= '9'))
                    ++m_at;
                expectValue = false;
            } else if (c == 't' || c == 'f' || c == 'n') {
                const char* word = c == 't' ? "true" : c == 'f' ? "false" : "null";
                for (const char* w = word; *w; ++w) {
                    if (peek() != *w)
                        return fail(peek() < 0 ? ReadError::truncated : ReadError::syntax,
                                    QStringLiteral("a bad literal"));
                    ++m_at;
                }
                expectValue = false;
            } else {
                return fail(ReadError::syntax, QStringLiteral("expected a value"));
            }
        }
        if (open.empty())
            return true;
        c = peekSolid();
        if (c == ',') {
            ++m_at;
            if (open.back() == '{') {
                if (peekSolid() != '"')
                    return fail(ReadError::syntax, QStringLiteral("expected a key"));
                if (!skipString() || !take(':'))
                    return false;
            }
            expectValue = true;
        } else if (c == (open.back() == '{' ? '}' : ']')) {
            ++m_at;
            open.pop_back();
        } else {
            return fail(c < 0 ? ReadError::truncated : ReadError::syntax, QStringLiteral("expected ',' or a close"));
        }
    }
}

bool Parser::skipRestOfArray()
{
    while (true) {
        const int c = nextSolid();
        if (c == ']')
            return true;
        if (c != ',')
            return fail(c < 0 ? ReadError::truncated : ReadError::syntax, QStringLiteral("expected ',' or ']'"));
        if (!skipValue())
            return false;
    }
}

bool Parser::readInfo(Info& info)
{
    info = Info{};
    if (!take('{', ReadError::wrongType))
        return false;
    if (peekSolid() == '}') {
        ++m_at;
        return true;
    }
    bool more = true;
    while (true) {
        if (!readString(m_key, kMaxString) || !take(':'))
            return false;
        const std::string& k = m_key;
        bool ok = true;
        if (k == "name") {
            ok = readString(info.name, kMaxString);
        } else if (k == "asize" || k == "dsize") {
            qint64 value = 0;
            ok = readInteger(value);
            if (ok && value > kMaxBytes)
                return fail(ReadError::beyondDisk, QStringLiteral("a size larger than any disk"));
            if (ok && k == "dsize" && (m_claimedBytes += value) > kMaxBytes)
                return fail(ReadError::beyondDisk, QStringLiteral("sizes that add up beyond any disk"));
            (k == "asize" ? info.asize : info.dsize) = value;
        } else if (k == "dev" || k == "ino") {
            qint64 value = 0;
            ok = readInteger(value);
            (k == "dev" ? info.dev : info.ino) = std::uint64_t(value);
        } else if (k == "nlink") {
            ok = readInteger(info.nlink);
        } else if (k == "hlnkc") {
            ok = readBool(info.hlnkc);
        } else if (k == "read_error") {
            ok = readBool(info.readError);
        } else if (k == "notreg") {
            ok = readBool(info.notreg);
        } else if (k == "excluded") {
            std::string why;
            if (peekSolid() == '"') {
                ok = readString(why, 64);
                info.excluded = why == "otherfs" ? ScanTree::Exclusion::otherVolume
                    : why == "kernfs"            ? ScanTree::Exclusion::systemVirtual
                    : why == "frmlnk"            ? ScanTree::Exclusion::firmlink
                                                 : ScanTree::Exclusion::pattern;
            } else {
                bool flag = false;
                ok = readBool(flag);
                if (flag)
                    info.excluded = ScanTree::Exclusion::pattern;
            }
        } else {
            ok = skipValue();
        }
        if (!ok || !moreMembers(more))
            return false;
        if (!more)
            return true;
    }
}

bool Parser::readMetadata(ReadResult& result)
{
    if (peekSolid() != '{')
        return fail(ReadError::notScanFile, QStringLiteral("no metadata object"));
    ++m_at;
    if (peekSolid() == '}') {
        ++m_at;
        return true;
    }
    std::string text;
    bool more = true;
    while (true) {
        if (!readString(m_key, kMaxString) || !take(':'))
            return false;
        if ((m_key == "progname" || m_key == "progver") && peekSolid() == '"') {
            if (!readString(text, 256))
                return false;
            (m_key == "progname" ? result.progname : result.progver) = QString::fromUtf8(text.data(), qsizetype(text.size()));
        } else if (m_key == "timestamp" && peekSolid() != '"') {
            qint64 seconds = 0;
            if (!readInteger(seconds, true))
                return false;
            // Beyond the year 9999 or before 1970 means the writer's clock was wrong.
            if (seconds > 0 && seconds < 253402300800)
                result.madeAt = QDateTime::fromSecsSinceEpoch(seconds);
        } else if (!skipValue()) {
            return false;
        }
        if (!moreMembers(more))
            return false;
        if (!more)
            return true;
    }
}

bool Parser::checkName(const std::string& name, bool isRoot)
{
    // A name is one path component: anything else could point an action
    // somewhere the scan never looked.
    if (name.empty())
        return fail(ReadError::badName, QStringLiteral("an entry without a name"));
    if (isRoot)
        return name.find('\0') == std::string::npos
            || fail(ReadError::badName, QStringLiteral("a root path with a NUL byte"));
    if (name.size() > 1024 || name == "." || name == ".." || name.find('/') != std::string::npos
        || name.find('\0') != std::string::npos)
        return fail(ReadError::badName, QStringLiteral("a name that is not one path component"));
    return true;
}

bool Parser::note(TreeBuilder::Fault fault)
{
    switch (fault) {
    case TreeBuilder::Fault::none:
        return true;
    case TreeBuilder::Fault::sizeOverflow:
        return fail(ReadError::beyondDisk, QStringLiteral("sizes that add up beyond any disk"));
    case TreeBuilder::Fault::tooManyChildren:
        return fail(ReadError::tooMany, QStringLiteral("a folder with more entries than a tree holds"));
    case TreeBuilder::Fault::duplicateName:
        return fail(ReadError::duplicateName, QStringLiteral("two entries of one name in one folder"));
    }
    return false;
}

bool Parser::tick()
{
    if (++m_sinceTick < kReadProgressEvery)
        return true;
    m_sinceTick = 0;
    if (m_options.cancel && m_options.cancel->load(std::memory_order_relaxed))
        return fail(ReadError::cancelled, QStringLiteral("cancelled"));
    if (m_options.progress)
        m_options.progress(m_rawRead, m_source.size());
    return true;
}

bool Parser::addItem(TreeBuilder& builder, const Info& info, bool isFolder)
{
    const std::uint64_t device = info.dev ? *info.dev : m_devices.back();
    if (isFolder) {
        if (info.dsize > 0 && qAddOverflow(m_folderBytes, info.dsize, &m_folderBytes))
            return fail(ReadError::beyondDisk, QStringLiteral("sizes that add up beyond any disk"));
        builder.openFolder(info.name, info.readError);
        m_devices.push_back(device);
        return true;
    }
    TreeBuilder::Entry entry;
    entry.name = info.name;
    // Writers that give only the length (gdu for some entries) are taken at it.
    entry.size = info.dsize >= 0 ? info.dsize : 0;
    entry.apparentSize = info.asize;
    entry.inaccessible = info.readError;
    // gdu flags only the names after the first it met, and its totals count
    // that first one: a name it flags carries no blocks of its own.
    if (m_laterNamesFlagged && info.hlnkc)
        entry.size = 0;
    if (info.ino && (info.hlnkc || info.nlink > 1))
        entry.link = FileNode::LinkFacts{*info.ino, info.asize, std::uint32_t(device),
                                         std::uint32_t(std::clamp<qint64>(info.nlink, 2, UINT32_MAX))};
    return note(builder.addFile(entry));
}

ReadResult Parser::run()
{
    ReadResult result;
    const auto finish = [&]() {
        result.error = m_error;
        result.detail = m_detail;
        result.offset = m_errorOffset;
        result.compressed = m_compressed;
        if (m_error != ReadError::none)
            result.tree.reset();
        return result;
    };
    qint64 major = 0;
    qint64 minor = 0;
    if (peekSolid() != '[') {
        fail(ReadError::notScanFile, QStringLiteral("not a saved scan"));
        return finish();
    }
    ++m_at;
    if (peekSolid() < '0' || peekSolid() > '9') {
        fail(ReadError::notScanFile, QStringLiteral("not a saved scan"));
        return finish();
    }
    if (!readInteger(major) || !take(','))
        return finish();
    if (major != 1) {
        fail(ReadError::version, QStringLiteral("major version %1").arg(major));
        return finish();
    }
    if (!readInteger(minor) || !take(',') || !readMetadata(result) || !take(','))
        return finish();
    m_laterNamesFlagged = result.progname == QLatin1String("gdu");

    // The root: a folder as an array, or a lone file as an object.
    int c = peekSolid();
    const bool rootIsFolder = c == '[';
    if (c != '[' && c != '{') {
        fail(c < 0 ? ReadError::truncated : ReadError::wrongType, QStringLiteral("no root entry"));
        return finish();
    }
    if (rootIsFolder)
        ++m_at;
    Info info;
    if (!readInfo(info) || !checkName(info.name, true))
        return finish();
    TreeBuilder builder(QByteArray(info.name.data(), qsizetype(info.name.size())), rootIsFolder);
    m_devices.push_back(info.dev.value_or(0));
    if (!rootIsFolder) {
        if (!addItem(builder, info, false))
            return finish();
    } else {
        if (info.readError)
            builder.setRootInaccessible();
        if (info.dsize > 0)
            m_folderBytes = info.dsize;
    }
    // Depth-first through the children: after each entry, a ',' brings the
    // next sibling and a ']' closes the folder.
    int depth = rootIsFolder ? 1 : 0;
    while (depth > 0) {
        c = nextSolid();
        if (c == ']') {
            if (--depth > 0) {
                if (!note(builder.closeFolder()))
                    return finish();
                m_devices.pop_back();
            }
            continue;
        }
        if (c != ',') {
            fail(c < 0 ? ReadError::truncated : ReadError::syntax, QStringLiteral("expected ',' or ']'"));
            return finish();
        }
        c = peekSolid();
        const bool isFolder = c == '[';
        if (isFolder) {
            if (depth >= kMaxDepth) {
                fail(ReadError::tooDeep, QStringLiteral("folders nested deeper than %1").arg(kMaxDepth));
                return finish();
            }
            ++m_at;
        }
        if (!readInfo(info) || !checkName(info.name, false) || !tick())
            return finish();
        if (info.excluded) {
            // Seen and not entered: no entry of the tree, a note beside it.
            builder.exclude(info.name, *info.excluded);
            if (isFolder && !skipRestOfArray())
                return finish();
            continue;
        }
        if (!addItem(builder, info, isFolder))
            return finish();
        if (isFolder)
            ++depth;
    }
    // What follows the root, up to the closing bracket, is ignored.
    while ((c = peekSolid()) == ',') {
        ++m_at;
        if (!skipValue())
            return finish();
    }
    if (!take(']'))
        return finish();
    if (peekSolid() >= 0) {
        fail(ReadError::syntax, QStringLiteral("more after the end"));
        return finish();
    }
    if (m_error != ReadError::none)
        return finish();
    TreeBuilder::Fault fault = TreeBuilder::Fault::none;
    result.tree = builder.finish(&fault);
    note(fault);
    result.folderBytes = m_folderBytes;
    if (m_options.progress)
        m_options.progress(m_rawRead, m_source.size());
    return finish();
}

} // namespace

ReadResult readScanFile(const QByteArray& path, const ReadOptions& options)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        ReadResult result;
        result.error = ReadError::cannotOpen;
        result.detail = QString::fromLocal8Bit(std::strerror(errno));
        return result;
    }
    FileSource source(fd);
    return Parser(source, options).run();
}

ReadResult readScanBytes(const QByteArray& bytes, const ReadOptions& options)
{
    MemorySource source(bytes);
    return Parser(source, options).run();
}

QString describe(const ReadResult& result)
{
    if (result.error == ReadError::none)
        return {};
    if (result.error == ReadError::cannotOpen || result.error == ReadError::cancelled)
        return result.detail;
    return QStringLiteral("%1 (at byte %2%3)")
        .arg(result.detail)
        .arg(result.offset)
        .arg(result.compressed ? QStringLiteral(" of the decompressed text") : QString());
}

} // namespace tw::scanfile
