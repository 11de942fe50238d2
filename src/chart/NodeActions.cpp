#include "chart/NodeActions.h"

#include "app/AppState.h"
#include "app/StateFollower.h"
#include "chart/ChartCompanions.h"

namespace tw {

NodeActions::NodeActions(QObject* parent) : QObject(parent) {}

void NodeActions::setState(AppState* state)
{
    const bool moved = followState(m_state, state, this, [this](AppState& followed) {
        // A subject shares its tree: let a replaced tree go.
        connect(&followed, &AppState::rootChanged, this, [this] {
            if (m_subject && (!m_state->root() || m_state->root().tree() != m_subject.tree()))
                setSubject({});
        });
    });
    if (!moved)
        return;
    setSubject({});
    Q_EMIT stateChanged();
}

bool NodeActions::canOpen() const
{
    return m_subject && m_subject->isDirectory() && m_subject->hasChildren();
}

bool NodeActions::takeHovered()
{
    m_subjectRow = -1;
    setSubject(m_state ? m_state->hovered() : NodeRef());
    return hasSubject();
}

bool NodeActions::takeRow(LargestChildrenModel* rows, int row)
{
    m_subjectRow = row;
    setSubject(rows ? rows->nodeAt(row) : NodeRef());
    return hasSubject();
}

bool NodeActions::takeNode(NodeRef node)
{
    m_subjectRow = -1;
    setSubject(std::move(node));
    return hasSubject();
}

void NodeActions::reveal()
{
    if (m_state && m_subject)
        m_state->reveal(m_subject);
}

void NodeActions::open()
{
    if (m_state && m_subject)
        m_state->focusOn(m_subject);
}

void NodeActions::rescan()
{
    if (m_state && canRescan())
        m_state->rescanFolders({m_subject->path()});
}

void NodeActions::moveToTrash()
{
    // What may be deleted is decided behind the dialog, not here.
    if (m_state && m_subject)
        m_state->setDeleteCandidate(m_subject);
}

void NodeActions::setSubject(NodeRef subject)
{
    if (m_subject == subject && m_subject.tree() == subject.tree())
        return;
    m_subject = std::move(subject);
    Q_EMIT subjectChanged();
}

} // namespace tw
