#pragma once

#include "platform/FileReveal.h"

#include <QDBusConnection>

#include <functional>

namespace tw {

// Asks the file manager over D-Bus (org.freedesktop.FileManager1.ShowItems);
// when nothing answers, opens the item's folder instead. The bus and the
// fallback are given so that tests can use a private bus.
class FreedesktopReveal final : public FileReveal {
public:
    using OpenFolder = std::function<void(const QString& folderUri)>;
    FreedesktopReveal(QDBusConnection bus, OpenFolder openFolder);
    void reveal(const QByteArray& path) override;

private:
    QDBusConnection m_bus;
    OpenFolder m_openFolder;
};

} // namespace tw
