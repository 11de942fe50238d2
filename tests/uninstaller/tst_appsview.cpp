// The applications screen in a window, offscreen, driven by the keyboard:
// arrows select, Return opens the uninstall dialog, Escape closes it, the
// find shortcut reaches the search only while no dialog is up, and a reload
// closes the detail panel. Any QML warning fails the test.

#include "TestMain.h"
#include "screens/ScreensHarness.h"

using namespace tw;
using namespace tw::test;

class AppsViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareScreens(); }
    void init() { recordWarningsFromHere(); }
    void cleanup() { failOnRecordedWarnings(); }

    void keyboardFlow()
    {
        FakeRunning running;
        FakeReveal reveal;
        AppState::Services services;
        services.running = &running;
        services.reveal = &reveal;
        services.discoverApps = [] {
            std::vector<std::unique_ptr<InstalledApp>> apps;
            for (const char* name : {"Notes", "Safari", "Xcode"})
                apps.push_back(madeApp("/Applications", QString::fromLatin1(name)));
            return apps;
        };
        services.bundleSize = [](const QByteArray& url) { return qint64(url.size()) * 1000; };
        services.findRelated = [](const QString&, const QString&, const QByteArray&) { return QList<RelatedFile>{}; };
        Window w(services);
        QVERIFY(QTest::qWaitForWindowExposed(&w.view));
        const auto count = [&] { return w.item("appsList")->property("count").toInt(); };

        w.state->setMode(AppState::Mode::apps);
        QTRY_COMPARE(count(), 3);
        QVERIFY(!w.item("appsEmpty")->isVisible());
        QQuickItem* screen = w.item("appsScreen");
        QQuickItem* search = w.item("appsSearch");

        // Find, then down into the list: the first row is selected and its panel opens.
        w.key(Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(search->hasActiveFocus());
        w.key(Qt::Key_Down);
        QVERIFY(w.item("appsList")->hasActiveFocus());
        w.key(Qt::Key_Down);
        auto* selected = screen->property("selected").value<InstalledApp*>();
        QVERIFY(selected);
        QTRY_VERIFY(selected->relatedLoaded());
        QTRY_VERIFY(w.shows("appDetailPanel"));
        QCOMPARE(w.text("detailName"), selected->name());

        // Return opens the dialog for the selection; find does nothing under it; Escape closes it.
        w.key(Qt::Key_Return);
        QCOMPARE(w.state->uninstallCandidate(), selected);
        QTRY_VERIFY(w.shows("uninstallConfirm"));
        w.key(Qt::Key_F, Qt::ControlModifier);
        QVERIFY(!search->hasActiveFocus());
        w.key(Qt::Key_Escape);
        QCOMPARE(w.state->uninstallCandidate(), nullptr);

        // A search with blanks around it.
        search->setProperty("text", QStringLiteral(" Safari "));
        QTRY_COMPARE(count(), 1);
        search->setProperty("text", QString());

        // A reload gives every application a new identity: the panel closes.
        w.state->reloadApps();
        QTRY_COMPARE(count(), 3);
        QVERIFY(screen->property("selected").value<InstalledApp*>() == nullptr);
        QTRY_VERIFY(!w.shows("appDetailPanel"));
    }

    void findingNothingSaysWhereItLooked()
    {
        // Real discovery over two folders that hold no application.
        QTemporaryDir dir;
        const QByteArray empty = QFile::encodeName(dir.path()) + "/Applications";
        makeDir(empty);
        const QByteArray missing = QFile::encodeName(dir.path()) + "/nowhere";
        AppState::Services services;
        services.applicationRoots = [=] { return QByteArrayList{empty, missing}; };
        AppState state(services);
        QQuickView view;
        loadContentView(view, {{QStringLiteral("appState"), QVariant::fromValue(&state)}});
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QQuickItem* notice = Window::findIn(view.contentItem(), QStringLiteral("appsEmpty"));
        QVERIFY(notice && !notice->isVisible());

        state.setMode(AppState::Mode::apps);
        QTRY_VERIFY(notice->isVisible());
        QStringList shown;
        for (QQuickItem* line : notice->childItems())
            if (line->property("text").isValid()) // not the Repeater
                shown << line->property("text").toString();
        QCOMPARE(shown, (QStringList{Loc(QStringLiteral("apps.none")), Loc(QStringLiteral("apps.lookedIn")),
                                               QFile::decodeName(empty), QFile::decodeName(missing)}));
    }

private:
    static QString Loc(const QString& key) { return LocalizationManager::shared().string(key); }
};

TIDEWICK_TEST_MAIN(AppsViewTest)
#include "tst_appsview.moc"
