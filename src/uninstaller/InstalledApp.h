#pragma once

#include "uninstaller/AppRelatedFiles.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QUuid>
#include <optional>

namespace tw {

// One installed application. Made by discovery on a worker thread, then
// handed to the GUI thread, which alone changes the observable fields
// (size, related files and their flags) from then on.
class InstalledApp : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(QString bundleID READ bundleID CONSTANT)
    Q_PROPERTY(QString version READ versionText CONSTANT)
    Q_PROPERTY(QString path READ displayPath CONSTANT)
    Q_PROPERTY(qint64 bundleSize READ bundleSize NOTIFY bundleSizeChanged)
    Q_PROPERTY(qint64 totalSize READ totalSize NOTIFY totalSizeChanged)
    Q_PROPERTY(bool relatedLoaded READ relatedLoaded NOTIFY relatedChanged)
    Q_PROPERTY(bool relatedLoading READ relatedLoading NOTIFY relatedChanged)

public:
    InstalledApp(QByteArray url, QString name, QString bundleID, std::optional<QString> version,
                 std::optional<QDateTime> lastOpened, QByteArray iconFile,
                 QObject* parent = nullptr);

    [[nodiscard]] const QUuid& id() const { return m_id; }
    [[nodiscard]] const QByteArray& url() const { return m_url; }
    [[nodiscard]] QString displayPath() const;
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] const QString& bundleID() const { return m_bundleID; }
    [[nodiscard]] const std::optional<QString>& version() const { return m_version; }
    [[nodiscard]] QString versionText() const { return m_version.value_or(QString()); }
    [[nodiscard]] const std::optional<QDateTime>& lastOpened() const { return m_lastOpened; }
    // The bundle's own icon file (an .icns), empty when it names none that
    // exists; drawing it is the views' business.
    [[nodiscard]] const QByteArray& iconFile() const { return m_iconFile; }

    [[nodiscard]] qint64 bundleSize() const { return m_bundleSize; }
    void setBundleSize(qint64 size);
    [[nodiscard]] const QList<RelatedFile>& related() const { return m_related; }
    void setRelated(QList<RelatedFile> related);
    [[nodiscard]] bool relatedLoaded() const { return m_relatedLoaded; }
    [[nodiscard]] bool relatedLoading() const { return m_relatedLoading; }
    void setRelatedLoading(bool loading);
    // Whether the system's list of running applications holds this one; asked
    // afresh on every call.
    [[nodiscard]] Q_INVOKABLE bool isRunning() const;
    // bundleSize plus the related files' sizes.
    [[nodiscard]] qint64 totalSize() const;

Q_SIGNALS:
    void bundleSizeChanged();
    void totalSizeChanged();
    void relatedChanged();

private:
    QUuid m_id = QUuid::createUuid();
    QByteArray m_url;
    QString m_name;
    QString m_bundleID;
    std::optional<QString> m_version;
    std::optional<QDateTime> m_lastOpened;
    QByteArray m_iconFile;
    qint64 m_bundleSize = 0;
    QList<RelatedFile> m_related;
    bool m_relatedLoaded = false;
    bool m_relatedLoading = false;
};

} // namespace tw
