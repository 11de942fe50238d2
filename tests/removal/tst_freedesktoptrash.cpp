// The freedesktop.org Trash on disk, down to putting an item back, and the
// elevated script run by a real /bin/sh on hostile names through it. Linux
// only: the Trash and the pkexec runner are Linux's.

#include "ScriptedRunner.h"
#include "TestFiles.h"
#include "TestMain.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
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

// What another user may have planted at the top of a mount where our trash
// belongs: a folder of `mode`, or below zero a link to `target`; for a
// folder, "files" inside it is a link to `target` when one is named.
// `movedTo` is the entry's place from the top; empty: the item is refused.
struct Planted {
    QByteArray name;
    int mode = 0700;
    QByteArray target = {};
    bool foreign = false; // given to another user
    QByteArray movedTo = {};
};

// The names that have broken shell scripts before, and a few that would
// run a command if quoting failed.
QByteArrayList hostileNames()
{
    return {"with space", "single'quote", "double\"quote", "back\\slash", "dollar$HOME", "back`tick`",
            "line\nfeed", "not-utf8-\xff\xfe", "$(touch CANARY)", "`touch CANARY`", "'; touch CANARY; '",
            "a'\\''b", "-n", "--", "*", "tab\there"};
}

// The Path= line of an info file as written, escaped; empty without one.
QByteArray infoPath(const QByteArray& info)
{
    const qsizetype at = info.indexOf("\nPath=") + 6;
    return at < 6 ? QByteArray() : info.mid(at, info.indexOf('\n', at) - at);
}

QByteArray randomName(QRandomGenerator& random)
{
    // Any byte but NUL and '/'; a trailing 'x' keeps "." and ".." out.
    QByteArray name(1 + qsizetype(random.bounded(24)), 'x');
    for (char& c : name)
        c = char(random.bounded(1, 256));
    return name.replace('/', '_') + 'x';
}

} // namespace

Q_DECLARE_METATYPE(Planted)

class FreedesktopTrashTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    // A home Trash on a file system apart from the test's folder (tmpfs), so
    // that the test's folders count as other mounts.
    QTemporaryDir m_shm{QStringLiteral("/dev/shm/tidewick-XXXXXX")};
    bool m_apart = false;
    const QByteArray m_uid = QByteArray::number(::getuid());
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }
    QByteArray shm() const { return QFile::encodeName(m_shm.path()); }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalizationManager::shared().setCurrent(Language::english);
        struct stat ours {}, theirs{};
        m_apart = m_shm.isValid() && ::stat(base().constData(), &ours) == 0
            && ::stat(shm().constData(), &theirs) == 0 && theirs.st_dev != ours.st_dev;
        // What a planted link may point at: another folder, or a sticky one.
        makeDir(base() + "/vol-elsewhere");
        makeDir(base() + "/vol-sticky");
        QVERIFY(::chmod(QByteArray(base() + "/vol-sticky").constData(), 01777) == 0);
    }
    // QTemporaryDir cannot remove names that are not UTF-8.
    void cleanupTestCase() { removeTree(base()); }

    void hostileNamesArriveByteForByte()
    {
        // A temporary home with its own Trash; the script runs under a real
        // /bin/sh as the current user.
        const QByteArray home = base() + "/home-script";
        const QByteArray work = base() + "/work-script";
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
        makeDir(work);
        QList<QByteArray> paths;
        for (const QByteArray& name : names) {
            writeFile(work + '/' + name, 10);
            paths.append(work + '/' + name);
        }
        // An entry of the same name already in the Trash stays as it is.
        writeBytes(trash + "/files/with space", "old");
        writeBytes(trash + "/info/with space.trashinfo", "old");
        // A folder too: the elevated shell itself files it as an entry.
        paths.append(makeTree(work + "/a folder", {{"inside", 10}}));
        const QByteArray cwd = QFile::encodeName(QDir::currentPath());
        QVERIFY(QDir::setCurrent(QFile::decodeName(work)));
        const BatchOutcome outcome = privilegedRecycle(paths, runner);
        QVERIFY(QDir::setCurrent(QFile::decodeName(cwd)));

        QVERIFY2(outcome.failed.isEmpty(), qPrintable(outcome.failed.value(0).second));
        QCOMPARE(outcome.succeeded, paths);
        QVERIFY2(!present(work + "/CANARY") && !present(home + "/CANARY") && !present(cwd + "/CANARY"),
                 "a name ran a command");
        // Each one is an ordinary Trash entry whose info names it exactly.
        QSet<QByteArray> recorded;
        for (const QByteArray& name : directoryEntries(trash + "/info"))
            recorded.insert(QByteArray::fromPercentEncoding(infoPath(contents(trash + "/info/" + name))));
        for (const QByteArray& path : paths)
            QVERIFY2(recorded.contains(path), path.toHex().constData());
        // No staging folder is left behind, and every entry fits its info's name.
        const QByteArrayList entries = directoryEntries(trash + "/files");
        QCOMPARE(entries.size(), paths.size() + 1);
        for (const QByteArray& entry : entries)
            QVERIFY(entry.size() <= 245 && present(trash + "/info/" + entry + ".trashinfo"));
        QVERIFY(entries.contains(QByteArray(239, 'M') + "~1.tar"));
        QVERIFY(present(trash + "/files/a folder/inside"));
        QCOMPARE(contents(trash + "/files/with space"), QByteArray("old"));
        QCOMPARE(contents(trash + "/files/with space.2").size(), 10);
        struct stat infoFacts {};
        QVERIFY(::stat(QByteArray(trash + "/info/a folder.trashinfo").constData(), &infoFacts) == 0);
        QCOMPARE(infoFacts.st_uid, ::getuid());
    }

    void freedesktopTrashListsAndRestores()
    {
        const QByteArray trashDir = makeTree(base() + "/fd-home", {}) + "/Trash";
        const QByteArray work = makeTree(base() + "/fd-work", {{"folder/inner", 5000}, {"same", 100}, {"other/same", 200}});
        const QByteArray odd = work + "/odd %20 name \xe9";
        writeFile(odd, 300);
        // A name of 250 bytes cannot carry ".trashinfo": the entry is cut,
        // keeps its extension and gets a number; the info keeps the whole path.
        const QByteArray item = work + '/' + QByteArray(200, 'a') + QByteArray("\xc3\xa9").repeated(22) + ".txt";
        writeFile(item, 10);
        FreedesktopTrash trash(trashDir);
        const Trash::Answer answer =
            trash.recycle({work + "/folder", work + "/same", work + "/other/same", odd, item, work + "/missing"});
        QCOMPARE(answer.error, QStringLiteral("No such file or directory"));
        QCOMPARE(answer.moved.size(), 5);
        const QByteArray entryName = answer.moved.value(item).mid(answer.moved.value(item).lastIndexOf('/') + 1);
        QVERIFY(entryName.size() <= 245 && entryName.endsWith("~1.txt"));
        QVERIFY(QString::fromUtf8(entryName).toUtf8() == entryName); // not cut mid-letter
        // Two items of one name: two entries, neither overwritten.
        QVERIFY(answer.moved[work + "/same"] != answer.moved[work + "/other/same"]);
        QCOMPARE(contents(answer.moved[work + "/other/same"]).size(), 200);
        QVERIFY(present(answer.moved[work + "/folder"] + "/inner"));

        // Each entry's info names its original place and date; reading it
        // back puts the item where it was, byte for byte.
        const QByteArray today = QDate::currentDate().toString(Qt::ISODate).toLatin1();
        for (auto moved = answer.moved.cbegin(); moved != answer.moved.cend(); ++moved) {
            const QByteArray name = moved.value().mid(moved.value().lastIndexOf('/') + 1);
            const QByteArray info = contents(trashDir + "/info/" + name + ".trashinfo");
            QVERIFY(info.startsWith("[Trash Info]\nPath=") && info.contains(QByteArray("\nDeletionDate=" + today + 'T')));
            const QByteArray escaped = infoPath(info);
            QVERIFY(!escaped.contains(' ') && !escaped.contains('\xe9'));
            QCOMPARE(QByteArray::fromPercentEncoding(escaped), moved.key());
            QVERIFY(!present(moved.key()));
            QCOMPARE(::rename(moved.value().constData(), moved.key().constData()), 0);
        }
        QCOMPARE(contents(odd).size(), 300);
        QCOMPARE(contents(work + "/folder/inner").size(), 5000);
    }

    void otherMountsUseTheirOwnTrash()
    {
        if (!m_apart)
            QSKIP("needs /dev/shm on a file system of its own");
        // A home trash on another file system sends our item to the top of
        // its own mount, here the test's folder.
        const QByteArray top = makeTree(base() + "/mount", {{"sub/item", 100}, {"sub/item2", 10}});
        FreedesktopTrash trash(shm() + "/Trash", [&](const QByteArray&) { return top; });
        const Trash::Answer answer = trash.recycle({top + "/sub/item"});
        QVERIFY(!answer.error);
        const QByteArray own = top + "/.Trash-" + m_uid;
        QCOMPARE(answer.moved.value(top + "/sub/item"), own + "/files/item");
        // The info file holds the path relative to the mount's top.
        QVERIFY(contents(own + "/info/item.trashinfo").contains("\nPath=sub/item\n"));
        struct stat facts {};
        QVERIFY(::stat(own.constData(), &facts) == 0 && (facts.st_mode & 0777) == 0700);

        // A top that is no folder holds no trash.
        writeFile(top + "/not-a-folder", 1);
        FreedesktopTrash notAFolder(shm() + "/Trash", [&](const QByteArray&) { return top + "/not-a-folder"; });
        QVERIFY(notAFolder.recycle({top + "/sub/item2"}).failures.value(top + "/sub/item2").noUsableTrash);

        // Through a link into another file system, the path as typed would
        // climb ours; the trash belongs at the top of theirs.
        writeFile(shm() + "/item", 1);
        symlinkAt(shm(), base() + "/into-shm");
        const QByteArray typed = FreedesktopTrash::mountTopdir(base() + "/into-shm/item");
        QCOMPARE(typed, FreedesktopTrash::mountTopdir(shm() + "/item"));
        QVERIFY(!typed.startsWith(base()));
    }

    // Shared ground: the top of a mount holds what another user might have
    // planted where our trash belongs. Root stands in for "us" under CI, and
    // a folder given to nobody for "another user".
    void volumeTrashMustBeOurs_data()
    {
        QTest::addColumn<Planted>("planted");
        const QByteArray own = ".Trash-" + m_uid, elsewhere = "vol-elsewhere";
        QTest::newRow("own trash is a link") << Planted{own, -1, elsewhere};
        QTest::newRow("own trash open to others") << Planted{own, 0755};
        QTest::newRow("own trash's files a link") << Planted{own, 0700, elsewhere};
        if (::getuid() == 0)
            QTest::newRow("own trash another's") << Planted{own, 0700, {}, true};
        // The shared .Trash serves only as a real, sticky folder.
        QTest::newRow("shared, sticky") << Planted{".Trash", 01777, {}, false, ".Trash/" + m_uid + "/files/item"};
        QTest::newRow("shared, not sticky") << Planted{".Trash", 0777, {}, false, own + "/files/item"};
        QTest::newRow("shared, a link to a sticky folder") << Planted{".Trash", -1, "vol-sticky", false, own + "/files/item"};
    }
    void volumeTrashMustBeOurs()
    {
        if (!m_apart)
            QSKIP("needs /dev/shm on a file system of its own");
        QFETCH(Planted, planted);
        const QByteArray top = makeTree(base() + "/vol " + QTest::currentDataTag(), {{"item", 10}});
        const QByteArray at = top + '/' + planted.name, linked = base() + '/' + planted.target;
        if (planted.mode < 0) {
            symlinkAt(linked, at);
        } else {
            QVERIFY(::mkdir(at.constData(), 0700) == 0 && ::chmod(at.constData(), mode_t(planted.mode)) == 0);
            QVERIFY(planted.target.isEmpty() || ::symlink(linked.constData(), QByteArray(at + "/files").constData()) == 0);
            QVERIFY(!planted.foreign || ::chown(at.constData(), 65534, 65534) == 0);
        }
        FreedesktopTrash trash(shm() + "/Trash", [&](const QByteArray&) { return top; });
        ScriptedRunner runner;
        const BatchOutcome outcome = recycleBatch({top + "/item"}, trash, runner);
        if (planted.movedTo.isEmpty()) {
            // Refused is not a rights problem: the item stays in place, the
            // user is told which trash is not safe, and no password is asked.
            QVERIFY(outcome.succeeded.isEmpty() && runner.scripts.isEmpty() && present(top + "/item"));
            QCOMPARE(outcome.failed.value(0).second,
                     fillText(LocalizationManager::shared().string(QStringLiteral("trash.noUsableTrash")),
                              QFile::decodeName(top + "/.Trash-" + m_uid)));
        } else {
            QCOMPARE(outcome.succeeded, QList<QByteArray>{top + "/item"});
            QVERIFY(present(top + '/' + planted.movedTo));
        }
        QVERIFY(planted.target.isEmpty() || directoryEntries(linked).isEmpty());
    }

    void moveNeverReplaces()
    {
        const QByteArray work = makeTree(base() + "/long", {{"mover", 7}, {"standing", 3}});
        const int dir = ::open(work.constData(), O_RDONLY | O_DIRECTORY);
        QCOMPARE(FreedesktopTrash::moveWithoutReplacing(work + "/mover", dir, "standing"), EEXIST);
        ::close(dir);
        QCOMPARE(contents(work + "/standing").size(), 3);
        QCOMPARE(contents(work + "/mover").size(), 7);
    }

    void elevatedItemsWithoutTheirEntryAreNotMoved()
    {
        // An info file planted under the chosen name before the elevated run
        // keeps the item from becoming an entry: it must be reported with the
        // place it waits in, never as moved.
        const QByteArray trash = makeTree(base() + "/unfiled-home", {}) + "/Trash";
        const QByteArray item = base() + "/unfiled-item", staging = trash + "/files/STAGE";
        writeFile(item, 5);
        PkexecRunner runner({}, trash);
        const QByteArray script = "printf x > " + shellQuoted(trash + "/info/unfiled-item.trashinfo") + " && mkdir "
            + shellQuoted(staging) + " && mv " + shellQuoted(item) + ' ' + shellQuoted(staging + '/');
        const ElevatedRunner::Result result = runner.run(script, {{staging, item}});
        QVERIFY(result.launched);
        QCOMPARE(result.unfiled.value(item), trash + "/files/unfiled-item");
        QVERIFY(present(trash + "/files/unfiled-item"));
    }

    void permissionFailuresSayTheSystemsWords()
    {
        // Root can move anything, so an unprivileged child tries it.
        const QByteArray locked = makeTree(base() + "/locked-dir", {{"item", 10}});
        const QByteArray childHome = makeTree(base() + "/nobody-home", {});
        QVERIFY(::chmod(locked.constData(), 0755) == 0 && ::chmod(base().constData(), 0755) == 0);
        QVERIFY(::chown(childHome.constData(), 65534, 65534) == 0 || getuid() != 0);

        int pipeFds[2];
        QVERIFY(::pipe(pipeFds) == 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(pipeFds[0]);
            if (getuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
                ::_exit(3);
            const Trash::Answer answer = FreedesktopTrash(childHome + "/Trash").recycle({locked + "/item"});
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
