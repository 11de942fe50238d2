#pragma once

#include <QString>

#include <optional>

namespace tw {

// The one place Tidewick keeps state between runs: a few text values by key.
// Implementations are called on the GUI thread.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    [[nodiscard]] virtual std::optional<QString> string(const QString& key) const = 0;
    virtual void setString(const QString& key, const QString& value) = 0;
};

// QSettings under the bundle's preferences domain, "app.tidewick.Tidewick" on
// macOS (elsewhere organisation "tidewick.app", application "Tidewick").
class SystemSettingsStore final : public SettingsStore {
public:
    [[nodiscard]] std::optional<QString> string(const QString& key) const override;
    void setString(const QString& key, const QString& value) override;
};

} // namespace tw
