#pragma once

// What the views around the chart show, made in C++ so QML never walks the
// tree: the largest children of the focus, the tooltip's texts, the
// breadcrumb's path. GUI thread only, like the tree they read.

#include "scan/FileNode.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QString>
#include <vector>

namespace tw {

class AppState;

// "1 file", "N files": fixed English in every language, as on the hub label.
[[nodiscard]] QString fileCountText(qint64 count);

// "Could not be read" for a node whose walk could not be finished, else empty.
[[nodiscard]] QString unreadableText(const FileNode& node);
// "in the cloud" for a node a file provider keeps there, else empty.
[[nodiscard]] QString inCloudText(const FileNode& node);

// The tooltip's lines for a hovered node; `parentSize` is the focus's size,
// the denominator of the share. `files` is empty for a file.
struct TooltipText {
    QString name;
    QString path;
    QString size;
    QString share;
    QString files;
    bool isDirectory = false;
    // "Could not be read", for a folder whose walk could not be finished; else empty.
    QString unreadable;
    // "in the cloud", for an entry whose contents are not on this disk; else empty.
    QString inCloud;
};
[[nodiscard]] TooltipText tooltipText(const FileNode& node, qint64 parentSize);

// From the scan's root to `focus`, root first. Labels are the names, "/" for
// a name that is empty.
[[nodiscard]] std::vector<FileNode*> breadcrumbPath(FileNode* focus);
[[nodiscard]] QString breadcrumbLabel(const FileNode& node);

// How the breadcrumb fits `available` points, from each element's natural
// width (the root first, the focus last). `widths[i]` is the width to draw
// element i at (it elides beyond that), or -1 where it is folded away; the
// folded elements show as one "…" of `ellipsis` points at `ellipsisAt`
// (-1 when nothing is folded). The middle gives way first: it shrinks to
// `minimum` each, then folds from the root's side; the root and then the
// focus shrink only when nothing else is left, never below `minimum`.
struct CrumbPlan {
    std::vector<double> widths;
    int ellipsisAt = -1;
};
[[nodiscard]] CrumbPlan planBreadcrumb(const std::vector<double>& natural, double available,
                                       double separator, double ellipsis, double minimum);

// The details column: the first 12 children of AppState's focus (largest
// first, as the tree keeps them), with texts ready to show, and the shared
// hover. Follows focus, hover and language changes by itself.
class LargestChildrenModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
public:
    static constexpr int kMaximumRows = 12;
    enum Role {
        NameRole = Qt::UserRole + 1,
        IsDirectoryRole,
        SizeTextRole,
        ShareTextRole,
        CanDrillInRole, // a folder with at least one child
        IsHoveredRole,
        UnreadableRole, // "Could not be read", or empty
        InCloudRole, // "in the cloud", or empty
        AccessibleTextRole, // name, size and share, as a screen reader says the row
        IsSelectedRole, // picked for a batch
    };
    Q_ENUM(Role)

    explicit LargestChildrenModel(QObject* parent = nullptr);
    explicit LargestChildrenModel(AppState& state, QObject* parent = nullptr);

    // Does not own the state; follows it until it is replaced or destroyed.
    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] NodeRef nodeAt(int row) const;
    // The pointer entered or left a row. Leaving clears the hover only if it
    // is still this row's node, so the order of leave and enter between two
    // neighbours cannot blank the highlight.
    Q_INVOKABLE void enter(int row);
    Q_INVOKABLE void leave(int row);
    // Double click: drills into a folder with children, does nothing else.
    Q_INVOKABLE bool drillIn(int row);
    // Picking rows for a batch: Ctrl/⌘-click toggles one, Shift-click adds
    // the rows from the anchor (the last toggled row) to `row`, Ctrl/⌘-A all.
    Q_INVOKABLE void toggleSelected(int row);
    Q_INVOKABLE void selectRange(int row);
    Q_INVOKABLE void selectAll();

Q_SIGNALS:
    void stateChanged();

private:
    void rebuild();
    void refreshHover();

    QPointer<AppState> m_state;
    std::vector<FileNode*> m_rows;
    int m_anchor = -1;
};

} // namespace tw
