#pragma once

// Property lists (XML or binary) as Qt values, read by the platform's own
// reader (platform/PropertyListCodec.h): a dictionary is a QVariantMap, an
// array a QVariantList, a string a QString, an integer qint64, a real double,
// a boolean bool, data a QByteArray, a date a QDateTime (UTC). Thread-safe;
// no state.

#include <QByteArray>
#include <QVariant>
#include <optional>

namespace tw {

// Empty when `data` is not a property list, or nests deeper than 128 levels.
[[nodiscard]] std::optional<QVariant> parsePropertyList(const QByteArray& data);
// Reads and parses a file by its path's bytes; empty on any failure.
[[nodiscard]] std::optional<QVariant> readPropertyList(const QByteArray& path);
// A dictionary "with text keys": the map, or empty when the value is not one.
[[nodiscard]] std::optional<QVariantMap> asDictionary(const std::optional<QVariant>& value);

// Writes `value` (the types above) as a binary or XML property list; for
// fixtures and tools. Empty when a value has no property-list form.
[[nodiscard]] QByteArray writePropertyList(const QVariant& value, bool binary);

} // namespace tw
