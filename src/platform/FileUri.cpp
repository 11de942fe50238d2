#include "platform/FileReveal.h"

#include <QByteArray>

namespace tw {

QString fileUri(const QByteArray& path)
{
    return QStringLiteral("file://") + QString::fromLatin1(path.toPercentEncoding("/"));
}

} // namespace tw
