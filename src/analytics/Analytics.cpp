#include "analytics/Analytics.h"

#include <QMutex>

namespace tw {

QString wireName(AnalyticsEvent event)
{
    switch (event) {
    case AnalyticsEvent::appLaunched: return QStringLiteral("app_launched");
    case AnalyticsEvent::scanStartedHome: return QStringLiteral("scan_started_home");
    case AnalyticsEvent::scanStartedEntireMac: return QStringLiteral("scan_started_entire_mac");
    case AnalyticsEvent::scanStartedFolder: return QStringLiteral("scan_started_folder");
    case AnalyticsEvent::scanCompleted: return QStringLiteral("scan_completed");
    case AnalyticsEvent::itemDeleted: return QStringLiteral("item_deleted");
    case AnalyticsEvent::appUninstalled: return QStringLiteral("app_uninstalled");
    case AnalyticsEvent::snapshotsThinned: return QStringLiteral("snapshots_thinned");
    case AnalyticsEvent::modeSwitched: return QStringLiteral("mode_switched");
    case AnalyticsEvent::adClicked: return QStringLiteral("ad_clicked");
    }
    qFatal("unknown analytics event %d", int(event));
}

namespace {
QMutex sinkMutex;
std::shared_ptr<AnalyticsSink> currentSink;

std::shared_ptr<AnalyticsSink> sink()
{
    QMutexLocker lock(&sinkMutex);
    return currentSink;
}
} // namespace

namespace Analytics {

void configure(std::shared_ptr<AnalyticsSink> newSink)
{
    // The old sink is released outside the lock: its destructor may flush.
    std::shared_ptr<AnalyticsSink> old;
    {
        QMutexLocker lock(&sinkMutex);
        old = std::exchange(currentSink, std::move(newSink));
    }
}

void setUserProperty(const QString& value, const QString& name)
{
    if (auto target = sink())
        target->setUserProperty(name, value);
}

void setDefaultEventParameters(const AnalyticsParameters& parameters)
{
    if (auto target = sink())
        target->setDefaultEventParameters(parameters);
}

void logEvent(AnalyticsEvent event, const AnalyticsParameters& parameters)
{
    if (auto target = sink())
        target->logEvent(wireName(event), parameters);
}

} // namespace Analytics
} // namespace tw
