// The window under a user's hands, at the scale factor the test is started
// with (ctest runs it at 1 and at 2): sizes in points, the keyboard, keys
// that act only where their control stands, names for screen readers, hover
// around menus, focus changes and the tooltip, and the banner of unreadable
// folders. Any QML warning fails the test that produced it.

#include "TestMain.h"
#include "ScreensHarness.h"
#include "localization/LocalizationManager.h"

#include <QAccessible>
#include <QQuickStyle>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

namespace {

QQuickItem* focused(const Window& w)
{
    return w.view.activeFocusItem();
}

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

} // namespace

class WindowTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FixedVolume m_volume;
    Access m_access;
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
        // Deeper than a walk goes: the last folder cannot be read, whoever runs this.
        QByteArray chain = m_tree + "/chain";
        makeDir(chain);
        for (int i = 0; i < 130; ++i) {
            chain += "/c";
            makeDir(chain);
        }
        m_many = QFile::encodeName(m_dir.path()) + "/many";
        makeDir(m_many);
        for (int i = 0; i < 40; ++i)
            writeFile(m_many + "/f" + QByteArray::number(i), 4096 * (1 + i));
    }

    void init() { recordWarningsFromHere(); }
    void cleanup() { failOnRecordedWarnings(); }

    void sizesAreInPoints()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_many));
        QQuickItem* list = w.item("largestList");
        QCOMPARE(list->property("count").toInt(), 12);
        QTest::qWait(20);
        int rows = 0;
        for (QQuickItem* row : list->property("contentItem").value<QQuickItem*>()->childItems()) {
            if (!row->property("isHovered").isValid())
                continue;
            ++rows;
            // A 16-point symbol beside two lines of text, padded 6 above and below.
            QVERIFY2(row->height() >= 36 && row->height() <= 46, qPrintable(QString::number(row->height())));
        }
        QCOMPARE(rows, 12);
        // The delete dialog's symbol is 30 points at any scale.
        w.state->setDeleteCandidate(w.state->root().sibling(&*w.state->root()->children().begin()));
        QVERIFY(QTest::qWaitFor([&] { return w.shows("deleteSymbol"); }, 2000));
        QCOMPARE(w.item("deleteSymbol")->width(), 30.0);
        QCOMPARE(w.item("deleteSymbol")->height(), 30.0);
    }

    void keysActOnlyWhereTheirControlStands()
    {
        Window w(m_volume, m_access);
        activate(w);
        auto* picker = w.view.rootObject()->findChild<QObject*>(QStringLiteral("folderDialog"));
        QVERIFY(picker);
        const auto pickerOpen = [&] { return picker->property("visible").toBool(); };

        // Tab reaches the welcome screen's buttons.
        QStringList reached;
        for (int i = 0; i < 8; ++i) {
            QTest::keyClick(&w.view, Qt::Key_Tab);
            if (focused(w))
                reached.append(focused(w)->objectName());
        }
        for (const char* name : {"scanMacButton", "scanHomeButton", "pickFolderButton"})
            QVERIFY2(reached.contains(QLatin1String(name)), qPrintable(reached.join(u' ')));

        // Scanning: Ctrl+O does not replace the scan; Escape cancels it. A
        // large system folder, so the walk is still running when the keys come.
        w.state->requestScan(QByteArrayLiteral("/usr"));
        QCOMPARE(w.state->phase(), AppState::Phase::scanning);
        QTest::keyClick(&w.view, Qt::Key_O, Qt::ControlModifier);
        QVERIFY(!pickerOpen());
        QTest::keyClick(&w.view, Qt::Key_Escape);
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);

        // Welcome: Ctrl+O opens the picker.
        QTest::keyClick(&w.view, Qt::Key_O, Qt::ControlModifier);
        QVERIFY(QTest::qWaitFor(pickerOpen, 2000));
        QMetaObject::invokeMethod(picker, "reject");
        QVERIFY(QTest::qWaitFor([&] { return !pickerOpen(); }, 2000));

        // The chart: Backspace and Ctrl+Up go up, Ctrl+O does nothing.
        QVERIFY(w.scan(m_tree));
        FileNode* docs = child(w.state->root(), "docs");
        QVERIFY(w.state->focusOn(w.state->root().sibling(child(*docs, "deep"))));
        QTest::keyClick(&w.view, Qt::Key_Backspace);
        QCOMPARE(w.state->focus().get(), docs);
        QTest::keyClick(&w.view, Qt::Key_Up, Qt::ControlModifier);
        QCOMPARE(w.state->focus().get(), w.state->root().get());
        QTest::keyClick(&w.view, Qt::Key_O, Qt::ControlModifier);
        QVERIFY(!pickerOpen());

        // Behind the delete dialog no key of the screen acts, and Tab stays
        // with the dialog's buttons.
        QVERIFY(w.state->focusOn(w.state->root().sibling(docs)));
        w.state->setDeleteCandidate(w.state->root().sibling(child(*docs, "report")));
        QVERIFY(QTest::qWaitFor([&] { return w.item("deleteCard")->opacity() == 1; }, 2000));
        for (const auto& [key, modifiers] : {std::pair{Qt::Key_Backspace, Qt::NoModifier},
                                             {Qt::Key_O, Qt::ControlModifier},
                                             {Qt::Key_R, Qt::ControlModifier}})
            QTest::keyClick(&w.view, key, modifiers);
        QVERIFY(!pickerOpen());
        QVERIFY(!w.state->isRefreshing());
        QCOMPARE(w.state->focus().get(), docs);
        QCOMPARE(w.state->deleteCandidate().get(), child(*docs, "report"));
        reached.clear();
        for (int i = 0; i < 4; ++i) {
            QTest::keyClick(&w.view, Qt::Key_Tab);
            reached.append(focused(w) ? focused(w)->objectName() : QString());
        }
        QVERIFY2(reached.contains(QStringLiteral("deleteCancel")) && reached.contains(QStringLiteral("deleteConfirm")),
                 qPrintable(reached.join(u' ')));
        for (const QString& name : reached)
            QVERIFY2(name == QLatin1String("deleteCancel") || name == QLatin1String("deleteConfirm"),
                     qPrintable(name));
        QTest::keyClick(&w.view, Qt::Key_Escape);
        QVERIFY(!w.state->hasDeleteCandidate());

        // Every alert answers Return and Escape.
        for (const int key : {Qt::Key_Return, Qt::Key_Escape}) {
            w.state->setErrorMessage(QStringLiteral("Operation not permitted"));
            QVERIFY(QTest::qWaitFor([&] { return w.shows("alertMessage"); }, 2000));
            QTest::keyClick(&w.view, Qt::Key(key));
            QVERIFY(!w.state->hasErrorMessage());
            QVERIFY(QTest::qWaitFor([&] { return !w.shows("alertMessage"); }, 2000));
        }
        w.state->setConfirmThinSnapshots(true);
        QVERIFY(QTest::qWaitFor([&] { return w.shows("alertMessage"); }, 2000));
        QTest::keyClick(&w.view, Qt::Key_Escape);
        QVERIFY(!w.state->confirmThinSnapshots());
    }

    void largestListByKeyboardAndScreenReader()
    {
        Window w(m_volume, m_access);
        activate(w);
        QVERIFY(w.scan(m_tree));
        QQuickItem* list = w.item("largestList");
        list->forceActiveFocus(Qt::TabFocusReason);
        const NodeRef root = w.state->root();
        // The first row is where the keys start; Down moves on, naming each.
        QTRY_COMPARE(w.state->hovered().get(), child(root, "movie"));
        QTest::keyClick(&w.view, Qt::Key_Down);
        QCOMPARE(w.state->hovered().get(), child(root, "docs"));
        QTest::keyClick(&w.view, Qt::Key_Up);
        QCOMPARE(w.state->hovered().get(), child(root, "movie"));
        QTest::keyClick(&w.view, Qt::Key_Down);
        // A row reads out its name, size and share.
        QQuickItem* row = list->property("currentItem").value<QQuickItem*>();
        const QString said = accessibleName(row);
        QVERIFY2(said.startsWith(QStringLiteral("docs, ")) && said.endsWith(u'%'), qPrintable(said));
        QTest::keyClick(&w.view, Qt::Key_Return);
        QCOMPARE(w.state->focus().get(), child(root, "docs"));

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
        const NodeRef root = w.state->root();
        FileNode* docs = child(root, "docs");
        FileNode* movie = child(root, "movie");
        QQuickItem* tooltip = w.item("tooltip");
        auto* chart = w.item("sunburst");

        // Wherever the hovered sector lies, the tooltip does not cover it.
        for (FileNode* node : {docs, movie, child(*docs, "report")}) {
            w.moveTo(w.pointOf(node));
            QCOMPARE(w.state->hovered().get(), node);
            QTest::qWait(30);
            const QRectF card = tooltip->mapRectToItem(chart, QRectF(0, 0, tooltip->width(), tooltip->height()));
            bool meets = true;
            QMetaObject::invokeMethod(chart, "hoveredSectorMeets", Q_RETURN_ARG(bool, meets), Q_ARG(QRectF, card));
            QVERIFY2(!meets, qPrintable(node->displayName()));
        }
        // Onto the hub: the card fades out with the last texts it had.
        QVERIFY(QTest::qWaitFor([&] { return tooltip->opacity() == 1.0; }, 2000));
        w.moveTo(w.chartCentre());
        QVERIFY(!w.state->hovered());
        QVERIFY(QTest::qWaitFor([&] { return tooltip->opacity() > 0 && tooltip->opacity() < 1; }, 2000));
        QCOMPARE(tooltip->property("info").toMap().value(QStringLiteral("name")).toString(),
                 QStringLiteral("report"));

        // A menu's subject stays hovered while the menu is open.
        auto* menu = w.view.rootObject()->findChild<QObject*>(QStringLiteral("chartMenu"));
        w.moveTo(w.pointOf(movie));
        QTest::mouseClick(&w.view, Qt::RightButton, {}, w.pointOf(movie));
        QVERIFY(QTest::qWaitFor([&] { return menu->property("visible").toBool(); }, 2000));
        QTest::mouseMove(&w.view, w.pointOf(docs));
        QTest::mouseMove(&w.view, QPoint(5, 5));
        QTest::qWait(30);
        QCOMPARE(w.state->hovered().get(), movie);
        QMetaObject::invokeMethod(menu, "close");
        QVERIFY(QTest::qWaitFor([&] { return !menu->property("visible").toBool(); }, 2000));

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
        QVERIFY(!w.item("unreadableBanner")->findChild<QQuickItem*>(QStringLiteral("bannerOpenSettings"))->isVisible());
        QVERIFY(w.item("unreadableBanner")->findChild<QQuickItem*>(QStringLiteral("bannerTitle"))->property("text").toString()
                == QStringLiteral("Some folders could not be read (1)"));
        // The folder itself says so in the tooltip.
        FileNode* unreadable = child(w.state->root(), "chain");
        while (unreadable && unreadable->hasChildren())
            unreadable = &*unreadable->children().begin();
        QVERIFY(unreadable && unreadable->isInaccessible());
        w.state->setHovered(w.state->root().sibling(unreadable));
        QTRY_VERIFY(w.shows("tooltipUnreadable"));
        w.state->setHovered(w.state->root().sibling(child(w.state->root(), "movie")));
        QVERIFY(!w.shows("tooltipUnreadable"));

        // Without the grant: the Full Disk Access banner instead.
        Access missing;
        missing.m_granted = false;
        Window without(m_volume, missing);
        QVERIFY(without.scan(m_tree));
        QVERIFY(without.shows("fdaBanner"));
        QVERIFY(!without.shows("unreadableBanner"));
    }
};

TIDEWICK_TEST_MAIN(WindowTest)
#include "tst_window.moc"
