// The window's screens, loaded offscreen and driven with real mouse events:
// which screen stands for each mode and phase, the chart's hover, clicks and
// menu, the details rows, the breadcrumb, the toolbar, the Full Disk Access
// prompt and banner, the system's appearance followed live, and the texts QML
// binds to. Any QML warning fails the test that produced it.

#include "TestMain.h"
#include "ScreensHarness.h"
#include "platform/SymbolImages.h"
#include "screens/SunburstPainter.h"

#include <QDirIterator>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

namespace {

bool hidden(QQuickItem* item)
{
    return !item || !item->isVisible();
}

bool shown(QObject* menu)
{
    return menu->property("visible").toBool();
}

QQuickItem* menuItem(QObject* menu, int index)
{
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(menu, "itemAt", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, index));
    return item;
}

} // namespace

class ScreensTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FakeVolume m_volume;
    FakeAccess m_access;
    QByteArray m_tree;
    QByteArray m_many;

private Q_SLOTS:
    void initTestCase()
    {
        prepareScreens();
        m_tree = makeHomeTree(m_dir.path());
        makeTree(m_tree, {{"docs/deep/b", 100 * 1024}, {"empty"}, {"movie", 700 * 1024}});
        m_many = makeTree(QFile::encodeName(m_dir.path()) + "/many", {});
        for (int i = 0; i < 5000; ++i)
            writeFile(m_many + "/f" + QByteArray::number(i), 4096 * (1 + i % 3));
    }

    void init() { recordWarningsFromHere(); }
    void cleanup() { failOnRecordedWarnings(); }

    void screenFollowsModeAndPhase()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.shows("welcomeScreen"));
        QVERIFY(!w.shows("progressScreen"));
        QVERIFY(!w.item("toolbar"));
        QVERIFY(!w.shows("reclaimButton")); // no snapshots: no reclaim button

        QVERIFY(w.scan(m_tree));
        QVERIFY(!w.shows("welcomeScreen"));
        QVERIFY(w.shows("toolbar") && w.shows("sunburst"));

        // Applications mode: no toolbar, breadcrumb or banner, whatever the phase.
        w.state->setNeedsFullDiskAccess(true);
        w.click("segment_mode.apps");
        QCOMPARE(w.state->mode(), AppState::Mode::apps);
        QVERIFY(w.shows("appsScreen"));
        for (const char* name : {"toolbar", "breadcrumb", "fdaBanner"})
            QVERIFY2(hidden(w.item(name)), name);

        // A scan started before the switch goes on behind the applications screen.
        w.state->setMode(AppState::Mode::folder);
        w.state->requestScan(m_many);
        w.state->setMode(AppState::Mode::apps);
        QVERIFY(!w.shows("progressScreen"));
        QTRY_VERIFY_WITH_TIMEOUT(w.state->phase() == AppState::Phase::ready, 20000);
        QCOMPARE(w.state->root()->displayName(), QStringLiteral("many"));
        w.click("segment_mode.folder");
        QTRY_VERIFY(w.shows("toolbar"));

        // New scan: back to the welcome screen.
        w.click("newScanButton");
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        QVERIFY(w.shows("welcomeScreen"));
        QVERIFY(!w.state->hasTree());
    }

    void chartHoverClickAndMenu()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        const NodeRef root = w.state->root();
        FileNode* docs = child(root, "docs");
        FileNode* movie = child(root, "movie");
        FileNode* deep = child(*docs, "deep");

        // Hovering a folder names it in the tooltip, with four lines; a file, three.
        const auto visibleLines = [&] {
            const QList<QQuickItem*> lines = w.item("tooltipLines")->childItems();
            return int(std::count_if(lines.begin(), lines.end(), [](QQuickItem* l) { return l->isVisible(); }));
        };
        w.moveTo(w.pointOf(docs));
        QCOMPARE(w.state->hovered().get(), docs);
        QTRY_COMPARE(w.item("tooltip")->opacity(), 1.0);
        QCOMPARE(visibleLines(), 4);
        w.moveTo(w.pointOf(movie));
        QCOMPARE(w.state->hovered().get(), movie);
        QCOMPARE(visibleLines(), 3);

        // Clicking a file or the hub does nothing.
        w.click(w.pointOf(movie));
        QCOMPARE(w.state->focus().get(), root.get());
        w.moveTo(w.chartCentre());
        QVERIFY(!w.state->hovered());
        w.click(w.chartCentre());
        QCOMPARE(w.state->focus().get(), root.get());

        // The menu comes from the hover: nothing hovered, no menu. A file:
        // reveal and trash, no "Open here"; a folder with children: that too.
        auto* menu = w.view.rootObject()->findChild<QObject*>(QStringLiteral("chartMenu"));
        QVERIFY(menu);
        w.click(w.chartCentre(), Qt::RightButton);
        QVERIFY(!shown(menu));
        const auto openMenuOn = [&](FileNode* node) {
            w.moveTo(w.pointOf(node));
            w.click(w.pointOf(node), Qt::RightButton);
            QTRY_VERIFY(shown(menu));
        };
        const auto openHereShown = [&] { return menuItem(menu, 1) && menuItem(menu, 1)->isVisible(); };
        openMenuOn(movie);
        QVERIFY(!openHereShown());
        // "Move to Trash…" asks about the hovered file.
        QVERIFY(menuItem(menu, 3));
        QMetaObject::invokeMethod(menuItem(menu, 3), "triggered");
        QCOMPARE(w.state->deleteCandidate().get(), movie);
        w.state->cancelDelete();
        QMetaObject::invokeMethod(menu, "close");
        QTRY_VERIFY(!shown(menu));
        openMenuOn(docs);
        QVERIFY(openHereShown());
        QMetaObject::invokeMethod(menu, "close");
        QTRY_VERIFY(!shown(menu));

        // A click on a folder drills in; Up comes back and is disabled at the root.
        QVERIFY(!w.item("upButton")->property("enabled").toBool());
        for (FileNode* folder : {docs, deep}) {
            w.moveTo(w.pointOf(folder));
            w.click(w.pointOf(folder));
            QCOMPARE(w.state->focus().get(), folder);
            QVERIFY(w.item("upButton")->property("enabled").toBool());
        }
        w.click("upButton");
        QCOMPARE(w.state->focus().get(), docs);

        // Leaving the chart clears the hover.
        w.moveTo(w.pointOf(child(*docs, "report")));
        QVERIFY(w.state->hovered());
        QTest::mouseMove(&w.view, QPoint(1070, 700));
        QTest::qWait(20);
        QVERIFY(!w.state->hovered() || w.state->hovered().get() != child(*docs, "report"));
    }

    void breadcrumbFollowsTheFocus()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        QQuickItem* crumbs = w.item("breadcrumb");
        const auto model = [&] {
            return crumbs->property("screen").value<QObject*>()->property("crumbs").toList();
        };
        // At the root: a single element, in bold, without a chevron.
        QCOMPARE(model().size(), 1);
        QVERIFY(model()[0].toMap()[QStringLiteral("isFocus")].toBool());

        QVERIFY(w.state->focusOn(w.node("docs/deep")));
        QCOMPARE(model().size(), 3);
        QCOMPARE(model()[1].toMap()[QStringLiteral("label")].toString(), QStringLiteral("docs"));
        QVERIFY(!model()[1].toMap()[QStringLiteral("isFocus")].toBool());
        // Clicking the root's element goes there.
        QTest::qWait(20);
        std::function<QQuickItem*(QQuickItem*)> firstButton = [&](QQuickItem* at) -> QQuickItem* {
            if (at->inherits("QQuickAbstractButton"))
                return at;
            for (QQuickItem* child : at->childItems())
                if (QQuickItem* found = firstButton(child))
                    return found;
            return nullptr;
        };
        QVERIFY(firstButton(crumbs));
        w.click(Window::centreOf(firstButton(crumbs)));
        QCOMPARE(w.state->focus().get(), w.state->root().get());
    }

    void detailsRows()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        auto* list = w.item("largestList");
        QCOMPARE(list->property("count").toInt(), 3);

        // Straight from one row to the next: the second stays highlighted.
        QTest::qWait(20);
        const QList<QQuickItem*> rows = w.listRows();
        QCOMPARE(rows.size(), 3);
        w.moveTo(Window::centreOf(rows[0]));
        QCOMPARE(w.state->hovered(), w.node("docs"));
        QTest::mouseMove(&w.view, Window::centreOf(rows[1]));
        QCOMPARE(w.state->hovered(), w.node("movie"));
        QVERIFY(rows[1]->property("isHovered").toBool());
        QVERIFY(!rows[0]->property("isHovered").toBool());

        // Double-clicking a file or an empty folder does nothing; a folder opens.
        for (const auto& [row, focus] : {std::pair{1, ""}, {2, ""}, {0, "docs"}}) {
            QTest::mouseDClick(&w.view, Qt::LeftButton, {}, Window::centreOf(rows[row]));
            QCOMPARE(w.state->focus(), *focus ? w.node(focus) : w.state->root());
        }
        // The row's hover went with the old view: no tooltip of the new focus at 100 %.
        QVERIFY(w.state->hovered() != w.state->focus());
    }

    void toolbarFigures()
    {
        // 43 MB on a disk with 100 GB used: no "info.circle"; the capacity shows.
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        QVERIFY(!w.shows("infoSymbol"));
        QVERIFY(w.shows("capacityText"));
        QCOMPARE(w.text("capacityText"), QStringLiteral("400 GB / 500 GB"));

        // A disk whose used space is below the files' sum: the symbol shows.
        FakeVolume tiny;
        tiny.total = 10'000'000;
        tiny.free = 9'000'000;
        tiny.rawFree = 9'900'000;
        Window small(tiny, m_access);
        QVERIFY(small.scan(m_tree));
        QVERIFY(small.shows("infoSymbol"));

        // No capacity: only the file sizes.
        FakeVolume unknown;
        unknown.known = false;
        Window none(unknown, m_access);
        QVERIFY(none.scan(m_tree));
        QVERIFY(!none.shows("capacityText"));
        QVERIFY(!none.shows("infoSymbol"));
    }

    void fullDiskAccessPromptAndBanner()
    {
        FakeAccess missing;
        missing.granted = false;
        const QByteArray guarded = makeTree(QFile::encodeName(m_dir.path()) + "/protected", {{"file", 8192}});

        Window w(m_volume, missing);
        w.state->requestScan(guarded);
        QTRY_VERIFY(w.shows("fdaPromptCard") && w.item("fdaPromptCard")->opacity() == 1);
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        // Cancel: no scan.
        w.click("fdaCancel");
        QVERIFY(!w.state->fdaPromptForURL());
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        QTRY_VERIFY(!w.shows("fdaPromptCard"));

        // Continue without access: the scan runs.
        w.state->requestScan(guarded);
        QTRY_COMPARE(w.item("fdaPromptCard")->opacity(), 1.0);
        w.click("fdaContinue");
        QTRY_VERIFY_WITH_TIMEOUT(w.state->phase() == AppState::Phase::ready, 20000);

        // The banner stands while the flag is up; dismissing clears it.
        QTest::qWait(50);
        w.state->setNeedsFullDiskAccess(true);
        QVERIFY(w.shows("fdaBanner"));
        QTRY_VERIFY(!w.shows("fdaPromptCard")); // the dimming has gone
        w.click("bannerDismiss");
        QVERIFY(!w.state->needsFullDiskAccess());
        QVERIFY(!w.shows("fdaBanner"));
    }

    void deleteDialog()
    {
        // A stand-in Trash that refuses "file"; what a move does to the tree
        // and the disk is tst_appstate's.
        const QByteArray root = makeTree(QFile::encodeName(m_dir.path()) + "/deleting",
                                         {{"empty"}, {"full/one", 40960}, {"file", 8192}});
        Window w(m_volume, m_access, [](const QByteArray& path) -> std::optional<QString> {
            if (path.endsWith("/file"))
                return QStringLiteral("Operation not permitted");
            return std::nullopt;
        });
        QVERIFY(w.scan(root));
        // Keys go to the active window only.
        w.view.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&w.view));
        // Opens the dialog on `name` and checks its facts and its sentence.
        const auto openFor = [&](const char* name, int facts, const char* body) {
            w.state->setDeleteCandidate(w.node(name));
            QTRY_COMPARE(w.item("deleteCard")->opacity(), 1.0);
            const QList<QQuickItem*> rows = w.item("deleteFacts")->childItems();
            QCOMPARE(std::count_if(rows.begin(), rows.end(),
                                   [](QQuickItem* row) { return row->isVisible() && row->property("modelData").isValid(); }),
                     facts);
            QCOMPARE(w.text("deleteBody"), LocalizationManager::shared().string(QString::fromLatin1(body)));
        };

        // A file: three facts and the file's sentence. Escape leaves everything as it was.
        openFor("file", 3, "delete.bodyFile");
        const qint64 before = w.state->root()->size();
        w.key(Qt::Key_Escape);
        QVERIFY(!w.state->hasDeleteCandidate());
        QCOMPARE(w.state->root()->size(), before);
        QTRY_VERIFY(!w.shows("deleteCard"));

        // An empty folder: four facts, "0" files.
        openFor("empty", 4, "delete.bodyDir");
        w.click("deleteCancel");
        QVERIFY(!w.state->hasDeleteCandidate());
        QTRY_VERIFY(!w.shows("deleteCard"));

        // Return confirms: the folder goes at once.
        QSignalSpy finished(w.state.get(), &AppState::deletionFinished);
        openFor("full", 4, "delete.bodyDir");
        w.key(Qt::Key_Return);
        // The move may finish while the key is still being delivered.
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY(!w.node("full"));

        // A refusal shows the error alert.
        openFor("file", 3, "delete.bodyFile");
        w.click("deleteConfirm");
        QTRY_COMPARE(finished.count(), 2);
        QTRY_VERIFY(w.shows("alertMessage"));
        QCOMPARE(w.text("alertMessage"), QStringLiteral("Operation not permitted"));
    }

    void twoDialogsAtOnceStackInOrder()
    {
        FakeAccess missing;
        missing.granted = false;
        Window w(m_volume, missing);
        QVERIFY(w.scan(m_tree));
        w.state->requestScan(QFile::encodeName(m_dir.path()) + "/protected");
        w.state->setDeleteCandidate(w.node("movie"));
        QQuickItem* prompt = w.item("fdaPromptCard");
        QQuickItem* remove = w.item("deleteCard");
        QTRY_VERIFY(prompt->opacity() == 1 && remove->opacity() == 1);
        // The delete dialog stands in front of the prompt.
        QCOMPARE(prompt->parentItem(), remove->parentItem());
        const QList<QQuickItem*> layer = prompt->parentItem()->childItems();
        QVERIFY(layer.indexOf(prompt) < layer.indexOf(remove));
        QCOMPARE(prompt->z(), remove->z());
        // A click on the dimming does nothing: both stay.
        w.click(QPoint(20, 700));
        QVERIFY(w.state->hasDeleteCandidate());
        QVERIFY(w.state->fdaPromptForURL());
    }

    void everySymbolOfTheScreensShows()
    {
        // Every symbol name the screens use has a picture that is not empty.
        const QRegularExpression line(QStringLiteral("symbol:\\s*(.*)$"), QRegularExpression::MultilineOption);
        const QRegularExpression literal(QStringLiteral("\"([a-z.]+)\""));
        const QRegularExpression image(QStringLiteral("image://symbol/([a-z.]+)"));
        QSet<QString> names;
        QDirIterator files(QStringLiteral(":/Tidewick"), {QStringLiteral("*.qml")});
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(file.readAll());
            for (const auto& match : line.globalMatch(text))
                for (const auto& name : literal.globalMatch(match.captured(1)))
                    names.insert(name.captured(1));
            for (const auto& match : image.globalMatch(text))
                names.insert(match.captured(1));
        }
        QVERIFY(names.size() >= 15);
        for (const QString& name : names) {
            const QImage image = renderSymbol(name, QSize(16, 16), Qt::black);
            QVERIFY2(!image.isNull(), qPrintable(name));
            int inked = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    inked += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
            QVERIFY2(inked >= 8, qPrintable(name));
        }
        QVERIFY(renderSymbol(QStringLiteral("no.such.symbol"), QSize(16, 16), Qt::black).isNull());
    }

    void screensFollowTheSystemAppearanceLive()
    {
        ChosenAppearance appearance;
        Window w(m_volume, m_access, {}, &appearance);
        QVERIFY(QTest::qWaitForWindowExposed(&w.view));
        const auto near = [&](QPoint at, QColor b) {
            const QImage image = w.view.grabWindow();
            const QColor a = image.pixelColor(at * image.devicePixelRatio());
            return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) < 12;
        };
        QQuickItem* button = w.item("scanMacButton");
        const QPoint onFill = button->mapToScene(QPointF(5, button->height() / 2)).toPoint();
        QVERIFY(near(onFill, QColor(0x00, 0x7a, 0xff)));

        // The user's accent, then the dark look with the system's own blue.
        appearance.set({false, QColor(0xc0, 0x20, 0xa0)});
        QTRY_VERIFY(near(onFill, QColor(0xc0, 0x20, 0xa0)));
        appearance.set({true, std::nullopt});
        QTRY_VERIFY(near(onFill, QColor(0x0a, 0x84, 0xff)));
        QCOMPARE(w.view.rootObject()->property("windowBackground").value<QColor>(), QColor(0x32, 0x32, 0x32));

        // The chart redraws in the dark shades, and back.
        QVERIFY(w.scan(m_tree));
        const QPoint sector = w.pointOf(w.node("docs").get());
        const QColor darkSector = w.view.grabWindow().pixelColor(sector * w.view.devicePixelRatio());
        appearance.set({false, std::nullopt});
        QTRY_VERIFY(!near(sector, darkSector));
    }

    // A drill moves unless the system asks for less motion;
    // TIDEWICK_REDUCE_MOTION overrides the system either way.
    void drillMovesUnlessMotionIsReduced_data()
    {
        QTest::addColumn<bool>("systemReduces");
        QTest::addColumn<QByteArray>("override");
        QTest::addColumn<bool>("moves");
        QTest::newRow("no wish") << false << QByteArray() << true;
        QTest::newRow("system reduces") << true << QByteArray() << false;
        QTest::newRow("overridden on") << true << QByteArray("0") << true;
        QTest::newRow("overridden off") << false << QByteArray(" 1\n") << false;
        QTest::newRow("unknown override: the system") << true << QByteArray("yes") << false;
    }
    void drillMovesUnlessMotionIsReduced()
    {
        QFETCH(bool, systemReduces);
        QFETCH(QByteArray, override);
        ChosenAppearance appearance;
        const auto restore = qScopeGuard([] { qunsetenv("TIDEWICK_REDUCE_MOTION"); });
        qputenv("TIDEWICK_REDUCE_MOTION", override);
        appearance.set({false, std::nullopt, systemReduces});
        Window w(m_volume, m_access, {}, &appearance);
        QVERIFY(QTest::qWaitForWindowExposed(&w.view) && w.scan(m_tree));
        QQuickItem* chart = w.item("sunburst");
        const FileNode* docs = w.node("docs").get();
        w.click(w.pointOf(docs));
        QCOMPARE(w.state->focus().get(), docs);
        QTEST(chart->property("drilling").toBool(), "moves");
        // The motion runs out and the chart rests.
        QTRY_VERIFY(!chart->property("drilling").toBool());
    }

    void textBindingsFollowTheLanguage()
    {
        QQmlEngine engine;
        engine.addImportPath(QStringLiteral("qrc:/"));
        QQmlComponent component(&engine);
        component.setData(R"(
            import QtQml
            import Tidewick
            QtObject {
                property var texts: [Loc.strings["mode.folder"], Loc.formatBytes(1500000000), Loc.formatBytes(NaN),
                                     Loc.percentText(4.26, 100), Loc.string("no.such.key"), Loc.languages.length,
                                     Loc.languages[2].name]
                property string huge: Loc.formatBytes(1e30)
            })", QUrl());
        std::unique_ptr<QObject> object(component.create());
        QVERIFY2(object, qPrintable(component.errorString()));
        const auto texts = [&] { return object->property("texts").toStringList(); };
        QCOMPARE(texts(), (QStringList{"Disk Analysis", "1.5 GB", "Zero KB", "4.3%", "no.such.key", "4", "Deutsch"}));
        QVERIFY(object->property("huge").toString().endsWith(QStringLiteral(" TB")));
        LocalizationManager::shared().setCurrent(Language::german);
        const QString german = texts().first();
        LocalizationManager::shared().setCurrent(Language::english);
        QCOMPARE(german, QStringLiteral("Festplattenanalyse"));
    }

    void progressScreenTexts()
    {
        Window w(m_volume, m_access);
        w.state->requestScan(m_many);
        QVERIFY(w.shows("progressScreen"));
        QVERIFY2(w.text("progressCounts").endsWith(QStringLiteral(" items")), qPrintable(w.text("progressCounts")));
        w.click("cancelScanButton");
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        QVERIFY(w.shows("welcomeScreen"));
    }
};

TIDEWICK_TEST_MAIN(ScreensTest)
#include "tst_screens.moc"
