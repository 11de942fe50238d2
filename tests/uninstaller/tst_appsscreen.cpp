// What the applications screen and the uninstall dialog decide: search and
// orders, the relative dates in the interface's languages, the dialog's
// defaults, merge and button rules, and `tidewick-cli uninstall` on
// fixture applications against a real Trash.

#include "TestMain.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "localization/LocalizationManager.h"
#include "platform/FileReveal.h"
#include "platform/RunningApplications.h"
#include "uninstaller/AppsListModel.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/PropertyList.h"
#include "uninstaller/UninstallChoices.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <atomic>

using namespace tw;
using namespace tw::test;
using namespace std::chrono_literals;

namespace {

std::unique_ptr<InstalledApp> made(const char* name, const char* id, std::optional<QDateTime> opened = {})
{
    return std::make_unique<InstalledApp>(QByteArray("/Applications/") + name + ".app", QString::fromUtf8(name),
                                          QString::fromUtf8(id), std::nullopt, opened, QByteArray());
}

QStringList namesOf(const std::vector<InstalledApp*>& apps)
{
    QStringList names;
    for (const InstalledApp* app : apps)
        names.append(app->name());
    return names;
}

RelatedFile leftover(const char* path, qint64 size, bool shared = false,
                     RelatedCategory category = RelatedCategory::caches)
{
    RelatedFile file;
    file.url = path;
    file.size = size;
    file.isShared = shared;
    file.category = category;
    return file;
}

class FakeRunning final : public RunningApplications {
public:
    bool isRunning(const QString&, const QByteArray&) const override { return running; }
    bool terminate(const QString&, const QByteArray&) override
    {
        ++terminated;
        running = stubborn;
        return true;
    }
    std::atomic<bool> running{false};
    bool stubborn = false;
    int terminated = 0;
};

class NoReveal final : public FileReveal {
public:
    void reveal(const QByteArray&) override {}
};

void makePath(const QByteArray& path)
{
    QVERIFY(QDir().mkpath(QFile::decodeName(path)));
}

void writeInfo(const QByteArray& bundle, const char* id, const char* name)
{
    makePath(bundle + "/Contents/MacOS");
    writeFile(bundle + "/Contents/MacOS/main", 8192);
    const QVariantMap info{{QStringLiteral("CFBundleIdentifier"), QString::fromLatin1(id)},
                           {QStringLiteral("CFBundleName"), QString::fromLatin1(name)},
                           {QStringLiteral("CFBundleExecutable"), QStringLiteral("main")}};
    const QByteArray plist = writePropertyList(info, false);
    QFile file(QFile::decodeName(bundle + "/Contents/Info.plist"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(plist), plist.size());
}

QStringList entries(const QByteArray& folder)
{
    QStringList list = QDir(QFile::decodeName(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    list.sort();
    return list;
}

} // namespace

class AppsScreenTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void searchAndOrders()
    {
        const QDateTime now = QDateTime::currentDateTime();
        std::vector<std::unique_ptr<InstalledApp>> owned;
        owned.push_back(made("Calculator", "com.apple.calculator"));
        owned.push_back(made("Firefox", "org.mozilla.firefox", now.addDays(-3)));
        owned.push_back(made("Notes", "com.apple.Notes", now.addDays(-1)));
        owned.push_back(made("Safari", "com.apple.Safari"));
        owned.push_back(made("Zed", "dev.zed.Zed", now.addDays(-30)));
        QList<InstalledApp*> apps;
        for (auto& app : owned)
            apps.append(app.get());

        QCOMPARE(namesOf(visibleApps(apps, QStringLiteral("  Safari "), AppSort::nameAsc)), QStringList{"Safari"});
        QCOMPARE(namesOf(visibleApps(apps, QStringLiteral("COM.APPLE"), AppSort::nameAsc)),
                 (QStringList{"Calculator", "Notes", "Safari"}));
        QVERIFY(visibleApps(apps, QStringLiteral("nothing"), AppSort::nameAsc).empty());
        QVERIFY(visibleApps(apps, QStringLiteral("safari\n"), AppSort::nameAsc).empty());

        // All sizes 0 at first: both size orders keep the name order.
        const QStringList byName{"Calculator", "Firefox", "Notes", "Safari", "Zed"};
        QCOMPARE(namesOf(visibleApps(apps, {}, AppSort::sizeDesc)), byName);
        QCOMPARE(namesOf(visibleApps(apps, {}, AppSort::sizeAsc)), byName);
        owned[3]->setBundleSize(500);
        owned[4]->setBundleSize(500);
        owned[0]->setBundleSize(900);
        QCOMPARE(namesOf(visibleApps(apps, {}, AppSort::sizeDesc)),
                 (QStringList{"Calculator", "Safari", "Zed", "Firefox", "Notes"}));
        QCOMPARE(namesOf(visibleApps(apps, {}, AppSort::sizeAsc)),
                 (QStringList{"Firefox", "Notes", "Safari", "Zed", "Calculator"}));
        QCOMPARE(namesOf(visibleApps(apps, {}, AppSort::nameDesc)),
                 (QStringList{"Zed", "Safari", "Notes", "Firefox", "Calculator"}));
        // Never-opened applications sink to the end, in name order.
        QCOMPARE(namesOf(visibleApps(apps, {}, AppSort::lastOpened)),
                 (QStringList{"Notes", "Firefox", "Zed", "Calculator", "Safari"}));
    }

    void relativeDatesInEachLanguage()
    {
        const QDateTime now(QDate(2026, 11, 23), QTime(15, 0));
        const QList<std::tuple<QDateTime, Language, QString>> cases{
            {now.addDays(-3), Language::english, "3 days ago"},
            {now.addDays(-3), Language::russian, "3 дн. назад"},
            {now.addDays(-3), Language::german, "vor 3 Tagen"},
            {now.addDays(-3), Language::chinese, "3天前"},
            {now.addDays(-1), Language::english, "1 day ago"},
            {now.addDays(-1), Language::german, "vor 1 Tag"},
            {now.addSecs(-2 * 3600), Language::english, "2 hr. ago"},
            {now.addDays(-15), Language::english, "2 wk. ago"},
            {now.addMonths(-2), Language::german, "vor 2 Mon."},
            {now.addYears(-5), Language::russian, "5 л. назад"},
            {now.addYears(-21), Language::russian, "21 г. назад"},
            {now.addYears(-1), Language::chinese, "1年前"},
            {now.addSecs(600), Language::english, "in 10 min."},
        };
        for (const auto& [date, language, expected] : cases)
            QCOMPARE(relativeDateText(date, now, language), expected);
        QCOMPARE(itemCountText(1, Language::english), QStringLiteral("1 item"));
        QCOMPARE(itemCountText(21, Language::english), QStringLiteral("21 items"));
        QCOMPARE(itemCountText(21, Language::russian),
                 QStringLiteral("21 ") + LocalizationManager::shared().text(Language::russian, QStringLiteral("apps.itemMany")));
    }

    void dialogDefaultsMergeAndButton()
    {
        FakeRunning running;
        NoReveal reveal;
        QList<QList<QByteArray>> handed;
        AppState::Services services;
        services.running = &running;
        services.reveal = &reveal;
        services.recycleBatch = [&](const QList<QByteArray>& paths) {
            handed.append(paths);
            return BatchOutcome{paths, {}};
        };
        AppState state(services);
        auto app = made("Foo", "com.foo.app");
        app->setBundleSize(1000);
        UninstallChoices choices(50ms, nullptr);
        choices.setState(&state);
        choices.setApp(app.get());

        // The search has not ended: no removal, though the bundle is ticked.
        QVERIFY(choices.bundleChecked());
        QVERIFY(!choices.confirmEnabled());
        choices.setBundleChecked(false);
        app->setRelated({leftover("/L/Caches/com.foo.app", 10), leftover("/L/Group Containers/g.foo", 20, true, RelatedCategory::groupContainers),
                         leftover("/L/Caches/Foo", 30)});
        // The bundle stays unticked; the new files come with their defaults.
        QVERIFY(!choices.bundleChecked());
        QCOMPARE(choices.selectedURLs(), (QList<QByteArray>{"/L/Caches/com.foo.app", "/L/Caches/Foo"}));
        QCOMPARE(choices.selectedSize(), 40);
        choices.setBundleChecked(true);
        QCOMPARE(choices.selectedSize(), 1040);
        // Shared data adds its size and one to the count only when ticked.
        const QVariantList groups = choices.groups();
        QCOMPARE(groups.size(), 2);
        const QVariantList caches = groups[0].toMap().value("files").toList();
        QCOMPARE(caches[0].toMap().value("name").toString(), QStringLiteral("Foo")); // larger first
        const QVariantMap shared = groups[1].toMap().value("files").toList().first().toMap();
        QVERIFY(shared.value("shared").toBool() && !shared.value("checked").toBool());
        choices.setChecked(shared.value("id").toString(), true);
        QCOMPARE(choices.selectedURLs().size(), 4);
        QCOMPARE(choices.selectedSize(), 1060);
        QVERIFY(choices.confirmTitle().contains(QLatin1Char('4')));

        // A later delivery keeps the user's choices and adds the newcomers.
        const QString cacheId = caches[1].toMap().value("id").toString();
        choices.setChecked(cacheId, false);
        QList<RelatedFile> more = app->related();
        more.append(leftover("/L/Preferences/com.foo.app.plist", 5, false, RelatedCategory::preferences));
        app->setRelated(more);
        QCOMPARE(choices.selectedURLs(), (QList<QByteArray>{app->url(), "/L/Group Containers/g.foo", "/L/Caches/Foo",
                                                            "/L/Preferences/com.foo.app.plist"}));

        // Nothing ticked: nothing to confirm.
        choices.setBundleChecked(false);
        for (const RelatedFile& file : app->related())
            choices.setChecked(file.id.toString(), false);
        QVERIFY(!choices.confirmEnabled());
        choices.setChecked(app->related().last().id.toString(), true);

        // Running: confirm looks again and refuses; Quit looks once after the delay.
        running.running = true;
        state.setUninstallCandidate(app.get());
        choices.confirm();
        QVERIFY(choices.runningStatus());
        QVERIFY(!choices.confirmEnabled());
        running.stubborn = true;
        choices.quit();
        QTest::qWait(120);
        QVERIFY(choices.runningStatus());
        running.stubborn = false;
        choices.quit();
        QTRY_VERIFY(!choices.runningStatus());
        QCOMPARE(running.terminated, 2);

        // Only the leftover left ticked is handed over.
        QSignalSpy finished(&state, &AppState::uninstallFinished);
        choices.confirm();
        QVERIFY(finished.wait(5000));
        QCOMPARE(handed, (QList<QList<QByteArray>>{{"/L/Preferences/com.foo.app.plist"}}));
    }

    void cliUninstallMovesThePlanToTheTrash()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QByteArray root = QFile::encodeName(dir.path());
        const QByteArray home = root + "/home";
        const QByteArray library = home + "/Library";
        writeInfo(root + "/Applications/Foo.app", "com.foo.app", "Foo");
        writeInfo(root + "/Applications/Bar.app", "com.bar.app", "Bar");
        makePath(library + "/Caches/com.foo.app");
        writeFile(library + "/Caches/com.foo.app/blob", 4096);
        makePath(library + "/Application Support/Foo");
        makePath(library + "/Group Containers/TEAM.com.foo.app");
        makePath(library + "/Caches/com.bar.app");
        makePath(library + "/Application Support/Foobar");
        makePath(library + "/Preferences");
        writeFile(library + "/Preferences/com.foo.app.plist", 100);
        writeFile(library + "/Preferences/com.bar.app.plist", 100);
        makePath(root + "/system");

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
        QCOMPARE(dryStatus, 0);
        QCOMPARE(dry.value("items").toArray().size(), 5);
        QVERIFY(!QFile::exists(QFile::decodeName(root + "/xdg/Trash/files")) ||
                entries(root + "/xdg/Trash/files").isEmpty());

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
        const QStringList trashed{"Foo", "Foo.app", "com.foo.app", "com.foo.app.plist"};
        QCOMPARE(entries(root + "/xdg/Trash/files"), trashed);
        QStringList infos;
        for (const QString& name : trashed)
            infos.append(name + QStringLiteral(".trashinfo"));
        infos.sort();
        QCOMPARE(entries(root + "/xdg/Trash/info"), infos);
        QVERIFY(QFile::exists(QFile::decodeName(root + "/xdg/Trash/files/com.foo.app/blob")));
        // Nothing of Bar's, nor the shared container, moved.
        QCOMPARE(entries(library + "/Caches"), QStringList{"com.bar.app"});
        QCOMPARE(entries(library + "/Preferences"), QStringList{"com.bar.app.plist"});
        QCOMPARE(entries(library + "/Application Support"), QStringList{"Foobar"});
        QCOMPARE(entries(library + "/Group Containers"), QStringList{"TEAM.com.foo.app"});
        QCOMPARE(entries(root + "/Applications"), QStringList{"Bar.app"});
    }
};

TIDEWICK_TEST_MAIN(AppsScreenTest)
#include "tst_appsscreen.moc"
