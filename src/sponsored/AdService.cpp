#include "sponsored/AdService.h"

#include "analytics/Analytics.h"
#include "localization/LocalizationManager.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>

#include <algorithm>

namespace tw {

AdService::AdService(LocalizationManager& localization, QObject* parent)
    : AdService(localization, Options{}, parent)
{
}

AdService::AdService(LocalizationManager& localization, Options options, QObject* parent)
    : QObject(parent), m_localization(localization), m_options(std::move(options))
{
    m_network = m_options.network ? m_options.network : new QNetworkAccessManager(this);
    if (!m_options.now) {
        auto clock = std::make_shared<QElapsedTimer>();
        clock->start();
        m_options.now = [clock] { return clock->elapsed(); };
    }
    if (!m_options.sleep) {
        m_loopTimer.setSingleShot(true);
        m_loopTimer.setTimerType(Qt::PreciseTimer);
        connect(&m_loopTimer, &QTimer::timeout, this, [this] { wake(); });
    }
    // An item in the new language at once; the connection dies with either end.
    connect(&m_localization, &LocalizationManager::currentChanged, this, [this] { fetch(true); });
}

AdService::~AdService() = default;

qint64 AdService::now() const
{
    return m_options.now();
}

void AdService::start()
{
    if (m_loopStarted)
        return;
    m_loopStarted = true;
    fetch(false, [this] { scheduleNext(); });
}

void AdService::scheduleNext()
{
    // Always 10 s to an hour, read when the sleep begins.
    const std::chrono::milliseconds interval(qint64(m_nextRefreshInterval * 1000));
    m_lastRequestAtSleep = m_lastRequest;
    if (!m_options.sleep)
        return m_loopTimer.start(interval);
    QPointer<AdService> guard(this);
    m_options.sleep(interval, [guard] {
        if (guard)
            guard->wake();
    });
}

void AdService::wake()
{
    // A sleep of at least 10 s with no other request meanwhile is the limit
    // kept: a timer that wakes a little early must not cost a whole interval.
    const bool due = m_lastRequest == m_lastRequestAtSleep;
    fetch(due, [this] { scheduleNext(); });
}

void AdService::fetch(bool force)
{
    fetch(force, {});
}

void AdService::fetch(bool force, std::function<void()> then)
{
    const qint64 at = now();
    if (!force && m_lastRequest && at - *m_lastRequest < qint64(minInterval * 1000)) {
        if (then)
            then();
        return;
    }
    // Counted before the answer: a failed or forced request moves the limit too.
    m_lastRequest = at;
    QPointer<AdService> guard(this);
    ++m_requestsInFlight;
    AdFeed::requestCurrent(*m_network, m_options.apiBase, m_localization.current(),
                           [guard, then = std::move(then)](const AdFeed::Outcome& outcome) {
                               if (!guard)
                                   return;
                               guard->settle(outcome);
                               guard->applyOutcome(outcome);
                               if (then)
                                   then();
                               Q_EMIT guard->refreshSettled();
                           });
}

void AdService::settle(const AdFeed::Outcome& outcome)
{
    --m_requestsInFlight;
    m_networkSpoiled = m_networkSpoiled || (outcome.kind == AdFeed::Outcome::Kind::transportFailure && outcome.status == 0 &&
                                            outcome.canceled);
    // Only a manager of our own, and only once no other request of the
    // loop's would be cut off with it.
    if (!m_networkSpoiled || m_options.network || m_requestsInFlight > 0)
        return;
    m_networkSpoiled = false;
    QMetaObject::invokeMethod(
        this, [spoiled = std::exchange(m_network, new QNetworkAccessManager(this))] { retireNetwork(spoiled); },
        Qt::QueuedConnection);
}

void AdService::applyOutcome(const AdFeed::Outcome& outcome)
{
    using Kind = AdFeed::Outcome::Kind;
    switch (outcome.kind) {
    case Kind::noItem:
        setCurrentAd(std::nullopt);
        m_nextRefreshInterval = defaultRefreshInterval;
        return;
    case Kind::envelope:
        // A well-formed answer with an unusable item clears the bar.
        setCurrentAd(outcome.envelope.ad);
        m_nextRefreshInterval =
            outcome.envelope.ttlSeconds
                ? std::clamp(double(*outcome.envelope.ttlSeconds), minRefreshInterval, maxRefreshInterval)
                : defaultRefreshInterval;
        return;
    case Kind::ignoredStatus:
    case Kind::undecodable:
    case Kind::transportFailure:
        return;
    }
}

void AdService::setCurrentAd(std::optional<Ad> ad)
{
    if (ad == m_currentAd)
        return;
    m_currentAd = std::move(ad);
    Q_EMIT currentAdChanged();
}

void AdService::sendClick(const Ad& ad)
{
    AdFeed::sendClick(*m_network, m_options.apiBase, ad, m_localization.current());
}

void AdService::press()
{
    if (!m_currentAd)
        return;
    const Ad ad = *m_currentAd;
    Analytics::logEvent(AnalyticsEvent::adClicked,
                        {{QStringLiteral("ad_id"), ad.id}, {QStringLiteral("link"), QString::fromUtf8(ad.link.toEncoded())}});
    sendClick(ad);
}

QVariantMap AdService::adForView() const
{
    if (!m_currentAd)
        return {};
    QVariantMap map{{QStringLiteral("link"), QString::fromUtf8(m_currentAd->link.toEncoded())}};
    if (const auto* text = std::get_if<AdContent::Text>(&m_currentAd->content.value)) {
        map.insert(QStringLiteral("kind"), QStringLiteral("text"));
        map.insert(QStringLiteral("text"), text->text);
        map.insert(QStringLiteral("iconUrl"), text->iconURL ? text->iconURL->toString() : QString());
    } else if (const auto* banner = std::get_if<AdContent::Banner>(&m_currentAd->content.value)) {
        map.insert(QStringLiteral("kind"), QStringLiteral("banner"));
        map.insert(QStringLiteral("imageUrl"), banner->imageURL.toString());
        map.insert(QStringLiteral("alt"), banner->alt.value_or(QString()));
    }
    return map;
}

} // namespace tw
