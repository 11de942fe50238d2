// Saved scans are outside data: any bytes must end in a tree or an error.
#include "scanfile/ScanFileReader.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const tw::scanfile::ReadResult result = tw::scanfile::readScanBytes(bytes);
    if (result.tree && result.tree->root()->size() < 0)
        __builtin_trap();
    return 0;
}
