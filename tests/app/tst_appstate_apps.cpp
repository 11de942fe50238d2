// AppState's applications half: loading and sizing, the related search,
// the uninstall's refusals and what its outcome does to lists and dialogs.

#include "TestMain.h"
#include "FakePlatform.h"
#include "app/AppState.h"

#include <QSignalSpy>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

using namespace tw;
using namespace tw::test;

class AppStateAppsTest : public QObject {
    Q_OBJECT

private:
    FakeRunning m_running;
    FakeReveal m_reveal;
    std::atomic<int> m_discoveries{0};
    std::atomic<int> m_searches{0};
    std::atomic<int> m_sizingNow{0};
    std::atomic<int> m_sizingMost{0};
    std::mutex m_lock;
    QList<QByteArray> m_sizingOrder;
    QList<QList<QByteArray>> m_batches;
    BatchOutcome m_nextOutcome;

    AppState::Services services(int count = 10)
    {
        AppState::Services s;
        s.reveal = &m_reveal;
        s.running = &m_running;
        s.discoverApps = [this, count] {
            // Each load names its bundles after its own number.
            const QByteArray folder = "/Applications/load" + QByteArray::number(++m_discoveries);
            std::vector<std::unique_ptr<InstalledApp>> apps;
            for (int i = 0; i < count; ++i)
                apps.push_back(madeApp(folder, QStringLiteral("App%1").arg(i, 2, 10, QLatin1Char('0'))));
            return apps;
        };
        s.bundleSize = [this](const QByteArray& url) {
            const int now = ++m_sizingNow;
            for (int most = m_sizingMost; now > most && !m_sizingMost.compare_exchange_weak(most, now);) {
            }
            {
                std::lock_guard guard(m_lock);
                m_sizingOrder.append(url);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(15));
            --m_sizingNow;
            return qint64(url.contains("load1") ? 1000 : 2000);
        };
        s.findRelated = [this](const QString&, const QString& name, const QByteArray&) {
            ++m_searches;
            return QList<RelatedFile>{leftover("/Users/u/Library/Caches/" + name.toUtf8(), 10),
                                      leftover("/Users/u/Library/Group Containers/g." + name.toUtf8(), 20, true)};
        };
        s.recycleBatch = [this](const QList<QByteArray>& paths) {
            std::lock_guard guard(m_lock);
            m_batches.append(paths);
            return m_nextOutcome;
        };
        return s;
    }

    static bool loaded(AppState& state)
    {
        return QTest::qWaitFor([&] { return state.appCount() > 0; }, 5000);
    }
    static bool sized(AppState& state, qint64 size)
    {
        return QTest::qWaitFor(
            [&] {
                return std::all_of(state.apps().cbegin(), state.apps().cend(),
                                   [&](const InstalledApp* app) { return app->bundleSize() == size; });
            },
            10000);
    }
    // The first application of a finished load, or null.
    static InstalledApp* firstLoaded(AppState& state)
    {
        state.loadApps();
        return loaded(state) ? state.apps().first() : nullptr;
    }
    static bool related(AppState& state, InstalledApp* app)
    {
        state.loadRelatedIfNeeded(app);
        return QTest::qWaitFor([&] { return app->relatedLoaded(); }, 5000);
    }

private Q_SLOTS:
    void cleanup()
    {
        // Sizing threads of the state just destroyed still touch the counters.
        QTest::qWait(50);
        QTRY_COMPARE(m_sizingNow.load(), 0);
    }

    void init()
    {
        std::lock_guard guard(m_lock);
        m_discoveries = 0;
        m_searches = 0;
        m_sizingMost = 0;
        m_sizingOrder.clear();
        m_batches.clear();
        m_nextOutcome = {};
        m_running.running = false;
    }

    void listShowsAtOnceThenSizesFourAtATimeTopFirst()
    {
        AppState state(services(12));
        QSignalSpy listed(&state, &AppState::appsChanged);
        state.loadApps();
        state.loadApps(); // a second call while loading does nothing
        QVERIFY(state.appsLoading());
        QVERIFY(loaded(state) && !state.appsLoading());
        QCOMPARE(listed.count(), 1);
        QVERIFY(sized(state, 1000));
        QCOMPARE(m_discoveries.load(), 1);
        QVERIFY(m_sizingMost.load() <= 4 && m_sizingMost.load() >= 2);
        // The top rows are measured first: the first four started are rows 0-3.
        QList<QByteArray> firstFour = m_sizingOrder.mid(0, 4);
        std::sort(firstFour.begin(), firstFour.end());
        QCOMPARE(firstFour, (QList<QByteArray>{state.apps()[0]->url(), state.apps()[1]->url(), state.apps()[2]->url(),
                                               state.apps()[3]->url()}));
    }

    void reloadDropsTheOldListAndItsLateSizes()
    {
        AppState state(services(12));
        QVERIFY(firstLoaded(state));
        QVERIFY(QTest::qWaitFor([&] { return state.apps().first()->bundleSize() > 0; }, 5000));
        const QPointer<InstalledApp> old = state.apps().first();
        state.reloadApps();
        QCOMPARE(state.appCount(), 0);
        QVERIFY(state.appsLoading() && loaded(state) && !state.apps().contains(old.data()));
        // Sizes of the first list that arrive late land nowhere in the second.
        QVERIFY(sized(state, 2000) && m_sizingMost.load() <= 4);
        QTRY_VERIFY(old.isNull());
    }

