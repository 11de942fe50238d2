#include "analytics/MeasurementProtocolSink.h"

#include "localization/SettingsStore.h"
#include "platform/OwnFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QStandardPaths>
#include <QTimer>
#include <QUrlQuery>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <deque>

namespace tw {

namespace {
constexpr const char* kInstanceKey = "Tidewick.analyticsInstance";
// The service keeps at most this many characters of a text parameter; a
// longer one (a sponsored item's long link) is cut here rather than there.
constexpr qsizetype kMaxTextParameter = 100;

QJsonValue toJson(const AnalyticsValue& value)
{
    if (const auto* text = std::get_if<QString>(&value))
        return text->left(kMaxTextParameter);
    if (const auto* number = std::get_if<qint64>(&value))
        return double(*number);
    return std::get<bool>(value);
}
} // namespace

std::optional<AnalyticsConfig> AnalyticsConfig::fromJson(const QByteArray& json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    AnalyticsConfig config{object.value(QStringLiteral("firebase_app_id")).toString(),
                           object.value(QStringLiteral("api_secret")).toString(), {}};
    if (config.firebaseAppId.isEmpty() || config.apiSecret.isEmpty())
        return std::nullopt;
    return config;
}

std::optional<AnalyticsConfig> AnalyticsConfig::load(const QString& resourcePath)
{
    std::optional<AnalyticsConfig> config;
    const QString appId = qEnvironmentVariable("TIDEWICK_FIREBASE_APP_ID");
    const QString secret = qEnvironmentVariable("TIDEWICK_ANALYTICS_API_SECRET");
    if (!appId.isEmpty() && !secret.isEmpty()) {
        config = AnalyticsConfig{appId, secret, {}};
    } else if (QFile file(resourcePath); !resourcePath.isEmpty() && file.open(QIODevice::ReadOnly)) {
        config = fromJson(file.read(64 * 1024));
    }
    if (!config)
        return std::nullopt;
    const QUrl endpoint(qEnvironmentVariable("TIDEWICK_ANALYTICS_ENDPOINT"), QUrl::StrictMode);
    config->endpoint = endpoint.isValid() && !endpoint.host().isEmpty() ? endpoint
                                                                          : QUrl(QString::fromLatin1(kDefaultEndpoint));
    return config;
}

QUrl AnalyticsConfig::collectUrl() const
{
    QUrl url = endpoint;
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("firebase_app_id"), firebaseAppId);
    query.addQueryItem(QStringLiteral("api_secret"), apiSecret);
    url.setQuery(query);
    return url;
}

// Owns the queue, its file and the uploads; lives on the sink's thread.
class MeasurementProtocolSink::Sender : public QObject {
public:
    explicit Sender(Options options) : m_options(std::move(options))
    {
        m_timer.setSingleShot(true);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            m_retrying = false;
            sendNext();
        });
    }

    void load()
    {
        if (m_options.queueFile.isEmpty())
            return;
        const QFileInfo place(m_options.queueFile);
        const auto contents = OwnFile::read(QFile::encodeName(place.absolutePath()), QFile::encodeName(place.fileName()),
                                            kMaxQueueFileBytes);
        // A link where the file should be is someone else's: never written.
        m_fileRefused = contents.error == ELOOP;
        // A damaged file holds nothing we can send; it is rewritten on the next event.
        const QJsonArray events =
            QJsonDocument::fromJson(contents.bytes).object().value(QStringLiteral("events")).toArray();
        for (const QJsonValue event : events) {
            if (event.isObject() && event[QStringLiteral("name")].isString())
                admit(event.toObject());
        }
        trim();
        schedule(0);
    }

    void setUserProperty(const QString& name, const QString& value)
    {
        m_userProperties.insert(name, QJsonObject{{QStringLiteral("value"), value}});
    }

    void enqueue(const QJsonObject& event)
    {
        admit(event);
        trim();
        saveSoon();
        schedule(m_options.batchDelayMs);
    }

    void shutdown()
    {
        m_timer.stop();
        save();
        // What is in flight stays in the file and goes out next time.
        if (m_reply)
            m_reply->abort();
    }

