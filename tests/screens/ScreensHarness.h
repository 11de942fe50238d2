#pragma once

// A window of the screens for tests: its own AppState over a fixed volume
// and a chosen Full Disk Access answer, the ContentView loaded offscreen,
// and ways to find items and move the pointer. Any QML warning is recorded
// so the test that produced it can fail.

#include "FakePlatform.h"
#include "TestFiles.h"
#include "app/AppState.h"
#include "app/DiskAccess.h"
#include "chart/SunburstLayout.h"
#include "platform/VolumeFacts.h"
#include "localization/LocalizationManager.h"
#include "screens/ScreensSetup.h"
#include "platform/SystemAppearance.h"

#include <QQuickStyle>
#include <QStandardPaths>

#include <QQuickItem>
#include <QQuickView>
#include <QtTest>
#include <functional>
#include <memory>

namespace tw::test {

inline QStringList g_warnings;

inline void recordWarnings(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    // Qt's shared animation timer says this when the window whose driver ran
    // the last drill went away first: Qt's bookkeeping, not a fault of ours.
    if (message.startsWith(QLatin1String("QUnifiedTimer::stopAnimationDriver")))
        return;
    if (type != QtDebugMsg && type != QtInfoMsg)
        g_warnings.append(message);
}

// Once per test program: the test's own settings, the Fusion style, English.
inline void prepareScreens()
{
    QStandardPaths::setTestModeEnabled(true);
    QQuickStyle::setStyle(QStringLiteral("Fusion"));
    LocalizationManager::shared().setCurrent(Language::english);
}

// A small home folder under `base`: docs (deep/a, report) to fill in further.
inline QByteArray makeHomeTree(const QString& base)
{
    return makeTree(QFile::encodeName(base) + "/home",
                    {{"docs/deep/a", 400 * 1024}, {"docs/report", 300 * 1024}});
}

// A test's init and cleanup: from here on every warning is recorded, and
// the test fails at its end if there was one.
inline void recordWarningsFromHere()
{
    g_warnings.clear();
    qInstallMessageHandler(recordWarnings);
}
inline void failOnRecordedWarnings()
{
    qInstallMessageHandler(nullptr);
    if (!g_warnings.isEmpty())
        QFAIL(qPrintable(QStringLiteral("QML warnings:\n") + g_warnings.join(u'\n')));
}

// One window with its own AppState.
struct Window {
    explicit Window(const VolumeFacts& volumes, const DiskAccess& access,
                    std::function<std::optional<QString>(const QByteArray&)> recycle = {},
                    SystemAppearance* appearance = nullptr)
        : Window(
              [&] {
                  AppState::Services services;
                  services.recycle = std::move(recycle);
                  services.volumes = &volumes;
                  services.diskAccess = &access;
                  return services;
              }(),
              appearance)
    {
    }
    explicit Window(AppState::Services services, SystemAppearance* appearance = nullptr)
    {
        services.scannerOptions.workers = 1;
        state = std::make_unique<AppState>(services);
        loadContentView(view, {{QStringLiteral("appState"), QVariant::fromValue(state.get())}}, appearance);
        view.show();
    }
    ~Window() { state->cancelScan(); }

    // Searches the visual tree, which also holds what Repeaters and Loaders made.
    static QQuickItem* findIn(QQuickItem* at, const QString& name)
    {
        if (at->objectName() == name)
            return at;
        for (QQuickItem* child : at->childItems()) {
            if (QQuickItem* found = findIn(child, name))
                return found;
        }
        return nullptr;
    }
    QQuickItem* item(const char* name) const
    {
        return findIn(view.contentItem(), QString::fromLatin1(name));
    }
    bool shows(const char* name) const
    {
        QQuickItem* found = item(name);
        return found && found->isVisible();
    }
    bool scan(const QByteArray& path)
    {
        state->requestScan(path);
        if (!QTest::qWaitFor([&] { return state->phase() == AppState::Phase::ready; }, 20000))
            return false;
        QTest::qWait(50); // the chart screen's first layout
        return true;
    }
    // The scene point in the middle of the sector drawn for `node`.
    QPoint pointOf(const FileNode* node) const
    {
        QQuickItem* chart = item("sunburst");
        const std::vector<Segment> segments =
            buildSegments(state->focus().get(), chart->width(), chart->height());
        const ChartGeometry g = chartGeometry(chart->width(), chart->height());
        for (const Segment& s : segments) {
            if (s.node == node) {
                const double a = (s.startAngle + s.endAngle) / 2;
                const double r = (s.innerRadius + s.outerRadius) / 2;
                return chart
                    ->mapToScene(QPointF(g.centreX + r * std::sin(a), g.centreY - r * std::cos(a)))
                    .toPoint();
            }
        }
        return {};
    }
    QPoint chartCentre() const
    {
        QQuickItem* chart = item("sunburst");
        return chart->mapToScene(QPointF(chart->width() / 2, chart->height() / 2)).toPoint();
    }
    QString text(const char* name) const { return item(name)->property("text").toString(); }
    // The node at `path` below the root ("docs/deep"), as a handle that keeps the tree.
    NodeRef node(const QByteArray& path) const
    {
        const FileNode* at = state->root().get();
        for (const QByteArray& name : path.split('/'))
            at = at ? childNamed(*at, name.toStdString()) : nullptr;
        return state->root().sibling(const_cast<FileNode*>(at));
    }
    static QPoint centreOf(const QQuickItem* found)
    {
        return found->mapToScene(QPointF(found->width() / 2, found->height() / 2)).toPoint();
    }
    QPoint centreOf(const char* name) const { return centreOf(item(name)); }
    void click(QPoint at, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(&view, button, {}, at);
    }
    void click(const char* name) { click(centreOf(name)); }
    void key(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&view, Qt::Key(key), modifiers);
    }
    // The largest list's rows as drawn, top to bottom.
    QList<QQuickItem*> listRows() const
    {
        QList<QQuickItem*> rows = item("largestList")->property("contentItem").value<QQuickItem*>()->childItems();
        rows.removeIf([](QQuickItem* row) { return !row->property("isHovered").isValid(); });
        std::sort(rows.begin(), rows.end(), [](QQuickItem* a, QQuickItem* b) { return a->y() < b->y(); });
        return rows;
    }
    // A pointer arrives: two moves, as the first into a window may not hover.
    void moveTo(QPoint at)
    {
        QTest::mouseMove(&view, at + QPoint(1, 1));
        QTest::mouseMove(&view, at);
    }

    std::unique_ptr<AppState> state;
    QQuickView view;
};

inline FileNode* child(const FileNode& parent, const char* name)
{
    return const_cast<FileNode*>(childNamed(parent, name));
}
inline FileNode* child(const NodeRef& parent, const char* name)
{
    return child(*parent, name);
}

} // namespace tw::test
