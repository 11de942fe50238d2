// Any bytes as a Mach-O file: the signature reader must never crash, hang or
// read outside the input.

#include "uninstaller/MachOSignature.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    (void)tw::machOApplicationGroups(bytes);
    return 0;
}
