#pragma once

#include <QByteArray>

#include <utility>

namespace tw {

// Owns one descriptor.
class Fd {
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    Fd(Fd&& other) noexcept : m_fd(other.m_fd) { other.m_fd = -1; }
    Fd& operator=(Fd&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd();
    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool valid() const { return m_fd >= 0; }

private:
    int m_fd;
};

// Writes all of `data`, going on after short writes and interruptions.
// False on any failure, with errno set.
[[nodiscard]] bool writeAll(int fd, const QByteArray& data);

// A file of Tidewick's own that sits in a folder others may write to or
// that may have been tampered with: it is opened relative to its folder and
// never through a link, so a link planted in its place is neither read nor
// written through nor replaced. Any thread; no state.
namespace OwnFile {

struct Contents {
    // 0, or why nothing was read: ENOENT for no file, ELOOP for a link in
    // its place, EFBIG for a file over the limit, EINVAL for anything that
    // is not a plain file, else the call's errno.
    int error = 0;
    QByteArray bytes;
};
// The file `name` in `folder`, if it is a plain file of at most `maxBytes`.
[[nodiscard]] Contents read(const QByteArray& folder, const QByteArray& name, qint64 maxBytes);

// Puts `bytes` in `folder`/`name` whole or not at all: written to a new file
// beside it, flushed to disk, and renamed over it. Returns 0 or an errno;
// ELOOP when a link stands there, which is left as it was.
[[nodiscard]] int replace(const QByteArray& folder, const QByteArray& name, const QByteArray& bytes);

} // namespace OwnFile
} // namespace tw
