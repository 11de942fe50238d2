// Linux's running applications: a process runs an application when its
// executable lies inside the bundle, and Quit sends it SIGTERM.

#include "TestMain.h"
#include "TestFiles.h"
#include "platform/RunningApplications.h"

#include <QProcess>
#include <QTemporaryDir>

using namespace tw;

class RunningTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aProcessInsideTheBundleRunsAndQuits()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QByteArray bundle = QFile::encodeName(dir.path()) + "/Sleeper.app";
        QVERIFY(QDir().mkpath(QFile::decodeName(bundle + "/Contents/MacOS")));
        const QString program = QFile::decodeName(bundle + "/Contents/MacOS/sleeper");
        QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), program));
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));

        RunningApplications& running = systemRunningApplications();
        QVERIFY(!running.isRunning(QStringLiteral("com.test.sleeper"), bundle));
        QProcess process;
        process.start(program, {QStringLiteral("30")});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY(running.isRunning(QStringLiteral("com.test.sleeper"), bundle));
        // A neighbour whose name merely begins the same does not run.
        QVERIFY(!running.isRunning({}, QFile::encodeName(dir.path()) + "/Sleeper"));
        QVERIFY(running.terminate({}, bundle + '/'));
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit); // ended by the signal
        QVERIFY(!running.isRunning({}, bundle));
        QVERIFY(!running.terminate({}, bundle));
    }
};

TIDEWICK_TEST_MAIN(RunningTest)
#include "tst_running.moc"
