// Removal: the batch's contract over a recording Trash and a scripted
// password prompt, and the privileged script's shape and quoting.

#include "ScriptedRunner.h"
#include "TestFiles.h"
#include "TestMain.h"
#include "localization/LocalizationManager.h"
#include "platform/Trash.h"
#include "removal/PrivilegedRemoval.h"
#include "removal/Recycle.h"
#include "scan/RawFiles.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <sys/stat.h>
#include <unistd.h>

using namespace tw;
using namespace tw::test;

namespace {

// Moves what its table says it moves, reports the error it is given, and
// remembers every call.
class RecordingTrash : public Trash {
public:
    Answer recycle(const QList<QByteArray>& paths) override
    {
        calls.append(paths);
        Answer answer;
        for (const QByteArray& path : paths) {
            if (!refuse.contains(path))
                answer.moved.insert(path, "/trash/" + path.mid(path.lastIndexOf('/') + 1));
        }
        answer.error = error;
        return answer;
    }
    std::optional<QString> restore(const QByteArray&, const QByteArray&) override
    {
        return QStringLiteral("no way back from a recording");
    }
    QList<QList<QByteArray>> calls;
    QSet<QByteArray> refuse;
    std::optional<QString> error;
};


} // namespace

class RemovalTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalizationManager::shared().setCurrent(Language::english);
    }
    // QTemporaryDir cannot remove names that are not UTF-8.
    void cleanupTestCase() { removeTree(base()); }

    void quotingAndScriptShape()
    {
        QCOMPARE(shellQuoted("/tmp/a'b\"c\\d"), QByteArray("'/tmp/a'\\''b\"c\\d'"));
        const QByteArray script =
            makePrivilegedTrashScript({"/tmp/a'b\"c\\d"}, "/Users/u/.Trash", macScriptTools());
        const QByteArrayList lines = script.split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0], QByteArray("move_status=0"));
        QCOMPARE(lines[2], QByteArray("exit \"$move_status\""));
        QVERIFY(lines[1].startsWith("/bin/mkdir -m 700 '/Users/u/.Trash/"));
        QVERIFY(lines[1].contains(QByteArray(" && /usr/sbin/chown " + QByteArray::number(getuid()) +
                                             ':' + QByteArray::number(getgid()) +
                                             " '/Users/u/.Trash/")));
        QVERIFY(lines[1].contains(" && /bin/mv -n '/tmp/a'\\''b\"c\\d' '/Users/u/.Trash/"));
        QVERIFY(lines[1].endsWith("/' || move_status=1"));
        QVERIFY(!script.endsWith('\n'));
        // The AppleScript layer: backslashes doubled first, then quotes escaped.
        const QByteArray apple = appleScriptFor(script);
        QVERIFY(apple.startsWith("do shell script \"move_status=0\n"));
        QVERIFY(apple.endsWith("exit \\\"$move_status\\\"\" with administrator privileges"));
        QVERIFY(apple.contains("'/tmp/a'\\\\''b\\\"c\\\\d'"));
        // No items: the two fixed lines.
        QCOMPARE(makePrivilegedTrashScript({}, "/t", macScriptTools()),
                 QByteArray("move_status=0\nexit \"$move_status\""));
        // The same name from two folders: two staging folders.
        std::vector<QByteArray> staging;
        (void)makePrivilegedTrashScript({"/a/x", "/b/x"}, "/t/", macScriptTools(), &staging);
        QCOMPARE(staging.size(), std::size_t(2));
        QVERIFY(staging[0] != staging[1]);
        QVERIFY(staging[0].startsWith("/t/") && !staging[0].startsWith("/t//"));
    }


    void batchOrderAndMessages()
    {
        const QByteArray dir = makeTree(base() + "/batch", {{"moves", 1}, {"locked", 1}, {"odd", 1}});
        QVERIFY(::symlink("nowhere", QByteArray(dir + "/dangling").constData()) == 0);
        const auto in = [&](QByteArrayList names) {
            for (QByteArray& name : names)
                name.prepend(dir + '/');
            return QList<QByteArray>(names);
        };
        // The batch's moved items, then each failure as "name: words", in order.
        const auto batch = [&](const QByteArrayList& items, RecordingTrash& trash, ScriptedRunner& runner) {
            const BatchOutcome outcome = recycleBatch(in(items), trash, runner);
            QStringList said{QFile::decodeName(outcome.succeeded.join(' '))};
            for (const auto& [path, message] : outcome.failed)
                said << QFile::decodeName(path.mid(dir.size() + 1)) + QStringLiteral(": ") + message;
            return said.join(u'\n');
        };
        const QString dirs = QFile::decodeName(dir);

        // Nothing to move, or nothing there: no platform call at all.
        RecordingTrash idle;
        ScriptedRunner quiet;
        QCOMPARE(batch({}, idle, quiet), QString());
        QCOMPARE(batch({"gone", "dangling"}, idle, quiet), "\ngone: file not found\ndangling: file not found");
        QVERIFY(idle.calls.isEmpty() && quiet.scripts.isEmpty());

        // One missing, one moved, one needing rights whose prompt is dismissed.
        RecordingTrash trash;
        trash.refuse = {dir + "/locked"};
        trash.error = QStringLiteral("Operation NOT permitted");
        ScriptedRunner dismissed;
        dismissed.dismissed = true;
        QCOMPARE(batch({"moves", "gone", "locked"}, trash, dismissed),
                 dirs + "/moves\ngone: file not found\nlocked: user cancelled password prompt");
        QCOMPARE(trash.calls, (QList<QList<QByteArray>>{in({"moves", "locked"})}));
        QCOMPARE(dismissed.scripts.size(), 1);
        QVERIFY(dismissed.scripts[0].contains(shellQuoted(dir + "/locked")));

        // The tool's silence reads "admin authorization failed"; its words
        // stand as they are, and a cancel in them reads as a cancel.
        RecordingTrash mixed;
        mixed.refuse = {dir + "/locked", dir + "/odd"};
        mixed.error = QStringLiteral("Permission denied");
        ScriptedRunner silent;
        QCOMPARE(batch({"locked", "odd"}, mixed, silent),
                 "\nlocked: admin authorization failed\nodd: admin authorization failed");
        ScriptedRunner talking;
        talking.says = "  execution error: The administrator user name or password was incorrect. (-60007)\n";
        QCOMPARE(batch({"locked"}, mixed, talking),
                 "\nlocked: execution error: The administrator user name or password was incorrect. (-60007)");
        talking.says = "User CANCELED.";
        QCOMPARE(batch({"locked"}, mixed, talking), "\nlocked: user cancelled password prompt");
        // A tool that cannot start: every item fails with the cause, unlooked.
        ScriptedRunner broken;
        broken.launches = false;
        QCOMPARE(batch({"locked"}, mixed, broken), "\nlocked: could not launch osascript: No such file or directory");

        // A sentence without the two marks keeps the item failed, no prompt;
        // no sentence and an incomplete answer: "could not move to Trash".
        RecordingTrash busy;
        busy.refuse = {dir + "/odd"};
        busy.error = QStringLiteral("Resource busy");
        ScriptedRunner unused;
        QCOMPARE(batch({"odd", "moves"}, busy, unused), dirs + "/moves\nodd: Resource busy");
        busy.error.reset();
        QCOMPARE(batch({"odd"}, busy, unused), "\nodd: could not move to Trash");
        QVERIFY(unused.scripts.isEmpty());
    }

    void singleItemContract()
    {
        RecordingTrash trash;
        QCOMPARE(recycle("/x/a", trash), QByteArray("/trash/a"));
        const auto refusal = [&] {
            try {
                (void)recycle("/x/b", trash);
            } catch (const TrashError& error) {
                return error.errorDescription();
            }
            return QStringLiteral("no error");
        };
        trash.refuse = {"/x/b"};
        QCOMPARE(refusal(), QStringLiteral("Could not move to Trash (administrator rights may be required)."));
        trash.error = QStringLiteral("Permission denied");
        QCOMPARE(refusal(), QStringLiteral("Permission denied"));
        const TrashError partial = TrashError::partial(
            {"/a/one", "/a/two"}, {{"/b/three", QStringLiteral("file not found")}});
        QCOMPARE(partial.errorDescription(),
                 QStringLiteral("Deleted: 2. Failed: 1.\n\n• three: file not found"));
    }

};

TIDEWICK_TEST_MAIN(RemovalTest)
#include "tst_removal.moc"
