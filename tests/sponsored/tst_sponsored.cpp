// The sponsored feed against a real HTTP server on 127.0.0.1: decoding, the
// requests, the service's answers table and pace, and the click report.

#include "TestMain.h"
#include "LocalHttpServer.h"
#include "MemoryStore.h"
#include "analytics/RecordingAnalyticsSink.h"
#include "localization/LocalizationManager.h"
#include "sponsored/AdService.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QScopeGuard>
#include <QSignalSpy>

using namespace tw;
using namespace tw::test;

namespace {

QByteArray textItem(const QString& extraAd = {}, const QString& meta = {})
{
    QString json = QStringLiteral("{\"ad\":{\"kind\":\"text\",\"id\":\"a1\",\"link\":\"https://example.com/x\",\"locale\":\"en\","
                                  "\"text\":\"Hello\"%1}%2}")
                       .arg(extraAd, meta.isEmpty() ? QString() : QStringLiteral(",\"meta\":") + meta);
    return json.toUtf8();
}

} // namespace

class SponsoredTest : public QObject {
    Q_OBJECT

private:
    MemoryStore m_store;
    LocalizationManager m_localization{m_store, {QStringLiteral("en")}};
    LocalHttpServer m_server;
    qint64 m_now = 1'000'000;

    std::unique_ptr<AdService> makeService(std::function<void()>* wake = nullptr)
    {
        AdService::Options options;
        options.apiBase = m_server.url(QStringLiteral("/ignored/path"));
        options.now = [this] { return m_now; };
        if (wake)
            options.sleep = [wake](std::chrono::milliseconds, std::function<void()> then) { *wake = std::move(then); };
        return std::make_unique<AdService>(m_localization, options);
    }
    void serve(int status, const QByteArray& body = {})
    {
        m_server.handler = [status, body](const HttpRequest&) { return HttpResponse{status, body}; };
    }
    // One forced refresh, answered by the server (if it is there) with `status` and `body`.
    void refresh(AdService& service, int status, const QByteArray& body = {})
    {
        serve(status, body);
        QSignalSpy settled(&service, &AdService::refreshSettled);
        service.fetch(true);
        QVERIFY(settled.wait(5000));
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void init()
    {
        m_server.requests.clear();
        m_localization.setCurrent(Language::english);
    }

    void decodesByTheFeedsRules_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("decodes");
        QTest::addColumn<bool>("usable");
        QTest::newRow("minimal text") << textItem() << true << true;
        QTest::newRow("unknown keys, schema 99") << QByteArray("{\"schema_version\":99,\"x\":[1],\"ad\":{\"kind\":\"text\"," "\"id\":\"\",\"link\":\"http://e.com\",\"locale\":\"\",\"text\":\" \",\"y\":{}},\"meta\":{\"z\":true}}") << true << true;
        QTest::newRow("optional null") << textItem(QStringLiteral(",\"icon_url\":null"), QStringLiteral("{\"ttl_seconds\":null}")) << true << true;
        QTest::newRow("ttl as string") << textItem({}, QStringLiteral("{\"ttl_seconds\":\"60\"}")) << false << false;
        QTest::newRow("ttl fractional") << textItem({}, QStringLiteral("{\"ttl_seconds\":1.5}")) << false << false;
        QTest::newRow("width as string") << textItem(QStringLiteral(",\"width\":\"3\"")) << false << false;
        QTest::newRow("tracking not an object") << textItem({}, QStringLiteral("{\"tracking\":[]}")) << false << false;
        QTest::newRow("id missing") << QByteArray("{\"ad\":{\"kind\":\"text\",\"link\":\"https://e.com\",\"locale\":\"en\",\"text\":\"t\"}}") << false << false;
        QTest::newRow("locale null") << QByteArray("{\"ad\":{\"kind\":\"text\",\"id\":\"1\",\"link\":\"https://e.com\",\"locale\":null,\"text\":\"t\"}}") << false << false;
        QTest::newRow("not an object") << QByteArray("[1]") << false << false;
        QTest::newRow("empty text") << QByteArray("{\"ad\":{\"kind\":\"text\",\"id\":\"1\",\"link\":\"https://e.com\",\"locale\":\"en\",\"text\":\"\"}}") << true << false;
        QTest::newRow("kind Text") << QByteArray("{\"ad\":{\"kind\":\"Text\",\"id\":\"1\",\"link\":\"https://e.com\",\"locale\":\"en\",\"text\":\"t\"}}") << true << false;
        QTest::newRow("banner width 0") << QByteArray("{\"ad\":{\"kind\":\"banner\",\"id\":\"1\",\"link\":\"https://e.com\",\"locale\":\"en\"," "\"image_url\":\"https://e.com/i.png\",\"width\":0,\"height\":5}}") << true << false;
        QTest::newRow("banner without image") << QByteArray("{\"ad\":{\"kind\":\"banner\",\"id\":\"1\",\"link\":\"https://e.com\",\"locale\":\"en\"," "\"width\":2,\"height\":5}}") << true << false;
        QTest::newRow("banner without alt") << QByteArray("{\"ad\":{\"kind\":\"banner\",\"id\":\"1\",\"link\":\"https://e.com\",\"locale\":\"en\"," "\"image_url\":\"https://e.com/i.png\",\"width\":1,\"height\":1}}") << true << true;
        QTest::newRow("file link") << textItem().replace("https://example.com/x", "file:///etc/passwd") << true << false;
        QTest::newRow("share link") << textItem().replace("https://example.com/x", "smb://server/share") << true << false;
        QTest::newRow("app scheme link") << textItem().replace("https://example.com/x", "x-apple.systempreferences:x") << true << false;
        QTest::newRow("link does not parse") << textItem().replace("https://example.com/x", "http://[::1") << true << false;
    }
    void decodesByTheFeedsRules()
    {
        QFETCH(QByteArray, body);
        QFETCH(bool, decodes);
        QFETCH(bool, usable);
        const auto envelope = AdFeed::decode(body);
        QCOMPARE(envelope.has_value(), decodes);
        QCOMPARE(envelope && envelope->ad.has_value(), usable);
    }

