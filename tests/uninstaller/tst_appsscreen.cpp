// What the applications screen and the uninstall dialog decide: search and
// orders, the relative dates in the interface's languages, the dialog's
// defaults, merge and button rules.

#include "TestMain.h"
#include "FakePlatform.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "localization/LocalizationManager.h"
#include "uninstaller/AppsListModel.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/UninstallChoices.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <atomic>

using namespace tw;
using namespace tw::test;
using namespace std::chrono_literals;

namespace {

std::unique_ptr<InstalledApp> made(const char* name, const char* id, std::optional<QDateTime> opened = {})
{
    return madeApp("/Applications", QString::fromUtf8(name), QString::fromUtf8(id), opened);
}

QStringList namesOf(const std::vector<InstalledApp*>& apps)
{
    QStringList names;
    for (const InstalledApp* app : apps)
        names.append(app->name());
    return names;
}

} // namespace

class AppsScreenTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void searchAndOrders()
    {
        const QDateTime now = QDateTime::currentDateTime();
        std::unique_ptr<InstalledApp> owned[] = {made("Calculator", "com.apple.calculator"),
                                                 made("Firefox", "org.mozilla.firefox", now.addDays(-3)),
                                                 made("Notes", "com.apple.Notes", now.addDays(-1)),
                                                 made("Safari", "com.apple.Safari"), made("Zed", "dev.zed.Zed", now.addDays(-30))};
        QList<InstalledApp*> apps;
        for (auto& app : owned)
            apps.append(app.get());
        const auto names = [&](const char* search, AppSort sort) {
            return namesOf(visibleApps(apps, QString::fromUtf8(search), sort));
        };

        QCOMPARE(names("  Safari ", AppSort::nameAsc), QStringList{"Safari"});
        QCOMPARE(names("COM.APPLE", AppSort::nameAsc), (QStringList{"Calculator", "Notes", "Safari"}));
        QVERIFY(names("nothing", AppSort::nameAsc).isEmpty() && names("safari\n", AppSort::nameAsc).isEmpty());

        // All sizes 0 at first: both size orders keep the name order.
        const QStringList byName{"Calculator", "Firefox", "Notes", "Safari", "Zed"};
        QCOMPARE(names("", AppSort::sizeDesc), byName);
        QCOMPARE(names("", AppSort::sizeAsc), byName);
        owned[3]->setBundleSize(500);
        owned[4]->setBundleSize(500);
        owned[0]->setBundleSize(900);
        QCOMPARE(names("", AppSort::sizeDesc), (QStringList{"Calculator", "Safari", "Zed", "Firefox", "Notes"}));
        QCOMPARE(names("", AppSort::sizeAsc), (QStringList{"Firefox", "Notes", "Safari", "Zed", "Calculator"}));
        QCOMPARE(names("", AppSort::nameDesc), (QStringList{"Zed", "Safari", "Notes", "Firefox", "Calculator"}));
        // Never-opened applications sink to the end, in name order.
        QCOMPARE(names("", AppSort::lastOpened), (QStringList{"Notes", "Firefox", "Zed", "Calculator", "Safari"}));
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
        FakeReveal reveal;
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
        QVERIFY(choices.bundleChecked() && !choices.confirmEnabled());
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
        QVERIFY(choices.runningStatus() && !choices.confirmEnabled());
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
};

TIDEWICK_TEST_MAIN(AppsScreenTest)
#include "tst_appsscreen.moc"
