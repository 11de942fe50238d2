#pragma once

#include <QQuickImageProvider>

namespace tw {

// `image://appicon/PATH`: the icon of the application bundle at PATH (the
// percent-encoded bytes of its path), 48 by 48 unless asked otherwise.
class AppIconProvider : public QQuickImageProvider {
public:
    AppIconProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace tw
