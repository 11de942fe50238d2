#include "scanfile/Decompressor.h"

namespace tw::scanfile {

// Built where libzstd was not found: compressed saved scans are refused
// with a message, uncompressed ones read as anywhere.
std::unique_ptr<Decompressor> makeZstdDecompressor()
{
    return nullptr;
}

} // namespace tw::scanfile
