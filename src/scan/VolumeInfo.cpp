#include "scan/VolumeInfo.h"

#include "platform/VolumeFacts.h"

#include <algorithm>

namespace tw::VolumeInfo {

std::optional<Capacity> capacity(const QByteArray& path)
{
    return systemVolumeFacts().capacity(path);
}

Medium medium(const QByteArray& path)
{
    return systemVolumeFacts().medium(path);
}

std::optional<Capacity> capacityFrom(std::optional<qint64> total, std::optional<qint64> available,
                                     std::optional<qint64> availableForImportantUsage)
{
    if (!total)
        return std::nullopt;
    Capacity out;
    out.total = *total;
    out.rawFree = available.value_or(0);
    // Counts purgeable space where the platform knows it; the figure users see.
    out.free = availableForImportantUsage.value_or(out.rawFree);
    return out;
}

std::optional<qint64> purgeableFrom(std::optional<qint64> available, std::optional<qint64> availableForImportantUsage)
{
    if (!available || !availableForImportantUsage)
        return std::nullopt;
    return std::max<qint64>(*availableForImportantUsage - *available, 0);
}

qint64 reservedFrom(quint64 freeBlocks, quint64 availableBlocks, quint64 blockSize)
{
    if (freeBlocks <= availableBlocks)
        return 0;
    return qint64((freeBlocks - availableBlocks) * blockSize);
}

Medium mediumFromType(QStringView mediumType)
{
    if (mediumType == u"Solid State")
        return Medium::solidState;
    if (mediumType == u"Rotational")
        return Medium::rotational;
    return Medium::unknown;
}

QString toText(Medium medium)
{
    switch (medium) {
    case Medium::solidState:
        return QStringLiteral("solidState");
    case Medium::rotational:
        return QStringLiteral("rotational");
    case Medium::network:
        return QStringLiteral("network");
    case Medium::unknown:
        break;
    }
    return QStringLiteral("unknown");
}

} // namespace tw::VolumeInfo
