// The usage events: the launch steps, each event where its flow raises it
// with its parameters' types, and the Measurement Protocol sender against a
// real HTTP server on 127.0.0.1 (batches, retries, the queue file).

#include "TestMain.h"
#include "FakePlatform.h"
#include "LocalHttpServer.h"
#include "MemoryStore.h"
#include "TestFiles.h"
#include "analytics/MeasurementProtocolSink.h"
#include "analytics/RecordingAnalyticsSink.h"
#include "app/AppDelegate.h"
#include "app/AppState.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrlQuery>

using namespace tw;
using namespace tw::test;

namespace {

using Event = RecordingAnalyticsSink::Event;

// Every event the server took, in order, from the bodies it was sent.
QList<QJsonObject> eventsIn(const QList<HttpRequest>& requests)
{
    QList<QJsonObject> events;
    for (const HttpRequest& request : requests) {
        for (const QJsonValue event : QJsonDocument::fromJson(request.body).object().value(QStringLiteral("events")).toArray())
            events.append(event.toObject());
    }
    return events;
}

} // namespace

class AnalyticsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FakeVolume m_volumes;
    FakeAccess m_access;
    std::shared_ptr<RecordingAnalyticsSink> m_recorder;
    LocalHttpServer m_server;

    AppState::Services services()
    {
        AppState::Services s;
        s.volumes = &m_volumes;
        s.diskAccess = &m_access;
        return s;
    }
    MeasurementProtocolSink::Options senderOptions(const QString& queueName)
    {
        MeasurementProtocolSink::Options options;
        options.config = {QStringLiteral("1:23:ios:45"), QStringLiteral("s3cret"), m_server.url(QStringLiteral("/mp/collect"))};
        options.queueFile = m_dir.filePath(queueName);
        options.appInstanceId = QStringLiteral("0123456789abcdef0123456789abcdef");
        options.batchDelayMs = 0;
        options.initialBackoffMs = 1;
        options.maxBackoffMs = 4;
        return options;
    }
    static void logNumbered(AnalyticsSink& sink, int count, int from = 0)
    {
        for (int i = from; i < from + count; ++i)
            sink.logEvent(QStringLiteral("item_deleted"), {{QStringLiteral("size_bytes"), qint64(i)}});
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_volumes.known = false;
        QVERIFY(m_dir.isValid());
        QVERIFY(m_server.listen());
    }
    void init()
    {
        m_recorder = std::make_shared<RecordingAnalyticsSink>();
        Analytics::configure(m_recorder);
        m_server.requests.clear();
        m_server.handler = [](const HttpRequest&) { return HttpResponse{204, {}}; };
    }
    void cleanup() { Analytics::configure(nullptr); }

    void launchSetsUpTheReportingThenLogsOnce()
    {
        AppDelegate().applicationDidFinishLaunching(m_recorder);
        QCOMPARE(m_recorder->userProperties(), (QMap<QString, QString>{{QStringLiteral("distribution"), QStringLiteral("direct")}}));
        QVERIFY(m_recorder->defaultParameters() == (AnalyticsParameters{{QStringLiteral("distribution"), QStringLiteral("direct")}}));
        QVERIFY((m_recorder->events() == QList<Event>{{QStringLiteral("app_launched"), {}}}));
        // No configuration anywhere: nothing is sent.
        QVERIFY(dynamic_cast<NullAnalyticsSink*>(AppDelegate::makeSink(m_dir.filePath(QStringLiteral("absent.json"))).get()));
    }

    void scanAndDeletionRaiseTheirEvents()
    {
        const QByteArray root = makeTree(QFile::encodeName(m_dir.filePath(QStringLiteral("tree"))),
                                         {{"folder/data", 8192}, {"file", 4096}});

        bool refuse = false;
        AppState::Services s = services();
        s.recycle = [&refuse](const QByteArray&) { return refuse ? std::optional<QString>(QStringLiteral("no")) : std::nullopt; };
        AppState state(s);
        // A cancelled scan completes nothing.
        state.requestScan(root);
        state.cancelScan();
        QTest::qWait(100);
        QVERIFY(m_recorder->events().isEmpty());

        QVERIFY(scanned(state, root));
        const Event completed{QStringLiteral("scan_completed"),
                              {{QStringLiteral("size_bytes"), state.root()->size()}, {QStringLiteral("children_count"), qint64(2)}}};
        QVERIFY((m_recorder->events() == QList<Event>{completed}));

        QSignalSpy finished(&state, &AppState::deletionFinished);
        const NodeRef folder = nodeAt(state, root + "/folder");
        const qint64 folderSize = folder->size();
        state.setDeleteCandidate(folder);
        state.confirmDelete();
        QVERIFY(finished.wait(5000));
        const Event deleted{QStringLiteral("item_deleted"),
                            {{QStringLiteral("size_bytes"), folderSize}, {QStringLiteral("is_directory"), true}}};
        QVERIFY(m_recorder->events() == (QList<Event>{completed, deleted}));

        // A failed move raises nothing.
        refuse = true;
        m_recorder->clear();
        state.setDeleteCandidate(nodeAt(state, root + "/file"));
        state.confirmDelete();
        QVERIFY(finished.wait(5000));
        QVERIFY(m_recorder->events().isEmpty());
    }

    void modesAppsAndSnapshotsRaiseTheirEvents()
    {
        AppState state(services());
        state.setMode(AppState::Mode::apps);
        state.setMode(AppState::Mode::apps);
        state.setMode(AppState::Mode::folder);
        Q_EMIT state.appUninstalled(QStringLiteral("com.example.Editor"));
        Q_EMIT state.snapshotsThinned(-1); // a disk that filled meanwhile reports nothing freed
        Q_EMIT state.snapshotsThinned(5'000'000'000);
        const QList<Event> expected{
            {QStringLiteral("mode_switched"), {{QStringLiteral("mode"), QStringLiteral("apps")}}},
            {QStringLiteral("mode_switched"), {{QStringLiteral("mode"), QStringLiteral("folder")}}},
            {QStringLiteral("app_uninstalled"), {{QStringLiteral("bundle_id"), QStringLiteral("com.example.Editor")}}},
            {QStringLiteral("snapshots_thinned"), {{QStringLiteral("freed_bytes"), qint64(0)}}},
            {QStringLiteral("snapshots_thinned"), {{QStringLiteral("freed_bytes"), qint64(5'000'000'000)}}},
        };
        QVERIFY(m_recorder->events() == expected);
    }

    void sendsTypedEventsInBatches()
    {
        MemoryStore store;
        const QString id = MeasurementProtocolSink::appInstanceId(store);
        QCOMPARE(id.size(), 32);
        QCOMPARE(MeasurementProtocolSink::appInstanceId(store), id);

        auto options = senderOptions(QStringLiteral("batches.json"));
        options.batchDelayMs = 100; // the burst below shares requests
        MeasurementProtocolSink sink(options);
        sink.setUserProperty(QStringLiteral("distribution"), QStringLiteral("direct"));
        sink.setDefaultEventParameters({{QStringLiteral("distribution"), QStringLiteral("direct")}});
        sink.logEvent(QStringLiteral("item_deleted"), {{QStringLiteral("size_bytes"), qint64(5'000'000'000)},
                                                       {QStringLiteral("is_directory"), false}});
        logNumbered(sink, 59);
        QTRY_COMPARE_WITH_TIMEOUT(eventsIn(m_server.requests).size(), 60, 10000);

        bool fullBatch = false;
        for (const HttpRequest& request : m_server.requests) {
            QCOMPARE(request.method, QByteArray("POST"));
            const QUrlQuery query(QUrl(QString::fromLatin1(request.target)));
            QCOMPARE(query.queryItemValue(QStringLiteral("firebase_app_id")), QStringLiteral("1:23:ios:45"));
            QCOMPARE(query.queryItemValue(QStringLiteral("api_secret")), QStringLiteral("s3cret"));
            const QJsonObject body = QJsonDocument::fromJson(request.body).object();
            QCOMPARE(body.value(QStringLiteral("app_instance_id")).toString(), options.appInstanceId);
            QCOMPARE(body[QStringLiteral("user_properties")][QStringLiteral("distribution")][QStringLiteral("value")].toString(),
                     QStringLiteral("direct"));
            const qsizetype count = body.value(QStringLiteral("events")).toArray().size();
            QVERIFY(count >= 1 && count <= 25);
            fullBatch = fullBatch || count == 25;
        }
        QVERIFY(fullBatch);
        const QJsonObject params = eventsIn(m_server.requests).first().value(QStringLiteral("params")).toObject();
        QCOMPARE(params.value(QStringLiteral("size_bytes")).toInteger(), 5'000'000'000);
        QVERIFY(params.value(QStringLiteral("is_directory")).isBool());
        QCOMPARE(params.value(QStringLiteral("distribution")).toString(), QStringLiteral("direct"));
    }

    void retriesUntilTakenExactlyOnce()
    {
        int failures = 2;
        m_server.handler = [&](const HttpRequest&) { return HttpResponse{failures-- > 0 ? 503 : 204, {}}; };
        MeasurementProtocolSink sink(senderOptions(QStringLiteral("retry.json")));
        logNumbered(sink, 30);
        QTRY_VERIFY_WITH_TIMEOUT(failures < 0 && QFileInfo(m_dir.filePath(QStringLiteral("retry.json"))).size() < 20, 10000);
        QTest::qWait(50);
        QList<qint64> taken;
        const QList<HttpRequest> accepted = m_server.requests.mid(2);
        for (const QJsonObject& event : eventsIn(accepted))
            taken.append(event[QStringLiteral("params")][QStringLiteral("size_bytes")].toInteger());
        QList<qint64> expected;
        for (qint64 i = 0; i < 30; ++i)
            expected.append(i);
        QCOMPARE(taken, expected);
    }

    void goesOnAfterAnAnswerPastALimit_data() { addAnswersAtTheLimits("{}"); }
    // Whether it counts as taken or not, a broken answer is given up and the
    // sender goes on.
    void goesOnAfterAnAnswerPastALimit()
    {
        QFETCH(HttpResponse, answer);
        m_server.handler = [&answer](const HttpRequest&) { return std::exchange(answer, HttpResponse{204, {}}); };
        auto options = senderOptions(QStringLiteral("limits.json"));
        options.limits = quickLimits();
        MeasurementProtocolSink sink(options);
        m_server.streamed = 0;
        logNumbered(sink, 1);
        QTRY_COMPARE(m_server.requests.size(), 1);
        logNumbered(sink, 1, 1);
        QTRY_COMPARE_WITH_TIMEOUT(m_server.requests.size(), 2, 10000);
        QVERIFY(m_server.streamed < (32 << 20)); // the cap, and what the sockets buffer
    }

    // The queue file is ours only while it is a plain file of sane size: a link
    // in its place is left alone and read as nothing, an oversized file is not
    // read at all, and an oversized event in it is never sent.
    void trustsTheQueueFileNoFurther_data()
    {
        const QByteArray small = "{\"name\":\"kept\",\"params\":{}}";
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<bool>("linked");
        QTest::addColumn<QStringList>("sent");
        QTest::newRow("link to a queue") << "{\"events\":[" + small + "]}" << true << QStringList{};
        QTest::newRow("dangling link") << QByteArray() << true << QStringList{};
        QTest::newRow("file too large") << "{\"events\":[" + small + "],\"x\":\"" + QByteArray(5 << 20, 'x') + "\"}" << false << QStringList{};
        QTest::newRow("event too large") << "{\"events\":[" + small + ",{\"name\":\"" + QByteArray(5000, 'n') + "\"}," + small + "]}" << false
                                         << QStringList{QStringLiteral("kept"), QStringLiteral("kept")};
    }
    void trustsTheQueueFileNoFurther()
    {
        QFETCH(QByteArray, contents);
        QFETCH(bool, linked);
        QFETCH(QStringList, sent);
        const QString queue = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()) + QStringLiteral(".json"));
        const QString target = queue + QStringLiteral(".target");
        QFile written(linked ? target : queue);
        QVERIFY(contents.isEmpty() || (written.open(QIODevice::WriteOnly) && written.write(contents) == contents.size()));
        written.close();
        if (linked)
            QVERIFY(QFile::link(target, queue));
        {
            MeasurementProtocolSink sink(senderOptions(QFileInfo(queue).fileName()));
            sink.logEvent(QStringLiteral("new"), {});
            QTRY_VERIFY(!m_server.requests.isEmpty());
            QTest::qWait(100);
        }
        QStringList names;
        for (const QJsonObject& event : eventsIn(m_server.requests))
            names.append(event.value(QStringLiteral("name")).toString());
        QCOMPARE(names, sent + QStringList{QStringLiteral("new")});
        QCOMPARE(QFileInfo(queue).isSymLink(), linked);
        QFile after(target);
        if (linked) // the link's target neither made nor changed
            QCOMPARE(after.open(QIODevice::ReadOnly) ? after.readAll() : QByteArray(), contents);
    }

    void keepsTheQueueAcrossARestart()
    {
        LocalHttpServer down;
        QVERIFY(down.listen());
        down.handler = [](const HttpRequest&) { return HttpResponse{500, {}}; };
        auto options = senderOptions(QStringLiteral("restart.json"));
        options.config.endpoint = down.url(QStringLiteral("/mp/collect"));
        {
            MeasurementProtocolSink sink(options);
            logNumbered(sink, MeasurementProtocolSink::kMaxQueued + 5);
            QTRY_VERIFY(!down.requests.isEmpty());
        }
        // The oldest five made room; the rest goes out from the file.
        options.config.endpoint = m_server.url(QStringLiteral("/mp/collect"));
        MeasurementProtocolSink restarted(options);
        QTRY_COMPARE_WITH_TIMEOUT(eventsIn(m_server.requests).size(), MeasurementProtocolSink::kMaxQueued, 10000);
        QCOMPARE(eventsIn(m_server.requests).first()[QStringLiteral("params")][QStringLiteral("size_bytes")].toInteger(), 5);

        // A queue that cannot be written is no reason to lose or stop anything.
        auto unwritable = senderOptions(QStringLiteral("missing-dir/file"));
        QVERIFY(QFile(m_dir.filePath(QStringLiteral("missing-dir"))).open(QIODevice::WriteOnly));
        m_server.requests.clear();
        MeasurementProtocolSink blocked(unwritable);
        logNumbered(blocked, 3);
        QTRY_COMPARE(eventsIn(m_server.requests).size(), 3);
    }
};

TIDEWICK_TEST_MAIN(AnalyticsTest)
#include "tst_analytics.moc"
