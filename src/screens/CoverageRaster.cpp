#include "screens/CoverageRaster.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

namespace tw {

namespace {
// Coverage below half a step of an 8-bit channel leaves the pixel as it is.
constexpr float kInvisible = 1.0F / 512;

// The four 8-bit channels of `pixel` times `factor` / 255, rounded; two
// channels at a time.
std::uint32_t scaled(std::uint32_t pixel, std::uint32_t factor)
{
    std::uint32_t redBlue = (pixel & 0x00ff00ffU) * factor;
    redBlue = ((redBlue + ((redBlue >> 8) & 0x00ff00ffU) + 0x00800080U) >> 8) & 0x00ff00ffU;
    std::uint32_t alphaGreen = ((pixel >> 8) & 0x00ff00ffU) * factor;
    alphaGreen = (alphaGreen + ((alphaGreen >> 8) & 0x00ff00ffU) + 0x00800080U) & 0xff00ff00U;
    return alphaGreen | redBlue;
}

struct Bounds {
    double left, top, right, bottom;
};

Bounds boundsOf(std::span<const QPointF> polygon)
{
    Bounds box{polygon[0].x(), polygon[0].y(), polygon[0].x(), polygon[0].y()};
    for (const QPointF& point : polygon) {
        box.left = std::min(box.left, point.x());
        box.right = std::max(box.right, point.x());
        box.top = std::min(box.top, point.y());
        box.bottom = std::max(box.bottom, point.y());
    }
    return box;
}

} // namespace

std::uint32_t blendPixel(std::uint32_t under, std::uint32_t colour, std::uint32_t coverage)
{
    const std::uint32_t over = scaled(colour, coverage);
    return over + scaled(under, 255 - (over >> 24));
}

CoverageRaster::CoverageRaster(const PixelBand& band) : m_band(band) {}

void CoverageRaster::fill(std::span<const QPointF> polygon, const QColor& colour)
{
    if (polygon.size() < 3 || colour.alpha() == 0)
        return;
    const Bounds box = boundsOf(polygon);
    if (!begin(box.left, box.top, box.right, box.bottom))
        return;
    for (std::size_t i = 0; i < polygon.size(); ++i)
        addEdge(polygon[i], polygon[(i + 1) % polygon.size()]);
    paint(colour);
}

void CoverageRaster::stroke(std::span<const QPointF> polygon, double lineWidth,
                            const QColor& colour)
{
    if (polygon.size() < 2 || lineWidth <= 0 || colour.alpha() == 0)
        return;
    const double half = lineWidth / 2;
    const Bounds box = boundsOf(polygon);
    if (!begin(box.left - half, box.top - half, box.right + half, box.bottom + half))
        return;
    // Each edge becomes a rectangle of the line's width. All of them wind the
    // same way, so where they overlap their coverage adds up and is capped at
    // full, which paints the overlap once.
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const QPointF from = polygon[i];
        const QPointF to = polygon[(i + 1) % polygon.size()];
        const QPointF along = to - from;
        const double length = std::hypot(along.x(), along.y());
        if (length < 1e-9)
            continue;
        const QPointF side(-along.y() * half / length, along.x() * half / length);
        addEdge(from + side, to + side);
        addEdge(to + side, to - side);
        addEdge(to - side, from - side);
        addEdge(from - side, from + side);
    }
    paint(colour);
}

bool CoverageRaster::begin(double left, double top, double right, double bottom)
{
    if (!(left <= right && top <= bottom)) // also refuses NaN
        return false;
    const int firstColumn = int(std::max(0.0, std::floor(std::max(left, double(INT_MIN / 2)))));
    const int endColumn = int(std::min(double(m_band.width), std::ceil(std::min(right, 1e9))));
    const int firstRow = int(std::max(double(m_band.firstRow), std::floor(std::max(top, -1e9))));
    const int endRow = int(std::min(double(m_band.endRow), std::ceil(std::min(bottom, 1e9))));
    // A closed polygon leaves no coverage right of its box, so a box wholly
    // outside the image changes nothing.
    if (endRow <= firstRow || endColumn <= firstColumn)
        return false;
    m_left = firstColumn;
    m_columns = endColumn - firstColumn;
    m_top = firstRow;
    m_rows = endRow - firstRow;
    const std::size_t cells = std::size_t(m_rows) * std::size_t(m_columns + 1);
    if (m_cells.size() < cells)
        m_cells.resize(cells, 0.0F);
    if (m_firstTouched.size() < std::size_t(m_rows)) {
        m_firstTouched.resize(std::size_t(m_rows), INT_MAX);
        m_lastTouched.resize(std::size_t(m_rows), -1);
    }
    return true;
}

