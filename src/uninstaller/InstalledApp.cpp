#include "uninstaller/InstalledApp.h"

#include "platform/RunningApplications.h"

#include <QFile>

namespace tw {

InstalledApp::InstalledApp(QByteArray url, QString name, QString bundleID,
                           std::optional<QString> version, std::optional<QDateTime> lastOpened,
                           QByteArray iconFile, QObject* parent)
    : QObject(parent), m_url(std::move(url)), m_name(std::move(name)),
      m_bundleID(std::move(bundleID)), m_version(std::move(version)),
      m_lastOpened(std::move(lastOpened)), m_iconFile(std::move(iconFile))
{
}

QString InstalledApp::displayPath() const
{
    return QFile::decodeName(m_url);
}

void InstalledApp::setBundleSize(qint64 size)
{
    if (m_bundleSize == size)
        return;
    m_bundleSize = size;
    Q_EMIT bundleSizeChanged();
    Q_EMIT totalSizeChanged();
}

void InstalledApp::setRelated(QList<RelatedFile> related)
{
    m_related = std::move(related);
    m_relatedLoaded = true;
    m_relatedLoading = false;
    Q_EMIT relatedChanged();
    Q_EMIT totalSizeChanged();
}

void InstalledApp::setRelatedLoading(bool loading)
{
    if (m_relatedLoading == loading)
        return;
    m_relatedLoading = loading;
    Q_EMIT relatedChanged();
}

bool InstalledApp::isRunning() const
{
    return systemRunningApplications().isRunning(m_bundleID, m_url);
}

qint64 InstalledApp::totalSize() const
{
    qint64 total = m_bundleSize;
    for (const RelatedFile& file : m_related)
        total += file.size;
    return total;
}

} // namespace tw
