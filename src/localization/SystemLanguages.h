#pragma once

#include <QStringList>

namespace tw {

// The user's preferred interface languages, most wanted first, as BCP 47
// tags ("de-DE", "zh-Hans-CN"). Any thread.
[[nodiscard]] QStringList systemPreferredLanguages();

} // namespace tw
