#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <optional>

namespace tw {

// The interface languages, in the order the language menu lists them.
struct LanguageInfo {
    Q_GADGET
public:
    enum class Language { english, russian, german, chinese };
    Q_ENUM(Language)
};
using Language = LanguageInfo::Language;

inline constexpr std::array<Language, 4> allLanguages = {Language::english, Language::russian, Language::german,
                                                         Language::chinese};

// "en", "ru", "de", "zh": what is stored and what the sponsored feed is sent.
[[nodiscard]] QString languageCode(Language language);
// The language's own name, shown the same whatever the interface language.
[[nodiscard]] QString languageNativeName(Language language);
// The locale for relative dates in this language.
[[nodiscard]] QString languageDateLocale(Language language);
// Exact match on the code only: "EN" or "fr" give none.
[[nodiscard]] std::optional<Language> languageFromCode(QStringView code);

// The first supported language of a preferred-languages list: each entry's
// code before the first "-", lower-cased; every Chinese variant is Chinese.
// English when nothing matches or the list is empty.
[[nodiscard]] Language detectLanguage(const QStringList& preferredLanguages);

} // namespace tw
