#pragma once

#include <QLocale>
#include <QString>

namespace tw {

// The one formatter for byte counts on screen, in the style of a file-size
// display: decimal units (1 KB = 1000 bytes), KB to TB only, no decimals for
// KB, one for MB, two for GB and TB, trailing zeros dropped, "Zero KB" for 0
// and for negative counts. The unit is the largest that keeps the rounded
// figure at 1 or more, and a figure that rounds up to 1000 moves to the next
// unit, so 999,999 bytes are "1 MB", never "1,000 KB". Any count from 1 to
// 999 bytes shows as "1 KB": a file that exists never reads as nothing.
// Numbers follow `locale`'s notation (decimal comma in German, say).
[[nodiscard]] QString formatBytes(qint64 count, const QLocale& locale = QLocale::system());

// A share of a total: "0%" for a total below 1, no decimals from 10 %, one
// from 1 %, two below that.
[[nodiscard]] QString percentText(double value, double total);

} // namespace tw
