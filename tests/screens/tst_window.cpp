// The window under a user's hands, at the scale factor the test is started
// with (ctest runs it at 1 and at 2): sizes in points, the keyboard, keys
// that act only where their control stands, names for screen readers, hover
// around menus, focus changes and the tooltip, and the banner of unreadable
// folders. Any QML warning fails the test that produced it.

#include "TestMain.h"
#include "ScreensHarness.h"

#include <QAccessible>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

namespace {

QString accessibleName(QQuickItem* item)
{
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(item);
    return face ? face->text(QAccessible::Name) : QString();
}

// Every item below `at` that is a visible button.
void visibleButtons(QQuickItem* at, QList<QQuickItem*>& found)
{
    if (!at->isVisible())
        return;
    if (at->inherits("QQuickAbstractButton"))
        found.append(at);
    for (QQuickItem* child : at->childItems())
        visibleButtons(child, found);
}

// The names Tab gives focus to, `presses` times over.
QStringList tabThrough(Window& w, int presses)
{
    QStringList reached;
    for (int i = 0; i < presses; ++i) {
        w.key(Qt::Key_Tab);
        reached.append(w.view.activeFocusItem() ? w.view.activeFocusItem()->objectName() : QString());
    }
    return reached;
}

} // namespace

class WindowTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FakeVolume m_volume;
    FakeAccess m_access;
    QByteArray m_tree;
    QByteArray m_many;

    void activate(Window& w)
    {
        w.view.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&w.view));
    }

