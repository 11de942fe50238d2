#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QPointer>
#include <QVariantList>
#include <QQuickPaintedItem>
#include <QVariantAnimation>
#include <optional>

#include "scan/FileNode.h"

namespace tw {

class AppState;
class ChartEmphasis;
struct Segment;

// The chart: lays out AppState's focus, paints it and hit-tests it on every
// evaluation, with no cache. A drill in or out moves for a quarter of a
// second (see DrillMotion); the hover and clicks meanwhile already work on
// the new focus, where the motion ends, and a click during a motion starts
// the next one from there. Hover sets AppState's hovered
// node; a click drills into a folder with children; a secondary click asks
// QML for the context menu, which is built from the hover. The fading
// follows this item's own mouse location, not the shared hover. GUI thread.
class SunburstView : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    // The window's background, for the hub.
    Q_PROPERTY(QColor hubColor READ hubColor WRITE setHubColor NOTIFY hubColorChanged)
    // The outline of picked sectors.
    Q_PROPERTY(QColor markColor READ markColor WRITE setMarkColor NOTIFY markColorChanged)
    // Shades for a dark background.
    Q_PROPERTY(bool dark READ dark WRITE setDark NOTIFY darkChanged)
    // R × 0.22 for the current size: the hub label's width follows it.
    Q_PROPERTY(double hubRadius READ hubRadius NOTIFY hubRadiusChanged)
    // While true (a context menu is open), the hover and the fading stay on
    // the menu's subject whatever the pointer does.
    Q_PROPERTY(bool holdsHover READ holdsHover WRITE setHoldsHover NOTIFY holdsHoverChanged)
    // The inks of the names on the rings: each sector's name takes the one
    // that stands out more from its fill.
    Q_PROPERTY(QColor labelDark READ labelDark WRITE setLabelDark NOTIFY labelInksChanged)
    Q_PROPERTY(QColor labelLight READ labelLight WRITE setLabelLight NOTIFY labelInksChanged)
    // False when the system asks for reduced motion: a drill is then just
    // the next frame.
    Q_PROPERTY(bool animatesDrill READ animatesDrill WRITE setAnimatesDrill NOTIFY animatesDrillChanged)
    // True while a drill moves.
    Q_PROPERTY(bool drilling READ drilling NOTIFY drillingChanged)
    // Colouring by kind and the fading around a chosen kind or item; with
    // `kindColours`, one colour a FileKind, in its order.
    Q_PROPERTY(tw::ChartEmphasis* emphasis READ emphasis WRITE setEmphasis NOTIFY emphasisChanged)
    Q_PROPERTY(QVariantList kindColours READ kindColours WRITE setKindColours NOTIFY emphasisChanged)

public:
    explicit SunburstView(QQuickItem* parent = nullptr);

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);
    [[nodiscard]] QColor hubColor() const { return m_hubColor; }
    void setHubColor(const QColor& color);
    [[nodiscard]] QColor markColor() const { return m_markColor; }
    void setMarkColor(const QColor& color);
    [[nodiscard]] bool dark() const { return m_dark; }
    void setDark(bool dark);
    [[nodiscard]] double hubRadius() const;
    [[nodiscard]] bool holdsHover() const { return m_holdsHover; }
    [[nodiscard]] QColor labelDark() const { return m_labelDark; }
    void setLabelDark(const QColor& color);
    [[nodiscard]] QColor labelLight() const { return m_labelLight; }
    void setLabelLight(const QColor& color);
    [[nodiscard]] bool animatesDrill() const { return m_animatesDrill; }
    void setAnimatesDrill(bool animates);
    [[nodiscard]] bool drilling() const;
    void setHoldsHover(bool holds);
    [[nodiscard]] ChartEmphasis* emphasis() const { return m_emphasis; }
    void setEmphasis(ChartEmphasis* emphasis);
    [[nodiscard]] QVariantList kindColours() const;
    void setKindColours(const QVariantList& colours);
    // Whether the sector drawn for AppState's hovered node reaches into
    // `rect` (item coordinates): the tooltip goes where it covers nothing.
    Q_INVOKABLE bool hoveredSectorMeets(const QRectF& rect) const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void stateChanged();
    void hubColorChanged();
    void darkChanged();
    void markColorChanged();
    void hubRadiusChanged();
    void holdsHoverChanged();
    void labelInksChanged();
    void animatesDrillChanged();
    void drillingChanged();
    void emphasisChanged();
    // A secondary click at (x, y) in the item; the menu's subject is the hover.
    void contextMenuRequested(double x, double y);

protected:
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    void moveMouse(const QPointF& location);
    void click(bool pick);
    // The focus moved: from a folder to a descendant or back, the chart moves.
    void focusMoved();

    QPointer<AppState> m_state;
    QColor m_hubColor{0xec, 0xec, 0xec};
    QColor m_markColor{Qt::blue};
    std::optional<QPointF> m_mouseLocation;
    bool m_holdsHover = false;
    bool m_dark = false;
    QColor m_labelDark{0, 0, 0, 217};
    QColor m_labelLight{255, 255, 255, 242};
    QImage m_canvas; // kept between frames to spare the allocation
    bool m_animatesDrill = true;
    NodeRef m_shownFocus; // where the chart rests or its motion ends
    NodeRef m_drillOuter; // the motion's ancestor and descendant foci
    NodeRef m_drillInner;
    bool m_drillingIn = false;
    QVariantAnimation m_drill; // 0 to 1, linear; eased when painted
    QPointer<ChartEmphasis> m_emphasis;
    QList<QColor> m_kindColours;
};

} // namespace tw
