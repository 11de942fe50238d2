#include "localization/LocalizationManager.h"

#include "localization/Catalogue.h"
#include "localization/SettingsStore.h"
#include "localization/SystemLanguages.h"

#include <QCoreApplication>
#include <QThread>

#include <array>

namespace tw {

LocalizationManager::LocalizationManager(SettingsStore& store, const QStringList& preferredLanguages,
                                         TextPlatform platform, QObject* parent)
    : QObject(parent), m_store(store), m_platform(platform), m_current(Language::english)
{
    const auto stored = m_store.string(QString::fromLatin1(kSettingsKey));
    const auto chosen = stored ? languageFromCode(*stored) : std::nullopt;
    // The detected language is not written back: a user who never picks
    // keeps following the system's list.
    m_current.store(chosen ? *chosen : detectLanguage(preferredLanguages), std::memory_order_release);
}

LocalizationManager& LocalizationManager::shared()
{
    static SystemSettingsStore store;
    static LocalizationManager* const instance = [] {
        auto* made = new LocalizationManager(store, systemPreferredLanguages(), hostTextPlatform());
        // A worker that asks first must not leave the instance bound to a
        // thread that ends; the views connect to it from the GUI thread.
        if (const QCoreApplication* app = QCoreApplication::instance(); app && made->thread() != app->thread())
            made->moveToThread(app->thread());
        return made;
    }();
    return *instance;
}

void LocalizationManager::setCurrent(Language language)
{
    if (current() == language)
        return;
    m_current.store(language, std::memory_order_release);
    m_store.setString(QString::fromLatin1(kSettingsKey), languageCode(language));
    Q_EMIT currentChanged();
}

QString LocalizationManager::lookup(TextPlatform platform, Language language, const QString& key)
{
    const auto& own = catalogue::table(platform, language);
    if (const auto found = own.constFind(key); found != own.constEnd())
        return *found;
    const auto& english = catalogue::table(platform, Language::english);
    if (const auto found = english.constFind(key); found != english.constEnd())
        return *found;
    return key;
}

QString LocalizationManager::string(const QString& key) const
{
    return lookup(m_platform, current(), key);
}

QString LocalizationManager::text(Language language, const QString& key) const
{
    return lookup(m_platform, language, key);
}

QVariantMap LocalizationManager::strings() const
{
    // The tables never change, so each language's map is made once and
    // handed out as a shared copy; bindings read it often.
    using Maps = std::array<std::array<QVariantMap, allLanguages.size()>, allTextPlatforms.size()>;
    static const Maps maps = [] {
        Maps built;
        for (TextPlatform platform : allTextPlatforms)
            for (Language language : allLanguages)
                for (const catalogue::Entry& entry : catalogue::english()) {
                    const QString key = QString::fromUtf8(entry.key);
                    built[std::size_t(platform)][std::size_t(language)].insert(key, lookup(platform, language, key));
                }
        return built;
    }();
    return maps[std::size_t(m_platform)][std::size_t(current())];
}

} // namespace tw
