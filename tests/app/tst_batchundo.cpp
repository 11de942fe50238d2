// Several items at once, their undo, and walking one folder again: every byte
// charged once, nothing overwritten on the way back, names exact, and a
// folder's own walk agreeing with a whole new scan.

#include "TestMain.h"
#include "FakePlatform.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "platform/linux/FreedesktopTrash.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <unistd.h>

using namespace tw;
using namespace tw::test;

class BatchUndoTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FakeVolume m_volumes;
    FakeAccess m_access;
    FakeReveal m_reveal;
    std::unique_ptr<FreedesktopTrash> m_trash;

    QByteArray base() const { return QFile::encodeName(m_dir.path()); }
    AppState::Services services()
    {
        AppState::Services s;
        s.volumes = &m_volumes;
        s.diskAccess = &m_access;
        s.reveal = &m_reveal;
        s.scannerOptions.workers = 1;
        s.trash = m_trash.get();
        return s;
    }
    // a/one (8K), a/"b\xffad" (16K), a/deep/x (4K), c/two (12K), c/three (20K)
    QByteArray sample(const QByteArray& name)
    {
        return makeTree(base() + "/" + name, {{"a/one", 8192}, {"a/b\xff" "ad", 16384}, {"a/deep/x", 4096},
                                              {"c/two", 12288}, {"c/three", 20480}});
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_trash = std::make_unique<FreedesktopTrash>(base() + "/Trash");
    }

    void nestedSelectionCountsOnce_data()
    {
        QTest::addColumn<QByteArrayList>("picked");
        QTest::addColumn<QByteArrayList>("charged"); // what the batch moves
        QTest::newRow("folder and its file") << QByteArrayList{"a/one", "a"} << QByteArrayList{"a"};
        QTest::newRow("file, folder, deeper file") << QByteArrayList{"a/deep/x", "c/two", "a"} << QByteArrayList{"c/two", "a"};
        QTest::newRow("two folders apart") << QByteArrayList{"a/deep", "c"} << QByteArrayList{"a/deep", "c"};
    }
    void nestedSelectionCountsOnce()
    {
        QFETCH(QByteArrayList, picked);
        QFETCH(QByteArrayList, charged);
        const QByteArray root = sample(QTest::currentDataTag());
        AppState state(services());
        QVERIFY(scanned(state, root));
        for (const QByteArray& path : picked)
            state.toggleSelected(nodeAt(state, root + '/' + path));
        qint64 expected = 0;
        for (const QByteArray& path : charged)
            expected += nodeAt(state, root + '/' + path)->size();
        QCOMPARE(state.selection().totalSize(), expected);
        QCOMPARE(state.selectionCount(), int(charged.size()));

        const qint64 before = state.root()->size();
        QSignalSpy redraws(&state, &AppState::rootChanged);
        QSignalSpy done(&state, &AppState::batchFinished);
        state.requestBatchDelete();
        state.confirmBatchDelete();
        QVERIFY(done.wait(10000));
        QCOMPARE(redraws.count(), 1); // once for the whole batch
        QCOMPARE(state.root()->size(), before - expected);
        QCOMPARE(state.selectionCount(), 0);
        QCOMPARE(state.lastRemoval().size(), charged.size());
        for (const QByteArray& path : charged)
            QVERIFY(!QFileInfo::exists(QFile::decodeName(root + '/' + path)));
    }

    // Undo puts back what it can, byte-exact, and never over what now stands there.
    void undoRestoresWithoutOverwriting_data()
    {
        QTest::addColumn<QByteArray>("takenMeanwhile"); // made again before the undo
        QTest::addColumn<QByteArray>("removedFromTrash"); // gone from the Trash before the undo
        QTest::newRow("all back") << QByteArray() << QByteArray();
        QTest::newRow("place taken") << QByteArray("c/two") << QByteArray();
        QTest::newRow("left the Trash") << QByteArray() << QByteArray("c/three");
    }
    void undoRestoresWithoutOverwriting()
    {
        QFETCH(QByteArray, takenMeanwhile);
        QFETCH(QByteArray, removedFromTrash);
        const QByteArray root = sample(QByteArray("undo-") + QTest::currentDataTag());
        AppState state(services());
        QVERIFY(scanned(state, root));
        const QByteArrayList picked{"a/b\xff" "ad", "c/two", "c/three"};
        for (const QByteArray& path : picked)
            state.toggleSelected(nodeAt(state, root + '/' + path));
        const std::shared_ptr<ScanTree> fresh = scanTree(root);
        QSignalSpy rescanned(&state, &AppState::rescanFinished);
        QSignalSpy done(&state, &AppState::batchFinished);
        state.requestBatchDelete();
        state.confirmBatchDelete();
        QVERIFY(done.wait(10000));
        QCOMPARE(state.undoText(), QStringLiteral("3 items moved to the Trash"));

        if (!takenMeanwhile.isEmpty())
            writeFile(root + '/' + takenMeanwhile, 100);
        for (const TrashedItem& item : state.lastRemoval())
            if (!removedFromTrash.isEmpty() && item.original.endsWith(removedFromTrash))
                QCOMPARE(::rename(item.place.constData(), QByteArray(base() + "/away-" + QTest::currentDataTag()).constData()), 0);
        const QList<TrashedItem> moved = state.lastRemoval();

        QSignalSpy undone(&state, &AppState::undoFinished);
        QVERIFY(QTest::qWaitFor([&] { return rescanned.count() == 2; }, 10000)); // a and c, after the batch
        state.undoLastRemoval();
        QVERIFY(undone.wait(10000));
        QVERIFY(state.undoText().isEmpty());
        for (const TrashedItem& item : moved) {
            const bool kept = item.original.endsWith(takenMeanwhile.isEmpty() ? "\n" : takenMeanwhile)
                              || item.original.endsWith(removedFromTrash.isEmpty() ? "\n" : removedFromTrash);
            const QByteArray info = item.place.left(item.place.lastIndexOf("/files/")) + "/info/"
                                    + item.place.mid(item.place.lastIndexOf('/') + 1) + ".trashinfo";
            QCOMPARE(QFileInfo::exists(QFile::decodeName(info)), kept); // gone with what came back
            if (kept) {
                QVERIFY(state.errorMessage().contains(QFile::decodeName(item.original.mid(item.original.lastIndexOf('/') + 1))));
                continue;
            }
            QCOMPARE(allocatedBytes(item.original) > 0, true); // back under its exact bytes
        }
        if (!takenMeanwhile.isEmpty())
            QCOMPARE(QFileInfo(QFile::decodeName(root + '/' + takenMeanwhile)).size(), 100); // never replaced
        // The restored items come back into the tree with their sizes.
        QVERIFY(QTest::qWaitFor([&] { return rescanned.count() == 4; }, 10000)); // a and c again
        if (takenMeanwhile.isEmpty() && removedFromTrash.isEmpty())
            QVERIFY(sameTree(*state.root(), *fresh->root()));
    }

    // One folder walked again gives what a whole new scan gives, hard links too.
    void rescanOfOneFolderMatchesAFullScan_data()
    {
        QTest::addColumn<QByteArray>("change");
        QTest::newRow("file added") << QByteArray("add");
        QTest::newRow("links both inside") << QByteArray("link-in");
    }
    void rescanOfOneFolderMatchesAFullScan()
    {
        QFETCH(QByteArray, change);
        const QByteArray root = sample("rescan-" + change);
        AppState state(services());
        QVERIFY(scanned(state, root));
        QVERIFY(state.focusOn(nodeAt(state, root + "/c")));
        if (change == "add")
            writeFile(root + "/c/new", 40960);
        else if (change == "link-out")
            QCOMPARE(::link(QByteArray(root + "/a/one").constData(), QByteArray(root + "/c/hard").constData()), 0);
        else
            QCOMPARE(::link(QByteArray(root + "/c/two").constData(), QByteArray(root + "/c/hard").constData()), 0);
        QSignalSpy rescanned(&state, &AppState::rescanFinished);
        state.rescanFolders({root + "/c"});
        QVERIFY(rescanned.wait(10000));
        const std::shared_ptr<ScanTree> full = scanTree(root);
        QVERIFY(sameTree(*state.root(), *full->root()));
        QCOMPARE(state.focus()->path(), root + "/c"); // the focus stays where it was
    }
};

TIDEWICK_TEST_MAIN(BatchUndoTest)
#include "tst_batchundo.moc"