private Q_SLOTS:
    void initTestCase()
    {
        prepareScreens();
        qInfo("device pixel ratio %.1f", qGuiApp->devicePixelRatio());
        m_tree = makeHomeTree(m_dir.path());
        writeFile(m_tree + "/movie", 900 * 1024);
        makeChain(m_tree + "/chain", 130, "c"); // deeper than a walk goes: the last folder cannot be read
        m_many = makeTree(QFile::encodeName(m_dir.path()) + "/many", {});
        for (int i = 0; i < 40; ++i)
            writeFile(m_many + "/f" + QByteArray::number(i), 4096 * (1 + i));
    }

    void init() { recordWarningsFromHere(); }
    void cleanup() { failOnRecordedWarnings(); }

    void sizesAreInPoints()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_many));
        // Forty children: the list stops at twelve rows.
        QCOMPARE(w.item("largestList")->property("count").toInt(), 12);
        QTest::qWait(20);
        const QList<QQuickItem*> rows = w.listRows();
        QCOMPARE(rows.size(), 12);
        // A 16-point symbol beside two lines of text, padded 6 above and below.
        for (QQuickItem* row : rows)
            QVERIFY2(row->height() >= 36 && row->height() <= 46, qPrintable(QString::number(row->height())));
        // The delete dialog's symbol is 30 points at any scale.
        w.state->setDeleteCandidate(w.state->root().sibling(&*w.state->root()->children().begin()));
        QTRY_VERIFY(w.shows("deleteSymbol"));
        QCOMPARE(w.item("deleteSymbol")->size(), QSizeF(30, 30));
    }

    void keysActOnlyWhereTheirControlStands()
    {
        Window w(m_volume, m_access);
        activate(w);
        auto* picker = w.view.rootObject()->findChild<QObject*>(QStringLiteral("folderDialog"));
        QVERIFY(picker);
        const auto pickerOpen = [&] { return picker->property("visible").toBool(); };

        // Tab reaches the welcome screen's buttons.
        QStringList reached = tabThrough(w, 8);
        for (const char* name : {"scanMacButton", "scanHomeButton", "pickFolderButton"})
            QVERIFY2(reached.contains(QLatin1String(name)), qPrintable(reached.join(u' ')));

        // Scanning: Ctrl+O does not replace the scan; Escape cancels it. A
        // large system folder, so the walk is still running when the keys come.
        w.state->requestScan(QByteArrayLiteral("/usr"));
        QCOMPARE(w.state->phase(), AppState::Phase::scanning);
        w.key(Qt::Key_O, Qt::ControlModifier);
        QVERIFY(!pickerOpen());
        w.key(Qt::Key_Escape);
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);

        // Welcome: Ctrl+O opens the picker.
        w.key(Qt::Key_O, Qt::ControlModifier);
        QTRY_VERIFY(pickerOpen());
        QMetaObject::invokeMethod(picker, "reject");
        QTRY_VERIFY(!pickerOpen());

        // The chart: Backspace and Ctrl+Up go up, Ctrl+O does nothing.
        QVERIFY(w.scan(m_tree));
        QVERIFY(w.state->focusOn(w.node("docs/deep")));
        w.key(Qt::Key_Backspace);
        QCOMPARE(w.state->focus(), w.node("docs"));
        w.key(Qt::Key_Up, Qt::ControlModifier);
        QCOMPARE(w.state->focus(), w.state->root());
        w.key(Qt::Key_O, Qt::ControlModifier);
        QVERIFY(!pickerOpen());

        // Behind the delete dialog no key of the screen acts, and Tab stays
        // with the dialog's buttons.
        QVERIFY(w.state->focusOn(w.node("docs")));
        w.state->setDeleteCandidate(w.node("docs/report"));
        QTRY_COMPARE(w.item("deleteCard")->opacity(), 1.0);
        w.key(Qt::Key_Backspace);
        w.key(Qt::Key_O, Qt::ControlModifier);
        w.key(Qt::Key_R, Qt::ControlModifier);
        QVERIFY(!pickerOpen());
        QVERIFY(!w.state->isRefreshing());
        QCOMPARE(w.state->focus(), w.node("docs"));
        QCOMPARE(w.state->deleteCandidate(), w.node("docs/report"));
        reached = tabThrough(w, 4);
        reached.removeDuplicates();
        QCOMPARE(QSet<QString>(reached.begin(), reached.end()), (QSet<QString>{"deleteCancel", "deleteConfirm"}));
        w.key(Qt::Key_Escape);
        QVERIFY(!w.state->hasDeleteCandidate());

        // Every alert answers Return and Escape.
        for (const int key : {Qt::Key_Return, Qt::Key_Escape}) {
            w.state->setErrorMessage(QStringLiteral("Operation not permitted"));
            QTRY_VERIFY(w.shows("alertMessage"));
            w.key(key);
            QVERIFY(!w.state->hasErrorMessage());
            QTRY_VERIFY(!w.shows("alertMessage"));
        }
        w.state->setConfirmThinSnapshots(true);
        QTRY_VERIFY(w.shows("alertMessage"));
        w.key(Qt::Key_Escape);
        QVERIFY(!w.state->confirmThinSnapshots());
    }

    void largestListByKeyboardAndScreenReader()
    {
        Window w(m_volume, m_access);
        activate(w);
        QVERIFY(w.scan(m_tree));
        QQuickItem* list = w.item("largestList");
        list->forceActiveFocus(Qt::TabFocusReason);
        // The first row is where the keys start; Down moves on, naming each.
        QTRY_COMPARE(w.state->hovered(), w.node("movie"));
        for (const auto& [key, name] : {std::pair{Qt::Key_Down, "docs"}, {Qt::Key_Up, "movie"}, {Qt::Key_Down, "docs"}}) {
            w.key(key);
            QCOMPARE(w.state->hovered(), w.node(name));
        }
        // A row reads out its name, size and share.
        const QString said = accessibleName(list->property("currentItem").value<QQuickItem*>());
        QVERIFY2(said.startsWith(QStringLiteral("docs, ")) && said.endsWith(u'%'), qPrintable(said));
        w.key(Qt::Key_Return);
        QCOMPARE(w.state->focus(), w.node("docs"));

        // Every button on the chart screen has a name, icon-only ones too.
        QList<QQuickItem*> buttons;
        visibleButtons(w.view.contentItem(), buttons);
        QVERIFY(buttons.size() >= 8);
        for (QQuickItem* button : buttons)
            QVERIFY2(!accessibleName(button).isEmpty(), qPrintable(button->objectName()));
        QCOMPARE(accessibleName(w.item("upButton")), QStringLiteral("Up"));
    }

    void hoverAroundMenusAndTheTooltip()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        FileNode* docs = w.node("docs").get();
        FileNode* movie = w.node("movie").get();
        QQuickItem* tooltip = w.item("tooltip");
        auto* chart = w.item("sunburst");

        // Wherever the hovered sector lies, the tooltip does not cover it.
        for (FileNode* node : {docs, movie, w.node("docs/report").get()}) {
            w.moveTo(w.pointOf(node));
            QCOMPARE(w.state->hovered().get(), node);
            QTest::qWait(30);
            const QRectF card = tooltip->mapRectToItem(chart, QRectF(0, 0, tooltip->width(), tooltip->height()));
            bool meets = true;
            QMetaObject::invokeMethod(chart, "hoveredSectorMeets", Q_RETURN_ARG(bool, meets), Q_ARG(QRectF, card));
            QVERIFY2(!meets, qPrintable(node->displayName()));
        }
        // Onto the hub: the card fades out with the last texts it had (a
        // loaded machine may skip every frame between full and none).
        QTRY_COMPARE(tooltip->opacity(), 1.0);
        w.moveTo(w.chartCentre());
        QVERIFY(!w.state->hovered());
        QTRY_VERIFY(tooltip->opacity() < 1);
        QCOMPARE(tooltip->property("info").toMap().value(QStringLiteral("name")).toString(), QStringLiteral("report"));

        // A menu's subject stays hovered while the menu is open.
        auto* menu = w.view.rootObject()->findChild<QObject*>(QStringLiteral("chartMenu"));
        w.moveTo(w.pointOf(movie));
        w.click(w.pointOf(movie), Qt::RightButton);
        QTRY_VERIFY(menu->property("visible").toBool());
        QTest::mouseMove(&w.view, w.pointOf(docs));
        QTest::mouseMove(&w.view, QPoint(5, 5));
        QTest::qWait(30);
        QCOMPARE(w.state->hovered().get(), movie);
        QMetaObject::invokeMethod(menu, "close");
        QTRY_VERIFY(!menu->property("visible").toBool());

        // The pointer leaves the window: nothing stays hovered.
        w.moveTo(w.pointOf(docs));
        QCOMPARE(w.state->hovered().get(), docs);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&w.view, &leave);
        QVERIFY(!w.state->hovered());
    }

    void unreadableFoldersAreCountedAndMarked()
    {
        // Where the grant exists or there is none to give: the plain notice.
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        QCOMPARE(w.state->inaccessibleCount(), 1);
        QVERIFY(w.shows("unreadableBanner"));
        QVERIFY(!w.shows("fdaBanner"));
        const auto inBanner = [&](const char* name) {
            return w.item("unreadableBanner")->findChild<QQuickItem*>(QLatin1String(name));
        };
        QVERIFY(!inBanner("bannerOpenSettings")->isVisible());
        QCOMPARE(inBanner("bannerTitle")->property("text").toString(), QStringLiteral("Some folders could not be read (1)"));
        // The folder itself says so in the tooltip.
        FileNode* unreadable = w.node("chain").get();
        while (unreadable && unreadable->hasChildren())
            unreadable = &*unreadable->children().begin();
        QVERIFY(unreadable && unreadable->isInaccessible());
        w.state->setHovered(w.state->root().sibling(unreadable));
        QTRY_VERIFY(w.shows("tooltipUnreadable"));
        w.state->setHovered(w.node("movie"));
        QVERIFY(!w.shows("tooltipUnreadable"));

        // Without the grant: the Full Disk Access banner instead.
        FakeAccess missing;
        missing.granted = false;
        Window without(m_volume, missing);
        QVERIFY(without.scan(m_tree));
        QVERIFY(without.shows("fdaBanner"));
        QVERIFY(!without.shows("unreadableBanner"));
    }
};

TIDEWICK_TEST_MAIN(WindowTest)
#include "tst_window.moc"
