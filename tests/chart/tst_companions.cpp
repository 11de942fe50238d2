// The chart's companions: the details rows, the tooltip's texts and the
// breadcrumb, driven through AppState. The rows' hover and double-click rules
// are driven with the mouse in tst_screens.

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
        const auto role = [&](int row, int role) { return model.data(model.index(row), role).toString(); };
        // Four children: four rows, largest first, with their texts.
        QCOMPARE(model.rowCount(), 4);
        QCOMPARE(role(0, LargestChildrenModel::NameRole), QStringLiteral("many"));
        const NodeRef movie = nodeAt(state, base() + "/tree/movie");
        int row = 0;
        while (row < model.rowCount() && model.nodeAt(row) != movie)
            ++row;
        QCOMPARE(QStringList({role(row, LargestChildrenModel::IsDirectoryRole), role(row, LargestChildrenModel::ShareTextRole),
                              role(row, LargestChildrenModel::SizeTextRole)}),
                 QStringList({QStringLiteral("false"), percentText(double(movie->size()), double(state.root()->size())),
                              formatBytes(movie->size())}));

        // Forty children: twelve rows, and they follow the focus.
        QVERIFY(state.focusOn(nodeAt(state, base() + "/tree/many")));
        QCOMPARE(model.rowCount(), LargestChildrenModel::kMaximumRows);
        QCOMPARE(role(0, LargestChildrenModel::NameRole) + u' ' + role(11, LargestChildrenModel::NameRole),
                 QStringLiteral("f39 f28"));
        QVERIFY(model.roleNames().values().contains("shareText"));
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

    void breadcrumbGivesWayFromTheMiddle_data()
    {
        QTest::addColumn<std::vector<double>>("natural");
        QTest::addColumn<double>("available");
        QTest::addColumn<std::vector<double>>("widths"); // -1: folded behind the "…"
        // Room enough: everything at its natural width.
        QTest::newRow("room") << std::vector<double>{50, 100, 100, 200} << 1000.0 << std::vector<double>{50, 100, 100, 200};
        // A little short: the middle shrinks, the root and the focus stay whole.
        QTest::newRow("short") << std::vector<double>{50, 100, 100, 200} << 480.0 << std::vector<double>{50, 85, 85, 200};
        // Shorter: middle elements fold behind one "…", from the root's side.
        QTest::newRow("shorter") << std::vector<double>{50, 100, 100, 100, 200} << 420.0
                                 << std::vector<double>{50, -1, 40, 40, 200};
        // Hardly any room: the root, then the focus, shrink to the minimum and no further.
        QTest::newRow("hardly") << std::vector<double>{300, 100, 400} << 200.0 << std::vector<double>{40, -1, 110};
        QTest::newRow("one") << std::vector<double>{300} << 100.0 << std::vector<double>{100};
    }
    void breadcrumbGivesWayFromTheMiddle()
    {
        QFETCH(std::vector<double>, natural);
        QFETCH(double, available);
        QFETCH(std::vector<double>, widths);
        const CrumbPlan plan = planBreadcrumb(natural, available, 20, 10, 40);
        QCOMPARE(plan.widths, widths);
        const auto folded = std::find(widths.begin(), widths.end(), -1.0);
        QCOMPARE(plan.ellipsisAt, folded == widths.end() ? -1 : int(folded - widths.begin()));
    }
};

TIDEWICK_TEST_MAIN(CompanionsTest)
#include "tst_companions.moc"
