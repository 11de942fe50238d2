// How Tidewick reads macOS's answers: the symbol's fit, a dismissed password
// prompt, and the Trash's map back to the paths asked for.

#include "TestMain.h"
#include "platform/MacAnswers.h"

#include <QTest>

using namespace tw;

class TestMacAnswers : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void symbolKeepsItsProportions()
    {
        // A wide symbol in a square box: full width, centred vertically.
        QCOMPARE(symbolFitRect({40, 20}, {32, 32}), QRectF(0, 8, 32, 16));
        // A tall one in a wide box, scaled up: full height, centred across.
        QCOMPARE(symbolFitRect({10, 20}, {64, 40}), QRectF(22, 0, 20, 40));
        QVERIFY(symbolFitRect({0, 20}, {32, 32}).isEmpty());
        QVERIFY(symbolFitRect({20, 20}, {32, 0}).isEmpty());
    }

    void cancelIsTheNumberNotTheWords()
    {
        QVERIFY(osascriptReportsCancel("0:312: execution error: User canceled. (-128)\n"));
        // The same refusal on a German system.
        QVERIFY(osascriptReportsCancel("0:312: execution error: Vom Benutzer abgebrochen. (-128)\n"));
        QVERIFY(!osascriptReportsCancel("0:312: execution error: mv: /Users/a/b: Operation not permitted (1)\n"));
        // A name that holds the number does not close the line.
        QVERIFY(!osascriptReportsCancel("execution error: mv: /tmp/(-128): Permission denied (1)"));
        QVERIFY(!osascriptReportsCancel(""));
    }

    void trashAnswerMapsBackToTheBytesAsked()
    {
        const QByteArray latin1Name = "/Users/a/caf\xe9";
        const QList<QByteArray> asked{"/Users/a/folder", latin1Name, "/Users/a/stayed"};
        const auto moved = movedAsAsked(asked, {{"/Users/a/folder/", "/Users/a/.Trash/folder"},
                                                {latin1Name, "/Users/a/.Trash/caf\xe9"},
                                                {"/Users/a/never-asked", "/Users/a/.Trash/never-asked"}});
        QCOMPARE(moved.size(), 2);
        QCOMPARE(moved.value("/Users/a/folder"), QByteArray("/Users/a/.Trash/folder"));
        QCOMPARE(moved.value(latin1Name), QByteArray("/Users/a/.Trash/caf\xe9"));
        QVERIFY(!moved.contains("/Users/a/stayed"));
        // Doubled slashes in the question still find their answer.
        QCOMPARE(movedAsAsked({"/Users//a/x"}, {{"/Users/a/x", "/t/x"}}).value("/Users//a/x"), QByteArray("/t/x"));
        QVERIFY(movedAsAsked(asked, {}).isEmpty());
    }
};

TIDEWICK_TEST_MAIN(TestMacAnswers)
#include "tst_macanswers.moc"
