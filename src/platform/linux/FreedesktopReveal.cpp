#include "platform/linux/FreedesktopReveal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QProcess>
#include <QStringList>

namespace tw {

FreedesktopReveal::FreedesktopReveal(QDBusConnection bus, OpenFolder openFolder)
    : m_bus(std::move(bus)), m_openFolder(std::move(openFolder))
{
}

void FreedesktopReveal::reveal(const QByteArray& path)
{
    const qsizetype slash = path.lastIndexOf('/');
    const QString folder = fileUri(slash > 0 ? path.left(slash) : QByteArray("/"));
    if (!m_bus.isConnected()) {
        m_openFolder(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{fileUri(path)} << QString();
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call));
    const OpenFolder openFolder = m_openFolder;
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [openFolder, folder](QDBusPendingCallWatcher* finished) {
                         if (finished->isError())
                             openFolder(folder);
                         finished->deleteLater();
                     });
}

FileReveal& systemFileReveal()
{
    static FreedesktopReveal reveal(QDBusConnection::sessionBus(), [](const QString& folderUri) {
        QProcess::startDetached(QStringLiteral("xdg-open"), {folderUri});
    });
    return reveal;
}

} // namespace tw
