// Any bytes as an answer of the sponsored feed: decoding must never crash,
// and whatever item comes out must hold only web addresses.

#include "sponsored/AdFeed.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {
bool isWeb(const QUrl& url)
{
    return (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http")) && !url.host().isEmpty();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto envelope = tw::AdFeed::decode(bytes);
    if (envelope && envelope->ad) {
        const tw::Ad& ad = *envelope->ad;
        if (!isWeb(ad.link) || (ad.clickURL && !isWeb(*ad.clickURL)))
            std::abort();
        if (const auto* text = std::get_if<tw::AdContent::Text>(&ad.content.value); text && text->text.isEmpty())
            std::abort();
        if (const auto* banner = std::get_if<tw::AdContent::Banner>(&ad.content.value);
            banner && (banner->width < 1 || banner->height < 1 || !isWeb(banner->imageURL)))
            std::abort();
    }
    return 0;
}
