#pragma once

#include "platform/SystemAppearance.h"

#include <QDBusConnection>
#include <QDBusVariant>

#include <optional>

namespace tw {

// The freedesktop settings portal's appearance ("org.freedesktop.appearance":
// "color-scheme", "accent-color" and "reduced-motion", with GNOME's
// "enable-animations" where the portal has no "reduced-motion") on `bus`, read once without waiting and
// then followed through its SettingChanged signal. Until the portal answers,
// and where it has no preference or no portal runs, the Qt palette decides
// light or dark. GUI thread.
class PortalAppearance final : public SystemAppearance {
    Q_OBJECT

public:
    explicit PortalAppearance(QDBusConnection bus, QObject* parent = nullptr);
    [[nodiscard]] Appearance current() const override;

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    // Takes one setting of the appearance group; true when it changed anything.
    bool take(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection m_bus;
    PaletteAppearance m_palette;
    std::optional<bool> m_prefersDark; // none: no preference
    std::optional<QColor> m_accent;
    std::optional<quint32> m_reducedMotion;
    std::optional<bool> m_gnomeAnimations;
};

} // namespace tw
