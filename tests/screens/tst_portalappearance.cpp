// The appearance from the freedesktop settings portal: a fake portal on a
// private session bus answers ReadAll and announces changes; where it has
// no preference, or no portal runs, the Qt palette decides.

#include "TestMain.h"
#include "PrivateSessionBus.h"
#include "platform/linux/PortalAppearance.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>
#include <QSignalSpy>
#include <QtTest>

using namespace tw;

namespace {

// The portal's "accent-color": (ddd).
struct Rgb {
    double red = 0, green = 0, blue = 0;
};
QDBusArgument& operator<<(QDBusArgument& argument, const Rgb& rgb)
{
    argument.beginStructure();
    argument << rgb.red << rgb.green << rgb.blue;
    argument.endStructure();
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, Rgb& rgb)
{
    argument.beginStructure();
    argument >> rgb.red >> rgb.green >> rgb.blue;
    argument.endStructure();
    return argument;
}

using SettingGroups = QMap<QString, QVariantMap>;

const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface");

class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    QVariantMap settings;
    QVariantMap gnome; // GNOME's own, which its portal passes on

public Q_SLOTS:
    SettingGroups ReadAll(const QStringList& groups)
    {
        SettingGroups answer;
        if (groups.contains(kGroup))
            answer[kGroup] = settings;
        if (groups.contains(kGnome) && !gnome.isEmpty())
            answer[kGnome] = gnome;
        return answer;
    }

Q_SIGNALS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

} // namespace

Q_DECLARE_METATYPE(Rgb)

class PortalAppearanceTest : public QObject {
    Q_OBJECT

private:
    test::PrivateSessionBus m_bus;

private Q_SLOTS:
    void initTestCase()
    {
        qDBusRegisterMetaType<Rgb>();
        qDBusRegisterMetaType<SettingGroups>();
        m_bus.start();
    }
    void cleanup() { QGuiApplication::setPalette(QPalette()); }

    void readsAndFollowsThePortal_data()
    {
        QTest::addColumn<bool>("portal");
        QTest::addColumn<QVariantMap>("settings");
        QTest::addColumn<bool>("darkPalette");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<QColor>("accent"); // invalid: none
        QTest::addColumn<QVariantMap>("gnome");
        QTest::addColumn<bool>("reduceMotion");
        const auto scheme = [](uint value) { return QVariant::fromValue(value); };
        const auto rgb = [](double r, double g, double b) { return QVariant::fromValue(Rgb{r, g, b}); };
        const QVariantMap stillGnome{{"enable-animations", false}};
        QTest::newRow("prefers dark, with accent")
            << true << QVariantMap{{"color-scheme", scheme(1)}, {"accent-color", rgb(0.2, 0.4, 0.6)}} << false
            << true << QColor::fromRgbF(0.2F, 0.4F, 0.6F) << QVariantMap{} << false;
        QTest::newRow("prefers light over a dark palette, reduced motion")
            << true << QVariantMap{{"color-scheme", scheme(2)}, {"reduced-motion", scheme(1)}} << true << false
            << QColor() << QVariantMap{} << true;
        QTest::newRow("no preference: the palette; GNOME without animations")
            << true << QVariantMap{{"color-scheme", scheme(0)}, {"accent-color", rgb(1.5, 0, 0)}} << true << true
            << QColor() << stillGnome << true;
        QTest::newRow("the portal's motion wins over GNOME's")
            << true << QVariantMap{{"reduced-motion", scheme(0)}} << false << false << QColor() << stillGnome << false;
        QTest::newRow("no portal: the palette") << false << QVariantMap{} << true << true << QColor() << QVariantMap{}
                                                << false;
    }
    void readsAndFollowsThePortal()
    {
        QFETCH(bool, portal);
        QFETCH(QVariantMap, settings);
        QFETCH(bool, darkPalette);
        QFETCH(bool, dark);
        QFETCH(QColor, accent);
        if (darkPalette) {
            QPalette palette;
            palette.setColor(QPalette::Window, QColor(0x30, 0x30, 0x30));
            palette.setColor(QPalette::WindowText, QColor(0xf0, 0xf0, 0xf0));
            QGuiApplication::setPalette(palette);
        }

        QDBusConnection service = m_bus.connect("portal");
        FakePortal fake;
        fake.settings = settings;
        QFETCH(QVariantMap, gnome);
        fake.gnome = gnome;
        const auto unregister = qScopeGuard([&] {
            service.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
            service.unregisterObject(QStringLiteral("/org/freedesktop/portal/desktop"));
        });
        if (portal) {
            QVERIFY(service.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &fake,
                                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
            QVERIFY(service.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
        }
        PortalAppearance appearance(m_bus.connect("client"));
        QSignalSpy changes(&appearance, &SystemAppearance::changed);
        // The answer comes without waiting; with no portal, the error does.
        QTest::qWait(300);
        QCOMPARE(appearance.current().dark, dark);
        QCOMPARE(appearance.current().accent.value_or(QColor()), accent);
        QTEST(appearance.current().reduceMotion, "reduceMotion");

        if (portal) {
            // A change while running: the other look, then the accent taken away.
            const int before = int(changes.size());
            Q_EMIT fake.SettingChanged(kGroup, QStringLiteral("color-scheme"),
                                       QDBusVariant(QVariant::fromValue(uint(dark ? 2 : 1))));
            QTRY_COMPARE(appearance.current().dark, !dark);
            QVERIFY(changes.size() > before);
            Q_EMIT fake.SettingChanged(kGroup, QStringLiteral("accent-color"),
                                       QDBusVariant(QVariant::fromValue(Rgb{0.9, 0.1, 0.1})));
            QTRY_COMPARE(appearance.current().accent.value_or(QColor()), QColor::fromRgbF(0.9F, 0.1F, 0.1F));
            // Another group's news is not ours.
            Q_EMIT fake.SettingChanged(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("color-scheme"),
                                       QDBusVariant(QVariant::fromValue(uint(dark ? 1 : 2))));
            QTest::qWait(100);
            QCOMPARE(appearance.current().dark, !dark);
            // Asking for less motion while running.
            Q_EMIT fake.SettingChanged(kGroup, QStringLiteral("reduced-motion"),
                                       QDBusVariant(QVariant::fromValue(uint(1))));
            QTRY_VERIFY(appearance.current().reduceMotion);
        } else {
            // The palette's own change is followed.
            QGuiApplication::setPalette(QPalette());
            QTRY_COMPARE(appearance.current().dark, false);
            QVERIFY(!changes.isEmpty());
        }
    }
};

TIDEWICK_TEST_MAIN(PortalAppearanceTest)
#include "tst_portalappearance.moc"
