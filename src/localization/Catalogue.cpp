#include "localization/Catalogue.h"

namespace tw::catalogue {

const Table& source(Language language)
{
    switch (language) {
    case Language::english:
        return english();
    case Language::russian:
        return russian();
    case Language::german:
        return german();
    case Language::chinese:
        return chinese();
    }
    return english();
}

QHash<QString, QString> buildLookup(std::span<const Entry> entries, const char* tableName)
{
    QHash<QString, QString> map;
    map.reserve(qsizetype(entries.size()));
    for (const Entry& entry : entries) {
        const QString key = QString::fromUtf8(entry.key);
        if (map.contains(key))
            qFatal("the %s text table holds the key \"%s\" twice", tableName, entry.key);
        map.insert(key, QString::fromUtf8(entry.text));
    }
    return map;
}

const QHash<QString, QString>& table(Language language)
{
    // Built once, under the static's own one-time initialisation.
    static const std::array<QHash<QString, QString>, allLanguages.size()> tables = [] {
        std::array<QHash<QString, QString>, allLanguages.size()> built;
        for (Language language : allLanguages)
            built[std::size_t(language)] = buildLookup(source(language), qPrintable(languageCode(language)));
        return built;
    }();
    return tables[std::size_t(language)];
}

} // namespace tw::catalogue
