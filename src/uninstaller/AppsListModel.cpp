#include "uninstaller/AppsListModel.h"

#include "app/AppState.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/FileReveal.h"
#include "uninstaller/InstalledApp.h"

#include <QCollator>
#include <QLocale>
#include <algorithm>
#include <array>

namespace tw {

namespace {

const std::array<const char*, 5> kSortKeys{"apps.sizeDesc", "apps.sizeAsc", "apps.nameAsc", "apps.nameDesc",
                                           "apps.lastOpened"};

// Russian picks among three forms by the number's ending.
int russianForm(qint64 n)
{
    const qint64 tens = n % 100;
    const qint64 ones = n % 10;
    if (ones == 1 && tens != 11)
        return 0;
    if (ones >= 2 && ones <= 4 && (tens < 12 || tens > 14))
        return 1;
    return 2;
}

enum class Unit { second, minute, hour, day, week, month, year };

// Each language's short unit words: singular and plural (Russian: the three
// forms), written after the number.
QString unitWord(Unit unit, qint64 n, Language language)
{
    switch (language) {
    case Language::english: {
        static const std::array<const char*, 7> words{"sec.", "min.", "hr.", "day", "wk.", "mo.", "yr."};
        if (unit == Unit::day)
            return n == 1 ? QStringLiteral("day") : QStringLiteral("days");
        return QString::fromLatin1(words[std::size_t(unit)]);
    }
    case Language::russian: {
        static const std::array<std::array<const char*, 3>, 7> words{{{"сек.", "сек.", "сек."},
                                                                      {"мин.", "мин.", "мин."},
                                                                      {"ч", "ч", "ч"},
                                                                      {"дн.", "дн.", "дн."},
                                                                      {"нед.", "нед.", "нед."},
                                                                      {"мес.", "мес.", "мес."},
                                                                      {"г.", "г.", "л."}}};
        return QString::fromUtf8(words[std::size_t(unit)][std::size_t(russianForm(n))]);
    }
    case Language::german: {
        static const std::array<const char*, 7> words{"Sek.", "Min.", "Std.", "Tag", "Wo.", "Mon.", "J."};
        if (unit == Unit::day)
            return QString::fromUtf8(n == 1 ? "Tag" : "Tagen");
        return QString::fromUtf8(words[std::size_t(unit)]);
    }
    case Language::chinese: {
        static const std::array<const char*, 7> words{"秒钟", "分钟", "小时", "天", "周", "个月", "年"};
        return QString::fromUtf8(words[std::size_t(unit)]);
    }
    }
    return {};
}

} // namespace

std::vector<InstalledApp*> visibleApps(const QList<InstalledApp*>& apps, const QString& search, AppSort sort)
{
    // Whitespace only is trimmed: a line feed in the query stays part of it.
    qsizetype begin = 0;
    qsizetype end = search.size();
    const auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (begin < end && blank(search[begin]))
        ++begin;
    while (end > begin && blank(search[end - 1]))
        --end;
    const QString query = search.mid(begin, end - begin).toLower();

    std::vector<InstalledApp*> rows;
    rows.reserve(std::size_t(apps.size()));
    for (InstalledApp* app : apps) {
        if (query.isEmpty() || app->name().contains(query, Qt::CaseInsensitive) ||
            app->bundleID().contains(query, Qt::CaseInsensitive))
            rows.push_back(app);
    }
    switch (sort) {
    case AppSort::sizeDesc:
    case AppSort::sizeAsc: {
        // Sizes read once: a total sums the related list.
        std::vector<std::pair<qint64, InstalledApp*>> sized;
        sized.reserve(rows.size());
        for (InstalledApp* app : rows)
            sized.emplace_back(app->totalSize(), app);
        if (sort == AppSort::sizeDesc)
            std::stable_sort(sized.begin(), sized.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
        else
            std::stable_sort(sized.begin(), sized.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i] = sized[i].second;
        break;
    }
    case AppSort::nameAsc:
    case AppSort::nameDesc: {
        QCollator collator;
        collator.setCaseSensitivity(Qt::CaseInsensitive);
        const bool ascending = sort == AppSort::nameAsc;
        std::stable_sort(rows.begin(), rows.end(), [&](const InstalledApp* a, const InstalledApp* b) {
            const int order = collator.compare(a->name(), b->name());
            return ascending ? order < 0 : order > 0;
        });
        break;
    }
    case AppSort::lastOpened: {
        const auto when = [](const InstalledApp* app) {
            return app->lastOpened() ? app->lastOpened()->toMSecsSinceEpoch() : std::numeric_limits<qint64>::min();
        };
        std::stable_sort(rows.begin(), rows.end(),
                         [&](const InstalledApp* a, const InstalledApp* b) { return when(a) > when(b); });
        break;
    }
    }
    return rows;
}

QString relativeDateText(const QDateTime& date, const QDateTime& now, Language language)
{
    const qint64 seconds = date.secsTo(now);
    const bool past = seconds >= 0;
    const qint64 span = past ? seconds : -seconds;
    // The largest unit of which at least one whole lies in the span; months
    // and years by the calendar.
    const QDate early = (past ? date : now).date();
    const QDate late = (past ? now : date).date();
    int months = (late.year() - early.year()) * 12 + late.month() - early.month();
    if (late.day() < early.day())
        --months;
    Unit unit = Unit::second;
    qint64 count = span;
    if (months >= 12) {
        unit = Unit::year;
        count = months / 12;
    } else if (months >= 1) {
        unit = Unit::month;
        count = months;
    } else if (span >= 7 * 86400) {
        unit = Unit::week;
        count = span / (7 * 86400);
    } else if (span >= 86400) {
        unit = Unit::day;
        count = span / 86400;
    } else if (span >= 3600) {
        unit = Unit::hour;
        count = span / 3600;
    } else if (span >= 60) {
        unit = Unit::minute;
        count = span / 60;
    }
    const QString number = QLocale(languageDateLocale(language)).toString(count);
    const QString word = unitWord(unit, count, language);
    switch (language) {
    case Language::english:
        return past ? QString(number + u' ' + word + QStringLiteral(" ago"))
                    : QString(QStringLiteral("in ") + number + u' ' + word);
    case Language::russian:
        return past ? QString(number + u' ' + word + QString::fromUtf8(" назад"))
                    : QString(QString::fromUtf8("через ") + number + u' ' + word);
    case Language::german:
        // German puts the case on the noun: "vor 2 Tagen", "in 2 Tagen".
        return (past ? QStringLiteral("vor ") : QStringLiteral("in ")) + number + u' ' +
               (unit == Unit::day && !past ? QString::fromUtf8(count == 1 ? "Tag" : "Tagen") : word);
    case Language::chinese:
        return number + word + QString::fromUtf8(past ? "前" : "后");
    }
    return {};
}

QString itemCountText(qint64 count, Language language)
{
    const char* key = count == 1 ? "apps.itemOne" : "apps.itemMany";
    return QString::number(count) + u' ' + LocalizationManager::shared().text(language, QString::fromLatin1(key));
}

AppsListModel::AppsListModel(QObject* parent) : QAbstractListModel(parent)
{
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this, [this] {
        if (!m_rows.empty())
            Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1));
    });
}

