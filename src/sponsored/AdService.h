#pragma once

#include "sponsored/AdFeed.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <optional>

class QNetworkAccessManager;

namespace tw {

class LocalizationManager;

// Keeps the one current sponsored item up to date: asks the feed, lets the
// server set the pace through `ttl_seconds` (within 10 s to an hour), and asks
// again at once when the interface language changes. Fails in silence: after
// any failure the item on the bar stays and the pace goes on.
//
// Lives on the GUI thread and is used only there; the network calls never
// block it. Owned by whoever makes the window, for the window's life. The
// localization manager must outlive it.
class AdService : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool hasAd READ hasAd NOTIFY currentAdChanged)
    // What the bar shows, for QML: kind ("text" or "banner"), text, iconUrl,
    // imageUrl, alt, link. Empty when there is no item.
    Q_PROPERTY(QVariantMap ad READ adForView NOTIFY currentAdChanged)

public:
    static constexpr double defaultRefreshInterval = 60;
    static constexpr double minRefreshInterval = 10;
    static constexpr double maxRefreshInterval = 3600;
    static constexpr double minInterval = 10;

    struct Options {
        QUrl apiBase = AdFeed::apiBase();
        // Milliseconds on a steady clock; QElapsedTimer's when empty.
        std::function<qint64()> now;
        // The loop's sleep: calls back once after the given time; a
        // single-shot timer when empty.
        std::function<void(std::chrono::milliseconds, std::function<void()>)> sleep;
        // The manager to send on; one of the service's own when null.
        QNetworkAccessManager* network = nullptr;
    };

    explicit AdService(LocalizationManager& localization, QObject* parent = nullptr);
    AdService(LocalizationManager& localization, Options options, QObject* parent = nullptr);
    ~AdService() override;

    // Begins the refresh loop; a second call does nothing.
    Q_INVOKABLE void start();
    // One refresh. Unless forced it is skipped within 10 s of the last request.
    void fetch(bool force);
    // The click report, sent without waiting for its answer.
    void sendClick(const Ad& ad);
    // A press of the bar: the usage event, then the click report. Opening
    // the link is the view's part, after this.
    Q_INVOKABLE void press();

    [[nodiscard]] const std::optional<Ad>& currentAd() const { return m_currentAd; }
    [[nodiscard]] bool hasAd() const { return m_currentAd.has_value(); }
    [[nodiscard]] double nextRefreshInterval() const { return m_nextRefreshInterval; }
    [[nodiscard]] bool isLooping() const { return m_loopStarted; }
    [[nodiscard]] QVariantMap adForView() const;
    // What the bar shows from now on, as an answer of the feed would set it.
    void setCurrentAd(std::optional<Ad> ad);

Q_SIGNALS:
    void currentAdChanged();
    // A request went out and its answer (or failure) has been applied.
    void refreshSettled();

private:
    void fetch(bool force, std::function<void()> then);
    void settle(const AdFeed::Outcome& outcome);
    void applyOutcome(const AdFeed::Outcome& outcome);
    void scheduleNext();
    void wake();
    [[nodiscard]] qint64 now() const;

    LocalizationManager& m_localization;
    Options m_options;
    QNetworkAccessManager* m_network = nullptr;
    int m_requestsInFlight = 0;
    bool m_networkSpoiled = false; // an answer given up before its headers ended
    std::optional<Ad> m_currentAd;
    double m_nextRefreshInterval = defaultRefreshInterval;
    std::optional<qint64> m_lastRequest; // empty: long ago
    std::optional<qint64> m_lastRequestAtSleep; // m_lastRequest when the loop began its sleep
    bool m_loopStarted = false;
    QTimer m_loopTimer;
};

} // namespace tw
