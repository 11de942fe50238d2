#include "localization/Language.h"

namespace tw {

QString languageCode(Language language)
{
    switch (language) {
    case Language::english:
        return QStringLiteral("en");
    case Language::russian:
        return QStringLiteral("ru");
    case Language::german:
        return QStringLiteral("de");
    case Language::chinese:
        return QStringLiteral("zh");
    }
    return QStringLiteral("en");
}

QString languageNativeName(Language language)
{
    switch (language) {
    case Language::english:
        return QStringLiteral("English");
    case Language::russian:
        return QStringLiteral("Русский");
    case Language::german:
        return QStringLiteral("Deutsch");
    case Language::chinese:
        return QStringLiteral("中文");
    }
    return QStringLiteral("English");
}

QString languageDateLocale(Language language)
{
    switch (language) {
    case Language::english:
        return QStringLiteral("en_US");
    case Language::russian:
        return QStringLiteral("ru_RU");
    case Language::german:
        return QStringLiteral("de_DE");
    case Language::chinese:
        return QStringLiteral("zh_Hans");
    }
    return QStringLiteral("en_US");
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