void AppsListModel::setState(AppState* state)
{
    if (m_state == state)
        return;
    if (m_state)
        disconnect(m_state, nullptr, this, nullptr);
    m_state = state;
    if (m_state) {
        connect(m_state, &AppState::appsChanged, this, [this] {
            refilter();
            Q_EMIT appsChanged();
        });
        connect(m_state, &AppState::appDataChanged, this, &AppsListModel::appDataChanged);
    }
    refilter();
    Q_EMIT stateChanged();
}

void AppsListModel::setSearch(const QString& search)
{
    if (m_search == search)
        return;
    m_search = search;
    refilter();
    Q_EMIT searchChanged();
}

void AppsListModel::setSort(int sort)
{
    if (sort < 0 || sort >= int(kSortKeys.size()) || sort == int(m_sort))
        return;
    m_sort = AppSort(sort);
    refilter();
    Q_EMIT sortChanged();
}

QStringList AppsListModel::sortKeys() const
{
    QStringList keys;
    for (const char* key : kSortKeys)
        keys.append(QString::fromLatin1(key));
    return keys;
}

void AppsListModel::refilter()
{
    std::vector<InstalledApp*> rows =
        m_state ? visibleApps(m_state->apps(), m_search, m_sort) : std::vector<InstalledApp*>{};
    if (rows == m_rows)
        return;
    std::vector<InstalledApp*> before = rows;
    std::vector<InstalledApp*> after = m_rows;
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    if (before == after) {
        // Same rows in a new order: the views keep their delegates and place.
        Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
        const QModelIndexList persistent = persistentIndexList();
        QModelIndexList moved;
        for (const QModelIndex& old : persistent) {
            const auto at = std::find(rows.begin(), rows.end(), m_rows[std::size_t(old.row())]);
            moved.append(index(int(at - rows.begin())));
        }
        m_rows = std::move(rows);
        changePersistentIndexList(persistent, moved);
        Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
        return;
    }
    const bool countChanges = rows.size() != m_rows.size();
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    if (countChanges)
        Q_EMIT countChanged();
}

