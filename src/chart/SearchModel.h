#pragma once

// The chart screen's search: items of the whole scan whose names match what
// the user types, largest first, with name, size and folder. Each keystroke
// sets `query`; the search runs on a worker of its own and a newer
// keystroke cancels the one before. The first search of a tree folds every
// name once into an index (NameIndex) that later searches share, until the
// tree changes. GUI thread only.

#include "chart/ChartEmphasis.h"
#include "scan/FileNode.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QThreadPool>
#include <memory>
#include <vector>

namespace tw {

class AppState;
class NodeActions;
class NameIndex;

class SearchModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    Q_PROPERTY(tw::ChartEmphasis* emphasis READ emphasis WRITE setEmphasis NOTIFY stateChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bool searching READ searching NOTIFY searchingChanged)
    // Every match, of which the list holds the largest kLimit.
    Q_PROPERTY(qint64 total READ total NOTIFY resultsChanged)

public:
    static constexpr std::size_t kLimit = 500;
    enum Role {
        NameRole = Qt::UserRole + 1,
        SizeTextRole,
        FolderRole, // the folder's path, for display
        IsDirectoryRole,
    };
    Q_ENUM(Role)

    explicit SearchModel(QObject* parent = nullptr);
    ~SearchModel() override;

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);
    [[nodiscard]] ChartEmphasis* emphasis() const { return m_emphasis; }
    void setEmphasis(ChartEmphasis* emphasis);
    [[nodiscard]] QString query() const { return m_query; }
    void setQuery(const QString& query);
    [[nodiscard]] bool searching() const { return m_searching; }
    [[nodiscard]] qint64 total() const { return m_total; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] NodeRef nodeAt(int row) const;
    // Return on a result: the chart focuses its folder and marks it.
    Q_INVOKABLE void activate(int row);
    Q_INVOKABLE bool offerRow(tw::NodeActions* actions, int row) const;

    // What the worker shares with the GUI thread: the index of the tree
    // searched last (touched by the worker only), and the newest request.
    struct Shared;

Q_SIGNALS:
    void stateChanged();
    void queryChanged();
    void searchingChanged();
    void resultsChanged();

private:
    void search();
    void treeChanged();
    void setSearching(bool searching);

    QPointer<AppState> m_state;
    QPointer<ChartEmphasis> m_emphasis;
    QString m_query;
    bool m_searching = false;
    qint64 m_total = 0;
    std::vector<NodeRef> m_rows;
    std::shared_ptr<Shared> m_shared;
    QThreadPool m_worker; // one thread: searches run in order, stale ones return at once
};

} // namespace tw
