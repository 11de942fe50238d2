// QML reaches the texts through the Loc singleton, and its bindings follow a
// change of language.

#include "TestMain.h"
#include "localization/LocalizationManager.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QStandardPaths>

using namespace tw;

class LocalizationQmlTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The shared manager keeps its choice in QSettings: not the user's own.
        QStandardPaths::setTestModeEnabled(true);
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    }

    void bindingsFollowTheLanguage()
    {
        LocalizationManager::shared().setCurrent(Language::english);
        QQmlEngine engine;
        engine.addImportPath(QStringLiteral("qrc:/"));
        QQmlComponent component(&engine);
        component.setData(R"(
            import QtQml
            import Tidewick
            QtObject {
                property string label: Loc.strings["mode.folder"]
                property string size: Loc.formatBytes(1500000000)
                property string nothing: Loc.formatBytes(NaN)
                property string huge: Loc.formatBytes(1e30)
                property string share: Loc.percentText(4.26, 100)
                property string missing: Loc.string("no.such.key")
                property int count: Loc.languages.length
                property string german: Loc.languages[2].name
            })", QUrl());
        std::unique_ptr<QObject> object(component.create());
        QVERIFY2(object, qPrintable(component.errorString()));
        QCOMPARE(object->property("label").toString(), QStringLiteral("Disk Analysis"));
        QVERIFY(object->property("size").toString().endsWith(QStringLiteral(" GB")));
        QCOMPARE(object->property("share").toString(), QStringLiteral("4.3%"));
        QCOMPARE(object->property("nothing").toString(), QStringLiteral("Zero KB"));
        QVERIFY(object->property("huge").toString().endsWith(QStringLiteral(" TB")));
        QCOMPARE(object->property("missing").toString(), QStringLiteral("no.such.key"));
        QCOMPARE(object->property("count").toInt(), 4);
        QCOMPARE(object->property("german").toString(), QStringLiteral("Deutsch"));

        LocalizationManager::shared().setCurrent(Language::german);
        QCOMPARE(object->property("label").toString(), QStringLiteral("Festplattenanalyse"));
        LocalizationManager::shared().setCurrent(Language::english);
    }
};

TIDEWICK_TEST_MAIN(LocalizationQmlTest)
#include "tst_localization_qml.moc"