    void decodesEveryField()
    {
        const auto text = AdFeed::decode(textItem(QStringLiteral(",\"icon_url\":\"https://e.com/i.png\""),
                                                  QStringLiteral("{\"ttl_seconds\":120,\"tracking\":{\"click_url\":\"https://t.com/c\"," "\"impression_url\":\"https://t.com/i\"}}")));
        QVERIFY(text && text->ad);
        const Ad expected{QStringLiteral("a1"), QUrl(QStringLiteral("https://example.com/x")), QStringLiteral("en"),
                          {AdContent::Text{QUrl(QStringLiteral("https://e.com/i.png")), QStringLiteral("Hello")}},
                          QUrl(QStringLiteral("https://t.com/c")), QUrl(QStringLiteral("https://t.com/i"))};
        QCOMPARE(*text->ad == expected, true);
        QCOMPARE(text->ttlSeconds, std::optional<qint64>(120));

        // Addresses that are not on the web are dropped, the item stays.
        const auto odd = AdFeed::decode(textItem(QStringLiteral(",\"icon_url\":\"file:///tmp/i.png\""),
                                                 QStringLiteral("{\"tracking\":{\"click_url\":\"tidewick://c\"}}")));
        QVERIFY(odd && odd->ad);
        QCOMPARE(std::get<AdContent::Text>(odd->ad->content.value).iconURL, std::nullopt);
        QCOMPARE(odd->ad->clickURL, std::nullopt);

        const auto banner = AdFeed::decode("{\"ad\":{\"kind\":\"banner\",\"id\":\"b\",\"link\":\"https://e.com\",\"locale\":\"de\"," "\"image_url\":\"https://e.com/b.png\",\"width\":728,\"height\":90,\"alt\":\"Alt\"}}");
        QVERIFY(banner && banner->ad);
        const AdContent::Banner expectedBanner{QUrl(QStringLiteral("https://e.com/b.png")), 728, 90, QStringLiteral("Alt")};
        QCOMPARE(std::get<AdContent::Banner>(banner->ad->content.value) == expectedBanner, true);
    }

