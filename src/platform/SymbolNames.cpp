#include "platform/SymbolImages.h"

#include <array>
#include <utility>

namespace tw {

QString freedesktopIconName(const QString& symbol)
{
    // Symbolic (single-colour) icons, so that a tint gives them the symbol's colour.
    static constexpr std::array<std::pair<const char*, const char*>, 42> kTable{{
        {"folder.fill", "folder-symbolic"},
        {"folder", "folder-open-symbolic"},
        {"doc.fill", "text-x-generic-symbolic"},
        {"internaldrive", "drive-harddisk-symbolic"},
        {"house", "user-home-symbolic"},
        {"chevron.right", "go-next-symbolic"},
        {"chevron.left", "go-previous-symbolic"},
        {"chevron.down", "pan-down-symbolic"},
        {"sidebar.left", "sidebar-show-symbolic"},
        {"arrow.clockwise", "view-refresh-symbolic"},
        {"info.circle", "dialog-information-symbolic"},
        {"globe", "web-browser-symbolic"},
        {"checkmark", "object-select-symbolic"},
        {"clock.arrow.circlepath", "document-open-recent-symbolic"},
        {"lock.shield.fill", "security-high-symbolic"},
        {"exclamationmark.lock.fill", "changes-prevent-symbolic"},
        {"icloud", "weather-overcast-symbolic"},
        {"exclamationmark.triangle.fill", "dialog-warning-symbolic"},
        {"gearshape", "emblem-system-symbolic"},
        {"xmark", "window-close-symbolic"},
        {"trash", "user-trash-symbolic"},
        {"trash.fill", "user-trash-symbolic"},
        {"app.dashed", "application-x-executable-symbolic"},
        {"magnifyingglass", "edit-find-symbolic"},
        {"arrow.up.forward.app", "send-to-symbolic"},
        {"lock.shield", "security-high-symbolic"},
        {"app", "application-x-executable-symbolic"},
        {"app.fill", "application-x-executable-symbolic"},
        {"tray.full", "folder-documents-symbolic"},
        {"externaldrive.badge.timemachine", "drive-harddisk-system-symbolic"},
        {"slider.horizontal.3", "preferences-system-symbolic"},
        {"cube.box", "package-x-generic-symbolic"},
        {"cube.box.fill", "emblem-shared-symbolic"},
        {"applescript", "utilities-terminal-symbolic"},
        {"archivebox", "document-save-symbolic"},
        {"doc.text", "x-office-document-symbolic"},
        {"circle.grid.2x2", "view-app-grid-symbolic"},
        {"network", "network-server-symbolic"},
        {"bolt.horizontal", "system-run-symbolic"},
        {"bolt.fill", "applications-system-symbolic"},
        {"gearshape.2", "applications-engineering-symbolic"},
        {"arrow.up.right", "send-to-symbolic"},
    }};
    for (const auto& [sf, freedesktop] : kTable) {
        if (symbol == QLatin1String(sf))
            return QString::fromLatin1(freedesktop);
    }
    return {};
}

} // namespace tw
