#include "chart/ChartEmphasis.h"

#include "app/StateFollower.h"

#include <algorithm>

namespace tw {

ChartEmphasis::ChartEmphasis(QObject* parent) : QObject(parent) {}

void ChartEmphasis::setState(AppState* state)
{
    if (followState(m_state, state, this, [this](AppState& followed) {
            connect(&followed, &AppState::focusChanged, this, &ChartEmphasis::followFocus);
            connect(&followed, &AppState::rootChanged, this, &ChartEmphasis::followFocus);
        }))
        Q_EMIT stateChanged();
}

void ChartEmphasis::setSummary(std::shared_ptr<const KindSummary> summary)
{
    m_summary = std::move(summary);
    if (m_colourByKind || m_selected)
        Q_EMIT changed();
}

void ChartEmphasis::setSelectedKind(std::optional<FileKind> kind)
{
    if (m_selected == kind)
        return;
    m_selected = kind;
    Q_EMIT changed();
}

void ChartEmphasis::setColourByKind(bool on)
{
    if (m_colourByKind == on)
        return;
    m_colourByKind = on;
    Q_EMIT changed();
}

void ChartEmphasis::setHighlight(NodeRef node)
{
    if (m_highlight == node && m_highlight.tree() == node.tree())
        return;
    m_highlight = std::move(node);
    Q_EMIT changed();
}

// A highlight outside the focus, or of a tree no longer shown, has nothing to mark.
void ChartEmphasis::followFocus()
{
    if (!m_highlight)
        return;
    const NodeRef& focus = m_state ? m_state->focus() : NodeRef();
    bool inside = false;
    if (focus && focus.tree() == m_highlight.tree())
        for (const FileNode* at = m_highlight->parent(); at && !inside; at = at->parent())
            inside = at == focus.get();
    if (!inside)
        setHighlight({});
}

SectorLook ChartEmphasis::look(const FileNode* node) const
{
    SectorLook look;
    if (m_colourByKind)
        look.colourKind = int(m_summary ? m_summary->dominantKind(node).value_or(FileKind::other) : FileKind::other);
    if (m_selected) {
        const auto share = m_summary ? m_summary->shareOf(node, *m_selected) : std::nullopt;
        look.opacity = kFaded + (1 - kFaded) * share.value_or(0);
    }
    if (m_highlight) {
        bool onPath = false;
        for (const FileNode* at = m_highlight.get(); at && !onPath; at = at->parent())
            onPath = at == node;
        if (!onPath)
            look.opacity = std::min(look.opacity, kFaded);
    }
    return look;
}

} // namespace tw