    void buildsTheRequests()
    {
        QCOMPARE(AdFeed::apiBaseFrom({}), QUrl(QStringLiteral("https://api.tidewick.app")));
        QCOMPARE(AdFeed::apiBaseFrom(QStringLiteral("http://[bad")), QUrl(QStringLiteral("https://api.tidewick.app")));
        const QUrl base(QStringLiteral("http://127.0.0.1:9/base"));
        QCOMPARE(AdFeed::apiBaseFrom(base.toString()), base);

        const QNetworkRequest current = AdFeed::currentRequest(base, Language::chinese);
        QCOMPARE(current.url().toString(), QStringLiteral("http://127.0.0.1:9/api/v1/ads/current?locale=zh&app_version=")
                                               + AdFeed::appVersion() + QStringLiteral("&app_id=tidewick&protocol=1"));
        QCOMPARE(current.attribute(QNetworkRequest::CacheLoadControlAttribute).toInt(), int(QNetworkRequest::AlwaysNetwork));
    }

    void appliesEachAnswer()
    {
        auto service = makeService();
        refresh(*service, 200, textItem());
        QVERIFY(service->hasAd());
        QCOMPARE(m_server.requests.last().target.left(30), QByteArray("/api/v1/ads/current?locale=en&"));

        for (const auto& [status, body] : {std::pair<int, QByteArray>{500, textItem()}, {200, "{\"ad\":{}}"},
                                            {200, "not json"}, {302, {}}}) {
            refresh(*service, status, body);
            QVERIFY2(service->hasAd(), body.constData());
        }
        refresh(*service, 200, textItem().replace("https://example.com/x", "file:///Applications/Calculator.app"));
        QVERIFY(!service->hasAd());

        refresh(*service, 200, textItem({}, QStringLiteral("{\"ttl_seconds\":300}")));
        QCOMPARE(service->nextRefreshInterval(), 300.0);
        refresh(*service, 204);
        QVERIFY(!service->hasAd());
        QCOMPARE(service->nextRefreshInterval(), 60.0);

        // A server that is gone changes nothing either.
        refresh(*service, 200, textItem());
        const quint16 port = m_server.port();
        m_server.close();
        // Back for the cases after this one, whatever happens here.
        const auto reopen = qScopeGuard([&] { QVERIFY(m_server.listen(port)); });
        refresh(*service, 204); // would clear the bar, were it answered
        QVERIFY(service->hasAd());
    }

    void givesUpOnAnAnswerPastALimit_data() { addAnswersAtTheLimits(textItem()); }
    void givesUpOnAnAnswerPastALimit()
    {
        QFETCH(HttpResponse, answer);
        QFETCH(bool, taken);
        m_server.handler = [answer](const HttpRequest&) { return answer; };
        QNetworkAccessManager network;
        std::optional<AdFeed::Outcome> outcome;
        AdFeed::requestCurrent(network, m_server.url(), Language::english,
                               [&outcome](const AdFeed::Outcome& done) { outcome = done; }, quickLimits());
        QTRY_VERIFY_WITH_TIMEOUT(outcome.has_value(), 10000);
        QCOMPARE(outcome->kind, taken ? AdFeed::Outcome::Kind::envelope : AdFeed::Outcome::Kind::transportFailure);
    }

