// Reveal in the file manager: the freedesktop call on a private session bus
// with a stand-in file manager, the fallback when nobody answers, and exact
// addresses for names that are not UTF-8.

#include "TestMain.h"
#include "platform/linux/FreedesktopReveal.h"

#include "PrivateSessionBus.h"

using namespace tw;

namespace {
// What a file manager offers on the bus, recording what it is asked.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;
    QString startupId;
public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString& id)
    {
        shown = uris;
        startupId = id;
    }
};
} // namespace

class RevealTest : public QObject {
    Q_OBJECT

private:
    test::PrivateSessionBus m_bus;

private Q_SLOTS:
    void initTestCase() { m_bus.start(); }

    void addressesKeepTheBytes()
    {
        QCOMPARE(fileUri("/home/ann/My Files/caf\xe9.txt"),
                 QStringLiteral("file:///home/ann/My%20Files/caf%E9.txt"));
        QCOMPARE(fileUri("/a/%25?#"), QStringLiteral("file:///a/%2525%3F%23"));
    }

    void asksTheFileManager()
    {
        QDBusConnection bus = m_bus.connect("manager");
        QVERIFY(bus.isConnected());
        FakeFileManager manager;
        QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));

        QDBusConnection client = m_bus.connect("client");
        QStringList fallbacks;
        FreedesktopReveal reveal(client, [&](const QString& folder) { fallbacks << folder; });
        reveal.reveal("/home/ann/Down loads/\xff\xfe.bin");
        QTRY_COMPARE(manager.shown, QStringList{QStringLiteral("file:///home/ann/Down%20loads/%FF%FE.bin")});
        QCOMPARE(manager.startupId, QString());
        QTest::qWait(50);
        QVERIFY(fallbacks.isEmpty());
        bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
        QDBusConnection::disconnectFromBus(bus.name());
        QDBusConnection::disconnectFromBus(client.name());
    }

    void opensTheFolderWhenNobodyAnswers()
    {
        QDBusConnection client = m_bus.connect("lonely");
        QVERIFY(client.isConnected());
        QStringList fallbacks;
        FreedesktopReveal reveal(client, [&](const QString& folder) { fallbacks << folder; });
        reveal.reveal("/srv/data/report.pdf");
        QTRY_COMPARE(fallbacks, QStringList{QStringLiteral("file:///srv/data")});
        QDBusConnection::disconnectFromBus(client.name());

        // Without any bus at all, the folder opens at once; the root's items open "/".
        FreedesktopReveal offline(QDBusConnection(QStringLiteral("never-connected")),
                                  [&](const QString& folder) { fallbacks << folder; });
        offline.reveal("/top-level-file");
        QCOMPARE(fallbacks.last(), QStringLiteral("file:///"));
    }
};

TIDEWICK_TEST_MAIN(RevealTest)
#include "tst_reveal.moc"
