#include "localization/Language.h"

namespace tw {

namespace {
struct Facts {
    const char* code;
    const char16_t* nativeName;
    const char* dateLocale;
};
// In the order of Language.
constexpr std::array<Facts, allLanguages.size()> kFacts = {{
    {"en", u"English", "en_US"},
    {"ru", u"Русский", "ru_RU"},
    {"de", u"Deutsch", "de_DE"},
    {"zh", u"中文", "zh_Hans"},
}};

const Facts& factsOf(Language language)
{
    return kFacts[std::size_t(language)];
}
} // namespace

QString languageCode(Language language)
{
    return QString::fromLatin1(factsOf(language).code);
}

QString languageNativeName(Language language)
{
    return QString::fromUtf16(factsOf(language).nativeName);
}

QString languageDateLocale(Language language)
{
    return QString::fromLatin1(factsOf(language).dateLocale);
}

std::optional<Language> languageFromCode(QStringView code)
{
    for (Language language : allLanguages)
        if (code == languageCode(language))
            return language;
    return std::nullopt;
}

Language detectLanguage(const QStringList& preferredLanguages)
{
    for (const QString& entry : preferredLanguages) {
        const qsizetype dash = entry.indexOf(QLatin1Char('-'));
        const QString code = (dash < 0 ? entry : entry.left(dash)).toLower();
        if (const auto language = languageFromCode(code))
            return *language;
    }
    return Language::english;
}

} // namespace tw
