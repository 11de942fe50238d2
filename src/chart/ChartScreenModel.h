#pragma once

// The chart screen's texts and conditions for QML: the hub label, the
// breadcrumb, the tooltip of the hovered node, the toolbar's figures and
// whether Up is possible. Follows AppState's focus, root, hover, capacity
// and the language by itself. GUI thread only, like the tree it reads.

#include "scan/VolumeInfo.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <optional>

namespace tw {

class AppState;

// The toolbar's figures. `showsInfo`: the sum of file sizes is larger than
// the volume's used space (total − rawFree, at least 0), which is when the
// help behind "info.circle" matters. `capacity` is empty when the volume
// could not be asked: then only the file sizes show.
struct ToolbarFigures {
    QString fileSizes;
    bool showsInfo = false;
    QString capacity;
};
[[nodiscard]] ToolbarFigures toolbarFigures(qint64 focusSize,
                                            const std::optional<VolumeInfo::Capacity>& capacity);

class ChartScreenModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    Q_PROPERTY(bool hasFocus READ hasFocus NOTIFY changed)
    Q_PROPERTY(QString hubName READ hubName NOTIFY changed)
    Q_PROPERTY(QString hubSize READ hubSize NOTIFY changed)
    Q_PROPERTY(QString hubFiles READ hubFiles NOTIFY changed)
    Q_PROPERTY(bool canGoUp READ canGoUp NOTIFY changed)
    // [{ label, isFocus }], the scan's root first.
    Q_PROPERTY(QVariantList crumbs READ crumbs NOTIFY changed)
    // { name, path, size, share, files, isDirectory }; empty without a hover.
    // A hover changes only these, so mouse movement rebuilds nothing else.
    Q_PROPERTY(QVariantMap tooltip READ tooltip NOTIFY tooltipChanged)
    Q_PROPERTY(bool hasTooltip READ hasTooltip NOTIFY tooltipChanged)
    Q_PROPERTY(QString fileSizesText READ fileSizesText NOTIFY changed)
    Q_PROPERTY(bool showsInfo READ showsInfo NOTIFY changed)
    Q_PROPERTY(QString capacityText READ capacityText NOTIFY changed)
    // Folders of the tree whose walk could not be finished (the banner's count).
    Q_PROPERTY(qint64 inaccessibleCount READ inaccessibleCount NOTIFY changed)

public:
    explicit ChartScreenModel(QObject* parent = nullptr);

    // Does not own the state.
    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);

    [[nodiscard]] bool hasFocus() const;
    [[nodiscard]] QString hubName() const;
    [[nodiscard]] QString hubSize() const;
    [[nodiscard]] QString hubFiles() const;
    [[nodiscard]] bool canGoUp() const;
    [[nodiscard]] QVariantList crumbs() const;
    [[nodiscard]] QVariantMap tooltip() const;
    [[nodiscard]] bool hasTooltip() const;
    [[nodiscard]] QString fileSizesText() const { return figures().fileSizes; }
    [[nodiscard]] bool showsInfo() const { return figures().showsInfo; }
    [[nodiscard]] QString capacityText() const { return figures().capacity; }
    [[nodiscard]] qint64 inaccessibleCount() const;

    // A breadcrumb element was clicked: the guarded focus change to it.
    // Returns whether the focus moved.
    Q_INVOKABLE bool selectCrumb(int index);
    // planBreadcrumb for QML: { widths: [..], ellipsisAt }.
    Q_INVOKABLE QVariantMap planCrumbs(const QVariantList& natural, double available,
                                       double separator, double ellipsis, double minimum) const;
    // The pointer left the window or the chart screen: nothing is hovered.
    Q_INVOKABLE void clearHover();

Q_SIGNALS:
    void stateChanged();
    void changed();
    void tooltipChanged();

private:
    [[nodiscard]] ToolbarFigures figures() const;

    QPointer<AppState> m_state;
};

} // namespace tw
