#include "localization/SettingsStore.h"

#include <QSettings>

namespace tw {

std::optional<QString> SystemSettingsStore::string(const QString& key) const
{
    const QVariant value = QSettings(QStringLiteral("Tidewick"), QStringLiteral("Tidewick")).value(key);
    if (!value.isValid())
        return std::nullopt;
    return value.toString();
}

void SystemSettingsStore::setString(const QString& key, const QString& value)
{
    QSettings(QStringLiteral("Tidewick"), QStringLiteral("Tidewick")).setValue(key, value);
}

} // namespace tw
