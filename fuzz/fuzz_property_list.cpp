// Any bytes as a property list (XML or binary): parsing and converting to Qt
// values must never crash or recurse without bound.

#include "uninstaller/PropertyList.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    if (const auto value = tw::parsePropertyList(bytes))
        (void)tw::writePropertyList(*value, true);
    return 0;
}