private:
    struct Queued {
        quint64 sequence;
        QJsonObject event;
    };

    void admit(const QJsonObject& event)
    {
        if (QJsonDocument(event).toJson(QJsonDocument::Compact).size() <= kMaxEventBytes)
            m_queue.push_back({m_nextSequence++, event});
    }

    void trim()
    {
        while (m_queue.size() > size_t(kMaxQueued))
            m_queue.pop_front();
    }

    // A burst of events is written once, after the calls already waiting.
    void saveSoon()
    {
        if (std::exchange(m_savePending, true))
            return;
        QTimer::singleShot(0, this, [this] {
            m_savePending = false;
            save();
        });
    }

    // The whole queue, replaced atomically: a write that fails (a full disk,
    // a read-only home) leaves the previous file whole, and the next change
    // tries again.
    bool save()
    {
        m_savePending = false;
        if (m_options.queueFile.isEmpty() || m_fileRefused)
            return false;
        QJsonArray events;
        for (const Queued& queued : m_queue)
            events.append(queued.event);
        const QByteArray bytes = QJsonDocument(QJsonObject{{QStringLiteral("events"), events}}).toJson(QJsonDocument::Compact);
        const QFileInfo place(m_options.queueFile);
        QDir().mkpath(place.absolutePath());
        const int error =
            OwnFile::replace(QFile::encodeName(place.absolutePath()), QFile::encodeName(place.fileName()), bytes);
        m_fileRefused = error == ELOOP;
        return error == 0;
    }

    void schedule(int delayMs)
    {
        if (m_reply || m_retrying || m_queue.empty() || m_timer.isActive())
            return;
        m_timer.start(delayMs);
    }

    void sendNext()
    {
        if (m_reply || m_queue.empty())
            return;
        if (!m_network)
            m_network = new QNetworkAccessManager(this);
        QJsonArray events;
        m_inFlight.clear();
        for (auto it = m_queue.begin(); it != m_queue.end() && events.size() < kMaxBatch; ++it) {
            events.append(it->event);
            m_inFlight.push_back(it->sequence);
        }
        QJsonObject body{{QStringLiteral("app_instance_id"), m_options.appInstanceId},
                         {QStringLiteral("events"), events}};
        if (!m_userProperties.isEmpty())
            body.insert(QStringLiteral("user_properties"), m_userProperties);
        QNetworkRequest request(m_options.config.collectUrl());
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        m_reply = m_network->post(request, QJsonDocument(body).toJson(QJsonDocument::Compact));
        limitReply(*m_reply, m_options.limits);
        connect(m_reply, &QNetworkReply::finished, this, [this] { finished(); });
    }

    void finished()
    {
        QNetworkReply* reply = std::exchange(m_reply, nullptr);
        reply->deleteLater();
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (status == 0 && reply->error() == QNetworkReply::OperationCanceledError) {
            // Given up before the answer began; the next request goes through a new manager.
            QMetaObject::invokeMethod(this, [network = std::exchange(m_network, nullptr)] { retireNetwork(network); },
                                      Qt::QueuedConnection);
        }
        // A 4xx other than a time-out or a rate limit will never be taken:
        // retrying it would hold up every later event for good.
        const bool taken = status >= 200 && status <= 299;
        const bool refused = status >= 400 && status <= 499 && status != 408 && status != 429;
        if (taken || refused) {
            std::erase_if(m_queue, [this](const Queued& queued) {
                return std::find(m_inFlight.begin(), m_inFlight.end(), queued.sequence) != m_inFlight.end();
            });
            m_inFlight.clear();
            saveSoon();
            m_backoffMs = 0;
            schedule(0);
            return;
        }
        m_inFlight.clear();
        m_backoffMs = m_backoffMs == 0 ? m_options.initialBackoffMs : std::min(m_backoffMs * 2, m_options.maxBackoffMs);
        m_retrying = true;
        m_timer.start(m_backoffMs);
    }

    Options m_options;
    std::deque<Queued> m_queue;
    std::vector<quint64> m_inFlight;
    quint64 m_nextSequence = 0;
    QJsonObject m_userProperties;
    QNetworkAccessManager* m_network = nullptr;
    QNetworkReply* m_reply = nullptr;
    QTimer m_timer{this};
    int m_backoffMs = 0; // the last wait after a failure; 0 after a success
    bool m_retrying = false;
    bool m_savePending = false;
    bool m_fileRefused = false; // a link stands where the file should be
};

MeasurementProtocolSink::MeasurementProtocolSink(Options options)
{
    m_sender = new Sender(std::move(options));
    m_sender->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_sender, &QObject::deleteLater);
    m_thread.setObjectName(QStringLiteral("analytics"));
    m_thread.start(QThread::LowPriority);
    QMetaObject::invokeMethod(m_sender, [sender = m_sender] { sender->load(); }, Qt::QueuedConnection);
}

MeasurementProtocolSink::~MeasurementProtocolSink()
{
    // Runs after everything queued before it, so the file holds every event.
    QMetaObject::invokeMethod(m_sender, [sender = m_sender] { sender->shutdown(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void MeasurementProtocolSink::setUserProperty(const QString& name, const QString& value)
{
    QMetaObject::invokeMethod(m_sender, [sender = m_sender, name, value] { sender->setUserProperty(name, value); },
                              Qt::QueuedConnection);
}

void MeasurementProtocolSink::setDefaultEventParameters(const AnalyticsParameters& parameters)
{
    QMutexLocker lock(&m_mutex);
    m_defaults = parameters;
}

void MeasurementProtocolSink::logEvent(const QString& name, const AnalyticsParameters& parameters)
{
    QJsonObject params;
    {
        QMutexLocker lock(&m_mutex);
        for (auto it = m_defaults.cbegin(); it != m_defaults.cend(); ++it)
            params.insert(it.key(), toJson(it.value()));
    }
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it)
        params.insert(it.key(), toJson(it.value()));
    const QJsonObject event{{QStringLiteral("name"), name}, {QStringLiteral("params"), params}};
    QMetaObject::invokeMethod(m_sender, [sender = m_sender, event] { sender->enqueue(event); }, Qt::QueuedConnection);
}

QString MeasurementProtocolSink::appInstanceId(SettingsStore& store)
{
    const QString key = QString::fromLatin1(kInstanceKey);
    if (const auto stored = store.string(key); stored && stored->size() == 32)
        return *stored;
    const QString made = QUuid::createUuid().toString(QUuid::Id128);
    store.setString(key, made);
    return made;
}

QString MeasurementProtocolSink::defaultQueueFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/analytics-queue.json");
}

} // namespace tw
