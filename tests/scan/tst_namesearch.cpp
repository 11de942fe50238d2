// Finding by name: case folded the way people write, wildcards that mean
// what they say, and the largest matches of a whole tree first.

#include "TestMain.h"
#include "TestFiles.h"

#include "scan/NameSearch.h"

#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

class NameSearchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void matching_data()
    {
        QTest::addColumn<QByteArray>("name"); // the bytes on disk
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("matches");
        QTest::newRow("anywhere, any case") << QByteArray("Old Report.PDF") << "report" << true;
        QTest::newRow("not split") << QByteArray("report") << "rep ort" << false;
        QTest::newRow("cyrillic case") << QByteArray("ОТЧЁТ.docx") << "отчёт" << true;
        QTest::newRow("yo as ye") << QByteArray("Отчёт.docx") << "ОТЧЕТ" << true;
        QTest::newRow("sharp s typed as ss") << QByteArray("Straße.txt") << "STRASSE" << true;
        QTest::newRow("ss typed as sharp s") << QByteArray("STRASSE.txt") << "straße" << true;
        QTest::newRow("capital sharp s") << QByteArray("GROẞ") << "gross" << true;
        QTest::newRow("umlaut case") << QByteArray("Größe") << "GRÖSSE" << true;
        QTest::newRow("decomposed on disk") << QByteArray("e\xcc\x81te\xcc\x81.txt") << QString::fromUtf8("ÉTÉ") << true;
        QTest::newRow("final sigma") << QByteArray("ΟΔΟΣ") << QString::fromUtf8("οδος") << true;
        QTest::newRow("not UTF-8") << QByteArray("caf\xe9.txt") << "CAF" << true;
        QTest::newRow("star: whole name") << QByteArray("photo.JPG") << "*.jpg" << true;
        QTest::newRow("star: not a prefix") << QByteArray("photo.jpg.part") << "*.jpg" << false;
        QTest::newRow("question marks") << QByteArray("IMG_0001.jpg") << "img_????.jpg" << true;
        QTest::newRow("one too few") << QByteArray("IMG_001.jpg") << "img_????.jpg" << false;
        QTest::newRow("question: a character") << QByteArray("日本語.txt") << "???.txt" << true;
        QTest::newRow("question: not a byte") << QByteArray("日本語.txt") << "?????????.txt" << false;
        QTest::newRow("stars around") << QByteArray("abcabd") << "*b?*d" << true;
        QTest::newRow("star backtracks") << QByteArray("aXbXc") << "a*X*c" << true;
        QTest::newRow("star: the empty run") << QByteArray(".iso") << "*.ISO" << true;
        QTest::newRow("star at the end") << QByteArray("IMG_1.jpg") << "img*" << true;
        QTest::newRow("star at the end: a prefix") << QByteArray("my img") << "img*" << false;
        QTest::newRow("only stars") << QByteArray("x") << "**" << true;
        QTest::newRow("star, no match") << QByteArray("abc") << "*x*" << false;
    }
    void matching()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, typed);
        QFETCH(bool, matches);
        const std::string folded = foldName(std::string_view(name.constData(), std::size_t(name.size())));
        QCOMPARE(NamePattern(typed).matches(folded), matches);
    }

    // Over a scanned tree: folders and files alike, largest first, the
    // count of every match beyond the limit.
    void largestFirst()
    {
        QTemporaryDir dir;
        const QByteArray root = makeTree(QFile::encodeName(dir.path()) + "/t",
                                         {{"a/Clip.mov", 8192}, {"b/clip.MOV", 40960}, {"b/c/clip.mov", 16384},
                                          {"clips", -1}, {"other.txt", 4096}});
        const auto tree = scanTree(root);
        const auto index = NameIndex::build(*tree->root());
        QCOMPARE(index->entryCount(), tree->nodeCount() - 1);
        const auto found = index->find(NamePattern("CLIP"), 2);
        QVERIFY(found);
        QCOMPARE(found->total, qint64(4));
        QCOMPARE(found->largest.size(), std::size_t(2));
        QCOMPARE(found->largest[0]->path(), root + "/b/clip.MOV");
        QCOMPARE(found->largest[1]->path(), root + "/b/c/clip.mov");
        QCOMPARE(index->find(NamePattern("*.mov"), 10)->total, qint64(3));
    }
};

TIDEWICK_TEST_MAIN(NameSearchTest)
#include "tst_namesearch.moc"
