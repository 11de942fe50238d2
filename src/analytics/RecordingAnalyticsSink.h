#pragma once

#include "analytics/Analytics.h"

#include <QList>
#include <QMutex>

namespace tw {

// Keeps every call, in order, for tests and the screenshot tool. Any thread.
class RecordingAnalyticsSink final : public AnalyticsSink {
public:
    struct Event {
        QString name;
        AnalyticsParameters parameters;
        bool operator==(const Event&) const = default;
    };

    void setUserProperty(const QString& name, const QString& value) override
    {
        QMutexLocker lock(&m_mutex);
        m_userProperties.insert(name, value);
    }
    void setDefaultEventParameters(const AnalyticsParameters& parameters) override
    {
        QMutexLocker lock(&m_mutex);
        m_defaults = parameters;
    }
    void logEvent(const QString& name, const AnalyticsParameters& parameters) override
    {
        QMutexLocker lock(&m_mutex);
        m_events.append({name, parameters});
    }

    [[nodiscard]] QList<Event> events() const
    {
        QMutexLocker lock(&m_mutex);
        return m_events;
    }
    [[nodiscard]] QMap<QString, QString> userProperties() const
    {
        QMutexLocker lock(&m_mutex);
        return m_userProperties;
    }
    [[nodiscard]] AnalyticsParameters defaultParameters() const
    {
        QMutexLocker lock(&m_mutex);
        return m_defaults;
    }
    void clear()
    {
        QMutexLocker lock(&m_mutex);
        m_events.clear();
    }

private:
    mutable QMutex m_mutex;
    QList<Event> m_events;
    QMap<QString, QString> m_userProperties;
    AnalyticsParameters m_defaults;
};

} // namespace tw
