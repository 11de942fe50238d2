#include "screens/LocalizationQml.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

namespace tw {

LocalizationQml::LocalizationQml(QObject* parent) : QObject(parent)
{
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this,
            &LocalizationQml::changed);
}

int LocalizationQml::current() const
{
    return int(LocalizationManager::shared().current());
}

void LocalizationQml::setCurrent(int language)
{
    for (Language candidate : allLanguages)
        if (int(candidate) == language)
            LocalizationManager::shared().setCurrent(candidate);
}

QString LocalizationQml::code() const
{
    return languageCode(LocalizationManager::shared().current());
}

QVariantMap LocalizationQml::strings() const
{
    return LocalizationManager::shared().strings();
}

QVariantList LocalizationQml::languages() const
{
    QVariantList list;
    for (Language language : allLanguages)
        list.append(QVariantMap{{QStringLiteral("value"), int(language)},
                                {QStringLiteral("code"), languageCode(language)},
                                {QStringLiteral("name"), languageNativeName(language)}});
    return list;
}

QString LocalizationQml::string(const QString& key) const
{
    return LocalizationManager::shared().string(key);
}

QString LocalizationQml::formatBytes(double count) const
{
    // Script numbers may be NaN or beyond 64 bits; both are clamped first.
    if (!(count > 0))
        return tw::formatBytes(0);
    constexpr double largest = 9.2e18; // below 2^63
    return tw::formatBytes(count >= largest ? qint64(largest) : qint64(count));
}

QString LocalizationQml::percentText(double value, double total) const
{
    return tw::percentText(value, total);
}

} // namespace tw
