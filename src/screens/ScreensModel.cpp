#include "screens/ScreensModel.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "screens/FullDiskAccess.h"

#include <QDir>
#include <QFile>
#include <cmath>

namespace tw {

QString progressCountsText(const ScanProgress& progress)
{
    return formatBytes(progress.bytesScanned) + QStringLiteral(" • ") +
           QString::number(progress.filesScanned) + u' ' +
           LocalizationManager::shared().string(QStringLiteral("apps.itemMany"));
}

QString progressRateText(const ScanProgress& progress)
{
    if (!(progress.filesPerSecond >= 1.0))
        return {};
    return QString::number(std::llround(progress.filesPerSecond)) + QStringLiteral(" files/s");
}

ScreensModel::ScreensModel(QObject* parent) : QObject(parent)
{
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this, [this] {
        Q_EMIT progressChanged();
        Q_EMIT fdaChanged();
        Q_EMIT deleteChanged();
    });
}

void ScreensModel::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        connect(&followed, &AppState::progressChanged, this, &ScreensModel::progressChanged);
        connect(&followed, &AppState::fdaPromptForURLChanged, this, &ScreensModel::fdaChanged);
        connect(&followed, &AppState::deleteCandidateChanged, this, &ScreensModel::deleteChanged);
    });
    if (!moved)
        return;
    Q_EMIT stateChanged();
    Q_EMIT progressChanged();
    Q_EMIT fdaChanged();
    Q_EMIT deleteChanged();
}

QString ScreensModel::progressCounts() const
{
    return m_state ? progressCountsText(m_state->progress()) : QString();
}

QString ScreensModel::progressRate() const
{
    return m_state ? progressRateText(m_state->progress()) : QString();
}

QString ScreensModel::progressPath() const
{
    return m_state ? m_state->progress().currentPath : QString();
}

QString ScreensModel::fdaPathLabel() const
{
    if (!m_state || !m_state->fdaPromptForURL())
        return {};
    return fillText(LocalizationManager::shared().string(QStringLiteral("fda.pathLabel")),
                    m_state->fdaPromptPath());
}

QString ScreensModel::homePath() const
{
    return QDir::homePath();
}

QUrl ScreensModel::fullDiskAccessSettingsUrl() const
{
    return tw::fullDiskAccessSettingsUrl();
}

QUrl ScreensModel::appManagementSettingsUrl() const
{
    return tw::appManagementSettingsUrl();
}

QVariantMap ScreensModel::deleteFacts() const
{
    if (!m_state || !m_state->deleteCandidate())
        return {};
    const FileNode& node = *m_state->deleteCandidate();
    return {{QStringLiteral("name"), node.displayName()},
            {QStringLiteral("path"), node.displayPath()},
            {QStringLiteral("size"), formatBytes(node.size())},
            {QStringLiteral("isDirectory"), node.isDirectory()},
            {QStringLiteral("files"),
             node.isDirectory() ? QString::number(node.fileCount()) : QString()}};
}

void ScreensModel::scanPickedFolder(const QUrl& folder) const
{
    if (m_state && folder.isLocalFile())
        m_state->requestScan(QFile::encodeName(folder.toLocalFile()));
}

} // namespace tw
