#pragma once

// Property lists, XML or binary, to and from Qt values, by the platform's own
// reader: Foundation's on macOS, libplist elsewhere. The types are those of
// uninstaller/PropertyList.h, which is what the rest of the code calls; this
// is its platform half. Thread-safe; no state.

#include <QByteArray>
#include <QVariant>
#include <optional>

namespace tw {

// The value of `data` (not empty), or nothing when it is not a property list
// or nests deeper than `maximumDepth` containers.
[[nodiscard]] std::optional<QVariant> decodePropertyList(const QByteArray& data, int maximumDepth);

// `value` as a binary or XML property list; empty when a value has no
// property-list form.
[[nodiscard]] QByteArray encodePropertyList(const QVariant& value, bool binary);

} // namespace tw
