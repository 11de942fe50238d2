// AppState: the application list, its sizing pass, the related-file search
// and what an uninstall's outcome does to the lists and the dialogs.

#include "app/AppState.h"
#include "platform/ElevatedRunner.h"
#include "platform/Trash.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/FileReveal.h"
#include "platform/RunningApplications.h"
#include "uninstaller/AppDiscovery.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMetaObject>
#include <QThread>
#include <thread>

namespace tw {

namespace {

constexpr int kSizingTasks = 4;

bool isPermissionFailure(const QString& message)
{
    const QString lower = message.toLower();
    return lower.contains(QLatin1String("permission")) || lower.contains(QLatin1String("not permitted")) ||
           lower.contains(QLatin1String("operation not permitted"));
}

QByteArray lastPathComponent(const QByteArray& path)
{
    QByteArray trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith('/'))
        trimmed.chop(1);
    return trimmed.mid(trimmed.lastIndexOf('/') + 1);
}

} // namespace

void AppState::loadApps()
{
    if (m_appsLoading)
        return;
    m_appsLoading = true;
    Q_EMIT appsLoadingChanged();
    startDiscovery();
}

void AppState::reloadApps()
{
    clearApps();
    if (m_appsLoading) {
        m_appsLoading = false;
        Q_EMIT appsLoadingChanged();
    }
    loadApps();
}

void AppState::clearApps()
{
    // A fresh stamp silences the running discovery and sizing of the old list.
    m_appsGeneration = QUuid::createUuid();
    m_sizingQueue.clear();
    const QList<InstalledApp*> old = std::exchange(m_apps, {});
    if (!old.isEmpty())
        Q_EMIT appsChanged();
    for (InstalledApp* app : old)
        app->deleteLater();
}

void AppState::startDiscovery()
{
    const QUuid generation = QUuid::createUuid();
    m_appsGeneration = generation;
    QPointer<AppState> self(this);
    auto discover = m_services.discoverApps;
    auto rootsOf = m_services.applicationRoots;
    QThread* home = thread();
    std::thread([self, discover, rootsOf, generation, home] {
        const QByteArrayList roots = rootsOf ? rootsOf() : AppDiscovery::applicationRoots();
        std::vector<std::unique_ptr<InstalledApp>> found =
            discover ? discover() : AppDiscovery::listInstalledApps(roots);
        QStringList folders;
        for (const QByteArray& root : roots)
            folders.append(QFile::decodeName(root));
        auto* carried = new QList<InstalledApp*>;
        for (auto& app : found) {
            app->moveToThread(home);
            carried->append(app.release());
        }
        // The guard may be gone by now: the list then goes with the lambda.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, carried, folders] {
                std::unique_ptr<QList<InstalledApp*>> list(carried);
                if (!self || self->m_appsGeneration != generation) {
                    qDeleteAll(*list);
                    return;
                }
                for (InstalledApp* app : *list) {
                    app->setParent(self);
                    self->m_sizingQueue.append(app);
                }
                self->m_apps = *list;
                self->m_appFolders = folders;
                self->m_appsLoading = false;
                Q_EMIT self->appsChanged();
                Q_EMIT self->appsLoadingChanged();
                self->pumpSizing();
            },
            Qt::QueuedConnection);
    }).detach();
}

void AppState::pumpSizing()
{
    while (m_sizingRunning < kSizingTasks && !m_sizingQueue.isEmpty()) {
        const QPointer<InstalledApp> app = m_sizingQueue.takeFirst();
        if (!app)
            continue;
        ++m_sizingRunning;
        const QUuid id = app->id();
        const QByteArray url = app->url();
        const QUuid generation = m_appsGeneration;
        auto measure = m_services.bundleSize ? m_services.bundleSize : allocatedSize;
        QPointer<AppState> self(this);
        std::thread([self, measure, url, id, generation] {
            const qint64 size = measure(url);
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, size, id, generation] {
                    if (!self)
                        return;
                    --self->m_sizingRunning;
                    if (generation == self->m_appsGeneration) {
                        // An application that has left the list keeps nothing.
                        for (InstalledApp* entry : std::as_const(self->m_apps)) {
                            if (entry->id() == id) {
                                entry->setBundleSize(size);
                                Q_EMIT self->appDataChanged(entry);
                                break;
                            }
                        }
                    }
                    self->pumpSizing();
                },
                Qt::QueuedConnection);
        }).detach();
    }
}

void AppState::loadRelatedIfNeeded(InstalledApp* app)
{
    if (!app || app->relatedLoaded() || app->relatedLoading())
        return;
    app->setRelatedLoading(true);
    QPointer<AppState> self(this);
    QPointer<InstalledApp> target(app);
    auto find = m_services.findRelated;
    const QString bundleID = app->bundleID();
    const QString name = app->name();
    const QByteArray url = app->url();
    std::thread([self, target, find, bundleID, name, url] {
        QList<RelatedFile> related =
            find ? find(bundleID, name, url) : AppRelatedFiles::find(bundleID, name, url);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, target, related = std::move(related)]() mutable {
                if (!target)
                    return;
                target->setRelated(std::move(related));
                if (self)
                    Q_EMIT self->appDataChanged(target);
            },
            Qt::QueuedConnection);
    }).detach();
}