    void relatedSearchRunsOncePerApplication()
    {
        AppState state(services(2));
        InstalledApp* app = firstLoaded(state);
        QVERIFY(app && related(state, app));
        state.loadRelatedIfNeeded(app);
        QTest::qWait(30);
        QCOMPARE(m_searches.load(), 1);
        QCOMPARE(app->related().size(), 2);
    }

    void confirmIsRefusedWhileSearchingOrRunning()
    {
        AppState state(services(2));
        InstalledApp* app = firstLoaded(state);
        QVERIFY(app);
        state.setUninstallCandidate(app);
        state.confirmUninstall({app->url()}); // leftovers not known yet
        QCOMPARE(state.uninstallCandidate(), app);
        QVERIFY(related(state, app));
        m_running.running = true; // nor while the application runs
        state.confirmUninstall({app->url()});
        QCOMPARE(state.uninstallCandidate(), app);
        QVERIFY(m_batches.isEmpty());

        m_running.running = false;
        m_nextOutcome.succeeded = {app->url()};
        QSignalSpy uninstalled(&state, &AppState::appUninstalled);
        QSignalSpy finished(&state, &AppState::uninstallFinished);
        state.confirmUninstall({app->url()});
        QCOMPARE(state.uninstallCandidate(), nullptr);
        QVERIFY(finished.wait(5000));
        QCOMPARE(m_batches, (QList<QList<QByteArray>>{{app->url()}}));
        QCOMPARE(state.appCount(), 1);
        QCOMPARE(uninstalled.count(), 1);
        QCOMPARE(uninstalled.first().first().toString(), QStringLiteral("com.test.App00"));
        QVERIFY(state.errorMessage().isEmpty() && !state.permissionPrompt());
    }

    void refusedBundleWithLeftoversGoneAsksForAppManagement()
    {
        AppState state(services(2));
        InstalledApp* app = firstLoaded(state);
        QVERIFY(app && related(state, app));
        const QByteArray cache = app->related().first().url;
        QSignalSpy uninstalled(&state, &AppState::appUninstalled);
        state.applyUninstallResult(app, app->url(),
                                   {{cache}, {{app->url(), QStringLiteral("Operation not permitted")}}});
        QCOMPARE(app->related().size(), 1);
        QVERIFY(app->related().first().url != cache && state.apps().contains(app));
        QCOMPARE(uninstalled.count(), 0);
        QVERIFY(state.permissionPrompt() && state.permissionPrompt()->needsAppManagement);
        QVERIFY(!state.permissionPrompt()->needsFullDiskAccess);
        QCOMPARE(state.permissionPrompt()->succeededCount, 1);
        QCOMPARE(state.permissionPrompt()->failedPaths, QStringList{QString::fromUtf8(app->url())});
        QVERIFY(state.errorMessage().isEmpty());

        // A second refusal is a new prompt; a failure in ~/Library asks for Full Disk Access.
        const QUuid first = state.permissionPrompt()->id;
        const QByteArray library = QFile::encodeName(QDir::homePath()) + "/Library/Containers/x";
        state.applyUninstallResult(app, app->url(), {{}, {{library, QStringLiteral("Permission denied")}}});
        QVERIFY(state.permissionPrompt()->id != first && !state.permissionPrompt()->needsAppManagement);
        QVERIFY(state.permissionPrompt()->needsFullDiskAccess);
        state.dismissPermissionPrompt();
        QVERIFY(!state.permissionPrompt());
    }

    void otherFailuresGiveTheSummaryUnlessPermissionFailed()
    {
        AppState state(services(2));
        InstalledApp* app = firstLoaded(state);
        QVERIFY(app);
        state.applyUninstallResult(app, app->url(),
                                   {{"/x/a"}, {{"/Users/u/Desktop/Thing.app", QStringLiteral("Disk full")}}});
        QVERIFY(!state.permissionPrompt() && state.errorMessage().contains(QLatin1Char('1')));
        QVERIFY(state.errorMessage().contains(QStringLiteral("• Thing.app: Disk full")));
        state.clearErrorMessage();

        state.applyUninstallResult(app, app->url(),
                                   {{},
                                    {{"/Users/u/Desktop/Thing.app", QStringLiteral("Disk full")},
                                     {"/Users/u/Desktop/Other", QStringLiteral("Operation not permitted")}}});
        QVERIFY(state.errorMessage().isEmpty() && state.permissionPrompt());
        // Neither prefix: the prompt opens with both cards off.
        QVERIFY(!state.permissionPrompt()->needsAppManagement && !state.permissionPrompt()->needsFullDiskAccess);
        QCOMPARE(state.permissionPrompt()->failedPaths, QStringList{QStringLiteral("/Users/u/Desktop/Other")});
    }
};

TIDEWICK_TEST_MAIN(AppStateAppsTest)
#include "tst_appstate_apps.moc"
