#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QQmlEngine>

namespace tw {

class SystemAppearance;
struct Appearance;

// QML's view of the system's appearance, for Style: `Appearance.dark` and the
// accent colour to use. Each engine's comes from the SystemAppearance that
// installScreens() was given (light and the default accent without one), and
// follows its changes. GUI thread.
class AppearanceQml : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(Appearance)
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY changed)
    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
    // The screens leave out motion (see reducesMotion).
    Q_PROPERTY(bool reduceMotion READ reduceMotion NOTIFY changed)

public:
    explicit AppearanceQml(SystemAppearance* source, QObject* parent = nullptr);
    static AppearanceQml* create(QQmlEngine* engine, QJSEngine* script);
    // What create() reads: the appearance an engine's screens follow. The
    // appearance must outlive the engine.
    static void setSource(QQmlEngine& engine, SystemAppearance* source);

    [[nodiscard]] bool dark() const;
    [[nodiscard]] QColor accent() const;
    [[nodiscard]] bool reduceMotion() const;

Q_SIGNALS:
    void changed();

private:
    QPointer<SystemAppearance> m_source;
};

// The accent the screens use: the system's, else its default blue, which is
// a lighter blue in the dark.
[[nodiscard]] QColor accentColour(const Appearance& appearance);

} // namespace tw
