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

std::span<const Entry> variants(TextPlatform platform, Language language)
{
    if (platform == TextPlatform::macOS)
        return {};
    switch (language) {
    case Language::english:
        return englishFreedesktop();
    case Language::russian:
        return russianFreedesktop();
    case Language::german:
        return germanFreedesktop();
    case Language::chinese:
        return chineseFreedesktop();
    }
    return {};
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

const QHash<QString, QString>& table(TextPlatform platform, Language language)
{
    using Tables = std::array<std::array<QHash<QString, QString>, allLanguages.size()>, allTextPlatforms.size()>;
    // Built once, under the static's own one-time initialisation.
    static const Tables tables = [] {
        Tables built;
        for (TextPlatform where : allTextPlatforms) {
            for (Language language : allLanguages) {
                const QByteArray name = languageCode(language).toLatin1();
                QHash<QString, QString> map = buildLookup(source(language), name.constData());
                for (const Entry& entry : variants(where, language)) {
                    const QString key = QString::fromUtf8(entry.key);
                    // A variant of a key the table lacks would be a text no screen asks for.
                    if (!map.contains(key))
                        qFatal("the %s platform texts name the unknown key \"%s\"", name.constData(), entry.key);
                    map.insert(key, QString::fromUtf8(entry.text));
                }
                built[std::size_t(where)][std::size_t(language)] = std::move(map);
            }
        }
        return built;
    }();
    return tables[std::size_t(platform)][std::size_t(language)];
}

} // namespace tw::catalogue