void AppsListModel::appDataChanged()
{
    // A size arrived: the order may move, and the row's texts do.
    refilter();
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1), {SizeTextRole});
}

int AppsListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant AppsListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows.size()))
        return {};
    InstalledApp* app = m_rows[std::size_t(index.row())];
    switch (role) {
    case AppRole:
        return QVariant::fromValue(app);
    case IdRole:
        return app->id().toString();
    case SizeTextRole:
        return sizeText(app->totalSize());
    case OpenedTextRole: {
        const Language language = LocalizationManager::shared().current();
        if (!app->lastOpened())
            return LocalizationManager::shared().text(language, QStringLiteral("apps.neverOpened"));
        return fillText(LocalizationManager::shared().text(language, QStringLiteral("apps.openedRelative")),
                        relativeDateText(*app->lastOpened(), QDateTime::currentDateTime(), language));
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> AppsListModel::roleNames() const
{
    return {{AppRole, "app"},
            {IdRole, "appId"},
            {SizeTextRole, "sizeText"},
            {OpenedTextRole, "openedText"}};
}

int AppsListModel::indexOf(const InstalledApp* app) const
{
    const auto at = std::find(m_rows.begin(), m_rows.end(), app);
    return at == m_rows.end() ? -1 : int(at - m_rows.begin());
}

InstalledApp* AppsListModel::appAt(int row) const
{
    return row >= 0 && row < int(m_rows.size()) ? m_rows[std::size_t(row)] : nullptr;
}

bool AppsListModel::contains(const InstalledApp* app) const
{
    return app && m_state && m_state->apps().contains(const_cast<InstalledApp*>(app));
}

QVariantList AppsListModel::breakdown(const InstalledApp* app) const
{
    QVariantList groups;
    if (!app)
        return groups;
    const Language language = LocalizationManager::shared().current();
    for (const QList<const RelatedFile*>& group : groupedByCategory(app->related())) {
        qint64 size = 0;
        for (const RelatedFile* file : group)
            size += file->size;
        const RelatedCategory category = group.first()->category;
        groups.append(QVariantMap{{QStringLiteral("title"), relatedCategoryTitle(category)},
                                  {QStringLiteral("symbol"), relatedCategorySymbol(category)},
                                  {QStringLiteral("size"), sizeText(size)},
                                  {QStringLiteral("count"), itemCountText(group.size(), language)}});
    }
    return groups;
}

QString AppsListModel::sizeText(qint64 size) const
{
    return formatBytes(size);
}

QString AppsListModel::fileUrl(const InstalledApp* app) const
{
    return app ? fileUri(app->url()) : QString();
}

} // namespace tw
