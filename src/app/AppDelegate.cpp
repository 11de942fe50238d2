#include "app/AppDelegate.h"

#include "analytics/Analytics.h"
#include "analytics/MeasurementProtocolSink.h"
#include "localization/SettingsStore.h"

namespace tw {

std::shared_ptr<AnalyticsSink> AppDelegate::makeSink(const QString& configResource)
{
    auto config = AnalyticsConfig::load(configResource);
    if (!config)
        return std::make_shared<NullAnalyticsSink>();
    SystemSettingsStore settings;
    MeasurementProtocolSink::Options options;
    options.config = std::move(*config);
    options.queueFile = MeasurementProtocolSink::defaultQueueFile();
    options.appInstanceId = MeasurementProtocolSink::appInstanceId(settings);
    return std::make_shared<MeasurementProtocolSink>(std::move(options));
}

void AppDelegate::applicationDidFinishLaunching(std::shared_ptr<AnalyticsSink> sink)
{
    Analytics::configure(sink ? std::move(sink) : makeSink(QString::fromLatin1(kAnalyticsConfigResource)));
    const QString direct = QStringLiteral("direct");
    Analytics::setUserProperty(direct, QStringLiteral("distribution"));
    Analytics::setDefaultEventParameters({{QStringLiteral("distribution"), direct}});
    Analytics::logEvent(AnalyticsEvent::appLaunched);
}

} // namespace tw
