#pragma once

#include <array>

namespace tw {

// Whose words the interface uses where the system names its own parts: the
// Mac and the Finder on macOS, the computer and the file manager elsewhere.
enum class TextPlatform { macOS, freedesktop };

inline constexpr std::array<TextPlatform, 2> allTextPlatforms{TextPlatform::macOS, TextPlatform::freedesktop};

// The platform this program was built for; chosen by file in CMake.
[[nodiscard]] TextPlatform hostTextPlatform();

} // namespace tw
