#include "platform/MacAnswers.h"

#include <algorithm>

namespace tw {

QRectF symbolFitRect(const QSizeF& symbol, const QSizeF& box)
{
    if (symbol.isEmpty() || box.isEmpty())
        return {};
    const double scale = std::min(box.width() / symbol.width(), box.height() / symbol.height());
    const QSizeF fitted = symbol * scale;
    return {QPointF((box.width() - fitted.width()) / 2, (box.height() - fitted.height()) / 2), fitted};
}

bool osascriptReportsCancel(const QByteArray& errorOutput)
{
    // "…: execution error: User canceled. (-128)": the number closes the line.
    return errorOutput.trimmed().endsWith("(-128)");
}

namespace {
// One spelling per place: doubled slashes folded, no trailing slash.
QByteArray tidied(const QByteArray& path)
{
    QByteArray out;
    out.reserve(path.size());
    for (const char c : path) {
        if (c == '/' && out.endsWith('/'))
            continue;
        out.append(c);
    }
    if (out.size() > 1 && out.endsWith('/'))
        out.chop(1);
    return out;
}
} // namespace

QHash<QByteArray, QByteArray> movedAsAsked(const QList<QByteArray>& asked,
                                           const QList<QPair<QByteArray, QByteArray>>& answered)
{
    QHash<QByteArray, QByteArray> byTidied;
    for (const auto& [from, to] : answered)
        byTidied.insert(tidied(from), to);
    QHash<QByteArray, QByteArray> moved;
    for (const QByteArray& path : asked) {
        const auto found = byTidied.constFind(tidied(path));
        if (found != byTidied.constEnd())
            moved.insert(path, found.value());
    }
    return moved;
}

} // namespace tw
