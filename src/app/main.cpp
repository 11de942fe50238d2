#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QUrl>

Q_IMPORT_QML_PLUGIN(TidewickPlugin)

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(QStringLiteral("Tidewick"));
    QGuiApplication::setApplicationName(QStringLiteral("Tidewick"));
    // Closing the one window ends the program.
    QGuiApplication::setQuitOnLastWindowClosed(true);

    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/"));
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &app,
        [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    // Qt 6.4 has no loadFromModule: load the root file by its resource URL.
    engine.load(QUrl(QStringLiteral("qrc:/Tidewick/Main.qml")));
    return QGuiApplication::exec();
}
