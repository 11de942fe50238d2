#include "uninstaller/PropertyList.h"

#include "platform/PropertyListCodec.h"
#include "scan/RawFiles.h"

#include <limits>

namespace tw {

namespace {
constexpr int kMaximumDepth = 128;
} // namespace

std::optional<QVariant> parsePropertyList(const QByteArray& data)
{
    if (data.isEmpty() || data.size() > std::numeric_limits<int32_t>::max())
        return std::nullopt;
    return decodePropertyList(data, kMaximumDepth);
}

std::optional<QVariant> readPropertyList(const QByteArray& path)
{
    // Property lists of interest are small; a huge file is not one of them.
    const std::optional<QByteArray> data = readFileBytes(path, 64 * 1024 * 1024);
    return data ? parsePropertyList(*data) : std::nullopt;
}

std::optional<QVariantMap> asDictionary(const std::optional<QVariant>& value)
{
    if (!value || value->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value->toMap();
}

QByteArray writePropertyList(const QVariant& value, bool binary)
{
    return encodePropertyList(value, binary);
}

} // namespace tw
