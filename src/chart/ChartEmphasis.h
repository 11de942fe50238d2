#pragma once

// What the chart brings forward besides the hover: the files of one kind
// (chosen in the Kinds tab), one item (a search result or a largest file of
// a kind, opened from its list), and whether sectors take their kind's
// colour instead of their branch's. The chart asks it for each sector.
// GUI thread only, like the tree.

#include "scan/FileKinds.h"
#include "scan/FileNode.h"

#include <QObject>
#include <QPointer>
#include <memory>
#include <optional>

namespace tw {

class AppState;

// `colourKind`: paint in this kind's colour (-1: the branch's own).
// `opacity`: at most this opaque.
struct SectorLook {
    int colourKind = -1;
    double opacity = 1;
};

class ChartEmphasis : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    Q_PROPERTY(bool colourByKind READ colourByKind WRITE setColourByKind NOTIFY changed)
    Q_PROPERTY(int selectedKind READ selectedKindIndex NOTIFY changed) // -1: none
    Q_PROPERTY(bool hasHighlight READ hasHighlight NOTIFY changed)

public:
    static constexpr double kFaded = 0.35;

    explicit ChartEmphasis(QObject* parent = nullptr);

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);

    // The kinds of the focus, or null while they are being counted.
    void setSummary(std::shared_ptr<const KindSummary> summary);
    [[nodiscard]] const std::shared_ptr<const KindSummary>& summary() const { return m_summary; }
    void setSelectedKind(std::optional<FileKind> kind);
    [[nodiscard]] std::optional<FileKind> selectedKind() const { return m_selected; }
    [[nodiscard]] int selectedKindIndex() const { return m_selected ? int(*m_selected) : -1; }
    [[nodiscard]] bool colourByKind() const { return m_colourByKind; }
    void setColourByKind(bool on);
    // Kept while the focus is the node's folder or above it.
    void setHighlight(NodeRef node);
    [[nodiscard]] bool hasHighlight() const { return bool(m_highlight); }
    Q_INVOKABLE void clearHighlight() { setHighlight({}); }

    // Whether any sector looks other than it would without this.
    [[nodiscard]] bool active() const { return m_colourByKind || m_selected || m_highlight; }
    [[nodiscard]] SectorLook look(const FileNode* node) const;

Q_SIGNALS:
    void stateChanged();
    void changed();

private:
    void followFocus();

    QPointer<AppState> m_state;
    std::shared_ptr<const KindSummary> m_summary;
    std::optional<FileKind> m_selected;
    bool m_colourByKind = false;
    NodeRef m_highlight;
};

} // namespace tw
