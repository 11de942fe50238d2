#pragma once

#include "app/Selection.h"
#include "app/UnseenSpace.h"
#include "removal/Recycle.h"
#include "removal/Restore.h"
#include "scan/FileNode.h"
#include "scan/ScanProgress.h"
#include "scan/Scanner.h"
#include "scan/VolumeInfo.h"
#include "uninstaller/InstalledApp.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

namespace tw {

class DiskAccess;
class ElevatedRunner;
class Trash;
class FileReveal;
class ProcessRunner;
class RunningApplications;
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
    // Folders the last scan could not read, counted once when it finished.
    Q_PROPERTY(qint64 inaccessibleCount READ inaccessibleCount NOTIFY rootChanged)
    // The notice of unreadable folders where no grant would help (Linux, or
    // a Mac that has the grant): the count, without a way to the settings.
    Q_PROPERTY(bool showsUnreadableNotice READ showsUnreadableNotice WRITE setShowsUnreadableNotice NOTIFY showsUnreadableNoticeChanged)
    Q_PROPERTY(bool appsLoading READ appsLoading NOTIFY appsLoadingChanged)
    Q_PROPERTY(int appCount READ appCount NOTIFY appsChanged)
    // The folders the last discovery looked in, for display; empty before it ends.
    Q_PROPERTY(QStringList appFolders READ appFolders NOTIFY appsChanged)
    Q_PROPERTY(tw::InstalledApp* uninstallCandidate READ uninstallCandidate WRITE setUninstallCandidate NOTIFY uninstallCandidateChanged)
    // The permission dialog's facts (id, needsAppManagement,
    // needsFullDiskAccess, failedPaths, succeededCount); empty when none.
    Q_PROPERTY(QVariantMap permissionPrompt READ permissionPromptFacts NOTIFY permissionPromptChanged)
    // Several items at once: the selection bar's text, empty with nothing picked.
    Q_PROPERTY(int selectionCount READ selectionCount NOTIFY selectionChanged)
    Q_PROPERTY(QString selectionText READ selectionText NOTIFY selectionChanged)
    // The batch confirmation: open, and its facts { title, total, items: [{ name, size }] }.
    Q_PROPERTY(bool batchConfirmOpen READ batchConfirmOpen NOTIFY batchChanged)
    Q_PROPERTY(QVariantMap batchFacts READ batchFacts NOTIFY batchChanged)
    // The undo banner's text; empty when no banner is up.
    Q_PROPERTY(QString undoText READ undoText NOTIFY undoChanged)

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
        // Starts the snapshot tool; the system's if null. Called from worker
        // threads, so it must outlive any tool call that is running.
        const ProcessRunner* processes = nullptr;
        // The applications screen's services, each run on a worker thread;
        // the system's when empty. Discovery over the usual roots:
        std::function<std::vector<std::unique_ptr<InstalledApp>>()> discoverApps;
        // The folders discovery walks (the usual roots when empty).
        std::function<QByteArrayList()> applicationRoots;
        std::function<qint64(const QByteArray& bundle)> bundleSize;
        std::function<QList<RelatedFile>(const QString& bundleID, const QString& name, const QByteArray& appURL)>
            findRelated;
        std::function<BatchOutcome(const QList<QByteArray>& paths)> recycleBatch;
        RunningApplications* running = nullptr; // the system's if null
        // The Trash that batches and undo use, and the single item when
        // `recycle` is empty; the system's if null. Called on worker threads.
        Trash* trash = nullptr;
        ElevatedRunner* elevated = nullptr; // the system's if null
    };

    // What the permission dialog shows after an uninstall was refused.
    struct UninstallPermissionPrompt {
        QUuid id = QUuid::createUuid();
        bool needsAppManagement = false;
        bool needsFullDiskAccess = false;
        QStringList failedPaths;
        qint64 succeededCount = 0;
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
    // Local snapshots of the startup volume, as the snapshot tool counts them;
    // always 0 where there is no such tool (Linux).
    [[nodiscard]] int localSnapshotCount() const { return m_localSnapshotCount; }
    [[nodiscard]] bool thinningSnapshots() const { return m_thinningSnapshots; }
    [[nodiscard]] bool confirmThinSnapshots() const { return m_confirmThinSnapshots; }
    [[nodiscard]] QString thinResultMessage() const { return m_thinResultMessage.value_or(QString()); }
    [[nodiscard]] bool hasTree() const { return bool(m_root); }
    [[nodiscard]] bool needsFullDiskAccess() const { return m_needsFullDiskAccess; }
    [[nodiscard]] qint64 inaccessibleCount() const { return m_inaccessibleCount; }
    [[nodiscard]] bool showsUnreadableNotice() const { return m_showsUnreadableNotice; }
    [[nodiscard]] const std::optional<QByteArray>& fdaPromptForURL() const { return m_fdaPromptForURL; }
    [[nodiscard]] QString fdaPromptPath() const;
    [[nodiscard]] bool isRefreshing() const { return m_isRefreshing; }
    [[nodiscard]] const std::optional<VolumeInfo::Capacity>& volumeCapacity() const { return m_volumeCapacity; }
    [[nodiscard]] Mode mode() const { return m_mode; }
    [[nodiscard]] const std::optional<QByteArray>& rootURL() const { return m_rootURL; }
    // The used space of the scanned volume that the walk could not see; only
    // when the scan's root is the mount point of its volume.
    [[nodiscard]] const std::optional<UnseenSpace>& unseenSpace() const { return m_unseenSpace; }
    // Folders of the current tree that could not be read.
    [[nodiscard]] qint64 unreadableFolderCount() const;

    // The applications, in discovery order (by name). AppState owns them; an
    // entry that leaves the list is deleted later, so QML may still hold it
    // for one turn of the event loop.
    [[nodiscard]] const QList<InstalledApp*>& apps() const { return m_apps; }
    [[nodiscard]] bool appsLoading() const { return m_appsLoading; }
    [[nodiscard]] int appCount() const { return int(m_apps.size()); }
    [[nodiscard]] QStringList appFolders() const { return m_appFolders; }
    [[nodiscard]] InstalledApp* uninstallCandidate() const { return m_uninstallCandidate; }
    [[nodiscard]] const std::optional<UninstallPermissionPrompt>& permissionPrompt() const { return m_permissionPrompt; }
    [[nodiscard]] QVariantMap permissionPromptFacts() const;

    // Selection (chart and list): what is picked, in picking order.
    [[nodiscard]] const NodeSelection& selection() const { return m_selection; }
    [[nodiscard]] int selectionCount() const { return int(m_selection.effective().size()); }
    [[nodiscard]] QString selectionText() const;
    [[nodiscard]] bool isSelected(const FileNode* node) const { return m_selection.contains(node); }
    void toggleSelected(const NodeRef& node);
    void addToSelection(const QList<NodeRef>& nodes);
    Q_INVOKABLE void clearSelection();
    [[nodiscard]] bool batchConfirmOpen() const { return m_batchConfirmOpen; }
    [[nodiscard]] QVariantMap batchFacts() const;
    // The selection bar's "Move to Trash…": opens the one confirmation.
    Q_INVOKABLE void requestBatchDelete();
    Q_INVOKABLE void cancelBatchDelete();
    // Moves the selection in one batch off the GUI thread; the tree loses
    // what moved and redraws once; failures show by name with their message.
    Q_INVOKABLE void confirmBatchDelete();
    // Undo: the last removal (single, batch or uninstall) goes back from
    // the Trash; what could not is named in the error alert.
    [[nodiscard]] QString undoText() const;
    [[nodiscard]] const QList<TrashedItem>& lastRemoval() const { return m_lastRemoval; }
    Q_INVOKABLE void undoLastRemoval();
    Q_INVOKABLE void dismissUndo();
    // Walks the folders at `paths` again with the scan's own rules and puts
    // what it finds in their place in the tree; ancestors follow. A path
    // outside the tree is ignored.
    void rescanFolders(const QList<QByteArray>& paths);

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
    // Counts the local snapshots again, off the GUI thread (the welcome
    // screen, when it appears).
    Q_INVOKABLE void refreshSnapshotCount();
    // The confirmation's "Reclaim": asks the system to evict local snapshots
    // and tells what came back. Does nothing while a reclaim runs.
    Q_INVOKABLE void thinSnapshots();
    void setThinResultMessage(std::optional<QString> message);
    // The thinning result alert's "OK".
    Q_INVOKABLE void clearThinResultMessage() { setThinResultMessage(std::nullopt); }

    void setNeedsFullDiskAccess(bool needed);
    void setShowsUnreadableNotice(bool shown);
    void setMode(Mode mode);

    // Discovery off the GUI thread, the list shown at once with sizes 0, then
    // the sizing pass: at most four bundles at a time, in list order. Does
    // nothing while a load runs.
    Q_INVOKABLE void loadApps();
    // Drops the list (and so every selection in it) and loads afresh.
    Q_INVOKABLE void reloadApps();
    // The related-file search for one application, once until the next reload.
    Q_INVOKABLE void loadRelatedIfNeeded(tw::InstalledApp* app);
    // Opens (an application) or closes (null) the uninstall dialog.
    void setUninstallCandidate(InstalledApp* app);
    Q_INVOKABLE void cancelUninstall() { setUninstallCandidate(nullptr); }
    // The uninstall dialog's confirmation: moves `paths` to the Trash off the
    // GUI thread, then applies the outcome. Refused, dialog kept, while the
    // related search runs or the application runs.
    void confirmUninstall(const QList<QByteArray>& paths);
    // What an uninstall's outcome does to the lists and the dialogs.
    // `appURL` is the bundle's path as it stood at confirmation.
    void applyUninstallResult(InstalledApp* app, const QByteArray& appURL, const BatchOutcome& outcome);
    Q_INVOKABLE void dismissPermissionPrompt();
    [[nodiscard]] Q_INVOKABLE bool isAppRunning(const tw::InstalledApp* app) const;
    // Shows the application's bundle in the file manager.
    Q_INVOKABLE void revealApp(const tw::InstalledApp* app);
    // Asks the application to quit; no force.
    Q_INVOKABLE void terminateApp(const tw::InstalledApp* app);

Q_SIGNALS:
    void phaseChanged();
    void progressChanged();
    void rootChanged();
    void focusChanged();
    void hoveredChanged();
    void needsFullDiskAccessChanged();
    void showsUnreadableNoticeChanged();
    void fdaPromptForURLChanged();
    void isRefreshingChanged();
    void volumeCapacityChanged();
    void modeChanged();
    void deleteCandidateChanged();
    // A confirmed deletion finished, either way (for the window and tests).
    void deletionFinished(bool succeeded);
    void errorMessageChanged();
    void snapshotsChanged();
    // Every thinning request when it ends, with what it freed (0 too).
    void snapshotsThinned(qint64 freedBytes);
    void unseenSpaceChanged();
    // The list's membership or order changed (a load, a reload, an uninstall).
    void appsChanged();
    void appsLoadingChanged();
    // A size or a related list inside one entry changed.
    void appDataChanged(tw::InstalledApp* app);
    void uninstallCandidateChanged();
    void permissionPromptChanged();
    // Once after an application's own bundle went to the Trash.
    void appUninstalled(const QString& bundleId);
    // An uninstall's outcome has been applied (for the window and tests).
    void uninstallFinished();
    void selectionChanged();
    void batchChanged();
    // A confirmed batch has been applied to the tree (for the window and tests).
    void batchFinished();
    void undoChanged();
    // An undo has ended and its folders are being walked again.
    void undoFinished();
    // A folder's own walk has ended and, if the tree still stands, is in it.
    void rescanFinished(const QByteArray& folder);

private:
    void applyReport(const QUuid& stamp, const ScanProgress& report);
    void finishScan(const QUuid& stamp, const std::shared_ptr<ScanTree>& tree, const QByteArray& path,
                    const std::optional<QByteArray>& restoreFocusPath, const std::optional<MountSurvey>& survey);
    void setUnseenSpace(std::optional<UnseenSpace> unseen);
    void finishThinning(qint64 before, qint64 after, int count);
    void setPhase(Phase phase, const ScanProgress& progress = {});
    void setRoot(NodeRef root);
    void setFocus(NodeRef focus);
    void setRefreshing(bool refreshing);
    void setVolumeCapacity(std::optional<VolumeInfo::Capacity> capacity);
    void setFdaPrompt(std::optional<QByteArray> path);
    void itemDeleted(const NodeRef& node, qint64 size, bool isDirectory);

    void applyBatchResult(const std::vector<NodeRef>& nodes, const BatchOutcome& outcome);
    // Takes a moved node out of the tree without announcing it.
    void detachFromTree(const NodeRef& node);
    void noteRemoval(QList<TrashedItem> items);
    void applyRescan(const QByteArray& folder, std::shared_ptr<ScanTree> fresh);
    [[nodiscard]] Trash& trash() const;

    void startDiscovery();
    void pumpSizing();
    void clearApps();

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
    quint64 m_snapshotCountRequest = 0; // only the latest count is kept
    std::optional<UnseenSpace> m_unseenSpace;
    bool m_needsFullDiskAccess = false;
    qint64 m_inaccessibleCount = 0;
    bool m_showsUnreadableNotice = false;
    std::optional<QByteArray> m_fdaPromptForURL;
    bool m_isRefreshing = false;
    std::optional<VolumeInfo::Capacity> m_volumeCapacity;
    Mode m_mode = Mode::folder;

    QList<InstalledApp*> m_apps;
    bool m_appsLoading = false;
    QStringList m_appFolders;
    // Stamps the current list: results of an earlier load are dropped.
    QUuid m_appsGeneration;
    // The sizing queue of the current list, and how many run now (of any list:
    // a reload waits for the stale ones so that never more than four run).
    QList<QPointer<InstalledApp>> m_sizingQueue;
    int m_sizingRunning = 0;
    QPointer<InstalledApp> m_uninstallCandidate;
    std::optional<UninstallPermissionPrompt> m_permissionPrompt;

    NodeSelection m_selection;
    bool m_batchConfirmOpen = false;
    QList<TrashedItem> m_lastRemoval;
    bool m_undoRunning = false;
    int m_rescansRunning = 0;

    std::optional<QByteArray> m_rootURL;
    std::shared_ptr<Scanner> m_scanner;
    QUuid m_scanGeneration = QUuid::createUuid();
};

} // namespace tw
