#include "TestFiles.h"
#include "TestMain.h"

#include "scanfile/Decompressor.h"
#include "scanfile/ScanDiff.h"
#include "scanfile/ScanFileReader.h"
#include "scanfile/ScanFileWriter.h"

#include <QBuffer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;
using scanfile::ReadError;

namespace {

QByteArray written(const ScanTree& tree)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (scanfile::writeScan(tree, buffer, {}) != scanfile::WriteOutcome::written)
        return {};
    return buffer.data();
}

// A peer tool the tests compare with: CI installs it, elsewhere it may be missing.
QString peer(const char* name)
{
    const QString found = QStandardPaths::findExecutable(QString::fromLatin1(name));
    if (found.isEmpty() && qEnvironmentVariableIsSet("CI"))
        qFatal("%s is missing; tools/setup-debian.sh installs it", name);
    return found;
}

QByteArray run(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput();
}

// Folders' own blocks, which the tree leaves out and other tools count.
qint64 folderBlocks(const QByteArray& root)
{
    qint64 sum = allocatedBytes(root);
    QDirIterator it(QFile::decodeName(root), QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::NoSymLinks,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        sum += allocatedBytes(QFile::encodeName(it.next()));
    return sum;
}

} // namespace

class tst_scanfile : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QByteArray m_tree;

