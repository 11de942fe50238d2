// `tidewick-cli uninstall` on fixture applications against a real Trash.
// Linux only: the freedesktop.org Trash can be pointed at the test's folder
// (XDG_DATA_HOME); on a Mac the command would use the user's own Trash.

#include "BundleFixture.h"
#include "TestMain.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

namespace {

QStringList entries(const QByteArray& folder)
{
    return QDir(QFile::decodeName(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

} // namespace

class CliUninstallTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cliUninstallMovesThePlanToTheTrash()
    {
        QTemporaryDir dir;
        const QByteArray root = QFile::encodeName(dir.path()), home = root + "/home", library = home + "/Library";
        makeBundle(root + "/Applications/Foo.app", {{"CFBundleIdentifier", "com.foo.app"}, {"CFBundleName", "Foo"}}, "exe");
        makeBundle(root + "/Applications/Bar.app", {{"CFBundleIdentifier", "com.bar.app"}, {"CFBundleName", "Bar"}}, "exe");
        makeTree(library, {{"Caches/com.foo.app/blob", 4096}, {"Application Support/Foo"}, {"Group Containers/TEAM.com.foo.app"},
                           {"Caches/com.bar.app"}, {"Application Support/Foobar"}, {"Preferences/com.foo.app.plist", 100},
                           {"Preferences/com.bar.app.plist", 100}});
        makeTree(root + "/system", {});

        const QString cli = QStringLiteral(TIDEWICK_CLI);
        QVERIFY2(QFile::exists(cli), qPrintable(cli));
        const auto run = [&](QStringList extra) {
            QProcess process;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QStringLiteral("XDG_DATA_HOME"), QFile::decodeName(root + "/xdg"));
            process.setProcessEnvironment(env);
            process.start(cli, QStringList{QStringLiteral("uninstall"), QFile::decodeName(root + "/Applications/Foo.app"),
                                           QStringLiteral("--home"), QFile::decodeName(home),
                                           QStringLiteral("--system-library"), QFile::decodeName(root + "/system"),
                                           QStringLiteral("--json")} +
                                   extra);
            process.waitForFinished(30000);
            return std::pair{process.exitCode(), QJsonDocument::fromJson(process.readAllStandardOutput()).object()};
        };

        const auto [dryStatus, dry] = run({QStringLiteral("--dry-run")});
        QVERIFY(dryStatus == 0 && dry.value("items").toArray().size() == 5);
        QVERIFY(entries(root + "/xdg/Trash/files").isEmpty());

        const auto [status, out] = run({});
        QCOMPARE(status, 0);
        QStringList results;
        for (const QJsonValue item : out.value("items").toArray()) {
            const QJsonObject object = item.toObject();
            results.append(object.value("path").toString().section(u'/', -1) + u':' + object.value("result").toString());
            if (object.value("category").toString() != QLatin1String("Application"))
                QVERIFY(!object.value("reason").toString().isEmpty());
        }
        QCOMPARE(results, (QStringList{"Foo.app:moved", "Foo:moved", "com.foo.app:moved", "TEAM.com.foo.app:kept",
                                       "com.foo.app.plist:moved"}));
        // Exactly the bundle and the unshared leftovers, each with its info file.
        QCOMPARE(entries(root + "/xdg/Trash/files"), (QStringList{"Foo", "Foo.app", "com.foo.app", "com.foo.app.plist"}));
        QCOMPARE(entries(root + "/xdg/Trash/info"), (QStringList{"Foo.app.trashinfo", "Foo.trashinfo", "com.foo.app.plist.trashinfo",
                                                               "com.foo.app.trashinfo"}));
        QVERIFY(present(root + "/xdg/Trash/files/com.foo.app/blob"));
        // Nothing of Bar's, nor the shared container, moved.
        QCOMPARE(entries(library + "/Caches"), QStringList{"com.bar.app"});
        QCOMPARE(entries(library + "/Preferences"), QStringList{"com.bar.app.plist"});
        QCOMPARE(entries(library + "/Application Support"), QStringList{"Foobar"});
        QCOMPARE(entries(library + "/Group Containers"), QStringList{"TEAM.com.foo.app"});
        QCOMPARE(entries(root + "/Applications"), QStringList{"Bar.app"});
    }
};

TIDEWICK_TEST_MAIN(CliUninstallTest)
#include "tst_cliuninstall.moc"
