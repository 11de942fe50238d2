#include "localization/TextPlatform.h"

namespace tw {

TextPlatform hostTextPlatform()
{
    return TextPlatform::macOS;
}

} // namespace tw
