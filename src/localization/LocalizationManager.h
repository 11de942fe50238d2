#pragma once

#include "localization/Language.h"
#include "localization/TextPlatform.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <atomic>

namespace tw {

class SettingsStore;

// Picks the interface language, remembers the user's choice, and answers
// text lookups: the current language's table, then English, then the bare
// key. One instance serves the process (shared()); tests make their own with
// a fake store and a made-up list of preferred languages, and may ask for
// either platform's words (the process's instance speaks its own host's).
// The manager keeps
// a reference to the store, which must outlive it.
//
// Set the language on the GUI thread; current(), string() and lookup() may
// be called from any thread.
//
// QML: a binding that shows a text reads it from `strings`, whose NOTIFY is
// the language change, so `strings["mode.folder"]` is re-evaluated when the
// language changes. string(key) is for script code that runs once.
class LocalizationManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::Language current READ current WRITE setCurrent NOTIFY currentChanged)
    // Every text of the current language by key; built once per language.
    Q_PROPERTY(QVariantMap strings READ strings NOTIFY currentChanged)

public:
    static constexpr const char* kSettingsKey = "Tidewick.language";

    // Reads the stored choice; a value that names no language is ignored,
    // left in the store, and the system's list decides. Nothing is written.
    LocalizationManager(SettingsStore& store, const QStringList& preferredLanguages,
                        TextPlatform platform = hostTextPlatform(),
                        QObject* parent = nullptr);

    // The process's instance, on QSettings and the system's preferred
    // languages; made on first use, whatever the thread, and handed to the
    // application's thread so that it lives with the views. Never destroyed.
    static LocalizationManager& shared();

    [[nodiscard]] Language current() const { return m_current.load(std::memory_order_acquire); }
    // GUI thread. Announces and stores the choice when it differs from the
    // current one; the same language again changes and writes nothing.
    void setCurrent(Language language);

    [[nodiscard]] TextPlatform platform() const { return m_platform; }

    [[nodiscard]] Q_INVOKABLE QString string(const QString& key) const;
    // The text of `key` in `language`, in this manager's platform's words.
    [[nodiscard]] QString text(Language language, const QString& key) const;
    [[nodiscard]] static QString lookup(TextPlatform platform, Language language, const QString& key);
    [[nodiscard]] QVariantMap strings() const;

    Q_INVOKABLE QString nativeName(tw::Language language) const { return languageNativeName(language); }

Q_SIGNALS:
    void currentChanged();

private:
    SettingsStore& m_store;
    const TextPlatform m_platform;
    std::atomic<Language> m_current;
};

// The shared manager's text of `key` in the current language, for messages
// built in C++.
[[nodiscard]] inline QString uiText(const char* key)
{
    return LocalizationManager::shared().string(QString::fromLatin1(key));
}

} // namespace tw
