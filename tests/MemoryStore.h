#pragma once

#include "localization/SettingsStore.h"

#include <QMap>

namespace tw::test {

// Settings kept in memory, for tests that must not touch the user's own.
class MemoryStore final : public SettingsStore {
public:
    std::optional<QString> string(const QString& key) const override
    {
        return values.contains(key) ? std::optional<QString>(values.value(key)) : std::nullopt;
    }
    void setString(const QString& key, const QString& value) override
    {
        values.insert(key, value);
        ++writes;
    }
    QMap<QString, QString> values;
    int writes = 0;
};

} // namespace tw::test
