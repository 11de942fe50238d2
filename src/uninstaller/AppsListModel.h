#pragma once

// What the applications screen shows of AppState's list: the search, the
// five orders, the rows' texts (size, relative date, breakdown). Made in C++
// so that the rules are tested and a keystroke stays cheap with a thousand
// applications. GUI thread only.

#include "localization/Language.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QHash>
#include <QPointer>
#include <QVariantList>
#include <vector>

namespace tw {

class AppState;
class InstalledApp;

enum class AppSort { sizeDesc, sizeAsc, nameAsc, nameDesc, lastOpened };

// The visible list: the applications whose lower-cased name or identifier
// holds the trimmed, lower-cased query, stably sorted by `sort`, so that
// discovery order (by name) breaks every tie. Never-opened applications
// count as opened at the beginning of time.
[[nodiscard]] std::vector<InstalledApp*> visibleApps(const QList<InstalledApp*>& apps, const QString& search,
                                                     AppSort sort);

// The short relative form of `date` seen from `now` in the language's own
// words and locale ("3 days ago", "vor 3 Tagen", "3 дн. назад", "3天前"),
// whatever the system's language is.
[[nodiscard]] QString relativeDateText(const QDateTime& date, const QDateTime& now, Language language);

// A breakdown row's count: "21 items", with the two forms the catalogue has.
[[nodiscard]] QString itemCountText(qint64 count, Language language);

class AppsListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    // An AppSort, as its index in `sortKeys`.
    Q_PROPERTY(int sort READ sortIndex WRITE setSort NOTIFY sortChanged)
    Q_PROPERTY(QStringList sortKeys READ sortKeys CONSTANT)
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

public:
    enum Role { AppRole = Qt::UserRole + 1, IdRole, SizeTextRole, OpenedTextRole };

    explicit AppsListModel(QObject* parent = nullptr);

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);
    [[nodiscard]] QString search() const { return m_search; }
    void setSearch(const QString& search);
    // Not sort(): that name is QAbstractItemModel's virtual, which it would hide.
    [[nodiscard]] int sortIndex() const { return int(m_sort); }
    void setSort(int sort);
    [[nodiscard]] QStringList sortKeys() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // The row of the application, or -1 when it is not shown.
    [[nodiscard]] Q_INVOKABLE int indexOf(const tw::InstalledApp* app) const;
    [[nodiscard]] Q_INVOKABLE tw::InstalledApp* appAt(int row) const;
    // Whether the application is still in AppState's list (a selection whose
    // application left it is cleared by the screen).
    [[nodiscard]] Q_INVOKABLE bool contains(const tw::InstalledApp* app) const;
    // The detail panel's breakdown: [{ title, symbol, size, count }] by
    // category in category order, empty groups left out.
    [[nodiscard]] Q_INVOKABLE QVariantList breakdown(const tw::InstalledApp* app) const;
    [[nodiscard]] Q_INVOKABLE QString sizeText(qint64 size) const;
    // The bundle's file:// address, for opening it.
    [[nodiscard]] Q_INVOKABLE QString fileUrl(const tw::InstalledApp* app) const;

Q_SIGNALS:
    void stateChanged();
    void searchChanged();
    void sortChanged();
    void countChanged();
    // AppState's list changed membership (the screen re-checks its selection).
    void appsChanged();

private:
    void refilter();
    void appDataChanged();

    QPointer<AppState> m_state;
    QString m_search;
    AppSort m_sort = AppSort::sizeDesc;
    std::vector<InstalledApp*> m_rows;
};

} // namespace tw