void AppState::setUninstallCandidate(InstalledApp* app)
{
    if (m_uninstallCandidate == app)
        return;
    m_uninstallCandidate = app;
    Q_EMIT uninstallCandidateChanged();
}

bool AppState::isAppRunning(const InstalledApp* app) const
{
    if (!app)
        return false;
    const RunningApplications& running =
        m_services.running ? *m_services.running : systemRunningApplications();
    return running.isRunning(app->bundleID(), app->url());
}

void AppState::revealApp(const InstalledApp* app)
{
    if (app)
        m_services.reveal->reveal(app->url());
}

void AppState::terminateApp(const InstalledApp* app)
{
    if (!app)
        return;
    RunningApplications& running = m_services.running ? *m_services.running : systemRunningApplications();
    running.terminate(app->bundleID(), app->url());
}

void AppState::confirmUninstall(const QList<QByteArray>& paths)
{
    InstalledApp* app = m_uninstallCandidate;
    if (!app)
        return;
    // Nobody removes an application while its leftovers are unknown or it runs.
    if (!app->relatedLoaded() || isAppRunning(app))
        return;
    setUninstallCandidate(nullptr);

    QPointer<AppState> self(this);
    QPointer<InstalledApp> target(app);
    const QByteArray appURL = app->url();
    auto move = m_services.recycleBatch;
    Trash* bin = &trash();
    ElevatedRunner* runner = m_services.elevated ? m_services.elevated : &systemElevatedRunner();
    std::thread([self, target, appURL, move, paths, bin, runner] {
        BatchOutcome outcome = move ? move(paths) : recycleBatch(paths, *bin, *runner);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, target, appURL, outcome = std::move(outcome)] {
                if (!self)
                    return;
                self->applyUninstallResult(target, appURL, outcome);
            },
            Qt::QueuedConnection);
    }).detach();
}

void AppState::applyUninstallResult(InstalledApp* app, const QByteArray& appURL, const BatchOutcome& outcome)
{
    QList<TrashedItem> moved;
    for (const QByteArray& path : outcome.succeeded)
        moved.append({path, outcome.places.value(path)});
    noteRemoval(std::move(moved));
    if (app) {
        QList<RelatedFile> kept = app->related();
        kept.removeIf([&](const RelatedFile& file) { return outcome.succeeded.contains(file.url); });
        if (kept.size() != app->related().size()) {
            app->setRelated(std::move(kept));
            Q_EMIT appDataChanged(app);
        }
        if (outcome.succeeded.contains(appURL)) {
            const QString bundleID = app->bundleID();
            if (m_apps.removeOne(app)) {
                m_sizingQueue.removeAll(QPointer<InstalledApp>(app));
                if (m_uninstallCandidate == app)
                    setUninstallCandidate(nullptr);
                Q_EMIT appsChanged();
                app->deleteLater();
            }
            Q_EMIT appUninstalled(bundleID);
        }
    }

    if (!outcome.failed.isEmpty()) {
        QList<std::pair<QByteArray, QString>> refused;
        for (const auto& failure : outcome.failed) {
            if (isPermissionFailure(failure.second))
                refused.append(failure);
        }
        if (refused.isEmpty()) {
            QStringList lines;
            for (const auto& [path, message] : outcome.failed)
                lines.append(QStringLiteral("• ") + QFile::decodeName(lastPathComponent(path)) +
                             QStringLiteral(": ") + message);
            QString text = LocalizationManager::shared().string(QStringLiteral("trash.summary"));
            text = fillCount(text, outcome.succeeded.size());
            text = fillCount(text, outcome.failed.size());
            setErrorMessage(fillText(text, lines.join(QLatin1Char('\n'))));
        } else {
            // Plain text prefixes, as the system names these places.
            const QString home = QDir::homePath();
            UninstallPermissionPrompt prompt;
            for (const auto& failure : refused) {
                const QString path = QFile::decodeName(failure.first);
                prompt.failedPaths.append(path);
                if (path.startsWith(QLatin1String("/Applications")))
                    prompt.needsAppManagement = true;
                if (path.startsWith(QLatin1String("/Library")) || path.startsWith(home + QStringLiteral("/Library")) ||
                    path.startsWith(QLatin1String("/private")) || path.startsWith(QLatin1String("/var")))
                    prompt.needsFullDiskAccess = true;
            }
            prompt.succeededCount = outcome.succeeded.size();
            m_permissionPrompt = prompt;
            Q_EMIT permissionPromptChanged();
        }
    }
    Q_EMIT uninstallFinished();
}

void AppState::dismissPermissionPrompt()
{
    if (!m_permissionPrompt)
        return;
    m_permissionPrompt.reset();
    Q_EMIT permissionPromptChanged();
}

QVariantMap AppState::permissionPromptFacts() const
{
    if (!m_permissionPrompt)
        return {};
    const UninstallPermissionPrompt& prompt = *m_permissionPrompt;
    return {{QStringLiteral("id"), prompt.id.toString()},
            {QStringLiteral("needsAppManagement"), prompt.needsAppManagement},
            {QStringLiteral("needsFullDiskAccess"), prompt.needsFullDiskAccess},
            {QStringLiteral("failedPaths"), prompt.failedPaths},
            {QStringLiteral("succeededCount"), prompt.succeededCount}};
}

} // namespace tw
