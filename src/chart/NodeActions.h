#pragma once

// The context menu's subject and its three actions, shared by the chart and
// the details rows. The subject is taken when the menu opens (the chart's
// hovered node, or a row's node) and kept until the next menu, so an action
// still reaches the node the menu was opened for. GUI thread only.

#include "scan/FileNode.h"

#include <QObject>
#include <QPointer>

namespace tw {

class AppState;
class LargestChildrenModel;

class NodeActions : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    Q_PROPERTY(bool hasSubject READ hasSubject NOTIFY subjectChanged)
    // "Open here" is offered only for a folder with at least one child.
    Q_PROPERTY(bool canOpen READ canOpen NOTIFY subjectChanged)
    // The row the subject was taken from, or -1 (taken from the hover).
    Q_PROPERTY(int subjectRow READ subjectRow NOTIFY subjectChanged)
    Q_PROPERTY(bool canRescan READ canRescan NOTIFY subjectChanged)

public:
    explicit NodeActions(QObject* parent = nullptr);

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);
    [[nodiscard]] bool hasSubject() const { return bool(m_subject); }
    [[nodiscard]] bool canOpen() const;
    [[nodiscard]] const NodeRef& subject() const { return m_subject; }
    [[nodiscard]] int subjectRow() const { return m_subjectRow; }

    // The chart's menu is built from the hover, not from a new hit test.
    // Returns whether there is a subject (no subject, no menu).
    Q_INVOKABLE bool takeHovered();
    // A row's menu needs no hover: the row is the subject.
    Q_INVOKABLE bool takeRow(tw::LargestChildrenModel* rows, int row);
    // A row of another list (a search result, a kind's largest file).
    bool takeNode(NodeRef node);

    Q_INVOKABLE void reveal();
    Q_INVOKABLE void open();
    Q_INVOKABLE void moveToTrash();
    // "Rescan": walks the subject folder again, alone.
    Q_INVOKABLE void rescan();
    [[nodiscard]] bool canRescan() const { return m_subject && m_subject->isDirectory(); }

Q_SIGNALS:
    void stateChanged();
    void subjectChanged();

private:
    void setSubject(NodeRef subject);

    QPointer<AppState> m_state;
    NodeRef m_subject;
    int m_subjectRow = -1;
};

} // namespace tw
