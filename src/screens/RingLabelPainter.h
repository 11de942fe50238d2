#pragma once

#include "chart/RingLabels.h"
#include "chart/SunburstLayout.h"
#include "screens/SunburstPainter.h"

#include <QColor>
#include <QFont>
#include <vector>

class QImage;

namespace tw {

class FileNode;

// The two inks a name may take on a sector, and the window behind the
// chart (a faded sector lets it through). Each label takes whichever ink
// stands out more from its sector's fill as seen on screen.
struct LabelInks {
    QColor dark;
    QColor light;
    QColor background;
};

// The font of the names on the rings, and its measures for placement.
[[nodiscard]] QFont ringLabelFont();
[[nodiscard]] LabelMetrics ringLabelMetrics(const QFont& font);

// Draws placed labels over a painted chart in `canvas` (its device pixel
// ratio turns points into pixels). While something is hovered the names of
// faded sectors fade with them. `dark` picks the shades the fills were
// painted with, and `restyle` the fills the chart was painted with instead
// (by kind, or around a chosen kind), so the ink reads on what is shown.
// GUI or render thread, one at a time.
void paintRingLabels(QImage& canvas, const ChartGeometry& geometry,
                     const std::vector<Segment>& segments, const std::vector<RingLabel>& labels,
                     const FileNode* hovered, const LabelInks& inks, bool dark,
                     const SectorRestyle& restyle = {});

} // namespace tw
