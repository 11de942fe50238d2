#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QPointer>
#include <QQuickPaintedItem>
#include <optional>

namespace tw {

class AppState;
struct Segment;

// The chart: lays out AppState's focus, paints it and hit-tests it on every
// evaluation, with no cache and no animation. Hover sets AppState's hovered
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
    void setHoldsHover(bool holds);
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

    QPointer<AppState> m_state;
    QColor m_hubColor{0xec, 0xec, 0xec};
    QColor m_markColor{Qt::blue};
    std::optional<QPointF> m_mouseLocation;
    bool m_holdsHover = false;
    bool m_dark = false;
    QImage m_canvas; // kept between frames to spare the allocation
};

} // namespace tw