    void postsTheClickUnderTheItemsPath_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QByteArray>("segment");
        QTest::newRow("plain") << QStringLiteral("a1") << QByteArray("a1");
        QTest::newRow("traversal") << QStringLiteral("../../../etc/passwd") << QByteArray("..%2F..%2F..%2Fetc%2Fpasswd");
        // No address carries these as one segment: no report rather than another path.
        QTest::newRow("dot") << QStringLiteral(".") << QByteArray();
        QTest::newRow("dot dot") << QStringLiteral("..") << QByteArray();
        QTest::newRow("query, fragment, space") << QStringLiteral("a?b#c d%") << QByteArray("a%3Fb%23c%20d%25");
    }
    void postsTheClickUnderTheItemsPath()
    {
        QFETCH(QString, id);
        QFETCH(QByteArray, segment);
        auto service = makeService();
        Ad ad = *AdFeed::decode(textItem())->ad;
        ad.id = id;
        service->setCurrentAd(ad);
        service->press();
        if (segment.isEmpty()) {
            QTest::qWait(100);
            QVERIFY(m_server.requests.isEmpty());
        } else {
            QTRY_COMPARE(m_server.requests.size(), 1);
            QCOMPARE(m_server.requests.last().target, "/ignored/path/api/v1/ads/" + segment + "/click");
        }
    }

    void clampsTheServersPace_data()
    {
        QTest::addColumn<int>("ttl");
        QTest::addColumn<double>("interval");
        QTest::newRow("0") << 0 << 10.0;
        QTest::newRow("negative") << -5 << 10.0;
        QTest::newRow("5") << 5 << 10.0;
        QTest::newRow("10") << 10 << 10.0;
        QTest::newRow("3600") << 3600 << 3600.0;
        QTest::newRow("86400") << 86400 << 3600.0;
    }
    void clampsTheServersPace()
    {
        QFETCH(int, ttl);
        QFETCH(double, interval);
        auto service = makeService();
        // An unusable item's pace counts too.
        refresh(*service, 200, textItem().replace("https://", "smb://").replace("}}", QStringLiteral("},\"meta\":{\"ttl_seconds\":%1}}").arg(ttl).toUtf8()));
        QVERIFY(!service->hasAd());
        QCOMPARE(service->nextRefreshInterval(), interval);
    }

    void pacesRequests()
    {
        serve(200, textItem({}, QStringLiteral("{\"ttl_seconds\":10}")));
        std::function<void()> wake;
        auto service = makeService(&wake);
        QSignalSpy settled(service.get(), &AdService::refreshSettled);
        service->start();
        QVERIFY(settled.wait(5000));
        // The loop's timer may wake a little before its 10 s are up: it asks all the same.
        m_now += 9'990;
        std::exchange(wake, {})();
        QVERIFY(settled.wait(5000));
        // A second start begins no second loop, even once the limit has passed.
        m_now += 20'000;
        service->start();
        QTest::qWait(50);
        QCOMPARE(m_server.requests.size(), 2);

        // A language change goes out at once, 2 s after the last request…
        m_now += 2'000;
        m_localization.setCurrent(Language::german);
        QVERIFY(settled.wait(5000));
        QVERIFY(m_server.requests.last().target.contains("locale=de"));
        // …and the loop's turn or an unforced one within 10 s of it is skipped.
        m_now += 9'000;
        std::exchange(wake, {})();
        service->fetch(false);
        QTest::qWait(50);
        QCOMPARE(m_server.requests.size(), 3);
        QVERIFY(wake); // asleep again
        m_now += 1'000;
        service->fetch(false);
        QVERIFY(settled.wait(5000));
        QCOMPARE(m_server.requests.size(), 4);
    }

    void reportsAClickOneWay()
    {
        auto recorder = std::make_shared<RecordingAnalyticsSink>();
        Analytics::configure(recorder);
        auto service = makeService();

        refresh(*service, 200, textItem({}, QStringLiteral("{\"tracking\":{\"click_url\":\"%1\"}}").arg(m_server.url(QStringLiteral("/track?c=1")).toString())));
        serve(204);
        const qsizetype before = m_server.requests.size();
        service->press();
        QTRY_COMPARE(m_server.requests.size(), before + 1);
        QTest::qWait(50);
        QCOMPARE(m_server.requests.size(), before + 1);
        QCOMPARE(m_server.requests.last().method, QByteArray("GET"));
        QCOMPARE(m_server.requests.last().target, QByteArray("/track?c=1"));

        // The language change refreshes, and the new answer has no click address.
        serve(200, textItem());
        QSignalSpy settled(service.get(), &AdService::refreshSettled);
        m_localization.setCurrent(Language::russian);
        QVERIFY(settled.wait(5000));
        QVERIFY(service->hasAd() && !service->currentAd()->clickURL);
        service->press();
        QTRY_COMPARE(m_server.requests.last().method, QByteArray("POST"));
        const HttpRequest& post = m_server.requests.last();
        QCOMPARE(post.headers.value("content-type"), QByteArray("application/json"));
        const QJsonObject body = QJsonDocument::fromJson(post.body).object();
        QCOMPARE(body.value(QStringLiteral("locale")).toString(), QStringLiteral("ru"));
        QVERIFY(body.value(QStringLiteral("app_version")).isString());

        const RecordingAnalyticsSink::Event clicked{QStringLiteral("ad_clicked"),
                                                    {{QStringLiteral("ad_id"), QStringLiteral("a1")},
                                                     {QStringLiteral("link"), QStringLiteral("https://example.com/x")}}};
        QCOMPARE(recorder->events().size(), 2);
        QVERIFY(recorder->events().last() == clicked);
        Analytics::configure(nullptr);
    }
};

TIDEWICK_TEST_MAIN(SponsoredTest)
#include "tst_sponsored.moc"
