#include "localization/SettingsStore.h"

#include <QSettings>

namespace tw {

namespace {
// On macOS QSettings turns an organisation written as an Internet domain
// around: "tidewick.app" and "Tidewick" give the bundle's own preferences
// domain, "app.tidewick.Tidewick", where `defaults read` finds the language.
const QString kOrganisation = QStringLiteral("tidewick.app");
const QString kApplication = QStringLiteral("Tidewick");
} // namespace

std::optional<QString> SystemSettingsStore::string(const QString& key) const
{
    const QVariant value = QSettings(kOrganisation, kApplication).value(key);
    if (!value.isValid())
        return std::nullopt;
    return value.toString();
}

void SystemSettingsStore::setString(const QString& key, const QString& value)
{
    QSettings(kOrganisation, kApplication).setValue(key, value);
}

} // namespace tw
