#include "platform/linux/PortalAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>

namespace tw {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
// GNOME's own settings, which its portal passes on: the older way of saying
// "no animations".
const QString kGnomeGroup = QStringLiteral("org.gnome.desktop.interface");

using SettingGroups = QMap<QString, QVariantMap>;

// A value as it arrives: plain, or still wrapped in a variant.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>() && value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

PortalAppearance::PortalAppearance(QDBusConnection bus, QObject* parent)
    : SystemAppearance(parent), m_bus(std::move(bus))
{
    qDBusRegisterMetaType<SettingGroups>();
    // The slot's argument type must be known before the connection looks it
    // up, or the first connection in the process quietly fails.
    qRegisterMetaType<QDBusVariant>();
    connect(&m_palette, &SystemAppearance::changed, this, [this] {
        if (!m_prefersDark)
            Q_EMIT changed();
    });
    // From whoever sends it on the portal's path and interface: the match by
    // well-known name misses signals until the name's owner is known.
    m_bus.connect(QString(), kPath, kInterface, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));

    // Asked without waiting: the window shows at once, in the palette's look
    // until the answer comes (a missing portal answers with an error).
    QDBusMessage readAll = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
    readAll << QStringList{kGroup, kGnomeGroup};
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(readAll, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        call->deleteLater();
        const QDBusPendingReply<SettingGroups> reply = *call;
        if (reply.isError())
            return;
        bool any = false;
        for (const QString& group : {kGroup, kGnomeGroup}) {
            const QVariantMap settings = reply.value().value(group);
            for (auto it = settings.cbegin(); it != settings.cend(); ++it)
                any |= take(group, it.key(), it.value());
        }
        if (any)
            Q_EMIT changed();
    });
}

Appearance PortalAppearance::current() const
{
    return {m_prefersDark ? *m_prefersDark : m_palette.current().dark, m_accent,
            reducedMotionWish(m_reducedMotion, m_gnomeAnimations)};
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    if (take(group, key, value.variant()))
        Q_EMIT changed();
}

bool PortalAppearance::take(const QString& group, const QString& key, const QVariant& given)
{
    const QVariant value = unwrapped(given);
    const Appearance before = current();
    bool ok = false;
    if (group == kGnomeGroup) {
        if (key != QLatin1String("enable-animations"))
            return false;
        m_gnomeAnimations = value.typeId() == QMetaType::Bool ? std::optional<bool>(value.toBool()) : std::nullopt;
    } else if (group != kGroup) {
        return false;
    } else if (key == QLatin1String("reduced-motion")) {
        const uint reduced = value.toUInt(&ok);
        m_reducedMotion = ok ? std::optional<quint32>(reduced) : std::nullopt;
    } else if (key == QLatin1String("color-scheme")) {
        // 1 prefers dark, 2 prefers light, anything else no preference.
        const uint scheme = value.toUInt(&ok);
        m_prefersDark = ok && scheme == 1 ? std::optional<bool>(true)
                        : ok && scheme == 2 ? std::optional<bool>(false)
                                            : std::nullopt;
    } else if (key == QLatin1String("accent-color")) {
        // (ddd): red, green and blue in 0...1; outside that range, no accent.
        m_accent.reset();
        if (value.canConvert<QDBusArgument>()) {
            const auto argument = value.value<QDBusArgument>();
            double red = -1, green = -1, blue = -1;
            argument.beginStructure();
            argument >> red >> green >> blue;
            argument.endStructure();
            m_accent = accentFromComponents(red, green, blue);
        }
    } else {
        return false;
    }
    return current() != before;
}

std::unique_ptr<SystemAppearance> makeSystemAppearance()
{
    return std::make_unique<PortalAppearance>(QDBusConnection::sessionBus());
}

} // namespace tw
