// Which locations ask for Full Disk Access, how the grant is probed, and the
// settings addresses.

#include "TestMain.h"
#include "platform/FileProbe.h"
#include "screens/FullDiskAccess.h"

#include <QDir>
#include <QFile>
#include <set>
#include <vector>

using namespace tw;

namespace {
// Folders that exist and folders that can be listed, and every path asked.
class FakeProbe final : public FileProbe {
public:
    bool exists(const QByteArray& path) const override
    {
        asked.push_back(path);
        return existing.count(path) > 0;
    }
    bool canList(const QByteArray& path) const override
    {
        asked.push_back(path);
        return listable.count(path) > 0;
    }
    std::set<QByteArray> existing;
    std::set<QByteArray> listable;
    mutable std::vector<QByteArray> asked;
};
} // namespace

class FullDiskAccessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void protectedLocations_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<bool>("asks");
        QTest::newRow("whole disk") << QByteArray("/") << true;
        QTest::newRow("home") << QByteArray("/Users/ann") << true;
        QTest::newRow("home library") << QByteArray("/Users/ann/Library/Caches") << true;
        QTest::newRow("documents") << QByteArray("/Users/ann/Documents") << false;
        QTest::newRow("external volume") << QByteArray("/Volumes/Backup") << false;
        QTest::newRow("private") << QByteArray("/private/tmp") << true;
        QTest::newRow("shared users folder") << QByteArray("/Users/Shared") << false;
        QTest::newRow("system library") << QByteArray("/Library/Fonts") << true;
        QTest::newRow("system") << QByteArray("/System") << true;
        QTest::newRow("usr") << QByteArray("/usr/local") << true;
        // Plain prefixes: a name that merely begins like a system tree asks too.
        QTest::newRow("variety") << QByteArray("/variety") << true;
        QTest::newRow("another user's home") << QByteArray("/Users/bob") << false;
        QTest::newRow("home-like sibling") << QByteArray("/Users/annex") << false;
    }
    void protectedLocations()
    {
        QFETCH(QByteArray, path);
        QFETCH(bool, asks);
        QCOMPARE(requiresFullDiskAccess(path, "/Users/ann"), asks);
    }

    void grantIsProbedInOrderAndStopsAtTheFirstReadable()
    {
        FakeProbe probe;
        // Nothing exists: counted as missing, though nothing proves it.
        QVERIFY(!hasFullDiskAccess("/Users/ann", probe));
        QCOMPARE(probe.asked.size(), size_t(4));
        QCOMPARE(probe.asked.front(), QByteArray("/Users/ann/Library/Mail"));
        QCOMPARE(probe.asked.back(), QByteArray("/Library/Application Support/com.apple.TCC"));

        // Existing but closed folders are passed over; one readable one is enough.
        probe.asked.clear();
        probe.existing = {"/Users/ann/Library/Mail", "/Users/ann/Library/Safari",
                          "/Users/ann/Library/Messages"};
        probe.listable = {"/Users/ann/Library/Safari"};
        QVERIFY(hasFullDiskAccess("/Users/ann", probe));
        const std::vector<QByteArray> expected = {
            "/Users/ann/Library/Mail", "/Users/ann/Library/Mail", "/Users/ann/Library/Safari",
            "/Users/ann/Library/Safari"};
        QCOMPARE(probe.asked, expected); // the later probes are not read

        // The TCC folder that exists but cannot be listed: no access.
        probe.existing = {"/Library/Application Support/com.apple.TCC"};
        probe.listable.clear();
        QVERIFY(!hasFullDiskAccess("/Users/ann", probe));
    }

    void realProbeAndThisPlatform()
    {
        const FileProbe& probe = systemFileProbe();
        QVERIFY(probe.exists(QFile::encodeName(QDir::tempPath())));
        QVERIFY(probe.canList(QFile::encodeName(QDir::tempPath())));
        QVERIFY(!probe.exists("/no/such/folder"));
        QVERIFY(!probe.canList("/no/such/folder"));
        // Where the platform has no such permission, the grant is present and
        // nothing ever asks for it.
        const SystemDiskAccess access;
        if (!systemHasPrivacyPermissions())
            QVERIFY(access.hasFullDiskAccess());
        QVERIFY(access.requiresFullDiskAccess("/"));
        QVERIFY(access.requiresFullDiskAccess(QFile::encodeName(QDir::homePath())));
    }

    void settingsAddresses()
    {
        QCOMPARE(fullDiskAccessSettingsUrl().toString(),
                 QStringLiteral("x-apple.systempreferences:com.apple.settings.PrivacySecurity."
                                "extension?Privacy_AllFiles"));
        QCOMPARE(appManagementSettingsUrl().toString(),
                 QStringLiteral("x-apple.systempreferences:com.apple.settings.PrivacySecurity."
                                "extension?Privacy_AppBundles"));
    }
};

TIDEWICK_TEST_MAIN(FullDiskAccessTest)
#include "tst_fulldiskaccess.moc"
