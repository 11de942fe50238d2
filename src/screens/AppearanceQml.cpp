#include "screens/AppearanceQml.h"

#include "platform/SystemAppearance.h"

namespace tw {

namespace {
const char* const kSourceProperty = "tidewickAppearance";
}

AppearanceQml::AppearanceQml(SystemAppearance* source, QObject* parent) : QObject(parent), m_source(source)
{
    if (source)
        connect(source, &SystemAppearance::changed, this, &AppearanceQml::changed);
}

AppearanceQml* AppearanceQml::create(QQmlEngine* engine, QJSEngine*)
{
    auto* source = qobject_cast<SystemAppearance*>(engine->property(kSourceProperty).value<QObject*>());
    return new AppearanceQml(source);
}

void AppearanceQml::setSource(QQmlEngine& engine, SystemAppearance* source)
{
    engine.setProperty(kSourceProperty, QVariant::fromValue<QObject*>(source));
}

bool AppearanceQml::dark() const
{
    return m_source && m_source->current().dark;
}

QColor AppearanceQml::accent() const
{
    return accentColour(m_source ? m_source->current() : Appearance{});
}

bool AppearanceQml::reduceMotion() const
{
    return reducesMotion(m_source ? m_source->current() : Appearance{},
                         qgetenv("TIDEWICK_REDUCE_MOTION"));
}

QColor accentColour(const Appearance& appearance)
{
    if (appearance.accent)
        return *appearance.accent;
    return appearance.dark ? QColor(0x0a, 0x84, 0xff) : QColor(0x00, 0x7a, 0xff);
}

} // namespace tw
