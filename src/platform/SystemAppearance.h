#pragma once

#include <QColor>
#include <QObject>

#include <memory>
#include <optional>

namespace tw {

// The look the user chose for the whole system: light or dark, and an
// accent colour when the system names one.
struct Appearance {
    bool dark = false;
    std::optional<QColor> accent; // the system's default blue when absent
    bool reduceMotion = false;    // the user asked the system for less motion

    bool operator==(const Appearance&) const = default;
};

// Reports the system's appearance and announces every change while the
// program runs, so the screens follow without a restart. GUI thread.
class SystemAppearance : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;
    [[nodiscard]] virtual Appearance current() const = 0;

Q_SIGNALS:
    void changed();
};

// The platform's own: on macOS the application's effective appearance and
// the control accent colour, observed; elsewhere the freedesktop settings
// portal, and the Qt palette where there is no portal.
[[nodiscard]] std::unique_ptr<SystemAppearance> makeSystemAppearance();

// An appearance that is whatever it was last told: for the tools that render
// the screens in a chosen look, and for tests.
class ChosenAppearance final : public SystemAppearance {
    Q_OBJECT

public:
    explicit ChosenAppearance(Appearance appearance = {}, QObject* parent = nullptr)
        : SystemAppearance(parent), m_appearance(appearance)
    {
    }
    [[nodiscard]] Appearance current() const override { return m_appearance; }
    // Announces the change when it is one.
    void set(const Appearance& appearance);

private:
    Appearance m_appearance;
};

// Follows the application's palette: dark when its window is darker than its
// text. The fallback where the system tells nothing else.
class PaletteAppearance final : public SystemAppearance {
    Q_OBJECT

public:
    explicit PaletteAppearance(QObject* parent = nullptr);
    [[nodiscard]] Appearance current() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

// Shared decisions of the platforms' readers.
// An accent from sRGB components in 0...1; none when any is outside (the
// freedesktop way of saying "no accent").
[[nodiscard]] std::optional<QColor> accentFromComponents(double red, double green, double blue);
// Whether a palette with this window and text colour is a dark one.
[[nodiscard]] bool isDarkPalette(const QColor& window, const QColor& text);
// The freedesktop wish for less motion: the settings portal's own
// "reduced-motion" (1 reduced, 0 none) where it has one, else GNOME's
// "enable-animations" turned off.
[[nodiscard]] bool reducedMotionWish(std::optional<quint32> portalReducedMotion,
                                     std::optional<bool> gnomeAnimations);
// Whether the screens leave out motion: TIDEWICK_REDUCE_MOTION ("1" or "0",
// given as `override`) wins over the system's wish, for systems that tell
// none and for trying either way.
[[nodiscard]] bool reducesMotion(const Appearance& system, const QByteArray& override);
// Whether the name of the appearance the system matched is a dark one
// ("NSAppearanceNameDarkAqua"), as opposed to "NSAppearanceNameAqua".
[[nodiscard]] bool isDarkAppearanceName(const QString& name);

} // namespace tw
