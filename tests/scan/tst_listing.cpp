// The walk lists folders two ways, readdir with a stat an entry, or bulk
// records; here the bulk path runs over a lister that writes the records as
// macOS does, and both must give the same tree. Entries a file provider
// keeps in the cloud stay leaves with their local size.

#include "FakeBulkLister.h"
#include "TestFiles.h"
#include "TestMain.h"
#include "app/AppState.h"
#include "chart/ChartCompanions.h"
#include "localization/LocalizationManager.h"
#include "scan/Scanner.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace tw;
using namespace tw::test;

namespace {

std::shared_ptr<ScanTree> scanThrough(const QByteArray& path, const BulkLister* lister, int workers = 2)
{
    Scanner::Options options;
    options.workers = workers;
    options.bulkLister = lister;
    return Scanner({}, options).scan(path);
}

// The whole tree as text, children by name: what both listings must agree on.
QByteArray describe(const FileNode& node, int depth = 0)
{
    QByteArray out = QByteArray(depth, ' ') + nameOf(node) + ' '
                     + QByteArray::number(node.size()) + ' ' + QByteArray::number(node.fileCount())
                     + (node.isDirectory() ? " d" : "") + (node.isInaccessible() ? " !" : "")
                     + (node.isInCloud() ? " c" : "") + '\n';
    QByteArrayList children;
    for (const FileNode& child : node.children())
        children.append(describe(child, depth + 1));
    std::sort(children.begin(), children.end());
    return out + children.join();
}

} // namespace

class ListingTest : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

    // Each tree the walk's own tests use, by kind, at `root`.
    void build(const QByteArray& kind, const QByteArray& root)
    {
        makeDir(root);
        if (kind == "nested") {
            makeTree(root, {{"a/b/deep", 20000}, {"a/one", 5000}, {"top", 70000}, {"empty"}});
        } else if (kind == "hardlinks") {
            makeTree(root, {{"x/file", 1 << 20}, {"y"}});
            QVERIFY(::link(QByteArray(root + "/x/file").constData(), QByteArray(root + "/y/file").constData()) == 0);
        } else if (kind == "odd entries") {
            writeFile(root + "/plain", 4096);
            symlinkAt("plain", root + "/link");
            QVERIFY(::mkfifo(QByteArray(root + "/fifo").constData(), 0644) == 0);
            writeFile(root + "/caf\xe9-\xff", 8192); // not UTF-8
        } else if (kind == "long listing") {
            // More records than one buffer holds: the lister is called again.
            for (int i = 0; i < 1500; ++i)
                writeFile(root + "/entry-with-a-longish-name-" + QByteArray::number(i), i % 3 ? 0 : 4096);
        } else if (kind == "deep chain") {
            // A file at every level: those below level 128 are not counted,
            // and the folder at level 129 is one flagged node.
            for (QByteArray at = root + "/d"; at.size() <= root.size() + 2 * 130; at += "/d")
                writeBytes(at + "/f", "x");
        }
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void cleanupTestCase() { removeTree(base()); }

    void bothListingsGiveTheSameTree_data()
    {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<int>("dropEvery"); // records left without attributes, examined by fstatat
        QTest::addColumn<qint64>("files");
        for (const auto& [kind, files] : {std::pair<const char*, qint64>{"nested", 3}, {"hardlinks", 2},
                                          {"odd entries", 3}, {"long listing", 1500}, {"deep chain", 128}}) {
            QTest::newRow(kind) << QByteArray(kind) << 0 << files;
            QTest::newRow(QByteArray(kind + QByteArray(", attributes missing")).constData())
                << QByteArray(kind) << 3 << files;
        }
    }
    void bothListingsGiveTheSameTree()
    {
        QFETCH(QByteArray, kind);
        QFETCH(int, dropEvery);
        QFETCH(qint64, files);
        const QByteArray root = base() + "/" + kind + QByteArray::number(dropEvery);
        build(kind, root);
        FakeBulkLister lister;
        lister.dropEvery = dropEvery;
        // Which link of a file carries its blocks depends on the order of the
        // walk, which several workers do not fix.
        const int workers = kind == "hardlinks" ? 1 : 2;
        const auto byNames = scanThrough(root, nullptr, workers);
        const auto byRecords = scanThrough(root, &lister, workers);
        QCOMPARE(describe(*byRecords->root()), describe(*byNames->root()));
        QCOMPARE(byRecords->root()->fileCount(), files);
        QCOMPARE(byRecords->root()->inaccessibleCount(), qint64(kind == "deep chain"));
        if (kind == "hardlinks")
            QCOMPARE(byRecords->root()->size(), allocatedBytes(root + "/x/file"));
    }

    // Evicted entries: the flag keeps a folder shut, a refused listing makes
    // it a leaf in the cloud, any other refusal is unreadable.
    void evictedEntriesStayInTheCloud_data()
    {
        QTest::addColumn<bool>("flagged");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("inCloud");
        QTest::newRow("flagged folder") << true << 0 << true;
        QTest::newRow("listing refused for want of download") << false << EDEADLK << true;
        QTest::newRow("listing refused for want of permission") << false << EACCES << false;
    }
    void evictedEntriesStayInTheCloud()
    {
        QFETCH(bool, flagged);
        QFETCH(int, error);
        QFETCH(bool, inCloud);
        const QByteArray root = base() + "/cloud-" + QByteArray(QTest::currentDataTag()).replace(' ', '-');
        makeTree(root, {{"Evicted/inside", 64 * 1024}, {"stub.pages", 4096}});
        struct stat folder {};
        QCOMPARE(::stat(QByteArray(root + "/Evicted").constData(), &folder), 0);
        FakeBulkLister lister;
        lister.dataless = {"stub.pages"};
        if (flagged)
            lister.dataless.insert("Evicted");
        else
            lister.refusedFolders[folder.st_ino] = error;

        const auto tree = scanThrough(root, &lister, 1);
        const FileNode* evicted = childNamed(*tree->root(), "Evicted");
        const FileNode* stub = childNamed(*tree->root(), "stub.pages");
        QVERIFY(evicted && stub);
        QCOMPARE(evicted->isInCloud(), inCloud);
        QCOMPARE(evicted->isInaccessible(), !inCloud);
        QVERIFY(evicted->isDirectory() && !evicted->hasChildren());
        QCOMPARE(evicted->size(), inCloud ? qint64(folder.st_blocks) * 512 : 0);
        QVERIFY(stub->isInCloud());
        QCOMPARE(stub->size(), allocatedBytes(root + "/stub.pages"));
        QCOMPARE(tree->root()->size(), evicted->size() + stub->size());

        LocalizationManager::shared().setCurrent(Language::english);
        QCOMPARE(tooltipText(*evicted, tree->root()->size()).inCloud, inCloud ? "in the cloud" : "");
        QCOMPARE(tooltipText(*stub, tree->root()->size()).inCloud, "in the cloud");
    }
};

TIDEWICK_TEST_MAIN(ListingTest)
#include "tst_listing.moc"
