#pragma once

#include "analytics/Analytics.h"
#include "network/RequestLimits.h"

#include <QMutex>
#include <QThread>
#include <QUrl>

#include <optional>

namespace tw {

class SettingsStore;

// Where a deployment's analytics go: the Firebase app id and the Measurement
// Protocol API secret, and the collection endpoint (Google's unless
// TIDEWICK_ANALYTICS_ENDPOINT names another, as tests do).
struct AnalyticsConfig {
    static constexpr const char* kDefaultEndpoint = "https://www.google-analytics.com/mp/collect";

    QString firebaseAppId;
    QString apiSecret;
    QUrl endpoint;

    // TIDEWICK_FIREBASE_APP_ID and TIDEWICK_ANALYTICS_API_SECRET when both
    // are set, else the JSON file at `resourcePath` ({"firebase_app_id",
    // "api_secret"}); nothing when neither gives both values.
    [[nodiscard]] static std::optional<AnalyticsConfig> load(const QString& resourcePath);
    [[nodiscard]] static std::optional<AnalyticsConfig> fromJson(const QByteArray& json);
    [[nodiscard]] QUrl collectUrl() const;
};

// Sends the events to the Measurement Protocol endpoint for Firebase apps, in
// batches of at most 25, retrying with back-off. Every event is kept in a
// queue file (at most 1,000, the oldest dropped first) until the service has
// taken it, so a quit or a dead network loses nothing: the next sink made on
// the same file sends what is left.
//
// The queue file is trusted no further than its size: it is never read or
// written through a link (a link in its place is left alone, and the queue
// then lives in memory only), a file over kMaxQueueFileBytes is not read,
// and an event over kMaxEventBytes is dropped, never sent.
//
// The calls take any thread and return at once; the file and the network are
// handled on a thread of the sink's own. Destroying the sink stops that
// thread after it has written what was queued.
class MeasurementProtocolSink final : public AnalyticsSink {
public:
    static constexpr int kMaxBatch = 25;
    static constexpr int kMaxQueued = 1000;
    // An event is its name and a handful of numbers and short texts (each
    // cut to 100 characters): a few hundred bytes. 4 KiB holds even the
    // service's own maximum of 25 such parameters.
    static constexpr qint64 kMaxEventBytes = 4096;
    static constexpr qint64 kMaxQueueFileBytes = kMaxQueued * kMaxEventBytes + 1024;

    struct Options {
        AnalyticsConfig config;
        QString queueFile;
        QString appInstanceId;
        int batchDelayMs = 2000;     // lets the events of a moment share a request
        int initialBackoffMs = 5000; // doubled after each failure
        int maxBackoffMs = 15 * 60 * 1000;
        RequestLimits limits = RequestLimits::analytics();
    };

    explicit MeasurementProtocolSink(Options options);
    ~MeasurementProtocolSink() override;

    void setUserProperty(const QString& name, const QString& value) override;
    void setDefaultEventParameters(const AnalyticsParameters& parameters) override;
    void logEvent(const QString& name, const AnalyticsParameters& parameters) override;

    // The installation's id: made once, then read back from the store. GUI thread.
    [[nodiscard]] static QString appInstanceId(SettingsStore& store);
    // Where the queue lives for the signed-in user.
    [[nodiscard]] static QString defaultQueueFile();

private:
    class Sender;
    QThread m_thread;
    Sender* m_sender = nullptr;
    QMutex m_mutex;
    AnalyticsParameters m_defaults;
};

} // namespace tw
