#include "localization/TextFormat.h"

#include <array>
#include <cmath>

namespace tw {

QString formatBytes(qint64 count, const QLocale& locale)
{
    if (count <= 0)
        return QStringLiteral("Zero KB");
    struct Unit {
        const char* name;
        double size;
        int decimals;
    };
    static constexpr std::array<Unit, 4> units = {{
        {"KB", 1e3, 0},
        {"MB", 1e6, 1},
        {"GB", 1e9, 2},
        {"TB", 1e12, 2},
    }};
    std::size_t at = 0;
    while (at + 1 < units.size() && double(count) >= units[at + 1].size)
        ++at;
    auto rounded = [&](std::size_t unit) {
        const double scale = std::pow(10.0, units[unit].decimals);
        return std::round(double(count) / units[unit].size * scale) / scale;
    };
    double value = rounded(at);
    if (value >= 1000.0 && at + 1 < units.size())
        value = rounded(++at);
    if (value < 1.0)
        value = 1.0; // only below 1 KB
    QString number = locale.toString(value, 'f', units[at].decimals);
    // Drop trailing zeros, and the decimal separator if nothing follows it.
    const QString point = locale.decimalPoint();
    if (units[at].decimals > 0 && number.contains(point)) {
        while (number.endsWith(QLatin1Char('0')))
            number.chop(1);
        if (number.endsWith(point))
            number.chop(point.size());
    }
    return number + QLatin1Char(' ') + QLatin1String(units[at].name);
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
