#include "chart/KindsModel.h"

#include "app/StateFollower.h"
#include "chart/ChartCompanions.h"
#include "chart/NodeActions.h"
#include "chart/SunburstLayout.h"
#include "localization/TextFormat.h"
#include "scan/TreeGate.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <algorithm>

namespace tw {

KindsModel::KindsModel(QObject* parent) : QAbstractListModel(parent) {}

KindsModel::~KindsModel()
{
    if (m_stale)
        m_stale->store(true);
}

void KindsModel::setState(AppState* state)
{
    if (!followState(m_state, state, this, [this](AppState& followed) {
            connect(&followed, &AppState::focusChanged, this, &KindsModel::refresh);
            connect(&followed, &AppState::rootChanged, this, &KindsModel::treeChanged);
        }))
        return;
    treeChanged();
    Q_EMIT stateChanged();
}

void KindsModel::setActive(bool active)
{
    if (m_active == active)
        return;
    m_active = active;
    refresh();
    Q_EMIT activeChanged();
}

void KindsModel::setEmphasis(ChartEmphasis* emphasis)
{
    if (m_emphasis == emphasis)
        return;
    m_emphasis = emphasis;
    if (m_emphasis)
        m_emphasis->setSummary(m_shown);
    Q_EMIT emphasisChanged();
}

std::shared_ptr<const KindSummary> KindsModel::current() const
{
    return m_counting ? nullptr : m_shown;
}

// A removal or a new scan: every count made before may be wrong now.
void KindsModel::treeChanged()
{
    m_cache.clear();
    refresh();
}

void KindsModel::refresh()
{
    if (m_stale)
        m_stale->store(true);
    m_stale.reset();
    const NodeRef focus = m_state && m_active ? m_state->focus() : NodeRef();
    if (!focus) {
        setCounting(false);
        apply(nullptr);
        return;
    }
    const auto cached = std::find_if(m_cache.begin(), m_cache.end(),
                                     [&](const Cached& entry) { return entry.focus == focus.get(); });
    if (cached != m_cache.end()) {
        const Cached entry = *cached;
        m_cache.erase(cached);
        m_cache.push_back(entry);
        setCounting(false);
        apply(entry.summary);
        return;
    }
    setCounting(true);
    auto stale = std::make_shared<std::atomic<bool>>(false);
    m_stale = stale;
    QPointer<KindsModel> self(this);
    QThreadPool::globalInstance()->start([focus, stale, self] {
        std::optional<KindSummary> summary;
        {
            const TreeGate::Reading reading = focus.tree()->gate().read();
            if (stale->load())
                return;
            // Nodes narrower than the chart draws need no figures of their own.
            summary = summariseKinds(*focus, kRingCount, kMinimumSectorAngle / kFullCircle,
                                     [&] { return stale->load() || reading.editWaiting(); });
        }
        if (!summary)
            return; // superseded, or an edit came: its own refresh follows
        auto shared = std::make_shared<const KindSummary>(std::move(*summary));
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, stale, focus, shared] {
                if (!self || stale->load())
                    return;
                self->m_stale.reset();
                self->m_cache.push_back({focus.get(), shared});
                if (self->m_cache.size() > kCachedFoci)
                    self->m_cache.erase(self->m_cache.begin());
                self->setCounting(false);
                self->apply(shared);
                Q_EMIT self->counted();
            },
            Qt::QueuedConnection);
    });
}

void KindsModel::apply(std::shared_ptr<const KindSummary> summary)
{
    beginResetModel();
    m_shown = std::move(summary);
    m_rows.clear();
    if (m_shown) {
        for (int k = 0; k < kFileKindCount; ++k)
            if (m_shown->files[std::size_t(k)] > 0)
                m_rows.push_back(FileKind(k));
        std::stable_sort(m_rows.begin(), m_rows.end(), [this](FileKind a, FileKind b) {
            return m_shown->bytes[std::size_t(a)] > m_shown->bytes[std::size_t(b)];
        });
    }
    endResetModel();
    if (m_emphasis)
        m_emphasis->setSummary(m_shown);
    Q_EMIT selectionChanged();
}

void KindsModel::setCounting(bool counting)
{
    if (m_counting == counting)
        return;
    m_counting = counting;
    Q_EMIT countingChanged();
}

QString KindsModel::selectedKey() const
{
    const auto kind = m_emphasis ? m_emphasis->selectedKind() : std::nullopt;
    return kind ? kindKey(*kind) : QString();
}

QVariantList KindsModel::largestFiles() const
{
    QVariantList files;
    const auto kind = m_emphasis ? m_emphasis->selectedKind() : std::nullopt;
    if (!kind || !m_shown)
        return files;
    for (const FileNode* file : m_shown->largest[std::size_t(*kind)]) {
        const FileNode* folder = file->parent();
        files.append(QVariantMap{{QStringLiteral("name"), file->displayName()},
                                 {QStringLiteral("sizeText"), formatBytes(file->size())},
                                 {QStringLiteral("folder"), folder ? folder->displayPath() : QString()}});
    }
    return files;
}

int KindsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant KindsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows.size()) || !m_shown)
        return {};
    const FileKind kind = m_rows[std::size_t(index.row())];
    const auto k = std::size_t(kind);
    switch (role) {
    case KindRole:
        return int(kind);
    case KeyRole:
        return kindKey(kind);
    case SizeTextRole:
        return formatBytes(m_shown->bytes[k]);
    case ShareTextRole: {
        qint64 total = 0;
        for (qint64 bytes : m_shown->bytes)
            total += bytes;
        return percentText(double(m_shown->bytes[k]), double(total));
    }
    case FilesTextRole:
        return fileCountText(m_shown->files[k]);
    case IsSelectedRole:
        return m_emphasis && m_emphasis->selectedKind() == kind;
    default:
        return {};
    }
}

QHash<int, QByteArray> KindsModel::roleNames() const
{
    return {{KindRole, "kind"},         {KeyRole, "key"},           {SizeTextRole, "sizeText"},
            {ShareTextRole, "shareText"}, {FilesTextRole, "filesText"}, {IsSelectedRole, "isSelected"}};
}

void KindsModel::choose(int row)
{
    if (!m_emphasis || row < 0 || row >= int(m_rows.size()))
        return;
    const FileKind kind = m_rows[std::size_t(row)];
    m_emphasis->setSelectedKind(m_emphasis->selectedKind() == kind ? std::nullopt : std::optional(kind));
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1), {IsSelectedRole});
    Q_EMIT selectionChanged();
}

namespace {
NodeRef largestAt(const AppState* state, const std::shared_ptr<const KindSummary>& shown,
                  const ChartEmphasis* emphasis, int index)
{
    const auto kind = emphasis ? emphasis->selectedKind() : std::nullopt;
    if (!state || !shown || !kind || index < 0)
        return {};
    const auto& files = shown->largest[std::size_t(*kind)];
    if (index >= int(files.size()))
        return {};
    return state->focus().sibling(const_cast<FileNode*>(files[std::size_t(index)]));
}
} // namespace

void KindsModel::showFile(int index)
{
    const NodeRef file = largestAt(m_state, m_shown, m_emphasis, index);
    if (!file || !file->parent())
        return;
    // The focus stays where the list was made; the file's own folder
    // shows it in place when it lies deeper than the chart reaches.
    m_state->focusOn(file.sibling(file->parent()));
    if (m_emphasis)
        m_emphasis->setHighlight(file);
}

bool KindsModel::offerFile(NodeActions* actions, int index) const
{
    return actions && actions->takeNode(largestAt(m_state, m_shown, m_emphasis, index));
}

} // namespace tw