private Q_SLOTS:
    void cleanupTestCase() { removeTree(QFile::encodeName(m_dir.path())); }
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_tree = makeTree(QFile::encodeName(m_dir.path()) + "/tree",
                          {{"plain.txt", 5000}, {"sub/deep/z", 100}, {"sub/empty", -1}, {"quote\"back\\slash", 1},
                           {"tab\there\x01", 2}, {"\xe6\x96\x87\xe4\xbb\xb6 \xf0\x9f\x93\x81", 3}, {"big", 70000}});
        writeFile(m_tree + "/bad\xff\xfename", 10);  // not UTF-8
        writeFile(m_tree + "/\xed\xb3\xbf", 10);      // a surrogate's bytes, not UTF-8 either
        QCOMPARE(::link(QByteArray(m_tree + "/big").constData(), QByteArray(m_tree + "/sub/big-again").constData()), 0);
        QCOMPARE(::truncate(QByteArray(m_tree + "/sub/deep/z").constData(), 1 << 20), 0); // sparse: length beyond blocks
    }

    // Tidewick's own file gives back every name, size and flag, plain and
    // compressed as ncdu compresses.
    void ownFileRoundTrips_data()
    {
        QTest::addColumn<bool>("compressed");
        QTest::newRow("plain") << false;
        QTest::newRow("zstd") << true;
    }
    void ownFileRoundTrips()
    {
        QFETCH(bool, compressed);
        const auto tree = scanTree(m_tree);
        QByteArray bytes = written(*tree);
        QVERIFY(!bytes.isEmpty());
        if (compressed) {
            const QString zstd = peer("zstd");
            if (zstd.isEmpty())
                QSKIP("zstd is not installed");
            const QString plain = m_dir.filePath(QStringLiteral("own.json"));
            QFile file(plain);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
            file.close();
            bytes = run(zstd, {QStringLiteral("-q"), QStringLiteral("-c"), plain});
            QVERIFY(scanfile::looksZstd(reinterpret_cast<const unsigned char*>(bytes.constData()), std::size_t(bytes.size())));
        }
        int progressCalls = 0;
        scanfile::ReadOptions options;
        options.progress = [&](qint64, qint64) { ++progressCalls; };
        const scanfile::ReadResult read = scanfile::readScanBytes(bytes, options);
        QVERIFY2(read.tree, qPrintable(scanfile::describe(read)));
        QCOMPARE(read.tree->root()->path(), m_tree);
        QVERIFY(sameTree(*tree->root(), *read.tree->root()));
        QVERIFY(sortedEverywhere(*read.tree->root()));
        QCOMPARE(read.tree->root()->size(), allocatedSum(m_tree, {"plain.txt", "sub/deep/z", "quote\"back\\slash", "tab\there\x01",
                                                                 "\xe6\x96\x87\xe4\xbb\xb6 \xf0\x9f\x93\x81", "big",
                                                                 "bad\xff\xfename", "\xed\xb3\xbf"}));
        QCOMPARE(read.progname, QStringLiteral("tidewick"));
        QVERIFY(progressCalls >= 1);
    }

    // Files that ncdu and gdu wrote open with the totals those tools show,
    // less the folders' own blocks that a tree does not count.
    void peerFilesOpen_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::newRow("ncdu") << QStringLiteral("ncdu");
        QTest::newRow("gdu") << QStringLiteral("gdu");
    }
    void peerFilesOpen()
    {
        QFETCH(QString, tool);
        const QString program = peer(qPrintable(tool));
        if (program.isEmpty())
            QSKIP("the peer tool is not installed");
        const QString out = m_dir.filePath(tool + QStringLiteral(".json"));
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, {QStringLiteral("-o"), out, QFile::decodeName(m_tree)});
        QVERIFY(process.waitForFinished(60000) && process.exitCode() == 0);
        const scanfile::ReadResult read = scanfile::readScanFile(QFile::encodeName(out));
        QVERIFY2(read.tree, qPrintable(scanfile::describe(read)));
        const auto live = scanTree(m_tree);
        QCOMPARE(read.tree->root()->size(), live->root()->size());
        QCOMPARE(read.tree->root()->fileCount(), live->root()->fileCount());
        // Names come back byte for byte from ncdu; gdu writes U+FFFD for bytes that are not UTF-8.
        QCOMPARE(childNamed(*read.tree->root(), "bad\xff\xfename") != nullptr, tool == QLatin1String("ncdu"));
        if (tool == QLatin1String("gdu")) {
            const QByteArray total = run(program, {QStringLiteral("-n"), QStringLiteral("-s"), QStringLiteral("-p"),
                                                   QStringLiteral("--no-prefix"), QFile::decodeName(m_tree)});
            QCOMPARE(read.tree->root()->size() + folderBlocks(m_tree), total.simplified().split(' ').first().toLongLong());
        } else {
            QCOMPARE(read.tree->root()->size() + read.folderBytes, folderBlocks(m_tree) + live->root()->size());
        }
    }

    // A file is outside data: each fault ends in its own clear error.
    void hostileFilesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<ReadError>("error");
        const QByteArray head = "[1,2,{\"progname\":\"x\"},";
        QTest::newRow("not JSON") << QByteArray("hello") << ReadError::notScanFile;
        QTest::newRow("empty") << QByteArray() << ReadError::notScanFile;
        QTest::newRow("version 2") << QByteArray("[2,0,{},{\"name\":\"/a\"}]") << ReadError::version;
        QTest::newRow("truncated") << head + "[{\"name\":\"/r\"},{\"name\":\"a\",\"dsize\":4" << ReadError::truncated;
        QTest::newRow("deep") << head + "[{\"name\":\"/r\"}" + QByteArray(",[{\"name\":\"d\"}").repeated(100000)
                              << ReadError::tooDeep;
        QTest::newRow("overflow") << head + "[{\"name\":\"/r\"},{\"name\":\"a\",\"dsize\":99999999999999999999}]]"
                                  << ReadError::badNumber;
        QTest::newRow("fraction") << head + "[{\"name\":\"/r\"},{\"name\":\"a\",\"dsize\":1.5}]]" << ReadError::badNumber;
        QTest::newRow("negative") << head + "[{\"name\":\"/r\"},{\"name\":\"a\",\"dsize\":-4096}]]" << ReadError::badNumber;
        QTest::newRow("wrong type") << head + "[{\"name\":\"/r\"},{\"name\":\"a\",\"dsize\":\"big\"}]]" << ReadError::wrongType;
        QTest::newRow("name a number") << head + "[{\"name\":\"/r\"},{\"name\":7}]]" << ReadError::wrongType;
        QTest::newRow("child not an entry") << head + "[{\"name\":\"/r\"},7]]" << ReadError::wrongType;
        QTest::newRow("huge string") << head + "[{\"name\":\"/r\"},{\"name\":\"" + QByteArray(40 * 1024, 'n') + "\"}]]"
                                     << ReadError::badName;
        QTest::newRow("dot dot") << head + "[{\"name\":\"/r\"},{\"name\":\"..\"}]]" << ReadError::badName;
        QTest::newRow("slash") << head + "[{\"name\":\"/r\"},{\"name\":\"a/b\"}]]" << ReadError::badName;
        QTest::newRow("duplicate") << head + "[{\"name\":\"/r\"},{\"name\":\"a\"},[{\"name\":\"a\"}]]]" << ReadError::duplicateName;
        QTest::newRow("beyond a disk") << head + "[{\"name\":\"/r\"},{\"name\":\"a\",\"dsize\":9000000000000000000}]]"
                                       << ReadError::beyondDisk;
        const QByteArray large = "{\"name\":\"%\",\"dsize\":72000000000000000}";
        QTest::newRow("sum beyond a disk") << head + "[{\"name\":\"/r\"}," + QByteArray(large).replace('%', "a") + ","
                                                  + QByteArray(large).replace('%', "b") + "]]"
                                           << ReadError::beyondDisk;
        QTest::newRow("trailing garbage") << head + "{\"name\":\"/f\"}] x" << ReadError::syntax;
        QTest::newRow("broken zstd") << QByteArray("\x28\xb5\x2f\xfd garbage", 12) << ReadError::compressed;
    }
    void hostileFilesAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(ReadError, error);
        const scanfile::ReadResult read = scanfile::readScanBytes(bytes);
        QCOMPARE(read.error, error);
        QVERIFY(!read.tree);
        QVERIFY(!scanfile::describe(read).isEmpty());
    }

    // What another writer flagged survives a read and a write: skipped
    // entries, unreadable folders, links counted once.
    void flagsSurviveAndLinksCountOnce()
    {
        const QByteArray text = "[1,2,{},[{\"name\":\"/r\",\"dev\":7},"
                                "{\"name\":\"a\",\"asize\":5,\"dsize\":4096,\"ino\":9,\"hlnkc\":true,\"nlink\":2},"
                                "[{\"name\":\"locked\",\"read_error\":true}],"
                                "{\"name\":\"mnt\",\"excluded\":\"otherfs\"},"
                                "[{\"name\":\"s\"},{\"name\":\"b\",\"asize\":5,\"dsize\":4096,\"ino\":9,\"hlnkc\":true}]]]";
        const scanfile::ReadResult read = scanfile::readScanBytes(text);
        QVERIFY2(read.tree, qPrintable(scanfile::describe(read)));
        QCOMPARE(read.tree->root()->size(), 4096);
        QCOMPARE(read.tree->root()->inaccessibleCount(), 1);
        const QByteArray again = written(*read.tree);
        QVERIFY(again.contains("{\"name\":\"mnt\",\"excluded\":\"otherfs\"}"));
        QVERIFY(again.contains("{\"name\":\"locked\",\"read_error\":true}"));
        QCOMPARE(again.count("\"dev\":7,\"ino\":9,\"hlnkc\":true"), 2);
        const scanfile::ReadResult reread = scanfile::readScanBytes(again);
        QVERIFY(reread.tree && sameTree(*read.tree->root(), *reread.tree->root()));
    }

    void cancelStopsReading()
    {
        QByteArray many = "[1,2,{},[{\"name\":\"/r\"}";
        for (int i = 0; i < 40000; ++i)
            many += ",{\"name\":\"f" + QByteArray::number(i) + "\",\"dsize\":4096}";
        many += "]]";
        const std::atomic<bool> cancel{true};
        scanfile::ReadOptions options;
        options.cancel = &cancel;
        QCOMPARE(scanfile::readScanBytes(many, options).error, ReadError::cancelled);
        const scanfile::ReadResult whole = scanfile::readScanBytes(many);
        QVERIFY(whole.tree);
        QCOMPARE(whole.tree->root()->size(), 40000 * 4096);
    }

    // The command line: a saved scan prints as the scan itself did, and
    // against itself it shows no change.
    void cliSavesOpensAndDiffs()
    {
        const QString cli = QStringLiteral(TIDEWICK_CLI);
        const QString tree = QFile::decodeName(m_tree);
        const QString saved = m_dir.filePath(QStringLiteral("cli.json"));
        const QByteArray exported = run(cli, {QStringLiteral("scan"), tree, QStringLiteral("--export"), QStringLiteral("-")});
        QVERIFY(exported.startsWith("[1,2,{"));
        QVERIFY(run(cli, {QStringLiteral("scan"), tree, QStringLiteral("--quiet"), QStringLiteral("--export"), saved})
                    .startsWith("path: "));
        const auto rootOf = [](const QByteArray& json) { return QJsonDocument::fromJson(json).object().value(u"root"); };
        const QJsonValue live = rootOf(run(cli, {QStringLiteral("scan"), tree, QStringLiteral("--json"), QStringLiteral("--quiet")}));
        QVERIFY(live.isObject());
        QCOMPARE(rootOf(run(cli, {QStringLiteral("open"), saved, QStringLiteral("--json")})), live);
        const QJsonObject diff = QJsonDocument::fromJson(run(cli, {QStringLiteral("diff"), saved, saved, QStringLiteral("--json")})).object();
        QCOMPARE(diff.value(u"count").toInt(-1), 0);
    }

    // Two scans of a tree changed in known ways: the diff names exactly those changes.
    void diffListsTheChanges()
    {
        const QByteArray root = makeTree(QFile::encodeName(m_dir.path()) + "/changing",
                                         {{"same", 4096}, {"grows", 4096}, {"shrinks", 40960}, {"goes", 8192},
                                          {"folder/goes-with-it", 4096}, {"kept/inner", 4096}});
        const auto sizeOf = [&](const char* path) { return allocatedBytes(root + '/' + path); };
        const qint64 grew = sizeOf("grows"), shrank = sizeOf("shrinks"), went = sizeOf("goes"),
                     folder = sizeOf("folder/goes-with-it");
        const auto before = scanTree(root);
        writeFile(root + "/grows", 20000);
        writeFile(root + "/shrinks", 100);
        QCOMPARE(::unlink(QByteArray(root + "/goes").constData()), 0);
        removeTree(root + "/folder");
        makeTree(root, {{"kept/new", 12000}, {"newfolder/x", 5000}});
        const auto after = scanTree(root);
        const scanfile::Diff diff = scanfile::diffTrees(*before->root(), *after->root());
        using K = scanfile::Change::Kind;
        const auto row = [](const QByteArray& path, K kind, qint64 delta) {
            return QStringLiteral("%1 %2 %3").arg(QString::fromUtf8(path)).arg(int(kind)).arg(delta);
        };
        QStringList got;
        for (const scanfile::Change& change : diff.changes)
            got << row(change.path, change.kind, change.delta());
        QStringList wanted{row("grows", K::grown, sizeOf("grows") - grew),
                           row("shrinks", K::shrunk, sizeOf("shrinks") - shrank),
                           row("goes", K::removed, -went),
                           row("folder", K::removed, -folder),
                           row("kept/new", K::added, sizeOf("kept/new")),
                           row("newfolder", K::added, sizeOf("newfolder/x"))};
        got.sort();
        wanted.sort();
        QCOMPARE(got, wanted);
        QCOMPARE(diff.after - diff.before, after->root()->size() - before->root()->size());
    }
};

TIDEWICK_TEST_MAIN(tst_scanfile)
#include "tst_scanfile.moc"