void CoverageRaster::addEdge(QPointF from, QPointF to)
{
    if (from.y() == to.y())
        return;
    // Downward edges add coverage to their right, upward ones take it away.
    const double direction = from.y() < to.y() ? 1 : -1;
    if (direction < 0)
        std::swap(from, to);
    const double top = std::max(from.y(), double(m_top));
    const double bottom = std::min(to.y(), double(m_top + m_rows));
    if (top >= bottom)
        return;
    const double slope = (to.x() - from.x()) / (to.y() - from.y());
    double entry = top;
    double x = from.x() + (top - from.y()) * slope - m_left;
    for (int row = int(std::floor(top)); entry < bottom; ++row) {
        const double exit = std::min(bottom, double(row + 1));
        const double height = exit - entry;
        const double xExit = x + height * slope;
        const double low = std::min(x, xExit);
        const double high = std::max(x, xExit);
        const int column = int(low);
        if (low >= 0 && high < double(column + 1) && column < m_columns) {
            // The common case: the edge stays within one pixel of the row.
            addToCell(row - m_top, column, (low + high) / 2 - column, height * direction);
        } else {
            addCrossing(row - m_top, low, high, height * direction);
        }
        x = xExit;
        entry = exit;
    }
}

// The part of an edge within one row, from x `x` up to `end` (box columns)
// and `height` rows high, signed. Split where it crosses pixel borders.
void CoverageRaster::addCrossing(int row, double x, double end, double height)
{
    const double run = end - x;
    if (run < 1e-9) {
        const int column = int(std::floor(x));
        addToCell(row, column, x - column, height);
        return;
    }
    const double perUnit = height / run;
    if (x < 0) { // left of the image: all of it lies left of every pixel
        const double outside = std::min(end, 0.0);
        addToCell(row, -1, 0, (outside - x) * perUnit);
        x = outside;
    }
    end = std::min(end, double(m_columns)); // right of the image: no pixel to its right
    while (x < end) {
        const int column = int(std::floor(x));
        const double next = std::min(end, double(column + 1));
        addToCell(row, column, (x + next) / 2 - column, (next - x) * perUnit);
        x = next;
    }
}

// `height` of edge at `offset` into the pixel at `column`: the pixel gets the
// share right of the edge, every pixel after it all of it.
void CoverageRaster::addToCell(int row, int column, double offset, double height)
{
    if (column >= m_columns)
        return;
    float* cells = m_cells.data() + std::size_t(row) * std::size_t(m_columns + 1);
    int& first = m_firstTouched[std::size_t(row)];
    int& last = m_lastTouched[std::size_t(row)];
    if (column < 0) {
        cells[0] += float(height);
        first = 0;
        last = std::max(last, 0);
        return;
    }
    cells[column] += float(height * (1 - offset));
    cells[column + 1] += float(height * offset);
    first = std::min(first, column);
    last = std::max(last, column + 1);
}

void CoverageRaster::paint(const QColor& colour)
{
    const std::uint32_t premultiplied = qPremultiply(colour.rgba());
    const bool opaque = colour.alpha() == 255;
    for (int row = 0; row < m_rows; ++row) {
        int& first = m_firstTouched[std::size_t(row)];
        int& last = m_lastTouched[std::size_t(row)];
        if (first > last)
            continue;
        float* cells = m_cells.data() + std::size_t(row) * std::size_t(m_columns + 1);
        std::uint32_t* pixels = m_band.row(m_top + row) + m_left;
        float sum = 0;
        // Past the last touched cell the coverage stays what it was; it is
        // zero there unless the polygon runs off the image's right side.
        for (int column = first; column < m_columns; ++column) {
            if (column <= last) {
                sum += cells[column];
                cells[column] = 0;
            } else if (std::abs(sum) < kInvisible) {
                break;
            }
            const float coverage = std::min(1.0F, std::abs(sum));
            if (coverage < kInvisible)
                continue;
            if (opaque && coverage >= 1.0F - kInvisible) { // inside: nothing shows through
                pixels[column] = premultiplied;
                continue;
            }
            pixels[column] =
                blendPixel(pixels[column], premultiplied, std::uint32_t(coverage * 255 + 0.5F));
        }
        cells[m_columns] = 0;
        first = INT_MAX;
        last = -1;
    }
}

} // namespace tw
