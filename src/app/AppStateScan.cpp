// AppState: starting, following, finishing and abandoning scans.

#include "app/AppState.h"

#include "analytics/Analytics.h"
#include "app/DiskAccess.h"
#include "platform/VolumeFacts.h"

#include <QFile>
#include <QMetaObject>
#include <QPointer>

#include <thread>

namespace tw {

void AppState::requestScan(const QString& path)
{
    requestScan(QFile::encodeName(path));
}

void AppState::requestScan(const QByteArray& path)
{
    const DiskAccess& access = *m_services.diskAccess;
    if (access.requiresFullDiskAccess(path) && !access.hasFullDiskAccess()) {
        setFdaPrompt(path);
        return;
    }
    startScan(path, std::nullopt);
}

void AppState::continueWithoutFullDiskAccess()
{
    if (!m_fdaPromptForURL)
        return;
    const QByteArray path = *m_fdaPromptForURL;
    setFdaPrompt(std::nullopt);
    startScan(path, std::nullopt);
}

void AppState::startScan(const QByteArray& path, const std::optional<QByteArray>& restoreFocusPath)
{
    if (m_scanner)
        m_scanner->cancel();
    m_scanGeneration = QUuid::createUuid();
    const QUuid stamp = m_scanGeneration;
    m_rootURL = path;
    // A new scan: the last removal's banner goes, and the picks of the old tree.
    dismissUndo();
    clearSelection();
    // The toolbar's figures are right while the scan runs.
    setVolumeCapacity(m_services.volumes->capacity(path));
    setPhase(Phase::scanning, ScanProgress{0, 0, QString::fromUtf8(path), 0});

    // Everything the walk sends back goes through this relay, which lives on
    // the GUI thread until the walk's last message has been handled. The
    // messages check that we still exist and that the stamp is current.
    auto* relay = new QObject;
    QPointer<AppState> self(this);
    auto handler = [relay, self, stamp](const ScanProgress& report) {
        QMetaObject::invokeMethod(
            relay, [self, stamp, report] {
                if (self)
                    self->applyReport(stamp, report);
            },
            Qt::QueuedConnection);
    };
    auto scanner = std::make_shared<Scanner>(std::move(handler), m_services.scannerOptions);
    m_scanner = scanner;

    const VolumeFacts* volumes = m_services.volumes;
    const ProcessRunner* processes = m_services.processes;
    std::thread([scanner, relay, self, stamp, path, restoreFocusPath, volumes, processes] {
        std::shared_ptr<ScanTree> tree = scanner->scan(path);
        // Right after the walk, so the volume's figures match what it saw.
        const std::optional<MountSurvey> survey = surveyMount(path, *volumes, *processes);
        QMetaObject::invokeMethod(
            relay, [relay, self, stamp, tree, path, restoreFocusPath, survey] {
                if (self)
                    self->finishScan(stamp, tree, path, restoreFocusPath, survey);
                relay->deleteLater();
            },
            Qt::QueuedConnection);
    }).detach();
}

void AppState::applyReport(const QUuid& stamp, const ScanProgress& report)
{
    if (stamp != m_scanGeneration || m_phase != Phase::scanning)
        return;
    // Workers race; the count on screen never runs backwards.
    if (m_progress.filesScanned > report.filesScanned)
        return;
    setPhase(Phase::scanning, report);
}

void AppState::finishScan(const QUuid& stamp, const std::shared_ptr<ScanTree>& tree, const QByteArray& path,
                          const std::optional<QByteArray>& restoreFocusPath,
                          const std::optional<MountSurvey>& survey)
{
    if (stamp != m_scanGeneration)
        return;
    m_scanner.reset();
    NodeRef root = NodeRef::rootOf(tree);
    NodeRef focus = root;
    if (restoreFocusPath && !restoreFocusPath->isEmpty()) {
        if (FileNode* found = tree->find(*restoreFocusPath))
            focus = root.sibling(found);
    }
    // Counted here once: the banner reads it on every drill-in.
    m_inaccessibleCount = tree->root()->inaccessibleCount();
    setRoot(root);
    setFocus(focus);
    setHovered({});
    setVolumeCapacity(m_services.volumes->capacity(path));
    setUnseenSpace(survey ? std::optional(unseenSpaceFrom(*survey, root->size(), unreadableFolderCount()))
                          : std::nullopt);
    Analytics::logEvent(AnalyticsEvent::scanCompleted, {{QStringLiteral("size_bytes"), root->size()},
                                                        {QStringLiteral("children_count"), qint64(root->childCount())}});
    setPhase(Phase::ready);
    setRefreshing(false);
    // The notice only when something was missed and the grant could have helped.
    const bool granted = m_services.diskAccess->hasFullDiskAccess();
    setNeedsFullDiskAccess(m_inaccessibleCount >= 1 && !granted);
    // Where the grant is present or does not exist (Linux), a scan that met
    // unreadable folders would otherwise under-count in silence.
    setShowsUnreadableNotice(m_inaccessibleCount >= 1 && granted);
}

void AppState::refresh()
{
    if (!m_rootURL || m_isRefreshing)
        return;
    std::optional<QByteArray> focusPath;
    if (m_focus)
        focusPath = m_focus->path();
    setRefreshing(true);
    startScan(*m_rootURL, focusPath);
}

void AppState::cancelScan()
{
    m_scanGeneration = QUuid::createUuid();
    if (m_scanner)
        m_scanner->cancel();
    m_scanner.reset();
    setRefreshing(false);
    setPhase(Phase::welcome);
}

void AppState::resetToWelcome()
{
    cancelScan();
    m_inaccessibleCount = 0;
    setRoot({});
    setFocus({});
    setHovered({});
    setDeleteCandidate({});
    clearSelection();
    cancelBatchDelete();
    m_rootURL.reset();
    setVolumeCapacity(std::nullopt);
    setUnseenSpace(std::nullopt);
    setRefreshing(false);
    setPhase(Phase::welcome);
}

qint64 AppState::unreadableFolderCount() const
{
    return m_inaccessibleCount;
}

void AppState::setUnseenSpace(std::optional<UnseenSpace> unseen)
{
    if (m_unseenSpace == unseen)
        return;
    m_unseenSpace = std::move(unseen);
    Q_EMIT unseenSpaceChanged();
}

} // namespace tw
