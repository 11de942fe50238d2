#include "localization/TextFormat.h"

#include <array>
#include <cmath>

namespace tw {

namespace {

struct Unit {
    const char* name;
    double size;
    int decimals;
};

constexpr std::array<Unit, 4> kUnits = {{
    {"KB", 1e3, 0},
    {"MB", 1e6, 1},
    {"GB", 1e9, 2},
    {"TB", 1e12, 2},
}};

double roundedTo(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

} // namespace

QString formatBytes(qint64 count, const QLocale& locale)
{
    if (count <= 0)
        return QStringLiteral("Zero KB");
    std::size_t unit = 0;
    while (unit + 1 < kUnits.size() && double(count) >= kUnits[unit + 1].size)
        ++unit;
    double value = roundedTo(double(count) / kUnits[unit].size, kUnits[unit].decimals);
    if (value >= 1000.0 && unit + 1 < kUnits.size()) {
        ++unit;
        value = roundedTo(double(count) / kUnits[unit].size, kUnits[unit].decimals);
    }
    if (value < 1.0)
        value = 1.0; // only below 1 KB
    // Drop trailing zeros by asking for no more digits than the rounded
    // figure needs; the locale then writes its own digits and separators.
    int decimals = 0;
    while (decimals < kUnits[unit].decimals && roundedTo(value, decimals) != value)
        ++decimals;
    return locale.toString(value, 'f', decimals) + QLatin1Char(' ') + QLatin1String(kUnits[unit].name);
}

QString percentText(double value, double total)
{
    if (total < 1)
        return QStringLiteral("0%");
    const double percent = value / total * 100.0;
    if (percent >= 10)
        return QString::asprintf("%.0f%%", percent);
    if (percent >= 1)
        return QString::asprintf("%.1f%%", percent);
    return QString::asprintf("%.2f%%", percent);
}

} // namespace tw

namespace tw {
QString fillText(const QString& format, const QString& text)
{
    QString filled = format;
    const qsizetype at = filled.indexOf(QLatin1String("%@"));
    return at < 0 ? filled : filled.replace(at, 2, text);
}

QString fillCount(const QString& format, qint64 count)
{
    QString filled = format;
    const qsizetype at = filled.indexOf(QLatin1String("%d"));
    return at < 0 ? filled : filled.replace(at, 2, QString::number(count));
}
} // namespace tw
