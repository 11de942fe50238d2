// The chart's companions: the details rows and their hover rule, the
// tooltip's texts and the breadcrumb, driven through AppState.

#include "FakePlatform.h"
#include "TestMain.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "chart/ChartCompanions.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

class CompanionsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

    static AppState::Services oneWorker()
    {
        AppState::Services services;
        services.scannerOptions.workers = 1;
        return services;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalizationManager::shared().setCurrent(Language::english);
        const QByteArray root =
            makeTree(base() + "/tree", {{"docs/report", 300 * 1024}, {"empty"}, {"movie", 600 * 1024}, {"many"}});
        for (int i = 0; i < 40; ++i)
            writeFile(root + "/many/f" + QByteArray::number(i), (i + 1) * 4096);
    }

    void rowsAreTheLargestTwelve()
    {
        AppState state(oneWorker());
        LargestChildrenModel model(state);
        QCOMPARE(model.rowCount(), 0);
        QVERIFY(scanned(state, base() + "/tree"));
        // Four children: four rows, largest first, with their texts.
        QCOMPARE(model.rowCount(), 4);
        QCOMPARE(model.data(model.index(0), LargestChildrenModel::NameRole).toString(), QStringLiteral("many"));
        const FileNode* movie = state.root().tree()->find(base() + "/tree/movie");
        int movieRow = 0;
        while (movieRow < model.rowCount() && model.nodeAt(movieRow).get() != movie)
            ++movieRow;
        const auto role = [&](int row, int role) { return model.data(model.index(row), role); };
        QCOMPARE(role(movieRow, LargestChildrenModel::IsDirectoryRole).toBool(), false);
        QCOMPARE(role(movieRow, LargestChildrenModel::ShareTextRole).toString(),
                 percentText(double(movie->size()), double(state.root()->size())));
        QCOMPARE(role(movieRow, LargestChildrenModel::SizeTextRole).toString(), formatBytes(movie->size()));

        // Forty children: twelve rows, and they follow the focus.
        QVERIFY(state.focusOn(nodeAt(state, base() + "/tree/many")));
        QCOMPARE(model.rowCount(), LargestChildrenModel::kMaximumRows);
        QCOMPARE(role(0, LargestChildrenModel::NameRole).toString(), QStringLiteral("f39"));
        QCOMPARE(role(11, LargestChildrenModel::NameRole).toString(), QStringLiteral("f28"));
        QVERIFY(model.roleNames().values().contains("shareText"));
    }

    void hoverAndDoubleClick()
    {
        AppState state(oneWorker());
        LargestChildrenModel model(state);
        QVERIFY(scanned(state, base() + "/tree"));
        QSignalSpy changes(&model, &LargestChildrenModel::dataChanged);
        // Straight from one row to the next: whichever order the events
        // come in, the second row stays lit.
        model.enter(0);
        model.enter(1);
        model.leave(0);
        QCOMPARE(state.hovered(), model.nodeAt(1));
        const auto lit = [&](int row) { return model.data(model.index(row), LargestChildrenModel::IsHoveredRole).toBool(); };
        QVERIFY(lit(1) && !lit(0) && changes.count() >= 2);
        model.leave(1);
        QVERIFY(!state.hovered());

        // Double click: files and empty folders stay put, folders with children open.
        for (int row = 0; row < model.rowCount(); ++row) {
            const NodeRef node = model.nodeAt(row);
            const bool opens = model.data(model.index(row), LargestChildrenModel::CanDrillInRole).toBool();
            QCOMPARE(opens, node->isDirectory() && node->hasChildren());
            if (!opens) {
                QVERIFY(!model.drillIn(row));
                QCOMPARE(state.focus(), state.root());
            }
        }
        const NodeRef docs = nodeAt(state, base() + "/tree/docs");
        for (int row = 0; row < model.rowCount(); ++row)
            if (model.nodeAt(row) == docs)
                QVERIFY(model.drillIn(row));
        QCOMPARE(state.focus(), docs);
        QCOMPARE(model.rowCount(), 1);
    }

    void tooltipTexts()
    {
        AppState state(oneWorker());
        QVERIFY(scanned(state, base() + "/tree"));
        ScanTree& tree = *state.root().tree();
        const FileNode* docs = tree.find(base() + "/tree/docs");
        const FileNode* report = tree.find(base() + "/tree/docs/report");

        const TooltipText folder = tooltipText(*docs, docs->size());
        QCOMPARE(QStringList({folder.name, folder.path, folder.share, folder.files}),
                 QStringList({"docs", QString::fromUtf8(base() + "/tree/docs"), "100%", "1 file"}));
        const TooltipText file = tooltipText(*report, 0);
        QVERIFY(file.files.isEmpty()); // a file's card has one line fewer
        QCOMPARE(file.share, QStringLiteral("0%"));
        QCOMPARE(file.size, formatBytes(report->size()));
        // Fixed English in every language.
        LocalizationManager::shared().setCurrent(Language::german);
        QCOMPARE(fileCountText(2), QStringLiteral("2 files"));
        LocalizationManager::shared().setCurrent(Language::english);
    }

    void breadcrumbFromRootToFocus()
    {
        AppState state(oneWorker());
        QVERIFY(scanned(state, base() + "/tree"));
        const std::vector<FileNode*> atRoot = breadcrumbPath(state.root().get());
        QCOMPARE(atRoot.size(), size_t(1));
        QCOMPARE(breadcrumbLabel(*atRoot[0]), QStringLiteral("tree"));
        FileNode* report = state.root().tree()->find(base() + "/tree/docs/report");
        QCOMPARE(breadcrumbPath(report), (std::vector<FileNode*>{state.root().get(), report->parent(), report}));
        QCOMPARE(breadcrumbLabel(*report->parent()), QStringLiteral("docs"));
        QVERIFY(breadcrumbPath(nullptr).empty());

        // The root of the file system is labelled "/".
        Scanner::Options options;
        options.workers = 1;
        QCOMPARE(breadcrumbLabel(*scanUntil("/", options, [](const ScanProgress&) { return true; })->root()), QStringLiteral("/"));
    }

    void breadcrumbGivesWayFromTheMiddle()
    {
        const auto plan = [](std::vector<double> natural, double available) {
            return planBreadcrumb(natural, available, 20, 10, 40);
        };
        const auto width = [](const CrumbPlan& p) {
            double sum = p.ellipsisAt >= 0 ? 10 : 0;
            int shown = p.ellipsisAt >= 0 ? 1 : 0;
            for (const double w : p.widths) {
                sum += w >= 0 ? w : 0;
                shown += w >= 0 ? 1 : 0;
            }
            return sum + 20 * (shown - 1);
        };
        // Room enough: everything at its natural width.
        CrumbPlan p = plan({50, 100, 100, 200}, 1000);
        QCOMPARE(p.widths, (std::vector<double>{50, 100, 100, 200}));
        QCOMPARE(p.ellipsisAt, -1);
        // A little short: the middle shrinks, the root and the focus stay whole.
        p = plan({50, 100, 100, 200}, 480);
        QCOMPARE(p.widths.front(), 50.0);
        QCOMPARE(p.widths.back(), 200.0);
        QCOMPARE(width(p), 480.0);
        QVERIFY(p.widths[1] >= 40 && p.widths[2] >= 40);
        // Shorter: middle elements fold behind one "…", from the root's side.
        p = plan({50, 100, 100, 100, 200}, 420);
        QCOMPARE(p.ellipsisAt, 1);
        QCOMPARE(p.widths[1], -1.0);
        QVERIFY(p.widths[3] >= 40);
        QCOMPARE(p.widths.back(), 200.0);
        QVERIFY(width(p) <= 420);
        // Hardly any room: the root, then the focus, shrink to the minimum and no further.
        p = plan({300, 100, 400}, 200);
        QCOMPARE(p.widths[1], -1.0);
        QCOMPARE(p.widths.front(), 40.0);
        QVERIFY(p.widths.back() >= 40 && p.widths.back() < 400);
        p = plan({300}, 100);
        QCOMPARE(p.widths, std::vector<double>{100});
    }
};

TIDEWICK_TEST_MAIN(CompanionsTest)
#include "tst_companions.moc"
