#include "platform/linux/FreedesktopTrash.h"

#include "platform/OwnFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

// What a trash folder must be to be ours.
enum class Strictness {
    ownFolder, // a real folder owned by us
    private0700 // the same, and mode exactly 0700 (a mount's .Trash-$uid)
};

// Why a folder was refused: an errno, or kUnsafe for one that exists but
// is not ours to use.
constexpr int kUnsafe = -1;

// Makes `name` under `parent` where missing and opens it without following
// a link, then checks what was opened. Returns the descriptor and 0, or an
// invalid one and the reason.
std::pair<Fd, int> openOwnFolder(int parent, const char* name, Strictness strictness)
{
    if (::mkdirat(parent, name, 0700) != 0 && errno != EEXIST)
        return {Fd(), errno};
    Fd fd(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.valid())
        return {Fd(), errno == ELOOP || errno == ENOTDIR ? kUnsafe : errno};
    struct stat facts {};
    if (::fstat(fd.get(), &facts) != 0)
        return {Fd(), errno};
    const bool ours = S_ISDIR(facts.st_mode) && facts.st_uid == ::geteuid();
    if (!ours || (strictness == Strictness::private0700 && (facts.st_mode & 07777) != 0700))
        return {Fd(), kUnsafe};
    return {std::move(fd), 0};
}

// An opened trash: the folder, its files/ and info/.
struct TrashFolder {
    QByteArray path;
    Fd files;
    Fd info;
};

// Opens files/ and info/ inside an opened trash folder.
int openParts(const Fd& trash, TrashFolder& into)
{
    auto [files, filesError] = openOwnFolder(trash.get(), "files", Strictness::ownFolder);
    if (filesError)
        return filesError;
    auto [info, infoError] = openOwnFolder(trash.get(), "info", Strictness::ownFolder);
    if (infoError)
        return infoError;
    into.files = std::move(files);
    into.info = std::move(info);
    return 0;
}

bool makeDirectory(const QByteArray& path, mode_t mode)
{
    return ::mkdir(path.constData(), mode) == 0 || errno == EEXIST;
}

