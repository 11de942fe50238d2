// The freedesktop.org Trash on disk, down to putting an item back, and the
// elevated script run by a real /bin/sh on hostile names through it. Linux
// only: the Trash and the pkexec runner are Linux's.

#include "ScriptedRunner.h"
#include "TestFiles.h"
#include "TestMain.h"
#include "localization/LocalizationManager.h"
#include "platform/linux/FreedesktopTrash.h"
#include "platform/linux/PkexecRunner.h"
#include "removal/PrivilegedRemoval.h"
#include "removal/Recycle.h"
#include "scan/RawFiles.h"

#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tw;
using namespace tw::test;

namespace {

bool present(const QByteArray& path)
{
    struct stat facts {};
    return ::lstat(path.constData(), &facts) == 0;
}

QByteArray readAll(const QByteArray& path)
{
    return readFileBytes(path, 1 << 30).value_or(QByteArray());
}

// The names that have broken shell scripts before, and a few that would
// run a command if quoting failed.
QByteArrayList hostileNames()
{
    return {"with space",
            "single'quote",
            "double\"quote",
            "back\\slash",
            "dollar$HOME",
            "back`tick`",
            "line\nfeed",
            "not-utf8-\xff\xfe",
            "$(touch CANARY)",
            "`touch CANARY`",
            "'; touch CANARY; '",
            "a'\\''b",
            "-n",
            "--",
            "*",
            "tab\there"};
}

QByteArray randomName(QRandomGenerator& random)
{
    QByteArray name;
    const int length = 1 + int(random.bounded(24));
    while (name.size() < length) {
        const char c = char(random.bounded(1, 256));
        if (c != '/')
            name.append(c);
    }
    if (name == "." || name == "..")
        name += "x";
    return name;
}

} // namespace

class FreedesktopTrashTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }
    // Whether `other` lies on a file system apart from the test's folder.
    bool onAnotherFileSystem(const QTemporaryDir& other) const
    {
        struct stat ours {
        }, theirs{};
        return other.isValid() && ::stat(base().constData(), &ours) == 0 &&
               ::stat(QFile::encodeName(other.path()).constData(), &theirs) == 0 &&
               theirs.st_dev != ours.st_dev;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalizationManager::shared().setCurrent(Language::english);
    }
    // QTemporaryDir cannot remove names that are not UTF-8.
    void cleanupTestCase() { removeTree(base()); }

    void hostileNamesArriveByteForByte()
    {
        // A temporary home with its own Trash; the script runs under a real
        // /bin/sh as the current user.
        const QByteArray home = base() + "/home-script";
        const QByteArray work = base() + "/work-script";
        makeDir(home);
        makeDir(work);
        const QByteArray trash = home + "/.local/share/Trash";
        PkexecRunner runner({}, trash);

        QByteArrayList names = hostileNames();
        QRandomGenerator random(20261123);
        for (int i = 0; i < 300; ++i)
            names.append(randomName(random));
        // Too long to carry ".trashinfo": the entries are cut, the info keeps all.
        names.append(QByteArray(250, 'L'));
        names.append(QByteArray(251, 'M') + ".tar");
        std::sort(names.begin(), names.end());
        names.erase(std::unique(names.begin(), names.end()), names.end());
        QList<QByteArray> paths;
        for (const QByteArray& name : names) {
            const QByteArray path = work + '/' + name;
            if (present(path))
                continue;
            writeFile(path, 10);
            paths.append(path);
        }
        // An entry of the same name already in the Trash stays as it is.
        makeDir(home + "/.local");
        makeDir(home + "/.local/share");
        makeDir(trash);
        makeDir(trash + "/files");
        makeDir(trash + "/info");
        writeFile(trash + "/files/with space", 3);
        writeFile(trash + "/info/with space.trashinfo", 3);
        // A folder too: the elevated shell itself files it as an entry.
        makeDir(work + "/a folder");
        writeFile(work + "/a folder/inside", 10);
        paths.append(work + "/a folder");
        const QByteArray cwd = QFile::encodeName(QDir::currentPath());
        QVERIFY(QDir::setCurrent(QFile::decodeName(work)));
        const BatchOutcome outcome = privilegedRecycle(paths, runner);
        QVERIFY(QDir::setCurrent(QFile::decodeName(cwd)));

        QVERIFY2(outcome.failed.isEmpty(), qPrintable(outcome.failed.value(0).second));
        QCOMPARE(outcome.succeeded, paths);
        QVERIFY2(!present(work + "/CANARY") && !present(home + "/CANARY") &&
                     !present(cwd + "/CANARY"),
                 "a name ran a command");
        // Each one is an ordinary Trash entry whose info names it exactly.
        QSet<QByteArray> recorded;
        for (const QByteArray& name : directoryEntries(trash + "/info")) {
            const QByteArray info = readAll(trash + "/info/" + name);
            if (info.size() < 10)
                continue; // the entry that was there before
            const qsizetype at = info.indexOf("\nPath=") + 6;
            recorded.insert(
                QByteArray::fromPercentEncoding(info.mid(at, info.indexOf('\n', at) - at)));
        }
        for (const QByteArray& path : paths) {
            QVERIFY2(recorded.contains(path), path.toHex().constData());
        }
        // No staging folder is left behind, and every entry fits its info's name.
        const QByteArrayList entries = directoryEntries(trash + "/files");
        QCOMPARE(entries.size(), paths.size() + 1);
        for (const QByteArray& entry : entries)
            QVERIFY(entry.size() <= 245 && present(trash + "/info/" + entry + ".trashinfo"));
        QVERIFY(entries.contains(QByteArray(239, 'M') + "~1.tar"));
        QVERIFY(present(trash + "/files/a folder/inside"));
        QCOMPARE(readAll(trash + "/files/with space").size(), 3);
        QCOMPARE(readAll(trash + "/files/with space.2").size(), 10);
        struct stat infoFacts {};
        QVERIFY(::stat(QByteArray(trash + "/info/a folder.trashinfo").constData(), &infoFacts) ==
                0);
        QCOMPARE(infoFacts.st_uid, ::getuid());
    }


    void freedesktopTrashListsAndRestores()
    {
        const QByteArray trashDir = base() + "/fd-home/Trash";
        const QByteArray work = base() + "/fd-work";
        makeDir(base() + "/fd-home");
        makeDir(work);
        makeDir(work + "/folder");
        writeFile(work + "/folder/inner", 5000);
        writeFile(work + "/same", 100);
        makeDir(work + "/other");
        writeFile(work + "/other/same", 200);
        const QByteArray odd = work + "/odd %20 name \xe9";
        writeFile(odd, 300);
        FreedesktopTrash trash(trashDir);
        const Trash::Answer answer = trash.recycle(
            {work + "/folder", work + "/same", work + "/other/same", odd, work + "/missing"});
        QCOMPARE(answer.error, QStringLiteral("No such file or directory"));
        QCOMPARE(answer.moved.size(), 4);
        // Two items of one name: two entries, neither overwritten.
        QVERIFY(answer.moved[work + "/same"] != answer.moved[work + "/other/same"]);
        QCOMPARE(readAll(answer.moved[work + "/other/same"]).size(), 200);
        QVERIFY(present(answer.moved[work + "/folder"] + "/inner"));

        // Each entry's info names its original place and date; reading it
        // back puts the item where it was, byte for byte.
        for (auto moved = answer.moved.cbegin(); moved != answer.moved.cend(); ++moved) {
            const QByteArray name = moved.value().mid(moved.value().lastIndexOf('/') + 1);
            const QByteArray info = readAll(trashDir + "/info/" + name + ".trashinfo");
            QVERIFY(info.startsWith("[Trash Info]\nPath="));
            QVERIFY(info.contains(QByteArray(
                "\nDeletionDate=" + QDate::currentDate().toString(Qt::ISODate).toLatin1() + 'T')));
            const qsizetype at = info.indexOf("Path=") + 5;
            const QByteArray escaped = info.mid(at, info.indexOf('\n', at) - at);
            QVERIFY(!escaped.contains(' ') && !escaped.contains('\xe9'));
            const QByteArray original = QByteArray::fromPercentEncoding(escaped);
            QCOMPARE(original, moved.key());
            QVERIFY(!present(original));
            QCOMPARE(::rename(moved.value().constData(), original.constData()), 0);
        }
        QCOMPARE(readAll(odd).size(), 300);
        QCOMPARE(QFileInfo(QFile::decodeName(work + "/folder/inner")).size(), 5000);
    }

    void otherMountsUseTheirOwnTrash()
    {
        // A home trash on another file system (tmpfs) sends our item to the
        // top of its own mount, here the test's folder.
        QTemporaryDir shm(QStringLiteral("/dev/shm/tidewick-XXXXXX"));
        if (!onAnotherFileSystem(shm))
            QSKIP("needs /dev/shm on a file system of its own");
        const QByteArray top = base() + "/mount";
        makeDir(top);
        makeDir(top + "/sub");
        writeFile(top + "/sub/item", 100);
        FreedesktopTrash trash(QFile::encodeName(shm.path()) + "/Trash",
                               [&](const QByteArray&) { return top; });
        const Trash::Answer answer = trash.recycle({top + "/sub/item"});
        QVERIFY(!answer.error);
        const QByteArray own = top + "/.Trash-" + QByteArray::number(getuid());
        QCOMPARE(answer.moved.value(top + "/sub/item"), own + "/files/item");
        // The info file holds the path relative to the mount's top.
        QVERIFY(readAll(own + "/info/item.trashinfo").contains("\nPath=sub/item\n"));
        struct stat facts {};
        QVERIFY(::stat(own.constData(), &facts) == 0 && (facts.st_mode & 0777) == 0700);
    }

    void volumeTrashMustBeOurs()
    {
        // Shared ground: each top holds what another user might have planted
        // where our trash belongs. Root stands in for "us" under CI, and a
        // folder given to nobody for "another user".
        // The home trash lives on another file system, so ours count as mounts.
        QTemporaryDir shm(QStringLiteral("/dev/shm/tidewick-XXXXXX"));
        if (!onAnotherFileSystem(shm))
            QSKIP("needs /dev/shm on a file system of its own");
        const QByteArray uid = QByteArray::number(::getuid());
        const QByteArray home = QFile::encodeName(shm.path()) + "/Trash";
        const QByteArray elsewhere = base() + "/vol-elsewhere";
        makeDir(elsewhere);
        int topCount = 0;
        const auto freshTop = [&] {
            const QByteArray top = base() + "/vol-top" + QByteArray::number(++topCount);
            makeDir(top);
            writeFile(top + "/item", 10);
            return top;
        };
        const auto recycleFrom = [&](const QByteArray& top) {
            FreedesktopTrash trash(home, [&](const QByteArray&) { return top; });
            return trash.recycle({top + "/item"});
        };
        const auto refused = [&](const QByteArray& top, const QByteArray& trashPath) {
            const Trash::Answer answer = recycleFrom(top);
            const Trash::Failure failure = answer.failures.value(top + "/item");
            return answer.moved.isEmpty() && failure.noUsableTrash && failure.trash == trashPath &&
                   present(top + "/item");
        };

        QByteArray top = freshTop();
        QVERIFY(::symlink(elsewhere.constData(), QByteArray(top + "/.Trash-" + uid).constData()) == 0);
        QVERIFY(refused(top, top + "/.Trash-" + uid));
        QVERIFY(directoryEntries(elsewhere).isEmpty());

        top = freshTop();
        QVERIFY(::mkdir(QByteArray(top + "/.Trash-" + uid).constData(), 0755) == 0);
        QVERIFY(refused(top, top + "/.Trash-" + uid));

        top = freshTop();
        QVERIFY(::mkdir(QByteArray(top + "/.Trash-" + uid).constData(), 0700) == 0);
        QVERIFY(::symlink(elsewhere.constData(), QByteArray(top + "/.Trash-" + uid + "/files").constData()) == 0);
        QVERIFY(refused(top, top + "/.Trash-" + uid));
        QVERIFY(directoryEntries(elsewhere).isEmpty());

        if (::getuid() == 0) {
            top = freshTop();
            QVERIFY(::mkdir(QByteArray(top + "/.Trash-" + uid).constData(), 0700) == 0);
            QVERIFY(::chown(QByteArray(top + "/.Trash-" + uid).constData(), 65534, 65534) == 0);
            QVERIFY(refused(top, top + "/.Trash-" + uid));
        }

        // A top that cannot hold a trash at all (here: not a folder).
        top = freshTop();
        writeFile(top + "/not-a-folder", 1);
        {
            FreedesktopTrash trash(home, [&](const QByteArray&) { return top + "/not-a-folder"; });
            const Trash::Answer answer = trash.recycle({top + "/item"});
            QVERIFY(answer.moved.isEmpty() && answer.failures.value(top + "/item").noUsableTrash);
        }

        // The shared .Trash serves only as a real, sticky folder.
        top = freshTop();
        QVERIFY(::mkdir(QByteArray(top + "/.Trash").constData(), 0777) == 0);
        QVERIFY(::chmod(QByteArray(top + "/.Trash").constData(), 01777) == 0);
        QCOMPARE(recycleFrom(top).moved.value(top + "/item"), top + "/.Trash/" + uid + "/files/item");
        top = freshTop();
        QVERIFY(::mkdir(QByteArray(top + "/.Trash").constData(), 0777) == 0);
        QVERIFY(::chmod(QByteArray(top + "/.Trash").constData(), 0777) == 0);
        QCOMPARE(recycleFrom(top).moved.value(top + "/item"), top + "/.Trash-" + uid + "/files/item");
        top = freshTop();
        const QByteArray sticky = base() + "/vol-sticky";
        makeDir(sticky);
        QVERIFY(::chmod(sticky.constData(), 01777) == 0);
        QVERIFY(::symlink(sticky.constData(), QByteArray(top + "/.Trash").constData()) == 0);
        QCOMPARE(recycleFrom(top).moved.value(top + "/item"), top + "/.Trash-" + uid + "/files/item");
        QVERIFY(directoryEntries(sticky).isEmpty());

        // Refused is not a rights problem: the batch leaves the item in place
        // and never raises the password prompt.
        top = freshTop();
        QVERIFY(::symlink(elsewhere.constData(), QByteArray(top + "/.Trash-" + uid).constData()) == 0);
        FreedesktopTrash trash(home, [&](const QByteArray&) { return top; });
        ScriptedRunner runner;
        const BatchOutcome outcome = recycleBatch({top + "/item"}, trash, runner);
        QVERIFY(runner.scripts.isEmpty());
        QCOMPARE(outcome.failed.size(), 1);
        QVERIFY(outcome.failed[0].second.startsWith(QStringLiteral("No Trash can safely take this item")));
        QVERIFY(outcome.failed[0].second.contains(QString::fromUtf8(top + "/.Trash-" + uid)));
        QVERIFY(present(top + "/item"));
    }

    void mountsAreFoundFromTheRealFolder()
    {
        // Through a link into another file system, the path as typed would
        // climb ours; the trash belongs at the top of theirs.
        QTemporaryDir shm(QStringLiteral("/dev/shm/tidewick-XXXXXX"));
        if (!onAnotherFileSystem(shm))
            QSKIP("needs /dev/shm on a file system of its own");
        const QByteArray real = QFile::encodeName(shm.path());
        writeFile(real + "/item", 1);
        QVERIFY(::symlink(real.constData(), QByteArray(base() + "/into-shm").constData()) == 0);
        QCOMPARE(FreedesktopTrash::mountTopdir(base() + "/into-shm/item"),
                 FreedesktopTrash::mountTopdir(real + "/item"));
        QVERIFY(!FreedesktopTrash::mountTopdir(base() + "/into-shm/item").startsWith(base()));
    }

    void longNamesAndNoReplacing()
    {
        // A name of 250 bytes cannot carry ".trashinfo": the entry is cut,
        // keeps its extension and gets a number; the info keeps the whole path.
        const QByteArray work = base() + "/long";
        makeDir(work);
        const QByteArray longName = QByteArray(200, 'a') + QByteArray("\xc3\xa9").repeated(22) + ".txt";
        writeFile(work + '/' + longName, 10);
        FreedesktopTrash trash(base() + "/long-home/Trash");
        makeDir(base() + "/long-home");
        const Trash::Answer answer = trash.recycle({work + '/' + longName});
        QVERIFY2(!answer.error, qPrintable(answer.error.value_or(QString())));
        const QByteArray entry = answer.moved.value(work + '/' + longName);
        const QByteArray entryName = entry.mid(entry.lastIndexOf('/') + 1);
        QVERIFY(entryName.size() <= 245 && entryName.endsWith("~1.txt"));
        QVERIFY(QString::fromUtf8(entryName).toUtf8() == entryName); // not cut mid-letter
        const QByteArray info = readAll(base() + "/long-home/Trash/info/" + entryName + ".trashinfo");
        QVERIFY(info.contains(QByteArray("Path=" + FreedesktopTrash::escapePath(work + '/' + longName) + '\n')));

        // The move never replaces what stands at the target.
        writeFile(work + "/mover", 7);
        writeFile(work + "/standing", 3);
        const int dir = ::open(work.constData(), O_RDONLY | O_DIRECTORY);
        QCOMPARE(FreedesktopTrash::moveWithoutReplacing(work + "/mover", dir, "standing"), EEXIST);
        ::close(dir);
        QCOMPARE(readAll(work + "/standing").size(), 3);
        QCOMPARE(readAll(work + "/mover").size(), 7);
    }

    void elevatedItemsWithoutTheirEntryAreNotMoved()
    {
        // An info file planted under the chosen name before the elevated run
        // keeps the item from becoming an entry: it must be reported with the
        // place it waits in, never as moved.
        const QByteArray home = base() + "/unfiled-home";
        const QByteArray trash = home + "/Trash";
        makeDir(home);
        writeFile(base() + "/unfiled-item", 5);
        PkexecRunner runner({}, trash);
        const QByteArray staging = trash + "/files/STAGE";
        const QByteArray script = "printf x > " + shellQuoted(trash + "/info/unfiled-item.trashinfo") +
                                  " && mkdir " + shellQuoted(staging) + " && mv " +
                                  shellQuoted(base() + "/unfiled-item") + ' ' + shellQuoted(staging + '/');
        const ElevatedRunner::Result result = runner.run(script, {{staging, base() + "/unfiled-item"}});
        QVERIFY(result.launched);
        QCOMPARE(result.unfiled.value(base() + "/unfiled-item"), trash + "/files/unfiled-item");
        QVERIFY(present(trash + "/files/unfiled-item"));
    }

    void permissionFailuresSayTheSystemsWords()
    {
        // Root can move anything, so an unprivileged child tries it.
        const QByteArray locked = base() + "/locked-dir";
        makeDir(locked);
        writeFile(locked + "/item", 10);
        QVERIFY(::chmod(locked.constData(), 0755) == 0);
        const QByteArray childHome = base() + "/nobody-home";
        makeDir(childHome);
        QVERIFY(::chmod(base().constData(), 0755) == 0);
        QVERIFY(::chown(childHome.constData(), 65534, 65534) == 0 || getuid() != 0);

        int pipeFds[2];
        QVERIFY(::pipe(pipeFds) == 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(pipeFds[0]);
            if (getuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
                ::_exit(3);
            FreedesktopTrash trash(childHome + "/Trash");
            const Trash::Answer answer = trash.recycle({locked + "/item"});
            const QByteArray said = answer.error ? answer.error->toUtf8() : QByteArray("moved");
            (void)::write(pipeFds[1], said.constData(), size_t(said.size()));
            ::_exit(0);
        }
        ::close(pipeFds[1]);
        QByteArray said(256, '\0');
        const ssize_t n = ::read(pipeFds[0], said.data(), size_t(said.size()));
        ::close(pipeFds[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        said.truncate(n < 0 ? 0 : n);
        QCOMPARE(said, QByteArray("Permission denied"));
        QVERIFY(present(locked + "/item"));
        // The child's claim on a name was withdrawn.
        QVERIFY(!present(childHome + "/Trash/info/item.trashinfo"));
    }
};

TIDEWICK_TEST_MAIN(FreedesktopTrashTest)
#include "tst_freedesktoptrash.moc"
