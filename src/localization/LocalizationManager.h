#pragma once

#include "localization/Language.h"

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
// a fake store and a made-up list of preferred languages.
//
// Set the language on the GUI thread; current() and string() may be called
// from any thread.
class LocalizationManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::Language current READ current WRITE setCurrent NOTIFY currentChanged)
    // Every text of the current language by key, for QML bindings:
    // `Loc.strings["mode.folder"]` is re-evaluated when the language changes.
    Q_PROPERTY(QVariantMap strings READ strings NOTIFY currentChanged)

public:
    static constexpr const char* kSettingsKey = "Tidewick.language";

    // Reads the stored choice; a value that names no language is ignored,
    // left in the store, and the system's list decides. Nothing is written.
    LocalizationManager(SettingsStore& store, const QStringList& preferredLanguages, QObject* parent = nullptr);

    // The process's instance, on QSettings and QLocale::uiLanguages(); made
    // on first use (on the GUI thread) and never destroyed.
    static LocalizationManager& shared();

    [[nodiscard]] Language current() const { return m_current.load(std::memory_order_acquire); }
    // Stores the choice when it differs from the current one.
    void setCurrent(Language language);

    [[nodiscard]] Q_INVOKABLE QString string(const QString& key) const;
    [[nodiscard]] static QString lookup(Language language, const QString& key);
    [[nodiscard]] QVariantMap strings() const;

    Q_INVOKABLE QString nativeName(tw::Language language) const { return languageNativeName(language); }

Q_SIGNALS:
    void currentChanged();

private:
    SettingsStore& m_store;
    std::atomic<Language> m_current;
};

} // namespace tw
