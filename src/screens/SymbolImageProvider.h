#pragma once

#include <QQuickImageProvider>

namespace tw {

// `image://symbol/NAME/COLOR`: the symbol NAME (an SF Symbol name) as a
// template image in COLOR (a percent-encoded QML colour, e.g. "%23336699").
// Thread-safe: the engine may ask from its image threads.
class SymbolImageProvider : public QQuickImageProvider {
public:
    SymbolImageProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace tw
