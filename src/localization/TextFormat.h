#pragma once

#include <QLocale>
#include <QString>

namespace tw {

// The one formatter for byte counts on screen, in the style of the system's
// file-size display (a byte-count formatter in "file" style, units KB to TB,
// adaptive digits). The rule, kept here so that every platform shows the
// same figure:
//
//  - Decimal units: 1 KB = 1000 bytes, 1 MB = 1000 KB, and so on; KB, MB,
//    GB and TB only, so a petabyte shows as "1,000 TB".
//  - The unit is the largest whose figure is at least 1. A figure that
//    rounds up to 1000 moves to the next unit: 999,999 bytes are "1 MB",
//    never "1,000 KB".
//  - Digits after the point: none for KB, one for MB, two for GB and TB,
//    rounded half away from zero, with trailing zeros dropped ("1.5 GB",
//    "2 GB", "12.34 TB").
//  - 0 and any negative count are "Zero KB". Any count from 1 to 999 bytes
//    is "1 KB": something that exists never reads as nothing.
//  - The number is written in `locale`'s notation (decimal comma and group
//    separator in German); the unit names and "Zero KB" stay as they are,
//    as the interface carries no translations of its own for them.
//
// Any thread.
[[nodiscard]] QString formatBytes(qint64 count, const QLocale& locale = QLocale::system());

// A share of a total in per cent: "0%" for a total below 1, no decimals
// from 10 %, one from 1 %, two below that ("37%", "4.3%", "0.12%"). The
// decimal point is always ".", whatever the locale. Any thread.
[[nodiscard]] QString percentText(double value, double total);

} // namespace tw

namespace tw {
// A catalogue format filled in: the first "%@" by `text`, the first "%d" by
// `count`. The tables use no other placeholders.
[[nodiscard]] QString fillText(const QString& format, const QString& text);
[[nodiscard]] QString fillCount(const QString& format, qint64 count);
} // namespace tw
