#pragma once

#include "analytics/AnalyticsEvent.h"

#include <memory>

namespace tw {

// Where the four calls end up. Implementations take calls from any thread and
// never block the caller on disk or network.
class AnalyticsSink {
public:
    virtual ~AnalyticsSink() = default;
    virtual void setUserProperty(const QString& name, const QString& value) = 0;
    // Merged into every later event; an event's own parameter of the same
    // name wins.
    virtual void setDefaultEventParameters(const AnalyticsParameters& parameters) = 0;
    virtual void logEvent(const QString& name, const AnalyticsParameters& parameters) = 0;
};

// Sends nothing: a build with no analytics configuration.
class NullAnalyticsSink final : public AnalyticsSink {
public:
    void setUserProperty(const QString&, const QString&) override {}
    void setDefaultEventParameters(const AnalyticsParameters&) override {}
    void logEvent(const QString&, const AnalyticsParameters&) override {}
};

// The four calls of the usage reporting. configure() picks the sink, once at
// launch (tests install their own); before it, and with none, events go
// nowhere. Any thread; none of them waits.
namespace Analytics {
void configure(std::shared_ptr<AnalyticsSink> sink);
void setUserProperty(const QString& value, const QString& name);
void setDefaultEventParameters(const AnalyticsParameters& parameters);
void logEvent(AnalyticsEvent event, const AnalyticsParameters& parameters = {});
} // namespace Analytics

} // namespace tw
