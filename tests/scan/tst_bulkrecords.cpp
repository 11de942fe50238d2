// The bulk records as getattrlist(2) and getattrlistbulk(2) document them,
// written byte by byte, through the shared reader; and what an evicted entry
// becomes.

#include "FakeBulkLister.h"
#include "TestMain.h"
#include "scan/BulkRecords.h"
#include "scan/Dataless.h"

#include <QtTest>

#include <cerrno>

using namespace tw;
using namespace tw::bulk;
using namespace tw::test;

namespace {
constexpr AttributeSet kFileSet{kCommonReturned | kCommonName | kCommonDevice | kCommonObjectType | kCommonFlags
                                    | kCommonFileId | kCommonError,
                                0, 0, kFileLinkCount | kFileAllocatedSize, 0};
// Device 7, a regular file, no flags, file id 42, no error, 2 links, 8 KiB.
const QByteArray kFileFields = le32(7) + le32(kRegular) + le32(0) + le64(42) + le32(0) + le32(2) + le64(8192);
const QByteArray kFile = bulkRecord(kFileSet, "report.pdf", kFileFields);

QByteArray patched(QByteArray bytes, int at, const QByteArray& with)
{
    return bytes.replace(at, with.size(), with);
}

// A buffer of `count` records, placed `offset` bytes into memory, and what
// the reader must make of it: the names, whether each entry is complete,
// and whether the buffer was malformed. By default: malformed, nothing read.
struct Layout {
    QByteArray buffer;
    int count = 1;
    QByteArrayList names = {};
    QList<bool> complete = {};
    bool malformed = true;
    int offset = 0;
};
} // namespace

Q_DECLARE_METATYPE(Layout)

class BulkRecordsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatTheLayoutHolds_data()
    {
        QTest::addColumn<Layout>("layout");

        const AttributeSet dirSet{kFileSet.common, 0, kDirAllocatedSize, 0, 0};
        const QByteArray folder = bulkRecord(dirSet, "Photos", le32(7) + le32(kDirectory) + le32(kDatalessFlag)
                                                                   + le64(43) + le32(0) + le64(4096));
        // An entry the file system could not examine: its name and the error.
        const QByteArray failed =
            bulkRecord({kCommonReturned | kCommonName | kCommonError, 0, 0, 0, 0}, "gone", le32(EACCES));
        // A file whose allocated size did not come back.
        const QByteArray noSize = bulkRecord({kFileSet.common, 0, 0, kFileLinkCount, 0}, "partial",
                                             le32(7) + le32(kRegular) + le32(0) + le64(44) + le32(0) + le32(1));
        QTest::newRow("file, folder, failed, partial")
            << Layout{kFile + folder + failed + noSize, 4, {"report.pdf", "Photos", "gone", "partial"},
                      {true, true, false, false}, false};
        QTest::newRow("count stops before the buffer does") << Layout{kFile + folder, 1, {"report.pdf"}, {true}, false};
        QTest::newRow("buffer at an odd address") << Layout{kFile, 1, {"report.pdf"}, {true}, false, 1};
        QTest::newRow("truncated record") << Layout{kFile.left(kFile.size() - 8)};
        QTest::newRow("count beyond the buffer") << Layout{kFile, 2, {"report.pdf"}, {true}};
        QTest::newRow("length not a multiple of 4") << Layout{patched(kFile, 0, le32(std::uint32_t(kFile.size() - 1)))};
        QTest::newRow("length of zero") << Layout{patched(kFile, 0, le32(0))};
        QTest::newRow("length shorter than its attributes") << Layout{patched(kFile, 0, le32(40)) + kFile, 2};
        QTest::newRow("name reference past the record") << Layout{patched(kFile, 24, le32(4000))};
        QTest::newRow("name without its NUL") << Layout{patched(kFile, 28, le32(10))};
        QTest::newRow("name with a slash") << Layout{bulkRecord(kFileSet, "a/b", kFileFields)};
        QTest::newRow("attribute never asked for") << Layout{patched(kFile, 4, le32(kFileSet.common | 0x4))};
        QTest::newRow("no name") << Layout{patched(kFile, 4, le32(kFileSet.common & ~kCommonName))};
        QTest::newRow("nothing") << Layout{{}, 0, {}, {}, false};
    }
    void readsWhatTheLayoutHolds()
    {
        QFETCH(Layout, layout);
        // Only the buffer's own bytes are readable (ASan sees any read beyond).
        const auto offset = std::size_t(layout.offset);
        std::vector<unsigned char> memory(offset + std::size_t(layout.buffer.size()));
        std::copy(layout.buffer.begin(), layout.buffer.end(), memory.begin() + layout.offset);
        RecordReader reader(memory.data() + offset, std::size_t(layout.buffer.size()), layout.count);
        Entry entry;
        QByteArrayList seen;
        QList<bool> whole;
        while (reader.next(entry)) {
            seen.append(QByteArray(entry.name.data(), qsizetype(entry.name.size())));
            whole.append(entry.complete());
            if (seen.size() == 1 && entry.complete()) {
                QCOMPARE(entry.device, 7);
                QCOMPARE(entry.fileId, quint64(42 + (entry.objectType == kDirectory)));
                QCOMPARE(entry.allocatedSize, entry.objectType == kDirectory ? 4096 : 8192);
                QCOMPARE(entry.linkCount, entry.objectType == kDirectory ? 0u : 2u);
            }
        }
        QCOMPARE(seen, layout.names);
        QCOMPARE(whole, layout.complete);
        QCOMPARE(reader.malformed(), layout.malformed);
    }

    // The fuzzer's seeds, written apart from this code by fuzz/make_corpus.py.
    void fuzzSeedsRead_data()
    {
        QTest::addColumn<QString>("seed");
        QTest::addColumn<int>("entries");
        QTest::addColumn<bool>("malformed");
        QTest::newRow("one file") << "one-file" << 1 << false;
        QTest::newRow("file, evicted folder, failed entry") << "mixed" << 3 << false;
        QTest::newRow("second record cut short") << "truncated" << 1 << true;
        QTest::newRow("record of length 0") << "zero-length-record" << 0 << true;
    }
    void fuzzSeedsRead()
    {
        QFETCH(QString, seed);
        QFETCH(int, entries);
        QFETCH(bool, malformed);
        QFile file(QStringLiteral(QT_TESTCASE_SOURCEDIR "/../fuzz/corpus/bulk/") + seed);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        RecordReader reader(reinterpret_cast<const unsigned char*>(bytes.constData()) + 1,
                            std::size_t(bytes.size() - 1), std::uint8_t(bytes.at(0)));
        Entry entry;
        int read = 0;
        while (reader.next(entry))
            read += entry.complete() || entry.error != 0;
        QCOMPARE(read, entries);
        QCOMPARE(reader.malformed(), malformed);
    }

    void datalessOutcome_data()
    {
        QTest::addColumn<bool>("folder");
        QTest::addColumn<uint>("flags");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("outcome");
        const int usual = int(EntryOutcome::usual), cloud = int(EntryOutcome::inCloud),
                  unreadable = int(EntryOutcome::unreadable);
        QTest::newRow("file") << false << 0u << 0 << usual;
        QTest::newRow("file with other flags") << false << 0x8000u << 0 << usual;
        QTest::newRow("evicted file") << false << kDatalessFlag << 0 << cloud;
        QTest::newRow("evicted folder, not opened") << true << kDatalessFlag << 0 << cloud;
        QTest::newRow("folder the system would not fetch") << true << 0u << EDEADLK << cloud;
        QTest::newRow("folder without permission") << true << 0u << EACCES << unreadable;
        QTest::newRow("folder gone") << true << 0u << ENOENT << unreadable;
        QTest::newRow("listed folder") << true << 0u << 0 << usual;
    }
    void datalessOutcome()
    {
        QFETCH(bool, folder);
        QFETCH(uint, flags);
        QFETCH(int, error);
        QFETCH(int, outcome);
        QCOMPARE(int(tw::datalessOutcome(folder, flags, error)), outcome);
    }
};

TIDEWICK_TEST_MAIN(BulkRecordsTest)
#include "tst_bulkrecords.moc"
