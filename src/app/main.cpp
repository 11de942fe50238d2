#include "analytics/Analytics.h"
#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "platform/SystemAppearance.h"
#include "platform/WindowChrome.h"
#include "localization/LocalizationManager.h"
#include "screens/ScreensSetup.h"
#include "sponsored/AdService.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QScreen>
#include <QUrl>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(QStringLiteral("Tidewick"));
    QGuiApplication::setApplicationName(QStringLiteral("Tidewick"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TIDEWICK_VERSION));
    QGuiApplication::setQuitOnLastWindowClosed(tw::AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    // One look everywhere; the screens draw their own controls over it.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_CONTROLS_STYLE"))
        QQuickStyle::setStyle(QStringLiteral("Fusion"));

    tw::AppDelegate delegate;
    delegate.applicationDidFinishLaunching();

    // Lives as long as the window: made before the engine, destroyed after it.
    tw::AppState state;
    tw::AdService ads(tw::LocalizationManager::shared());
    // The screens follow the system's light or dark look and accent, live.
    const std::unique_ptr<tw::SystemAppearance> appearance = tw::makeSystemAppearance();
    QQmlApplicationEngine engine;
    tw::installScreens(engine, appearance.get());
    engine.setInitialProperties({{QStringLiteral("appState"), QVariant::fromValue(&state)},
                                 {QStringLiteral("adService"), QVariant::fromValue(&ads)}});
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &app,
        [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    // Qt 6.4 has no loadFromModule: load the root file by its resource URL.
    engine.load(QUrl(QStringLiteral("qrc:/Tidewick/Main.qml")));
    if (!engine.rootObjects().isEmpty()) {
        if (auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().first())) {
            // Centred on its screen at the smallest size the layout allows,
            // before the chrome puts the window's view on the material.
            window->setPosition(window->screen()->availableGeometry().center() - window->frameGeometry().center() +
                                window->position());
            window->setProperty("leadingInset", tw::applyWindowChrome(*window));
        }
    }
    const int status = QGuiApplication::exec();
    // Writes what is queued and stops the sender while Qt is still whole.
    tw::Analytics::configure(nullptr);
    return status;
}
