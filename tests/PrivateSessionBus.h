// A session bus of the test's own (dbus-daemon), so that services registered by
// one test meet nothing of the desktop's. Linux only: macOS has no session bus.
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QtTest>

namespace tw::test {

class PrivateSessionBus {
public:
    ~PrivateSessionBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }
    // Call from initTestCase; fails it when the daemon cannot start.
    void start()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        QVERIFY2(m_daemon.waitForStarted(5000), "dbus-daemon is needed (package dbus-daemon)");
        QVERIFY(m_daemon.waitForReadyRead(5000));
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        QVERIFY(!m_address.isEmpty());
    }
    // A new connection on each call, named after `role` so that a test can hold several.
    QDBusConnection connect(const char* role)
    {
        return QDBusConnection::connectToBus(m_address, QString::fromLatin1(role) + QString::number(++m_connections));
    }

private:
    QProcess m_daemon;
    QString m_address;
    int m_connections = 0;
};

} // namespace tw::test