// The home trash, its parents made where missing. The parents are the
// user's own (a linked ~/.local is the user's choice); the trash itself and
// its two folders must be real folders of ours.
std::pair<TrashFolder, int> openHomeTrash(const QByteArray& trash)
{
    TrashFolder folder;
    folder.path = trash;
    const qsizetype slash = trash.lastIndexOf('/');
    if (slash <= 0)
        return {std::move(folder), ENOENT};
    const QByteArray parent = trash.left(slash);
    for (qsizetype at = parent.indexOf('/', 1); at > 0; at = parent.indexOf('/', at + 1)) {
        if (!makeDirectory(parent.left(at), 0700))
            return {std::move(folder), errno};
    }
    if (!makeDirectory(parent, 0700))
        return {std::move(folder), errno};
    const Fd parentFd(::open(parent.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parentFd.valid())
        return {std::move(folder), errno};
    const QByteArray name = trash.mid(slash + 1);
    auto [own, error] = openOwnFolder(parentFd.get(), name.constData(), Strictness::ownFolder);
    if (error)
        return {std::move(folder), error};
    return {std::move(folder), openParts(own, folder)};
}

// A mount's trash, as the freedesktop.org rules have it: the shared
// $topdir/.Trash/$uid only where .Trash is a real folder with the sticky bit
// (so no other user can swap our folder in it), else $topdir/.Trash-$uid,
// private to us. Returns the refusal of the second where neither is usable.
std::pair<TrashFolder, int> openVolumeTrash(const QByteArray& topdir)
{
    TrashFolder folder;
    const QByteArray top = topdir.endsWith('/') ? topdir : topdir + '/';
    const QByteArray uid = QByteArray::number(::getuid());
    const Fd topFd(::open(top.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!topFd.valid()) {
        folder.path = top + ".Trash-" + uid;
        return {std::move(folder), errno};
    }

    const Fd shared(::openat(topFd.get(), ".Trash", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat sharedFacts {};
    if (shared.valid() && ::fstat(shared.get(), &sharedFacts) == 0 &&
        S_ISDIR(sharedFacts.st_mode) && (sharedFacts.st_mode & S_ISVTX)) {
        auto [own, error] = openOwnFolder(shared.get(), uid.constData(), Strictness::ownFolder);
        folder.path = top + ".Trash/" + uid;
        if (!error && openParts(own, folder) == 0)
            return {std::move(folder), 0};
    }

    folder.path = top + ".Trash-" + uid;
    const QByteArray privateName = ".Trash-" + uid;
    auto [own, error] = openOwnFolder(topFd.get(), privateName.constData(), Strictness::private0700);
    if (error)
        return {std::move(folder), error};
    return {std::move(folder), openParts(own, folder)};
}

QByteArray absolute(const QByteArray& path)
{
    return path.startsWith('/') ? path : QFile::encodeName(QDir::currentPath()) + '/' + path;
}

} // namespace

// The kernel decides atomically where it can; elsewhere a look just before
// the move has to do.
int FreedesktopTrash::moveWithoutReplacing(const QByteArray& item, int files, const QByteArray& name)
{
    if (::renameat2(AT_FDCWD, item.constData(), files, name.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    struct stat facts {};
    if (::fstatat(files, name.constData(), &facts, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    return ::renameat(AT_FDCWD, item.constData(), files, name.constData()) == 0 ? 0 : errno;
}

namespace {

// Puts `item` into the opened trash as an entry whose info file names
// `infoPath`. Returns the new place, or the errno of the failure.
std::pair<QByteArray, int> place(const TrashFolder& trash, const QByteArray& item,
                                 const QByteArray& infoPath)
{
    QByteArray base = item.mid(item.lastIndexOf('/') + 1);
    if (base.isEmpty())
        base = "item";
    const QByteArray info =
        "[Trash Info]\nPath=" + FreedesktopTrash::escapePath(infoPath) + "\nDeletionDate=" +
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss")).toLatin1() +
        '\n';
    for (int attempt = 1; attempt < 100000; ++attempt) {
        const QByteArray name = FreedesktopTrash::entryName(base, attempt);
        const QByteArray infoName = name + ".trashinfo";
        // The info file is claimed first and exclusively: that is what keeps
        // two entries from ever sharing a name.
        const int fd = ::openat(trash.info.get(), infoName.constData(),
                                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return {{}, errno};
        }
        const bool written = writeAll(fd, info);
        const int writeError = errno;
        const bool closed = ::close(fd) == 0;
        if (!written || !closed) {
            ::unlinkat(trash.info.get(), infoName.constData(), 0); // our own claim
            return {{}, !written && writeError ? writeError : EIO};
        }
        const int moveError = FreedesktopTrash::moveWithoutReplacing(item, trash.files.get(), name);
        if (moveError) {
            ::unlinkat(trash.info.get(), infoName.constData(), 0); // our own claim
            if (moveError == EEXIST)
                continue;
            return {{}, moveError};
        }
        return {trash.path + "/files/" + name, 0};
    }
    return {{}, EEXIST};
}

} // namespace

int FreedesktopTrash::prepareHome(const QByteArray& trash)
{
    const int error = openHomeTrash(trash).second;
    return error == kUnsafe ? EPERM : error;
}

FreedesktopTrash::FreedesktopTrash(std::optional<QByteArray> homeTrash,
                                   std::function<QByteArray(const QByteArray&)> topdirOf)
    : m_homeTrash(homeTrash ? *homeTrash : defaultHomeTrash()), m_topdirOf(std::move(topdirOf))
{
    if (!m_topdirOf)
        m_topdirOf = &FreedesktopTrash::mountTopdir;
}

QByteArray FreedesktopTrash::defaultHomeTrash()
{
    const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    if (dataHome.startsWith('/'))
        return dataHome + "/Trash";
    return QFile::encodeName(QDir::homePath()) + "/.local/share/Trash";
}

QByteArray FreedesktopTrash::mountTopdir(const QByteArray& path)
{
    // The item's real folder first: through a link into another mount, the
    // path as typed climbs the wrong file system.
    const QByteArray given = absolute(path);
    const qsizetype slash = given.lastIndexOf('/');
    const QByteArray parent = slash <= 0 ? QByteArray("/") : given.left(slash);
    char resolved[PATH_MAX];
    if (!::realpath(parent.constData(), resolved))
        return "/";
    QByteArray at(resolved);
    struct stat facts {};
    if (::stat(at.constData(), &facts) != 0)
        return "/";
    const dev_t device = facts.st_dev;
    while (at.size() > 1) {
        const qsizetype up = at.lastIndexOf('/');
        const QByteArray above = up <= 0 ? QByteArray("/") : at.left(up);
        struct stat aboveFacts {};
        if (::stat(above.constData(), &aboveFacts) != 0 || aboveFacts.st_dev != device)
            return at;
        at = above;
    }
    return "/";
}

QByteArray FreedesktopTrash::escapePath(const QByteArray& path)
{
    return path.toPercentEncoding("/");
}

QByteArray FreedesktopTrash::entryName(const QByteArray& base, int attempt)
{
    // NAME_MAX less ".trashinfo".
    constexpr qsizetype kLongest = 255 - 10;
    const QByteArray counter = attempt == 1 ? QByteArray() : '.' + QByteArray::number(attempt);
    if (base.size() + counter.size() <= kLongest)
        return base + counter;
    // Cut: the extension stays, so the entry still opens with the right
    // program; the full name lives on in the info file's path.
    const qsizetype dot = base.lastIndexOf('.');
    const QByteArray extension = dot > 0 && base.size() - dot <= 16 ? base.mid(dot) : QByteArray();
    const QByteArray number = '~' + QByteArray::number(attempt);
    qsizetype keep = kLongest - extension.size() - number.size();
    // Not inside a UTF-8 sequence: a readable name stays readable.
    while (keep > 0 && (uchar(base[keep]) & 0xC0) == 0x80)
        --keep;
    return base.left(keep) + number + extension;
}

Trash::Answer FreedesktopTrash::recycle(const QList<QByteArray>& paths)
{
    Answer answer;
    auto [home, homeError] = openHomeTrash(m_homeTrash);
    // The home trash's device, even where the trash itself is refused: its
    // items must not wander to another trash then.
    struct stat homeFacts {};
    const QByteArray homeParent = m_homeTrash.left(m_homeTrash.lastIndexOf('/'));
    const bool haveHome = homeError ? ::stat(homeParent.constData(), &homeFacts) == 0
                                    : ::fstat(home.files.get(), &homeFacts) == 0;
    for (const QByteArray& given : paths) {
        const QByteArray path = absolute(given);
        struct stat facts {};
        int error = 0;
        QByteArray moved;
        QByteArray unusable;
        if (::lstat(path.constData(), &facts) != 0) {
            error = errno;
        } else if (haveHome && facts.st_dev == homeFacts.st_dev) {
            if (homeError)
                unusable = m_homeTrash;
            else
                std::tie(moved, error) = place(home, path, path);
        } else {
            // Another file system: its own trash at the top of the mount,
            // and Path= relative to that top, found along the real folders.
            const QByteArray topdir = m_topdirOf(path);
            const QByteArray top = topdir.endsWith('/') ? topdir : topdir + '/';
            char resolved[PATH_MAX];
            const qsizetype slash = path.lastIndexOf('/');
            const QByteArray parent = slash <= 0 ? QByteArray("/") : path.left(slash);
            QByteArray real = ::realpath(parent.constData(), resolved)
                                  ? QByteArray(resolved) + path.mid(slash)
                                  : path;
            if (real.startsWith("//"))
                real.remove(0, 1);
            const QByteArray relative = real.startsWith(top) ? real.mid(top.size()) : real;
            // A trash that cannot be made is no question of rights over the
            // item: it is reported as such, never sent to the password prompt.
            auto [volume, volumeError] = openVolumeTrash(topdir);
            if (volumeError)
                unusable = volume.path;
            else
                std::tie(moved, error) = place(volume, path, relative);
        }
        if (!unusable.isEmpty()) {
            answer.failures.insert(given, {{}, true, unusable});
        } else if (error) {
            const QString sentence = QString::fromLocal8Bit(std::strerror(error));
            answer.failures.insert(given, {sentence, false, {}});
            if (!answer.error)
                answer.error = sentence;
        } else {
            answer.moved.insert(given, moved);
        }
    }
    return answer;
}

Trash& systemTrash()
{
    static FreedesktopTrash trash;
    return trash;
}

} // namespace tw

namespace tw {

namespace {
// `place` is TRASH/files/NAME: TRASH and NAME, or nothing for another shape.
std::optional<std::pair<QByteArray, QByteArray>> splitPlace(const QByteArray& place)
{
    const qsizetype slash = place.lastIndexOf('/');
    const QByteArray folder = place.left(slash);
    if (slash <= 0 || !folder.endsWith("/files"))
        return std::nullopt;
    return std::pair{folder.left(folder.size() - 6), place.mid(slash + 1)};
}
} // namespace

std::optional<QByteArray> FreedesktopTrash::recordedPath(const QByteArray& place)
{
    const auto parts = splitPlace(place);
    if (!parts)
        return std::nullopt;
    const auto& [trash, name] = *parts;
    const QByteArray infoPath = trash + "/info/" + name + ".trashinfo";
    const Fd fd(::open(infoPath.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.valid())
        return std::nullopt;
    QByteArray info;
    char chunk[4096];
    for (ssize_t got; (got = ::read(fd.get(), chunk, sizeof chunk)) > 0 && info.size() < 65536;)
        info.append(chunk, got);
    for (const QByteArray& line : info.split('\n')) {
        if (!line.startsWith("Path="))
            continue;
        const QByteArray path = QByteArray::fromPercentEncoding(line.mid(5));
        if (path.startsWith('/'))
            return path;
        // A mount's trash records the path from the mount's top:
        // TOP/.Trash-UID or TOP/.Trash/UID.
        const QByteArray uid = QByteArray::number(::getuid());
        QByteArray top;
        if (trash.endsWith(QByteArray("/.Trash-" + uid)))
            top = trash.left(trash.lastIndexOf('/'));
        else if (trash.endsWith(QByteArray("/.Trash/" + uid)))
            top = trash.left(trash.size() - uid.size() - 8);
        else
            return std::nullopt;
        return (top.isEmpty() ? QByteArray() : top) + '/' + path;
    }
    return std::nullopt;
}

std::optional<QString> FreedesktopTrash::restore(const QByteArray& place, const QByteArray& original)
{
    const auto sentence = [](int error) { return QString::fromLocal8Bit(std::strerror(error)); };
    const auto recorded = recordedPath(place);
    if (!recorded || *recorded != original)
        return sentence(ENOENT);
    const qsizetype slash = original.lastIndexOf('/');
    const QByteArray folder = slash <= 0 ? QByteArray("/") : original.left(slash);
    const Fd target(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!target.valid())
        return sentence(errno);
    if (const int error = moveWithoutReplacing(place, target.get(), original.mid(slash + 1)))
        return sentence(error);
    const auto [trash, name] = *splitPlace(place);
    const QByteArray infoPath = trash + "/info/" + name + ".trashinfo";
    // The entry is back; its record would list a ghost in file managers.
    ::unlink(infoPath.constData());
    return std::nullopt;
}

} // namespace tw
