#include "chart/SearchModel.h"

#include "app/StateFollower.h"
#include "chart/NodeActions.h"
#include "localization/TextFormat.h"
#include "scan/NameSearch.h"
#include "scan/TreeGate.h"

#include <QCoreApplication>
#include <atomic>

namespace tw {

struct SearchModel::Shared {
    std::atomic<quint64> latest{0}; // the newest request; older ones give up
    std::atomic<bool> closing{false};
    // The worker's alone.
    std::shared_ptr<ScanTree> indexedTree;
    quint64 indexedEdition = 0;
    std::unique_ptr<NameIndex> index;
    std::atomic<quint64> edition{0}; // bumped by every change of the tree
};

SearchModel::SearchModel(QObject* parent) : QAbstractListModel(parent), m_shared(std::make_shared<Shared>())
{
    m_worker.setMaxThreadCount(1);
}

SearchModel::~SearchModel()
{
    m_shared->closing.store(true);
    m_shared->latest.fetch_add(1);
    m_worker.clear();
    // Both passes give up within a few thousand names once told to.
    m_worker.waitForDone();
}

void SearchModel::setState(AppState* state)
{
    if (!followState(m_state, state, this, [this](AppState& followed) {
            connect(&followed, &AppState::rootChanged, this, &SearchModel::treeChanged);
        }))
        return;
    treeChanged();
    Q_EMIT stateChanged();
}

void SearchModel::setEmphasis(ChartEmphasis* emphasis)
{
    if (m_emphasis == emphasis)
        return;
    m_emphasis = emphasis;
    Q_EMIT stateChanged();
}

void SearchModel::setQuery(const QString& query)
{
    if (m_query == query)
        return;
    m_query = query;
    Q_EMIT queryChanged();
    search();
}

// A removal or a new scan: the index is made again, the results afresh.
void SearchModel::treeChanged()
{
    m_shared->edition.fetch_add(1);
    search();
}

void SearchModel::search()
{
    const quint64 request = m_shared->latest.fetch_add(1) + 1;
    const NodeRef root = m_state ? m_state->root() : NodeRef();
    if (!root || m_query.isEmpty()) {
        beginResetModel();
        m_rows.clear();
        m_total = 0;
        endResetModel();
        setSearching(false);
        Q_EMIT resultsChanged();
        return;
    }
    setSearching(true);
    QPointer<SearchModel> self(this);
    std::shared_ptr<Shared> shared = m_shared;
    const NamePattern pattern(m_query);
    const quint64 edition = shared->edition.load();
    m_worker.start([self, shared, root, pattern, request, edition] {
        if (shared->latest.load() != request)
            return;
        std::optional<NameIndex::Found> found;
        {
            const TreeGate::Reading reading = root.tree()->gate().read();
            if (!shared->index || shared->indexedTree != root.tree() || shared->indexedEdition != edition) {
                shared->index.reset();
                // Later keystrokes need the index too: only closing or an edit stops it.
                shared->index = NameIndex::build(*root, [&] { return shared->closing.load() || reading.editWaiting(); });
                if (!shared->index)
                    return;
                shared->indexedTree = root.tree();
                shared->indexedEdition = edition;
            }
            found = shared->index->find(pattern, kLimit, [&] {
                return shared->latest.load() != request || reading.editWaiting();
            });
        }
        if (!found)
            return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, shared, root, request, result = std::move(*found)] {
                if (!self || shared->latest.load() != request)
                    return;
                self->beginResetModel();
                self->m_rows.clear();
                for (FileNode* node : result.largest)
                    self->m_rows.push_back(root.sibling(node));
                self->m_total = result.total;
                self->endResetModel();
                self->setSearching(false);
                Q_EMIT self->resultsChanged();
            },
            Qt::QueuedConnection);
    });
}

void SearchModel::setSearching(bool searching)
{
    if (m_searching == searching)
        return;
    m_searching = searching;
    Q_EMIT searchingChanged();
}

int SearchModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant SearchModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows.size()))
        return {};
    const FileNode& node = *m_rows[std::size_t(index.row())];
    switch (role) {
    case NameRole:
        return node.displayName();
    case SizeTextRole:
        return formatBytes(node.size());
    case FolderRole:
        return node.parent() ? node.parent()->displayPath() : QString();
    case IsDirectoryRole:
        return node.isDirectory();
    default:
        return {};
    }
}

QHash<int, QByteArray> SearchModel::roleNames() const
{
    return {{NameRole, "name"}, {SizeTextRole, "sizeText"}, {FolderRole, "folder"}, {IsDirectoryRole, "isDirectory"}};
}

NodeRef SearchModel::nodeAt(int row) const
{
    return row >= 0 && row < int(m_rows.size()) ? m_rows[std::size_t(row)] : NodeRef();
}

void SearchModel::activate(int row)
{
    const NodeRef node = nodeAt(row);
    if (!m_state || !node || !node->parent())
        return;
    m_state->focusOn(node.sibling(node->parent()));
    if (m_emphasis)
        m_emphasis->setHighlight(node);
}

bool SearchModel::offerRow(NodeActions* actions, int row) const
{
    return actions && actions->takeNode(nodeAt(row));
}

} // namespace tw
