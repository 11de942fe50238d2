#include "app/UnseenSpace.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/VolumeFacts.h"
#include "snapshots/SnapshotService.h"

#include <QFile>

#include <algorithm>

namespace tw {

qint64 UnseenSpace::otherBytes() const
{
    return std::max<qint64>(bytes - purgeable.value_or(0) - reserved.value_or(0), 0);
}

std::optional<MountSurvey> surveyMount(const QByteArray& path, const VolumeFacts& volumes,
                                       const ProcessRunner& processes)
{
    const auto usage = volumes.mountUsage(path);
    if (!usage)
        return std::nullopt;
    const auto snapshots = SnapshotService::listLocalSnapshots(QFile::decodeName(path), processes);
    return MountSurvey{*usage, qint64(snapshots.size())};
}

UnseenSpace unseenSpaceFrom(const MountSurvey& survey, qint64 scannedBytes, qint64 unreadableFolders)
{
    UnseenSpace out;
    out.bytes = std::max<qint64>(survey.usage.used() - scannedBytes, 0);
    out.unreadableFolders = unreadableFolders;
    out.localSnapshots = survey.localSnapshots;
    out.purgeable = survey.usage.purgeable;
    out.reserved = survey.usage.reserved;
    return out;
}

QString unseenSpaceHelp(const UnseenSpace& unseen)
{
    const LocalizationManager& loc = LocalizationManager::shared();
    auto text = [&](const char* key) { return loc.string(QLatin1String(key)); };
    QStringList lines{text("details.unseen.help")};
    auto add = [&](const QString& line) { lines.append(QStringLiteral("• ") + line); };
    if (unseen.localSnapshots > 0)
        add(fillCount(text("details.unseen.snapshots"), unseen.localSnapshots));
    if (unseen.purgeable.value_or(0) > 0)
        add(fillText(text("details.unseen.purgeable"), formatBytes(*unseen.purgeable)));
    if (unseen.reserved.value_or(0) > 0)
        add(fillText(text("details.unseen.reserved"), formatBytes(*unseen.reserved)));
    if (unseen.unreadableFolders > 0)
        add(fillCount(text("details.unseen.unreadable"), unseen.unreadableFolders));
    add(fillText(text("details.unseen.system"), formatBytes(unseen.otherBytes())));
    return lines.join(u'\n');
}

UnseenSpaceModel::UnseenSpaceModel(QObject* parent) : QObject(parent)
{
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this, &UnseenSpaceModel::changed);
}

AppState* UnseenSpaceModel::state() const
{
    return m_state;
}

void UnseenSpaceModel::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        for (auto signal : {&AppState::focusChanged, &AppState::rootChanged, &AppState::unseenSpaceChanged})
            connect(&followed, signal, this, &UnseenSpaceModel::changed);
        connect(&followed, &QObject::destroyed, this, &UnseenSpaceModel::changed);
    });
    if (!moved)
        return;
    Q_EMIT stateChanged();
    Q_EMIT changed();
}

bool UnseenSpaceModel::shown() const
{
    return m_state && m_state->unseenSpace() && m_state->focus() && m_state->focus().get() == m_state->root().get();
}

QString UnseenSpaceModel::sizeText() const
{
    return shown() ? formatBytes(m_state->unseenSpace()->bytes) : QString();
}

QString UnseenSpaceModel::helpText() const
{
    return shown() ? unseenSpaceHelp(*m_state->unseenSpace()) : QString();
}

} // namespace tw
