#pragma once

#include <QString>

#include <cstddef>
#include <memory>

namespace tw::scanfile {

// Streams the zstd frames of a compressed saved scan. Behind this interface
// so that a build without libzstd still reads uncompressed files and says
// plainly why it cannot read the others.
class Decompressor {
public:
    virtual ~Decompressor() = default;
    struct Step {
        std::size_t consumed = 0; // input bytes taken
        std::size_t produced = 0; // output bytes written
        bool frameEnded = false;  // the last frame given is complete
    };
    // Decompresses from `in` into `out`; false with `error()` set when the
    // data is not valid zstd.
    virtual bool step(const char* in, std::size_t inSize, char* out, std::size_t outSize, Step& done) = 0;
    [[nodiscard]] virtual QString error() const = 0;
};

// The zstd decoder of this build, or null where it has none.
[[nodiscard]] std::unique_ptr<Decompressor> makeZstdDecompressor();

// The four bytes that begin every zstd frame.
[[nodiscard]] inline bool looksZstd(const unsigned char* bytes, std::size_t size)
{
    return size >= 4 && bytes[0] == 0x28 && bytes[1] == 0xB5 && bytes[2] == 0x2F && bytes[3] == 0xFD;
}

} // namespace tw::scanfile
