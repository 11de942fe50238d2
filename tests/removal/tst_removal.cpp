// Removal: the batch's contract over a recording Trash and a scripted
// password prompt, and the privileged script's shape and quoting.

#include "ScriptedRunner.h"
#include "TestFiles.h"
#include "TestMain.h"
#include "localization/LocalizationManager.h"
#include "platform/Trash.h"
#include "removal/PrivilegedRemoval.h"
#include "removal/Recycle.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <unistd.h>

using namespace tw;
using namespace tw::test;

namespace {

// Moves what it is not told to refuse, reports the error it is given, and
// remembers every call.
class RecordingTrash : public Trash {
public:
    Answer recycle(const QList<QByteArray>& paths) override
    {
        calls.append(paths);
        Answer answer;
        for (const QByteArray& path : paths)
            if (!refuse.contains(path))
                answer.moved.insert(path, "/trash/" + path.mid(path.lastIndexOf('/') + 1));
        answer.error = error;
        return answer;
    }
    std::optional<QString> restore(const QByteArray&, const QByteArray&) override
    {
        return QStringLiteral("no way back from a recording");
    }
    QList<QList<QByteArray>> calls;
    QList<QByteArray> refuse;
    std::optional<QString> error;
};

// One batch over the names in the test's folder: what the Trash refuses and
// says, how the password prompt ends ("dismissed", "no launch", or the
// tool's words), and what must come of it: the moved names, then each
// failure as "name: words", in order; the names the Trash was asked for;
// how many scripts the prompt was shown.
struct Batch {
    QByteArrayList items;
    QByteArrayList refused = {};
    QString error = {};
    QByteArray prompt = {};
    QString said = {};
    QByteArrayList asked = {};
    int scripts = 0;
};

} // namespace

Q_DECLARE_METATYPE(Batch)

class RemovalTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray dir() const { return QFile::encodeName(m_dir.path()); }
    QList<QByteArray> in(const QByteArrayList& names) const
    {
        QList<QByteArray> paths;
        for (const QByteArray& name : names)
            paths.append(dir() + '/' + name);
        return paths;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalizationManager::shared().setCurrent(Language::english);
        makeTree(dir(), {{"moves", 1}, {"locked", 1}, {"odd", 1}});
        symlinkAt("nowhere", dir() + "/dangling");
    }

    void quotingAndScriptShape()
    {
        QCOMPARE(shellQuoted("/tmp/a'b\"c\\d"), QByteArray("'/tmp/a'\\''b\"c\\d'"));
        const QByteArray script = makePrivilegedTrashScript({"/tmp/a'b\"c\\d"}, "/Users/u/.Trash", macScriptTools());
        const QByteArrayList lines = script.split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0], QByteArray("move_status=0"));
        QCOMPARE(lines[2], QByteArray("exit \"$move_status\""));
        QVERIFY(lines[1].startsWith("/bin/mkdir -m 700 '/Users/u/.Trash/"));
        QVERIFY(lines[1].contains(QByteArray(" && /usr/sbin/chown " + QByteArray::number(getuid()) + ':'
                                             + QByteArray::number(getgid()) + " '/Users/u/.Trash/")));
        QVERIFY(lines[1].contains(" && /bin/mv -n '/tmp/a'\\''b\"c\\d' '/Users/u/.Trash/"));
        QVERIFY(lines[1].endsWith("/' || move_status=1"));
        // The AppleScript layer: backslashes doubled first, then quotes escaped.
        const QByteArray apple = appleScriptFor(script);
        QVERIFY(apple.startsWith("do shell script \"move_status=0\n"));
        QVERIFY(apple.endsWith("exit \\\"$move_status\\\"\" with administrator privileges"));
        QVERIFY(apple.contains("'/tmp/a'\\\\''b\\\"c\\\\d'"));
        // No items: the two fixed lines.
        QCOMPARE(makePrivilegedTrashScript({}, "/t", macScriptTools()), QByteArray("move_status=0\nexit \"$move_status\""));
        // The same name from two folders: two staging folders.
        std::vector<QByteArray> staging;
        (void)makePrivilegedTrashScript({"/a/x", "/b/x"}, "/t/", macScriptTools(), &staging);
        QCOMPARE(staging.size(), std::size_t(2));
        QVERIFY(staging[0] != staging[1]);
        QVERIFY(staging[0].startsWith("/t/") && !staging[0].startsWith("/t//"));
    }

    void batchOrderAndMessages_data()
    {
        QTest::addColumn<Batch>("batch");
        const QString cancelled = QStringLiteral("locked: user cancelled password prompt");
        // Nothing to move, or nothing there: no platform call at all.
        QTest::newRow("nothing") << Batch{{}};
        QTest::newRow("nothing there")
            << Batch{{"gone", "dangling"}, {}, {}, {}, "gone: file not found | dangling: file not found"};
        // One missing, one moved, one needing rights whose prompt is dismissed.
        QTest::newRow("dismissed") << Batch{{"moves", "gone", "locked"}, {"locked"}, "Operation NOT permitted", "dismissed",
                                            "moves | gone: file not found | " + cancelled, {"moves", "locked"}, 1};
        // The tool's silence reads "admin authorization failed"; its words
        // stand as they are, and a cancel in them reads as a cancel.
        QTest::newRow("silent") << Batch{{"locked", "odd"}, {"locked", "odd"}, "Permission denied", {},
                                         "locked: admin authorization failed | odd: admin authorization failed",
                                         {"locked", "odd"}, 1};
        QTest::newRow("talking")
            << Batch{{"locked"}, {"locked"}, "Permission denied",
                     "  execution error: The administrator user name or password was incorrect. (-60007)\n",
                     "locked: execution error: The administrator user name or password was incorrect. (-60007)",
                     {"locked"}, 1};
        QTest::newRow("cancel in words")
            << Batch{{"locked"}, {"locked"}, "Permission denied", "User CANCELED.", cancelled, {"locked"}, 1};
        // A tool that cannot start: every item fails with the cause, unlooked.
        QTest::newRow("no launch") << Batch{{"locked"}, {"locked"}, "Permission denied", "no launch",
                                            "locked: could not launch osascript: No such file or directory", {"locked"}, 1};
        // A sentence without the two marks keeps the item failed, no prompt;
        // no sentence and an incomplete answer: "could not move to Trash".
        QTest::newRow("busy") << Batch{{"odd", "moves"}, {"odd"}, "Resource busy", {}, "moves | odd: Resource busy",
                                       {"odd", "moves"}};
        QTest::newRow("no sentence") << Batch{{"odd"}, {"odd"}, {}, {}, "odd: could not move to Trash", {"odd"}};
    }
    void batchOrderAndMessages()
    {
        QFETCH(Batch, batch);
        RecordingTrash trash;
        trash.refuse = in(batch.refused);
        if (!batch.error.isNull())
            trash.error = batch.error;
        ScriptedRunner runner;
        runner.dismissed = batch.prompt == "dismissed";
        runner.launches = batch.prompt != "no launch";
        runner.says = runner.dismissed || !runner.launches ? QByteArray() : batch.prompt;
        const BatchOutcome outcome = recycleBatch(in(batch.items), trash, runner);
        QStringList said;
        for (const QByteArray& path : outcome.succeeded)
            said << QFile::decodeName(path.mid(dir().size() + 1));
        for (const auto& [path, message] : outcome.failed)
            said << QFile::decodeName(path.mid(dir().size() + 1)) + QStringLiteral(": ") + message;
        QCOMPARE(said.join(QStringLiteral(" | ")), batch.said);
        const QList<QList<QByteArray>> oneCall{in(batch.asked)};
        QCOMPARE(trash.calls, batch.asked.isEmpty() ? QList<QList<QByteArray>>() : oneCall);
        QCOMPARE(runner.scripts.size(), batch.scripts);
        for (const QByteArray& script : runner.scripts)
            QVERIFY(script.contains(shellQuoted(dir() + "/locked")));
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
        const TrashError partial = TrashError::partial({"/a/one", "/a/two"}, {{"/b/three", QStringLiteral("file not found")}});
        QCOMPARE(partial.errorDescription(), QStringLiteral("Deleted: 2. Failed: 1.\n\n• three: file not found"));
    }
};

TIDEWICK_TEST_MAIN(RemovalTest)
#include "tst_removal.moc"
