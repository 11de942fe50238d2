#include "app/AppState.h"

#include "analytics/Analytics.h"
#include "platform/FileReveal.h"
#include "platform/ProcessRunner.h"
#include "platform/VolumeFacts.h"
#include "screens/FullDiskAccess.h"

namespace tw {

namespace {
const DiskAccess& systemDiskAccess()
{
    static const SystemDiskAccess access;
    return access;
}
} // namespace

AppState::AppState(QObject* parent) : AppState(Services{}, parent) {}

AppState::AppState(Services services, QObject* parent) : QObject(parent), m_services(std::move(services))
{
    if (!m_services.volumes)
        m_services.volumes = &systemVolumeFacts();
    if (!m_services.diskAccess)
        m_services.diskAccess = &systemDiskAccess();
    if (!m_services.reveal)
        m_services.reveal = &systemFileReveal();
    if (!m_services.processes)
        m_services.processes = &systemProcessRunner();
    // The flows announce these; the usage events follow from the announcement.
    connect(this, &AppState::appUninstalled, this, [](const QString& bundleId) {
        Analytics::logEvent(AnalyticsEvent::appUninstalled, {{QStringLiteral("bundle_id"), bundleId}});
    });
    connect(this, &AppState::snapshotsThinned, this, [](qint64 freedBytes) {
        Analytics::logEvent(AnalyticsEvent::snapshotsThinned, {{QStringLiteral("freed_bytes"), std::max<qint64>(freedBytes, 0)}});
    });
}

AppState::~AppState()
{
    // The walk's thread outlives us; let it stop at its next entry.
    if (m_scanner)
        m_scanner->cancel();
}

QString AppState::fdaPromptPath() const
{
    return m_fdaPromptForURL ? QString::fromUtf8(*m_fdaPromptForURL) : QString();
}

QString AppState::toText(Mode mode)
{
    return mode == Mode::apps ? QStringLiteral("apps") : QStringLiteral("folder");
}

std::optional<AppState::Mode> AppState::modeFromText(QStringView text)
{
    if (text == u"folder")
        return Mode::folder;
    if (text == u"apps")
        return Mode::apps;
    return std::nullopt;
}

bool AppState::focusOn(const NodeRef& target)
{
    if (!target || !target->isDirectory() || !target->hasChildren())
        return false;
    // The old hover described the old view: kept, it would name the new
    // focus at 100 %. The chart hovers what lies under the pointer afresh.
    setHovered({});
    setFocus(target);
    return true;
}

bool AppState::goUp()
{
    if (!m_focus || !m_focus->parent())
        return false;
    return focusOn(m_focus.sibling(m_focus->parent()));
}

void AppState::setHovered(const NodeRef& node)
{
    if (m_hovered == node)
        return;
    m_hovered = node;
    Q_EMIT hoveredChanged();
}

void AppState::reveal(const NodeRef& node)
{
    if (node)
        m_services.reveal->reveal(node->path());
}

void AppState::setDeleteCandidate(const NodeRef& node)
{
    if (m_deleteCandidate == node && m_deleteCandidate.tree() == node.tree())
        return;
    m_deleteCandidate = node;
    Q_EMIT deleteCandidateChanged();
}

void AppState::setErrorMessage(std::optional<QString> message)
{
    if (m_errorMessage == message)
        return;
    m_errorMessage = std::move(message);
    Q_EMIT errorMessageChanged();
}

void AppState::setConfirmThinSnapshots(bool open)
{
    if (m_confirmThinSnapshots == open)
        return;
    m_confirmThinSnapshots = open;
    Q_EMIT snapshotsChanged();
}

void AppState::setThinResultMessage(std::optional<QString> message)
{
    if (m_thinResultMessage == message)
        return;
    m_thinResultMessage = std::move(message);
    Q_EMIT snapshotsChanged();
}

void AppState::setNeedsFullDiskAccess(bool needed)
{
    if (m_needsFullDiskAccess == needed)
        return;
    m_needsFullDiskAccess = needed;
    Q_EMIT needsFullDiskAccessChanged();
}

void AppState::setShowsUnreadableNotice(bool shown)
{
    if (m_showsUnreadableNotice == shown)
        return;
    m_showsUnreadableNotice = shown;
    Q_EMIT showsUnreadableNoticeChanged();
}

void AppState::setMode(Mode mode)
{
    if (m_mode == mode)
        return;
    m_mode = mode;
    Analytics::logEvent(AnalyticsEvent::modeSwitched, {{QStringLiteral("mode"), toText(mode)}});
    Q_EMIT modeChanged();
}

void AppState::setPhase(Phase phase, const ScanProgress& progress)
{
    const bool phaseMoved = m_phase != phase;
    const bool progressMoved = !(m_progress == progress);
    m_phase = phase;
    m_progress = progress;
    if (phaseMoved)
        Q_EMIT phaseChanged();
    if (progressMoved)
        Q_EMIT progressChanged();
}

void AppState::setRoot(NodeRef root)
{
    if (m_root == root && m_root.tree() == root.tree())
        return;
    m_root = std::move(root);
    Q_EMIT rootChanged();
}

void AppState::setFocus(NodeRef focus)
{
    if (m_focus == focus && m_focus.tree() == focus.tree())
        return;
    m_focus = std::move(focus);
    Q_EMIT focusChanged();
}

void AppState::setRefreshing(bool refreshing)
{
    if (m_isRefreshing == refreshing)
        return;
    m_isRefreshing = refreshing;
    Q_EMIT isRefreshingChanged();
}

void AppState::setVolumeCapacity(std::optional<VolumeInfo::Capacity> capacity)
{
    if (m_volumeCapacity == capacity)
        return;
    m_volumeCapacity = capacity;
    Q_EMIT volumeCapacityChanged();
}

void AppState::setFdaPrompt(std::optional<QByteArray> path)
{
    if (m_fdaPromptForURL == path)
        return;
    m_fdaPromptForURL = std::move(path);
    Q_EMIT fdaPromptForURLChanged();
}

} // namespace tw
