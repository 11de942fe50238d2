#pragma once

// How much of a volume's used space a walk from its mount point could not
// see, and what is known to hide there: the first question of anyone whose
// disk says more is used than the chart shows.

#include "scan/VolumeInfo.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <optional>

namespace tw {

class AppState;
class ProcessRunner;
class VolumeFacts;

struct UnseenSpace {
    qint64 bytes = 0;             // the volume's used space minus the scan's total, at least 0
    qint64 unreadableFolders = 0; // folders the walk could not list
    qint64 localSnapshots = 0;    // local Time Machine snapshots of the volume
    std::optional<qint64> purgeable; // macOS: what the system may free on demand
    std::optional<qint64> reserved;  // Linux: free blocks only the superuser may fill
    // What the known parts with a size leave over: system data and the like.
    [[nodiscard]] qint64 otherBytes() const;
    bool operator==(const UnseenSpace&) const = default;
};

// What the system says about a mount point, asked right after its walk.
struct MountSurvey {
    VolumeInfo::MountUsage usage;
    qint64 localSnapshots = 0;
};

// Asks the volume and its snapshots; none unless `path` is the mount point of
// its volume. Runs the snapshot tool: worker threads only.
[[nodiscard]] std::optional<MountSurvey> surveyMount(const QByteArray& path, const VolumeFacts& volumes,
                                                     const ProcessRunner& processes);

[[nodiscard]] UnseenSpace unseenSpaceFrom(const MountSurvey& survey, qint64 scannedBytes, qint64 unreadableFolders);

// The details panel's row for the focused root: its size and the lines of its
// help, in the current language. Follows AppState and the language. GUI thread.
class UnseenSpaceModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    // The root is focused and its figure is known.
    Q_PROPERTY(bool shown READ shown NOTIFY changed)
    Q_PROPERTY(QString sizeText READ sizeText NOTIFY changed)
    Q_PROPERTY(QString helpText READ helpText NOTIFY changed)

public:
    explicit UnseenSpaceModel(QObject* parent = nullptr);

    [[nodiscard]] AppState* state() const;
    void setState(AppState* state);
    [[nodiscard]] bool shown() const;
    [[nodiscard]] QString sizeText() const;
    [[nodiscard]] QString helpText() const;

Q_SIGNALS:
    void stateChanged();
    void changed();

private:
    QPointer<AppState> m_state;
};

// The help's text: a heading, then one line for each part known to be there.
[[nodiscard]] QString unseenSpaceHelp(const UnseenSpace& unseen);

} // namespace tw
