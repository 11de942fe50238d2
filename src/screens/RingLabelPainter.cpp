#include "screens/RingLabelPainter.h"

#include "screens/SunburstPainter.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;

// `top` composited over an opaque `bottom`.
QColor over(const QColor& top, const QColor& bottom)
{
    const float a = top.alphaF();
    return QColor::fromRgbF(top.redF() * a + bottom.redF() * (1 - a),
                            top.greenF() * a + bottom.greenF() * (1 - a),
                            top.blueF() * a + bottom.blueF() * (1 - a));
}

double luminance(const QColor& colour)
{
    return relativeLuminance(colour.redF(), colour.greenF(), colour.blueF());
}

// Places the painter's origin on the circle at `angle`, x along the
// tangent, turned half a turn when `flipped`.
QTransform onCircle(const ChartGeometry& g, double radius, double angle, bool flipped)
{
    QTransform at;
    at.translate(g.centreX + radius * std::sin(angle), g.centreY - radius * std::cos(angle));
    at.rotate(angle * kDegrees + (flipped ? 180.0 : 0.0));
    return at;
}

} // namespace

QFont ringLabelFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(11);
    font.setWeight(QFont::Medium);
    return font;
}

LabelMetrics ringLabelMetrics(const QFont& font)
{
    const QFontMetricsF metrics(font);
    return {metrics.height(), [metrics](const QString& text) { return metrics.horizontalAdvance(text); }};
}

void paintRingLabels(QImage& canvas, const ChartGeometry& geometry,
                     const std::vector<Segment>& segments, const std::vector<RingLabel>& labels,
                     const FileNode* hovered, const LabelInks& inks, bool dark,
                     const SectorRestyle& restyle)
{
    if (labels.empty())
        return;
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const QFont font = ringLabelFont();
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    // The line's middle on the text's centre line.
    const double baseline = (metrics.ascent() - metrics.descent()) / 2;
    const QColor background = inks.background.toRgb();

    for (const RingLabel& label : labels) {
        const Segment& segment = segments[label.segment];
        QColor fill = sectorFill(segment, hovered, dark);
        if (restyle)
            fill = restyle(segment, fill);
        const double seen = luminance(over(fill, background));
        QColor ink = firstContrastsMore(luminance(over(inks.light, over(fill, background))),
                                        luminance(over(inks.dark, over(fill, background))), seen)
                         ? inks.light
                         : inks.dark;
        // A faded sector's name fades as much.
        ink.setAlphaF(ink.alphaF() * fill.alphaF());
        painter.setPen(ink);

        if (!label.curved) {
            painter.setTransform(onCircle(geometry, label.radius, label.angle, label.flipped));
            painter.drawText(QPointF(-label.width / 2, baseline), label.text);
            continue;
        }
        // Along the arc, a character at a time, each upright on the circle.
        const double direction = label.flipped ? -1.0 : 1.0;
        double along = -label.width / 2;
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, label.text);
        qsizetype from = 0;
        while (finder.toNextBoundary() > 0) {
            const QString cluster = label.text.mid(from, finder.position() - from);
            from = finder.position();
            const double advance = metrics.horizontalAdvance(cluster);
            const double angle = label.angle + direction * (along + advance / 2) / label.radius;
            along += advance;
            painter.setTransform(onCircle(geometry, label.radius, angle, label.flipped));
            painter.drawText(QPointF(-advance / 2, baseline), cluster);
        }
    }
}

} // namespace tw
