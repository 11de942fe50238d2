#pragma once

#include <QColor>
#include <QPointF>
#include <QtGlobal>
#include <cstdint>
#include <span>
#include <vector>

namespace tw {

// Anti-aliased polygons painted straight into 32-bit premultiplied pixels
// (QImage::Format_ARGB32_Premultiplied): each pixel gets the exact share of
// its area that the polygon covers (non-zero rule), blended source-over.
//
// The chart paints up to ten thousand sectors thinner than a pixel on every
// mouse movement. Through QPainter each one costs microseconds of set-up; here
// the work is proportional to the rows and edges a polygon actually touches.
//
// The rows [firstRow, endRow) of an image of 32-bit pixels, `width` wide,
// rows `bytesPerLine` apart from `bits`. Separate bands of one image can be
// painted on separate threads.
struct PixelBand {
    uchar* bits = nullptr;
    int width = 0;
    qsizetype bytesPerLine = 0;
    int firstRow = 0;
    int endRow = 0;

    [[nodiscard]] std::uint32_t* row(int y) const
    {
        return reinterpret_cast<std::uint32_t*>(bits + y * bytesPerLine);
    }
};

// Source-over of the premultiplied `colour` at `coverage` (0 to 255).
[[nodiscard]] std::uint32_t blendPixel(std::uint32_t under, std::uint32_t colour,
                                       std::uint32_t coverage);

class CoverageRaster {
public:
    explicit CoverageRaster(const PixelBand& band);

    void fill(std::span<const QPointF> polygon, const QColor& colour);
    // The outline of the closed polygon, `lineWidth` pixels wide and centred
    // on its edges; overlapping parts of the line are painted once.
    void stroke(std::span<const QPointF> polygon, double lineWidth, const QColor& colour);

private:
    bool begin(double left, double top, double right, double bottom);
    void addEdge(QPointF from, QPointF to);
    void addCrossing(int row, double x, double end, double height);
    void addToCell(int row, int column, double offset, double height);
    void paint(const QColor& colour);

    PixelBand m_band;

    // The box of the polygon being painted, in image pixels.
    int m_left = 0;
    int m_top = 0;
    int m_columns = 0;
    int m_rows = 0;
    // Per box row, the change of signed coverage from one pixel to the next,
    // one extra column wide; all zero between polygons. The touched span of
    // each row bounds the sweep that turns the changes into coverage.
    std::vector<float> m_cells;
    std::vector<int> m_firstTouched;
    std::vector<int> m_lastTouched;
};

} // namespace tw
