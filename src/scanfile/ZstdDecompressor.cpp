#include "scanfile/Decompressor.h"

#include <zstd.h>

namespace tw::scanfile {

namespace {
class ZstdDecompressor final : public Decompressor {
public:
    ZstdDecompressor() : m_stream(ZSTD_createDStream())
    {
        // A frame may ask for a window of up to 2 GiB; ncdu's are at most
        // 8 MiB. Refuse more than 128 MiB so that a hostile file cannot make
        // the reader take gigabytes.
        if (m_stream)
            ZSTD_DCtx_setParameter(m_stream, ZSTD_d_windowLogMax, 27);
    }
    ~ZstdDecompressor() override { ZSTD_freeDStream(m_stream); }
    ZstdDecompressor(const ZstdDecompressor&) = delete;
    ZstdDecompressor& operator=(const ZstdDecompressor&) = delete;

    bool step(const char* in, std::size_t inSize, char* out, std::size_t outSize, Step& done) override
    {
        if (!m_stream) {
            m_error = QStringLiteral("out of memory");
            return false;
        }
        ZSTD_inBuffer input{in, inSize, 0};
        ZSTD_outBuffer output{out, outSize, 0};
        const std::size_t result = ZSTD_decompressStream(m_stream, &output, &input);
        if (ZSTD_isError(result)) {
            m_error = QString::fromUtf8(ZSTD_getErrorName(result));
            return false;
        }
        done = {input.pos, output.pos, result == 0};
        return true;
    }
    [[nodiscard]] QString error() const override { return m_error; }

private:
    ZSTD_DStream* m_stream;
    QString m_error;
};
} // namespace

std::unique_ptr<Decompressor> makeZstdDecompressor()
{
    return std::make_unique<ZstdDecompressor>();
}

} // namespace tw::scanfile
