#include "platform/SystemAppearance.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace tw {

void ChosenAppearance::set(const Appearance& appearance)
{
    if (appearance == m_appearance)
        return;
    m_appearance = appearance;
    Q_EMIT changed();
}

PaletteAppearance::PaletteAppearance(QObject* parent) : SystemAppearance(parent)
{
    if (QCoreApplication* app = QCoreApplication::instance())
        app->installEventFilter(this);
}

Appearance PaletteAppearance::current() const
{
    const QPalette palette = QGuiApplication::palette();
    return {isDarkPalette(palette.color(QPalette::Window), palette.color(QPalette::WindowText)), std::nullopt};
}

bool PaletteAppearance::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == QCoreApplication::instance() && event->type() == QEvent::ApplicationPaletteChange)
        Q_EMIT changed();
    return false;
}

std::optional<QColor> accentFromComponents(double red, double green, double blue)
{
    for (double component : {red, green, blue})
        if (!(component >= 0.0 && component <= 1.0)) // NaN too
            return std::nullopt;
    return QColor::fromRgbF(float(red), float(green), float(blue));
}

bool isDarkPalette(const QColor& window, const QColor& text)
{
    return window.lightnessF() < text.lightnessF();
}

bool reducedMotionWish(std::optional<quint32> portalReducedMotion, std::optional<bool> gnomeAnimations)
{
    if (portalReducedMotion)
        return *portalReducedMotion == 1;
    return gnomeAnimations && !*gnomeAnimations;
}

bool reducesMotion(const Appearance& system, const QByteArray& override)
{
    const QByteArray given = override.trimmed();
    if (given == "1")
        return true;
    if (given == "0")
        return false;
    return system.reduceMotion;
}

bool isDarkAppearanceName(const QString& name)
{
    return name.contains(QLatin1String("Dark"));
}

} // namespace tw
