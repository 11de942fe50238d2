// The sponsored bar in the real window: fed by the service over local HTTP,
// gone without an item, one keyboard-reachable button whose press raises the
// event, reports the click and opens the link. Also the scan-start events the
// welcome screen raises. Any QML warning fails the test.

#include "TestMain.h"
#include "LocalHttpServer.h"
#include "MemoryStore.h"
#include "screens/ScreensHarness.h"
#include "analytics/RecordingAnalyticsSink.h"
#include "sponsored/AdService.h"

#include <QDesktopServices>

using namespace tw;
using namespace tw::test;

namespace {

QQuickItem* findIn(QObject* at, const QString& name)
{
    return at->findChild<QQuickItem*>(name);
}

} // namespace

class AdBarTest : public QObject {
    Q_OBJECT

public:
    QList<QUrl> opened;

public Q_SLOTS:
    // Stands in for the browser: nothing leaves this machine.
    void open(const QUrl& url) { opened.append(url); }

private Q_SLOTS:
    void initTestCase()
    {
        QQuickStyle::setStyle(QStringLiteral("Fusion"));
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open");
        QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "open");
    }
    void init() { recordWarningsFromHere(); }
    void cleanup()
    {
        Analytics::configure(nullptr);
        failOnRecordedWarnings();
    }

    void barFollowsTheFeedAndActsOnPress()
    {
        auto recorder = std::make_shared<RecordingAnalyticsSink>();
        Analytics::configure(recorder);
        LocalHttpServer server;
        QVERIFY(server.listen());
        // The click's answer is never read, so every request but the banner's gets the item.
        server.handler = [](const HttpRequest& request) {
            if (request.target == "/endless.png")
                return HttpResponse{200, {}, "image/png", HttpResponse::Delivery::endlessBody};
            return HttpResponse{200, "{\"ad\":{\"kind\":\"text\",\"id\":\"a9\",\"link\":\"https://example.com/go\","
                                     "\"locale\":\"en\",\"text\":\"A sponsored line\"}}"};
        };
        MemoryStore store;
        LocalizationManager localization(store, {QStringLiteral("en")});
        AdService::Options options;
        options.apiBase = server.url();
        AdService ads(localization, options);
        // Every location asks for the grant, so no scan of this machine ever starts.
        FakeAccess noGrant;
        noGrant.granted = false;
        noGrant.everywhere = true;
        AppState::Services services;
        services.diskAccess = &noGrant;
        AppState state(services);

        QQuickView view;
        loadContentView(view, {{QStringLiteral("appState"), QVariant::fromValue(&state)},
                                   {QStringLiteral("adService"), QVariant::fromValue(&ads)}});
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QQuickItem* bar = findIn(view.rootObject(), QStringLiteral("adBar"));
        QQuickItem* button = findIn(view.rootObject(), QStringLiteral("adButton"));
        QVERIFY(bar && button);

        // The window's start-up asked the feed; the item fills a bar of the text row's height.
        QTRY_VERIFY(ads.hasAd());
        QTRY_COMPARE(bar->height(), 1 + 18 + 12.0);
        QCOMPARE(findIn(button, QStringLiteral("adText"))->property("text").toString(), QStringLiteral("A sponsored line"));

        // Reachable by the keyboard alone, and a press does all three things.
        for (int i = 0; i < 20 && !button->hasActiveFocus(); ++i)
            QTest::keyClick(&view, Qt::Key_Tab);
        QVERIFY(button->hasActiveFocus());
        QTest::keyClick(&view, Qt::Key_Space);
        QCOMPARE(opened, QList<QUrl>{QUrl(QStringLiteral("https://example.com/go"))});
        QTRY_COMPARE(server.requests.last().method, QByteArray("POST"));
        QCOMPARE(server.requests.last().target, QByteArray("/api/v1/ads/a9/click"));
        QVERIFY((recorder->events() == QList<RecordingAnalyticsSink::Event>{
                     {QStringLiteral("ad_clicked"),
                      {{QStringLiteral("ad_id"), QStringLiteral("a9")}, {QStringLiteral("link"), QStringLiteral("https://example.com/go")}}}}));

        // A banner is 128 high whether or not its image arrives, and one that
        // never ends is given up at the image cap; no item, no room.
        ads.setCurrentAd(Ad{QStringLiteral("b"), QUrl(QStringLiteral("https://example.com")), {},
                            {AdContent::Banner{server.url(QStringLiteral("/endless.png")), 10, 10, std::nullopt}}, {}, {}});
        QTRY_COMPARE(bar->height(), 1 + 128.0);
        QTRY_COMPARE_WITH_TIMEOUT(findIn(button, QStringLiteral("adBanner"))->property("status").toInt(), 3 /* Image.Error */, 15000);
        QVERIFY(server.streamed < (32 << 20)); // the cap, and what the sockets buffer
        g_warnings.clear(); // the image that does not load says so
        ads.setCurrentAd(std::nullopt);
        QTRY_COMPARE(bar->height(), 0.0);
        QVERIFY(!bar->isVisible());

        // The welcome screen raises each start event before it asks for the scan.
        recorder->clear();
        QMetaObject::invokeMethod(findIn(view.rootObject(), QStringLiteral("welcomeScreen")), "scanEntireMac");
        QVERIFY(state.fdaPromptForURL().has_value());
        state.dismissFullDiskAccessPrompt();
        QMetaObject::invokeMethod(findIn(view.rootObject(), QStringLiteral("welcomeScreen")), "scanHome");
        state.dismissFullDiskAccessPrompt();
        QVERIFY((recorder->events() == QList<RecordingAnalyticsSink::Event>{{QStringLiteral("scan_started_entire_mac"), {}},
                                                                          {QStringLiteral("scan_started_home"), {}}}));
    }
};

TIDEWICK_TEST_MAIN(AdBarTest)
#include "tst_adbar.moc"
