// The window's screens, loaded offscreen and driven with real mouse events:
// which screen stands for each mode and phase, the chart's hover, clicks and
// menu, the details rows, the breadcrumb, the toolbar, the Full Disk Access
// prompt and banner. Any QML warning fails the test that produced it.

#include "TestMain.h"
#include "ScreensHarness.h"
#include "app/AppState.h"
#include "app/DiskAccess.h"
#include "chart/SunburstLayout.h"
#include "localization/LocalizationManager.h"
#include "platform/SymbolImages.h"
#include "platform/VolumeFacts.h"
#include "screens/ScreensSetup.h"
#include "screens/SunburstPainter.h"

#include <QDirIterator>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <memory>

using namespace tw;
using namespace tw::test;

class ScreensTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    FixedVolume m_volume;
    Access m_access;
    QByteArray m_tree;
    QByteArray m_many;

private Q_SLOTS:
    void initTestCase()
    {
        prepareScreens();
        m_tree = makeHomeTree(m_dir.path());
        writeFile(m_tree + "/docs/deep/b", 100 * 1024);
        makeDir(m_tree + "/empty");
        writeFile(m_tree + "/movie", 700 * 1024);
        m_many = QFile::encodeName(m_dir.path()) + "/many";
        makeDir(m_many);
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
        // No snapshots: no reclaim button.
        QVERIFY(!w.shows("reclaimButton"));

        QVERIFY(w.scan(m_tree));
        QVERIFY(!w.shows("welcomeScreen"));
        QVERIFY(w.shows("toolbar"));
        QVERIFY(w.shows("sunburst"));

        // Applications mode: no toolbar, breadcrumb or banner, whatever the phase.
        w.state->setNeedsFullDiskAccess(true);
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("segment_mode.apps"));
        QCOMPARE(w.state->mode(), AppState::Mode::apps);
        QVERIFY(w.shows("appsScreen"));
        QVERIFY(!w.item("toolbar") || !w.item("toolbar")->isVisible());
        QVERIFY(!w.item("breadcrumb") || !w.item("breadcrumb")->isVisible());
        QVERIFY(!w.item("fdaBanner") || !w.item("fdaBanner")->isVisible());

        // A scan started before the switch goes on behind the applications screen.
        w.state->setMode(AppState::Mode::folder);
        w.state->requestScan(m_many);
        w.state->setMode(AppState::Mode::apps);
        QVERIFY(!w.shows("progressScreen"));
        QVERIFY(QTest::qWaitFor([&] { return w.state->phase() == AppState::Phase::ready; }, 20000));
        QCOMPARE(w.state->root()->displayName(), QStringLiteral("many"));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("segment_mode.folder"));
        QTest::qWait(50);
        QVERIFY(w.shows("toolbar"));

        // New scan: back to the welcome screen.
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("newScanButton"));
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

        // Hovering a folder names it in the tooltip, with four lines.
        w.moveTo(w.pointOf(docs));
        QCOMPARE(w.state->hovered().get(), docs);
        QVERIFY(QTest::qWaitFor([&] { return w.item("tooltip")->opacity() == 1.0; }, 2000));
        const auto visibleLines = [&] {
            int lines = 0;
            for (QQuickItem* line : w.item("tooltipLines")->childItems())
                lines += line->isVisible() ? 1 : 0;
            return lines;
        };
        QCOMPARE(visibleLines(), 4);
        // A file: three lines.
        w.moveTo(w.pointOf(movie));
        QCOMPARE(w.state->hovered().get(), movie);
        QCOMPARE(visibleLines(), 3);

        // Clicking a file or the hub does nothing.
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.pointOf(movie));
        QCOMPARE(w.state->focus().get(), root.get());
        w.moveTo(w.chartCentre());
        QVERIFY(!w.state->hovered());
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.chartCentre());
        QCOMPARE(w.state->focus().get(), root.get());

        // The menu comes from the hover: nothing hovered, no menu.
        auto* menu = w.view.rootObject()->findChild<QObject*>(QStringLiteral("chartMenu"));
        QVERIFY(menu);
        QTest::mouseClick(&w.view, Qt::RightButton, {}, w.chartCentre());
        QVERIFY(!menu->property("visible").toBool());
        // A file: reveal and trash, no "Open here".
        w.moveTo(w.pointOf(movie));
        QTest::mouseClick(&w.view, Qt::RightButton, {}, w.pointOf(movie));
        QVERIFY(QTest::qWaitFor([&] { return menu->property("visible").toBool(); }, 2000));
        const auto openItemVisible = [&] {
            QQuickItem* open = nullptr;
            QMetaObject::invokeMethod(menu, "itemAt", Q_RETURN_ARG(QQuickItem*, open),
                                      Q_ARG(int, 1));
            return open && open->isVisible();
        };
        QVERIFY(!openItemVisible());
        // "Move to Trash…" asks about the hovered file.
        QQuickItem* trashItem = nullptr;
        QMetaObject::invokeMethod(menu, "itemAt", Q_RETURN_ARG(QQuickItem*, trashItem),
                                  Q_ARG(int, 3));
        QVERIFY(trashItem);
        QMetaObject::invokeMethod(trashItem, "triggered");
        QCOMPARE(w.state->deleteCandidate().get(), movie);
        w.state->cancelDelete();
        QMetaObject::invokeMethod(menu, "close");
        QVERIFY(QTest::qWaitFor([&] { return !menu->property("visible").toBool(); }, 2000));
        // A folder with children: "Open here" too.
        w.moveTo(w.pointOf(docs));
        QTest::mouseClick(&w.view, Qt::RightButton, {}, w.pointOf(docs));
        QVERIFY(QTest::qWaitFor([&] { return menu->property("visible").toBool(); }, 2000));
        QVERIFY(openItemVisible());
        QMetaObject::invokeMethod(menu, "close");
        QVERIFY(QTest::qWaitFor([&] { return !menu->property("visible").toBool(); }, 2000));

        // A click on a folder drills in; Up comes back and is disabled at the root.
        QVERIFY(w.item("upButton")->property("enabled").toBool() == false);
        w.moveTo(w.pointOf(docs));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.pointOf(docs));
        QCOMPARE(w.state->focus().get(), docs);
        QVERIFY(w.item("upButton")->property("enabled").toBool());
        w.moveTo(w.pointOf(deep));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.pointOf(deep));
        QCOMPARE(w.state->focus().get(), deep);
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("upButton"));
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
        // At the root: a single element, in bold, without a chevron.
        QVariantList model =
            crumbs->property("screen").value<QObject*>()->property("crumbs").toList();
        QCOMPARE(model.size(), 1);
        QVERIFY(model[0].toMap()[QStringLiteral("isFocus")].toBool());

        FileNode* docs = child(w.state->root(), "docs");
        QVERIFY(w.state->focusOn(w.state->root().sibling(child(*docs, "deep"))));
        model = crumbs->property("screen").value<QObject*>()->property("crumbs").toList();
        QCOMPARE(model.size(), 3);
        QCOMPARE(model[1].toMap()[QStringLiteral("label")].toString(), QStringLiteral("docs"));
        QVERIFY(!model[1].toMap()[QStringLiteral("isFocus")].toBool());
        // Clicking the root's element goes there.
        QTest::qWait(20);
        std::function<QQuickItem*(QQuickItem*)> firstButton = [&](QQuickItem* at) -> QQuickItem* {
            if (at->inherits("QQuickAbstractButton"))
                return at;
            for (QQuickItem* child : at->childItems()) {
                if (QQuickItem* found = firstButton(child))
                    return found;
            }
            return nullptr;
        };
        QQuickItem* first = firstButton(crumbs);
        QVERIFY(first);
        QTest::mouseClick(
            &w.view, Qt::LeftButton, {},
            first->mapToScene(QPointF(first->width() / 2, first->height() / 2)).toPoint());
        QCOMPARE(w.state->focus().get(), w.state->root().get());
    }

    void detailsRows()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        auto* list = qobject_cast<QQuickItem*>(w.item("largestList"));
        QCOMPARE(list->property("count").toInt(), 3);

        // Straight from one row to the next: the second stays highlighted.
        QTest::qWait(20);
        QList<QQuickItem*> rows;
        for (QQuickItem* item : list->property("contentItem").value<QQuickItem*>()->childItems()) {
            if (item->property("isHovered").isValid())
                rows.append(item);
        }
        std::sort(rows.begin(), rows.end(),
                  [](QQuickItem* a, QQuickItem* b) { return a->y() < b->y(); });
        QCOMPARE(rows.size(), 3);
        const auto centre = [](QQuickItem* row) {
            return row->mapToScene(QPointF(row->width() / 2, row->height() / 2)).toPoint();
        };
        w.moveTo(centre(rows[0]));
        QCOMPARE(w.state->hovered().get(), child(w.state->root(), "docs"));
        QTest::mouseMove(&w.view, centre(rows[1]));
        QCOMPARE(w.state->hovered().get(), child(w.state->root(), "movie"));
        QVERIFY(rows[1]->property("isHovered").toBool());
        QVERIFY(!rows[0]->property("isHovered").toBool());

        // Double-clicking a file or an empty folder does nothing; a folder opens.
        QTest::mouseDClick(&w.view, Qt::LeftButton, {}, centre(rows[1]));
        QCOMPARE(w.state->focus().get(), w.state->root().get());
        QTest::mouseDClick(&w.view, Qt::LeftButton, {}, centre(rows[2]));
        QCOMPARE(w.state->focus().get(), w.state->root().get());
        QTest::mouseDClick(&w.view, Qt::LeftButton, {}, centre(rows[0]));
        QCOMPARE(w.state->focus().get(), child(w.state->root(), "docs"));
        // The row's hover went with the old view: no tooltip of the new focus at 100 %.
        QVERIFY(w.state->hovered() != w.state->focus());

        // Five thousand children: twelve rows.
        QVERIFY(w.scan(m_many));
        QTest::qWait(20);
        QCOMPARE(qobject_cast<QQuickItem*>(w.item("largestList"))->property("count").toInt(), 12);
    }

    void toolbarFigures()
    {
        // 43 MB on a disk with 100 GB used: no "info.circle"; the capacity shows.
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        QVERIFY(!w.shows("infoSymbol"));
        QVERIFY(w.shows("capacityText"));
        QCOMPARE(w.item("capacityText")->property("text").toString(),
                 QStringLiteral("400 GB / 500 GB"));

        // A disk whose used space is below the files' sum: the symbol shows.
        FixedVolume tiny;
        tiny.m_capacity = VolumeInfo::Capacity{10 * 1000 * 1000, 9 * 1000 * 1000, 9'900'000};
        Window small(tiny, m_access);
        QVERIFY(small.scan(m_tree));
        QVERIFY(small.shows("infoSymbol"));

        // No capacity: only the file sizes.
        FixedVolume unknown;
        unknown.m_capacity.reset();
        Window none(unknown, m_access);
        QVERIFY(none.scan(m_tree));
        QVERIFY(!none.shows("capacityText"));
        QVERIFY(!none.shows("infoSymbol"));
    }

    void fullDiskAccessPromptAndBanner()
    {
        Access missing;
        missing.m_granted = false;
        const QByteArray protectedPath = QFile::encodeName(m_dir.path()) + "/protected";
        QDir().mkpath(QFile::decodeName(protectedPath));
        writeFile(protectedPath + "/file", 8192);

        Window w(m_volume, missing);
        w.state->requestScan(protectedPath);
        QVERIFY(QTest::qWaitFor(
            [&] { return w.shows("fdaPromptCard") && w.item("fdaPromptCard")->opacity() == 1; },
            2000));
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        // Cancel: no scan.
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("fdaCancel"));
        QVERIFY(!w.state->fdaPromptForURL());
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        QVERIFY(QTest::qWaitFor([&] { return !w.shows("fdaPromptCard"); }, 2000));

        // Continue without access: the scan runs.
        w.state->requestScan(protectedPath);
        QVERIFY(QTest::qWaitFor([&] { return w.item("fdaPromptCard")->opacity() == 1; }, 2000));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("fdaContinue"));
        QVERIFY(QTest::qWaitFor([&] { return w.state->phase() == AppState::Phase::ready; }, 20000));

        // The banner stands while the flag is up; dismissing clears it.
        QTest::qWait(50);
        w.state->setNeedsFullDiskAccess(true);
        QVERIFY(w.shows("fdaBanner"));
        QVERIFY(QTest::qWaitFor([&] { return !w.shows("fdaPromptCard"); },
                                2000)); // the dimming has gone
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("bannerDismiss"));
        QVERIFY(!w.state->needsFullDiskAccess());
        QVERIFY(!w.shows("fdaBanner"));
    }

    void fadeFollowsTheMouse()
    {
        Window w(m_volume, m_access);
        QVERIFY(w.scan(m_tree));
        const NodeRef root = w.state->root();
        FileNode* docs = child(root, "docs");
        FileNode* deep = child(*docs, "deep");
        const std::vector<Segment> segments = buildSegments(root.get(), 800, 600);
        const ChartGeometry g = chartGeometry(800, 600);
        const auto segmentOf = [&](const FileNode* node) {
            return std::find_if(segments.begin(), segments.end(),
                                [&](const Segment& s) { return s.node == node; });
        };
        const auto alphaAt = [&](const QImage& image, const FileNode* node) {
            const auto s = segmentOf(node);
            const double a = (s->startAngle + s->endAngle) / 2;
            const double r = (s->innerRadius + s->outerRadius) / 2;
            return qAlpha(
                image.pixel(int(g.centreX + r * std::sin(a)), int(g.centreY - r * std::cos(a))));
        };
        const auto paint = [&](const Segment* hit) {
            QImage image(800, 600, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            paintSunburst(image, g, segments, hit, Qt::white);
            return image;
        };
        // No hit: nothing fades.
        const QImage plain = paint(nullptr);
        for (const FileNode* node : {docs, deep, child(*deep, "a"), child(root, "movie")})
            QCOMPARE(alphaAt(plain, node), 255);
        // On "deep": it and its ancestor stay bright; its sibling, its own
        // children and the other branch fade.
        const QImage faded = paint(&*segmentOf(deep));
        QCOMPARE(alphaAt(faded, deep), 255);
        QCOMPARE(alphaAt(faded, docs), 255);
        for (const FileNode* node :
             {child(*docs, "report"), child(*deep, "a"), child(root, "movie")})
            QVERIFY2(std::abs(alphaAt(faded, node) - 89) <= 3, qPrintable(node->displayName()));
    }

    void deleteDialog()
    {
        // A stand-in Trash: a real move into a folder of the test's.
        const QByteArray root = QFile::encodeName(m_dir.path()) + "/deleting";
        const QByteArray bin = QFile::encodeName(m_dir.path()) + "/deleting-bin";
        makeDir(root);
        makeDir(bin);
        makeDir(root + "/empty");
        makeDir(root + "/full");
        writeFile(root + "/full/one", 40960);
        writeFile(root + "/file", 8192);
        Window w(m_volume, m_access, [bin](const QByteArray& path) -> std::optional<QString> {
            const QByteArray target = bin + path.mid(path.lastIndexOf('/'));
            if (::rename(path.constData(), target.constData()) != 0)
                return QStringLiteral("Operation not permitted");
            return std::nullopt;
        });
        QVERIFY(w.scan(root));
        const auto rowsShown = [&] {
            int rows = 0;
            for (QQuickItem* row : w.item("deleteFacts")->childItems())
                rows += row->isVisible() && row->property("modelData").isValid() ? 1 : 0;
            return rows;
        };
        // Keys go to the active window only.
        w.view.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&w.view));
        const auto openFor = [&](const char* name) {
            w.state->setDeleteCandidate(w.state->root().sibling(child(w.state->root(), name)));
            return QTest::qWaitFor([&] { return w.item("deleteCard")->opacity() == 1; }, 2000);
        };

        // A file: three facts and the file's sentence.
        QVERIFY(openFor("file"));
        QCOMPARE(rowsShown(), 3);
        QCOMPARE(w.item("deleteBody")->property("text").toString(),
                 LocalizationManager::shared().string(QStringLiteral("delete.bodyFile")));
        // Escape leaves everything as it was.
        const qint64 before = w.state->root()->size();
        QTest::keyClick(&w.view, Qt::Key_Escape);
        QVERIFY(!w.state->hasDeleteCandidate());
        QCOMPARE(w.state->root()->size(), before);
        QVERIFY(QTest::qWaitFor([&] { return !w.shows("deleteCard"); }, 2000));

        // An empty folder: four facts, "0" files.
        QVERIFY(openFor("empty"));
        QCOMPARE(rowsShown(), 4);
        QCOMPARE(w.item("deleteBody")->property("text").toString(),
                 LocalizationManager::shared().string(QStringLiteral("delete.bodyDir")));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("deleteCancel"));
        QVERIFY(!w.state->hasDeleteCandidate());
        QVERIFY(QTest::qWaitFor([&] { return !w.shows("deleteCard"); }, 2000));

        // Return confirms: the folder goes, the totals shrink at once.
        QSignalSpy finished(w.state.get(), &AppState::deletionFinished);
        QVERIFY(openFor("full"));
        const qint64 fullSize = child(w.state->root(), "full")->size();
        QTest::keyClick(&w.view, Qt::Key_Return);
        // The move may finish while the key is still being delivered.
        QVERIFY(QTest::qWaitFor([&] { return finished.count() == 1; }, 5000));
        QCOMPARE(w.state->root()->size(), before - fullSize);
        QVERIFY(!child(w.state->root(), "full"));
        QVERIFY(QFile::exists(QFile::decodeName(bin + "/full/one")));

        // A refusal shows the error alert and keeps the item.
        QVERIFY(::chmod(QByteArray(root + "/file").constData(), 0644) == 0);
        w.state->setDeleteCandidate(w.state->root().sibling(child(w.state->root(), "file")));
        QVERIFY(::rename(QByteArray(root + "/file").constData(),
                         QByteArray(root + "/file-moved").constData()) == 0);
        QVERIFY(QTest::qWaitFor([&] { return w.item("deleteCard")->opacity() == 1; }, 2000));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("deleteConfirm"));
        QVERIFY(QTest::qWaitFor([&] { return finished.count() == 2; }, 5000));
        QVERIFY(child(w.state->root(), "file"));
        QCOMPARE(w.state->errorMessage(), QStringLiteral("Operation not permitted"));
        QVERIFY(QTest::qWaitFor([&] { return w.shows("alertMessage"); }, 2000));
        QCOMPARE(w.item("alertMessage")->property("text").toString(),
                 QStringLiteral("Operation not permitted"));
    }

    void twoDialogsAtOnceStackInOrder()
    {
        Access missing;
        missing.m_granted = false;
        Window w(m_volume, missing);
        QVERIFY(w.scan(m_tree));
        const QByteArray protectedPath = QFile::encodeName(m_dir.path()) + "/protected";
        w.state->requestScan(protectedPath);
        w.state->setDeleteCandidate(w.state->root().sibling(child(w.state->root(), "movie")));
        QQuickItem* prompt = w.item("fdaPromptCard");
        QQuickItem* remove = w.item("deleteCard");
        QVERIFY(QTest::qWaitFor([&] { return prompt->opacity() == 1 && remove->opacity() == 1; },
                                2000));
        // The delete dialog stands in front of the prompt.
        QCOMPARE(prompt->parentItem(), remove->parentItem());
        const QList<QQuickItem*> layer = prompt->parentItem()->childItems();
        QVERIFY(layer.indexOf(prompt) < layer.indexOf(remove));
        QCOMPARE(prompt->z(), remove->z());
        // A click on the dimming does nothing: both stay.
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, QPoint(20, 700));
        QVERIFY(w.state->hasDeleteCandidate());
        QVERIFY(w.state->fdaPromptForURL());
    }

    void everySymbolOfTheScreensShows()
    {
        // Every symbol name the screens use has a picture that is not empty.
        const QRegularExpression line(QStringLiteral("symbol:\\s*(.*)$"),
                                      QRegularExpression::MultilineOption);
        const QRegularExpression literal(QStringLiteral("\"([a-z.]+)\""));
        QSet<QString> names;
        QDirIterator files(QStringLiteral(":/Tidewick"), {QStringLiteral("*.qml")});
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(file.readAll());
            for (const auto& match : line.globalMatch(text)) {
                for (const auto& name : literal.globalMatch(match.captured(1)))
                    names.insert(name.captured(1));
            }
            for (const auto& match :
                 QRegularExpression(QStringLiteral("image://symbol/([a-z.]+)")).globalMatch(text))
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

    void progressScreenTexts()
    {
        Window w(m_volume, m_access);
        w.state->requestScan(m_many);
        QVERIFY(w.shows("progressScreen"));
        const QString counts = w.item("progressCounts")->property("text").toString();
        QVERIFY2(counts.endsWith(QStringLiteral(" items")), qPrintable(counts));
        QTest::mouseClick(&w.view, Qt::LeftButton, {}, w.centreOf("cancelScanButton"));
        QCOMPARE(w.state->phase(), AppState::Phase::welcome);
        QVERIFY(w.shows("welcomeScreen"));
    }
};

TIDEWICK_TEST_MAIN(ScreensTest)
#include "tst_screens.moc"
