#pragma once

// What follows from the answers of macOS's own calls. The files under macos/
// make the calls and nothing more; what the answers mean is decided here,
// where it builds and is tested on every platform.

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QRectF>
#include <QSizeF>

namespace tw {

// Where a symbol whose own size is `symbol` is drawn in a box of `box`: as
// large as fits with its proportions kept, centred. The box's coordinates,
// origin at the top left. Empty when either size is empty.
[[nodiscard]] QRectF symbolFitRect(const QSizeF& symbol, const QSizeF& box);

// Whether osascript's standard error says the user dismissed the password
// prompt. It ends in the error number -128 ("User canceled"), which reads
// the same in every system language, unlike the sentence before it.
[[nodiscard]] bool osascriptReportsCancel(const QByteArray& errorOutput);

// The Trash's answer, as pairs of (the path of a URL it was given, where that
// item went), mapped back to the paths exactly as they were asked for. The
// URLs may come back spelled differently (a trailing slash, doubled slashes),
// so a path asked for matches its answer after both are tidied. Answers for
// paths never asked for are dropped.
[[nodiscard]] QHash<QByteArray, QByteArray> movedAsAsked(const QList<QByteArray>& asked,
                                                         const QList<QPair<QByteArray, QByteArray>>& answered);

} // namespace tw
