#pragma once

#include "analytics/Analytics.h"

#include <QObject>
#include <QQmlEngine>

namespace tw {

// The usage events a view raises itself, before it asks AppState for the
// scan: QML's `UsageEvents.scanStartedHome()` and the like. None carries a
// parameter, so no path can reach an event from here.
class UsageEventsQml : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(UsageEvents)
    QML_SINGLETON

public:
    using QObject::QObject;
    Q_INVOKABLE void scanStartedHome() { Analytics::logEvent(AnalyticsEvent::scanStartedHome); }
    Q_INVOKABLE void scanStartedEntireMac() { Analytics::logEvent(AnalyticsEvent::scanStartedEntireMac); }
    Q_INVOKABLE void scanStartedFolder() { Analytics::logEvent(AnalyticsEvent::scanStartedFolder); }
};

} // namespace tw
