// Every file one kind: by its name, or by the folder it lies in; and the
// summary of a folder adds up to what the tree holds.

#include "TestMain.h"
#include "TestFiles.h"

#include "scan/FileKinds.h"

#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

Q_DECLARE_METATYPE(tw::FileKind)

namespace {
const FileNode* nodeAt(const FileNode& root, const QByteArray& relative)
{
    const FileNode* at = &root;
    for (const QByteArray& name : relative.split('/'))
        at = at ? childNamed(*at, std::string_view(name.constData(), std::size_t(name.size()))) : nullptr;
    return at;
}
} // namespace

class KindsTest : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    std::shared_ptr<ScanTree> m_tree;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        makeTree(QFile::encodeName(m_dir.path()) + "/t",
                 {{"Movies/Holiday.MP4", 9000}, {"Movies/notes.txt", 100}, {"Library/Caches/app/clip.mp4", 5000},
                  {"Library/Logs/x.log", 300}, {"Tools.app/Contents/Resources/icon.png", 700},
                  {"proj/node_modules/lib/readme.md", 50}, {"proj/main.cpp", 80}, {"proj/Makefile", 20},
                  {"Downloads/disk.iso", 20000}, {"Downloads/backup.tar.gz", 4000}, {"Downloads/.profile", 10},
                  {"Downloads/noext", 10}, {"Downloads/song.flac", 3000}, {"Downloads/setup.pkg", 600},
                  {"Downloads/.DS_Store", 10}, {"Photos.photoslibrary/db/x.sqlite", 400}});
        m_tree = scanTree(QFile::encodeName(m_dir.path()) + "/t");
    }

    void kindOfFile_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<FileKind>("kind");
        QTest::newRow("extension, any case") << QByteArray("Movies/Holiday.MP4") << FileKind::video;
        QTest::newRow("text") << QByteArray("Movies/notes.txt") << FileKind::documents;
        QTest::newRow("in a cache folder") << QByteArray("Library/Caches/app/clip.mp4") << FileKind::caches;
        QTest::newRow("log folder") << QByteArray("Library/Logs/x.log") << FileKind::caches;
        QTest::newRow("in a bundle") << QByteArray("Tools.app/Contents/Resources/icon.png") << FileKind::applications;
        QTest::newRow("node_modules") << QByteArray("proj/node_modules/lib/readme.md") << FileKind::code;
        QTest::newRow("source") << QByteArray("proj/main.cpp") << FileKind::code;
        QTest::newRow("known name") << QByteArray("proj/Makefile") << FileKind::code;
        QTest::newRow("disk image") << QByteArray("Downloads/disk.iso") << FileKind::archives;
        QTest::newRow("last extension") << QByteArray("Downloads/backup.tar.gz") << FileKind::archives;
        QTest::newRow("dot file") << QByteArray("Downloads/.profile") << FileKind::other;
        QTest::newRow("no extension") << QByteArray("Downloads/noext") << FileKind::other;
        QTest::newRow("audio") << QByteArray("Downloads/song.flac") << FileKind::audio;
        QTest::newRow("installer") << QByteArray("Downloads/setup.pkg") << FileKind::applications;
        QTest::newRow("finder file") << QByteArray("Downloads/.DS_Store") << FileKind::system;
        QTest::newRow("photo library") << QByteArray("Photos.photoslibrary/db/x.sqlite") << FileKind::pictures;
    }
    void kindOfFile()
    {
        QFETCH(QByteArray, path);
        QFETCH(FileKind, kind);
        const FileNode* node = nodeAt(*m_tree->root(), path);
        QVERIFY(node);
        QCOMPARE(kindOf(*node), kind);
    }

    void folderPaths_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<int>("kind"); // -1: none
        QTest::newRow("system folder at the top") << QByteArray("/usr/share/sounds") << int(FileKind::system);
        QTest::newRow("same name deeper") << QByteArray("/home/me/usr") << -1;
        QTest::newRow("innermost wins") << QByteArray("/usr/local/.cache/x") << int(FileKind::caches);
        QTest::newRow("root") << QByteArray("/") << -1;
    }
    void folderPaths()
    {
        QFETCH(QByteArray, path);
        QFETCH(int, kind);
        const auto found = kindOfFolderPath(std::string_view(path.constData(), std::size_t(path.size())));
        QCOMPARE(found ? int(*found) : -1, kind);
    }

    // The summary's figures are those of the files one by one, and its
    // drawn map carries what the chart colours by.
    void summaryAddsUp()
    {
        const FileNode& root = *m_tree->root();
        const auto summary = summariseKinds(root, 6, 0.0);
        QVERIFY(summary);
        KindBytes bytes{}, files{};
        std::function<void(const FileNode&)> visit = [&](const FileNode& node) {
            if (!node.isDirectory()) {
                bytes[std::size_t(kindOf(node))] += node.size();
                files[std::size_t(kindOf(node))] += 1;
            }
            for (const FileNode& child : node.children())
                visit(child);
        };
        visit(root);
        QCOMPARE(summary->bytes, bytes);
        QCOMPARE(summary->files, files);
        const auto& archives = summary->largest[std::size_t(FileKind::archives)];
        QCOMPARE(archives.size(), std::size_t(2));
        QCOMPARE(archives.front()->name(), std::string_view("disk.iso"));
        const FileNode* downloads = nodeAt(root, "Downloads");
        QCOMPARE(summary->dominantKind(downloads), std::optional(FileKind::archives));
        QCOMPARE(summary->shareOf(nodeAt(root, "Movies/Holiday.MP4"), FileKind::video), std::optional(1.0));
    }
};

TIDEWICK_TEST_MAIN(KindsTest)
#include "tst_kinds.moc"
