#pragma once

#include "scan/FileNode.h"
#include "scan/ScanProgress.h"
#include "scan/Scanner.h"
#include "scan/VolumeInfo.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace tw {

class DiskAccess;
class FileReveal;
class VolumeFacts;

// The window's one observable state: the current scan, the tree, where the
// chart is focused, and every flag a view shows. Views read its properties and
// call its operations; nothing else starts or ends a scan.
//
// Lives on the GUI thread, and every member is for the GUI thread only. A
// scan's walk runs on threads of its own; its reports and its tree come back
// as queued calls, checked against the scan's stamp and dropped when stale.
class AppState : public QObject {
    Q_OBJECT
    Q_PROPERTY(Phase phase READ phase NOTIFY phaseChanged)
    Q_PROPERTY(tw::ScanProgress progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(bool hasTree READ hasTree NOTIFY rootChanged)
    Q_PROPERTY(bool needsFullDiskAccess READ needsFullDiskAccess WRITE setNeedsFullDiskAccess NOTIFY needsFullDiskAccessChanged)
    Q_PROPERTY(QString fdaPromptForURL READ fdaPromptPath NOTIFY fdaPromptForURLChanged)
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY isRefreshingChanged)
    Q_PROPERTY(Mode mode READ mode WRITE setMode NOTIFY modeChanged)
    Q_PROPERTY(bool hasDeleteCandidate READ hasDeleteCandidate NOTIFY deleteCandidateChanged)
    // The error alert's message; empty when no alert is up.
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(int localSnapshotCount READ localSnapshotCount NOTIFY snapshotsChanged)
    Q_PROPERTY(bool thinningSnapshots READ thinningSnapshots NOTIFY snapshotsChanged)
    Q_PROPERTY(bool confirmThinSnapshots READ confirmThinSnapshots WRITE setConfirmThinSnapshots NOTIFY snapshotsChanged)
    Q_PROPERTY(QString thinResultMessage READ thinResultMessage NOTIFY snapshotsChanged)

public:
    // Only `scanning` has a value: the latest progress, in `progress`.
    enum class Phase { scanning, welcome, ready };
    Q_ENUM(Phase)
    enum class Mode { folder, apps };
    Q_ENUM(Mode)

    // What AppState is given instead of reaching for the system itself.
    struct Services {
        const VolumeFacts* volumes = nullptr;   // the running system's if null
        const DiskAccess* diskAccess = nullptr; // the system's if null
        Scanner::Options scannerOptions;        // e.g. a forced worker count
        FileReveal* reveal = nullptr;           // the system's file manager if null
        // Moves one item to the Trash; answers the failure's message, or
        // nothing on success. Runs on a worker thread. The system's Trash if empty.
        std::function<std::optional<QString>(const QByteArray& path)> recycle;
    };

    explicit AppState(QObject* parent = nullptr);
    explicit AppState(Services services, QObject* parent = nullptr);
    ~AppState() override;

    [[nodiscard]] Phase phase() const { return m_phase; }
    [[nodiscard]] const ScanProgress& progress() const { return m_progress; }
    [[nodiscard]] const NodeRef& root() const { return m_root; }
    [[nodiscard]] const NodeRef& focus() const { return m_focus; }
    [[nodiscard]] const NodeRef& hovered() const { return m_hovered; }
    // What the delete dialog asks about; empty when no dialog is up.
    [[nodiscard]] const NodeRef& deleteCandidate() const { return m_deleteCandidate; }
    [[nodiscard]] bool hasDeleteCandidate() const { return bool(m_deleteCandidate); }
    [[nodiscard]] QString errorMessage() const { return m_errorMessage.value_or(QString()); }
    [[nodiscard]] bool hasErrorMessage() const { return m_errorMessage.has_value(); }
    // Local snapshots: counted and thinned by the snapshot service, which is
    // not part of this build yet, so the count stays 0 and the welcome
    // screen offers no reclaim.
    [[nodiscard]] int localSnapshotCount() const { return m_localSnapshotCount; }
    [[nodiscard]] bool thinningSnapshots() const { return m_thinningSnapshots; }
    [[nodiscard]] bool confirmThinSnapshots() const { return m_confirmThinSnapshots; }
    [[nodiscard]] QString thinResultMessage() const { return m_thinResultMessage.value_or(QString()); }
    [[nodiscard]] bool hasTree() const { return bool(m_root); }
    [[nodiscard]] bool needsFullDiskAccess() const { return m_needsFullDiskAccess; }
    [[nodiscard]] const std::optional<QByteArray>& fdaPromptForURL() const { return m_fdaPromptForURL; }
    [[nodiscard]] QString fdaPromptPath() const;
    [[nodiscard]] bool isRefreshing() const { return m_isRefreshing; }
    [[nodiscard]] const std::optional<VolumeInfo::Capacity>& volumeCapacity() const { return m_volumeCapacity; }
    [[nodiscard]] Mode mode() const { return m_mode; }
    [[nodiscard]] const std::optional<QByteArray>& rootURL() const { return m_rootURL; }

