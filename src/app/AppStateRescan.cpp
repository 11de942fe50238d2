// AppState: walking one folder again. After a removal or an undo, or when the
// user asks from a folder's menu, only that folder is walked, with the scan's
// own rules, and its new tree takes the old one's place; the ancestors'
// sizes follow. The toolbar's refresh keeps its whole-scan meaning.

#include "app/AppState.h"

#include <QMetaObject>
#include <QPointer>
#include <thread>

namespace tw {

void AppState::rescanFolders(const QList<QByteArray>& paths)
{
    if (!m_root)
        return;
    QList<QByteArray> folders;
    for (const QByteArray& path : paths) {
        // A folder inside another one on the list is walked with it.
        bool covered = folders.contains(path);
        for (const QByteArray& other : paths)
            covered = covered || (other != path && path.startsWith(QByteArray(other + '/')));
        const FileNode* node = m_root.tree()->find(path);
        if (!covered && node && node->isDirectory())
            folders.append(path);
    }
    for (const QByteArray& folder : folders) {
        auto* relay = new QObject;
        QPointer<AppState> self(this);
        const QUuid stamp = m_scanGeneration;
        const std::weak_ptr<ScanTree> tree = m_root.tree();
        const Scanner::Options options = m_services.scannerOptions;
        ++m_rescansRunning;
        std::thread([relay, self, stamp, tree, options, folder] {
            std::shared_ptr<ScanTree> fresh = Scanner({}, options).scan(folder);
            QMetaObject::invokeMethod(
                relay,
                [relay, self, stamp, tree, folder, fresh = std::move(fresh)]() mutable {
                    if (self) {
                        --self->m_rescansRunning;
                        const std::shared_ptr<ScanTree> shown = tree.lock();
                        if (stamp == self->m_scanGeneration && shown && shown == self->m_root.tree())
                            self->applyRescan(folder, std::move(fresh));
                        Q_EMIT self->rescanFinished(folder);
                    }
                    delete relay;
                },
                Qt::QueuedConnection);
        }).detach();
    }
}

void AppState::applyRescan(const QByteArray& folder, std::shared_ptr<ScanTree> fresh)
{
    // Looked up again: an earlier removal may have taken the folder away.
    FileNode* node = m_root.tree()->find(folder);
    if (!node || !node->isDirectory())
        return;
    const std::optional<QByteArray> focusPath = m_focus ? std::optional(m_focus->path()) : std::nullopt;
    setHovered({});
    m_root.tree()->graft(*node, std::move(fresh));
    // The focus keeps its place when that folder is still there; else the
    // nearest folder above it that is.
    if (focusPath) {
        QByteArray at = *focusPath;
        FileNode* found = m_root.tree()->find(at);
        while (!found && at.lastIndexOf('/') > 0) {
            at.truncate(at.lastIndexOf('/'));
            found = m_root.tree()->find(at);
        }
        setFocus(m_root.sibling(found ? found : m_root.get()));
    }
    m_selection.dropRemoved();
    m_inaccessibleCount = m_root->inaccessibleCount();
    Q_EMIT selectionChanged();
    Q_EMIT rootChanged();
}

} // namespace tw
