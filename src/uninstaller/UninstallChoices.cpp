#include "uninstaller/UninstallChoices.h"

#include "app/AppState.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "uninstaller/InstalledApp.h"

#include <QFile>
#include <QTimer>
#include <algorithm>

namespace tw {

UninstallChoices::UninstallChoices(QObject* parent) : UninstallChoices(std::chrono::milliseconds(800), parent) {}

UninstallChoices::UninstallChoices(std::chrono::milliseconds recheckDelay, QObject* parent)
    : QObject(parent), m_recheckDelay(recheckDelay)
{
    // The texts follow the language chosen at the moment.
    connect(&LocalizationManager::shared(), &LocalizationManager::currentChanged, this,
            &UninstallChoices::choicesChanged);
}

void UninstallChoices::setState(AppState* state)
{
    if (m_state == state)
        return;
    m_state = state;
    setRunningStatus(m_state && m_app && m_state->isAppRunning(m_app));
    Q_EMIT appChanged();
}

void UninstallChoices::setApp(InstalledApp* app)
{
    if (m_app == app)
        return;
    if (m_app)
        disconnect(m_app, nullptr, this, nullptr);
    m_app = app;
    m_bundleChecked = true;
    m_relatedChecked.clear();
    if (m_app) {
        merge();
        connect(m_app, &InstalledApp::relatedChanged, this, [this] {
            merge();
            Q_EMIT choicesChanged();
        });
        connect(m_app, &InstalledApp::bundleSizeChanged, this, &UninstallChoices::choicesChanged);
    }
    setRunningStatus(m_state && m_app && m_state->isAppRunning(m_app));
    Q_EMIT appChanged();
    Q_EMIT choicesChanged();
}

void UninstallChoices::reset()
{
    m_bundleChecked = true;
    m_relatedChecked.clear();
    if (m_app)
        merge();
    setRunningStatus(m_state && m_app && m_state->isAppRunning(m_app));
    Q_EMIT choicesChanged();
}

void UninstallChoices::merge()
{
    // New files come in with their default; the user's ticks stay.
    for (const RelatedFile& file : m_app->related()) {
        if (!m_relatedChecked.contains(file.id))
            m_relatedChecked.insert(file.id, !file.isShared);
    }
}

void UninstallChoices::setBundleChecked(bool checked)
{
    if (m_bundleChecked == checked)
        return;
    m_bundleChecked = checked;
    Q_EMIT choicesChanged();
}

bool UninstallChoices::isChecked(const RelatedFile& file) const
{
    return m_relatedChecked.value(file.id, !file.isShared);
}

void UninstallChoices::setChecked(const QString& id, bool checked)
{
    m_relatedChecked.insert(QUuid::fromString(id), checked);
    Q_EMIT choicesChanged();
}

QList<QByteArray> UninstallChoices::selectedURLs() const
{
    QList<QByteArray> urls;
    if (!m_app)
        return urls;
    if (m_bundleChecked)
        urls.append(m_app->url());
    for (const RelatedFile& file : m_app->related()) {
        if (isChecked(file))
            urls.append(file.url);
    }
    return urls;
}

qint64 UninstallChoices::selectedSize() const
{
    if (!m_app)
        return 0;
    qint64 total = m_bundleChecked ? m_app->bundleSize() : 0;
    for (const RelatedFile& file : m_app->related()) {
        if (isChecked(file))
            total += file.size;
    }
    return total;
}

QVariantList UninstallChoices::groups() const
{
    QVariantList groups;
    if (!m_app || !m_app->relatedLoaded())
        return groups;
    const Language language = LocalizationManager::shared().current();
    for (const QList<const RelatedFile*>& files : groupedByCategory(m_app->related())) {
        const RelatedCategory category = files.first()->category;
        QVariantList rows;
        for (const RelatedFile* file : files) {
            const QString path = QFile::decodeName(file->url);
            const QString reason = fillText(
                LocalizationManager::shared().text(language, QString::fromLatin1(matchReasonKey(file->reason.kind))),
                file->reason.identifier);
            rows.append(QVariantMap{{QStringLiteral("id"), file->id.toString()},
                                    {QStringLiteral("name"), path.mid(path.lastIndexOf(u'/') + 1)},
                                    {QStringLiteral("path"), path},
                                    {QStringLiteral("size"), formatBytes(file->size)},
                                    {QStringLiteral("shared"), file->isShared},
                                    {QStringLiteral("reason"), reason},
                                    {QStringLiteral("checked"), isChecked(*file)}});
        }
        groups.append(QVariantMap{{QStringLiteral("title"), relatedCategoryTitle(category)},
                                  {QStringLiteral("symbol"), relatedCategorySymbol(category)},
                                  {QStringLiteral("files"), rows}});
    }
    return groups;
}

bool UninstallChoices::searching() const
{
    return m_app && !m_app->relatedLoaded();
}

bool UninstallChoices::confirmEnabled() const
{
    return m_app && m_app->relatedLoaded() && !m_runningStatus && !selectedURLs().isEmpty();
}

QString UninstallChoices::confirmTitle() const
{
    QString title = LocalizationManager::shared().string(QStringLiteral("uninstall.moveTrash"));
    title = fillText(title, QString::number(selectedURLs().size()));
    return fillText(title, formatBytes(selectedSize()));
}

QString UninstallChoices::selectedSizeText() const
{
    return formatBytes(selectedSize());
}

QString UninstallChoices::bundleSizeText() const
{
    return formatBytes(m_app ? m_app->bundleSize() : 0);
}

void UninstallChoices::setRunningStatus(bool running)
{
    if (m_runningStatus == running)
        return;
    m_runningStatus = running;
    Q_EMIT runningChanged();
    Q_EMIT choicesChanged();
}

void UninstallChoices::confirm()
{
    if (!m_state || !m_app)
        return;
    // The state may have changed since the dialog drew itself.
    setRunningStatus(m_state->isAppRunning(m_app));
    if (!m_app->relatedLoaded() || m_runningStatus)
        return;
    const QList<QByteArray> urls = selectedURLs();
    if (!urls.isEmpty())
        m_state->confirmUninstall(urls);
}

void UninstallChoices::quit()
{
    if (!m_state || !m_app)
        return;
    m_state->terminateApp(m_app);
    // One look, no polling: an application that takes longer keeps the
    // banner until Quit is pressed again.
    QTimer::singleShot(m_recheckDelay, this, [this] {
        setRunningStatus(m_state && m_app && m_state->isAppRunning(m_app));
    });
}

} // namespace tw