    static QString toText(Mode mode);
    static std::optional<Mode> modeFromText(QStringView text);

    // The gate before a scan: a protected location without the grant waits
    // behind the Full Disk Access prompt, anything else starts at once.
    void requestScan(const QByteArray& path);
    Q_INVOKABLE void requestScan(const QString& path);
    // Starts a scan of `path`, superseding any running one. After it ends the
    // chart focuses `restoreFocusPath` if it is still in the tree, else the root.
    void startScan(const QByteArray& path, const std::optional<QByteArray>& restoreFocusPath);
    // The prompt's Cancel: no scan, the phase stays as it is.
    Q_INVOKABLE void dismissFullDiskAccessPrompt() { setFdaPrompt(std::nullopt); }
    // Runs the scan that waits behind the prompt, with whatever gaps it has.
    Q_INVOKABLE void continueWithoutFullDiskAccess();
    // Rescans the last location, keeping the focused folder. Does nothing
    // while a refresh runs or before any scan.
    Q_INVOKABLE void refresh();
    // Abandons the running scan and goes to the welcome screen; a tree shown
    // before stays held, unshown.
    Q_INVOKABLE void cancelScan();
    // Forgets the scan and the tree.
    Q_INVOKABLE void resetToWelcome();

    // The one way of moving the chart: only a folder with at least one child
    // can be focused. Returns whether the focus moved.
    bool focusOn(const NodeRef& target);
    // The guarded focus change to the focus's parent; false at the root.
    Q_INVOKABLE bool goUp();
    void setHovered(const NodeRef& node);
    // Shows the node in the file manager (the chart's and the list's "Show in Finder").
    void reveal(const NodeRef& node);
    // The chart's and the list's "Move to Trash…": opens the delete dialog.
    void setDeleteCandidate(const NodeRef& node);
    Q_INVOKABLE void cancelDelete() { setDeleteCandidate({}); }
    // The delete dialog's confirmation: moves the candidate to the Trash off
    // the GUI thread; on success the tree loses it at once, on failure the
    // error alert shows and nothing changes.
    Q_INVOKABLE void confirmDelete();
    void setErrorMessage(std::optional<QString> message);
    // The error alert's "OK".
    Q_INVOKABLE void clearErrorMessage() { setErrorMessage(std::nullopt); }
    void setConfirmThinSnapshots(bool open);
    // The confirmation's "Reclaim". The snapshot service is not part of this
    // build yet: this closes the confirmation and thins nothing.
    Q_INVOKABLE void thinSnapshots() { setConfirmThinSnapshots(false); }
    void setThinResultMessage(std::optional<QString> message);
    // The thinning result alert's "OK".
    Q_INVOKABLE void clearThinResultMessage() { setThinResultMessage(std::nullopt); }

    void setNeedsFullDiskAccess(bool needed);
    void setMode(Mode mode);

Q_SIGNALS:
    void phaseChanged();
    void progressChanged();
    void rootChanged();
    void focusChanged();
    void hoveredChanged();
    void needsFullDiskAccessChanged();
    void fdaPromptForURLChanged();
    void isRefreshingChanged();
    void volumeCapacityChanged();
    void modeChanged();
    void deleteCandidateChanged();
    // A confirmed deletion finished, either way (for the window and tests).
    void deletionFinished(bool succeeded);
    void errorMessageChanged();
    void snapshotsChanged();
    void appUninstalled(const QString& bundleId);
    void snapshotsThinned(qint64 freedBytes);

private:
    void applyReport(const QUuid& stamp, const ScanProgress& report);
    void finishScan(const QUuid& stamp, const std::shared_ptr<ScanTree>& tree, const QByteArray& path,
                    const std::optional<QByteArray>& restoreFocusPath);
    void setPhase(Phase phase, const ScanProgress& progress = {});
    void setRoot(NodeRef root);
    void setFocus(NodeRef focus);
    void setRefreshing(bool refreshing);
    void setVolumeCapacity(std::optional<VolumeInfo::Capacity> capacity);
    void setFdaPrompt(std::optional<QByteArray> path);
    void itemDeleted(const NodeRef& node, qint64 size, bool isDirectory);

    Services m_services;

    Phase m_phase = Phase::welcome;
    ScanProgress m_progress;
    NodeRef m_root;
    NodeRef m_focus;
    NodeRef m_hovered;
    NodeRef m_deleteCandidate;
    std::optional<QString> m_errorMessage;
    int m_localSnapshotCount = 0;
    bool m_thinningSnapshots = false;
    bool m_confirmThinSnapshots = false;
    std::optional<QString> m_thinResultMessage;
    bool m_needsFullDiskAccess = false;
    std::optional<QByteArray> m_fdaPromptForURL;
    bool m_isRefreshing = false;
    std::optional<VolumeInfo::Capacity> m_volumeCapacity;
    Mode m_mode = Mode::folder;

    std::optional<QByteArray> m_rootURL;
    std::shared_ptr<Scanner> m_scanner;
    QUuid m_scanGeneration = QUuid::createUuid();
};

} // namespace tw
