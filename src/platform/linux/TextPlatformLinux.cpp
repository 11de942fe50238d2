#include "localization/TextPlatform.h"

namespace tw {

TextPlatform hostTextPlatform()
{
    return TextPlatform::freedesktop;
}

} // namespace tw
