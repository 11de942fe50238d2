#pragma once

// The texts of the interface, one table per language, held in the program.

#include "localization/Language.h"

#include <QHash>
#include <QString>

#include <array>
#include <cstddef>
#include <span>

namespace tw::catalogue {

struct Entry {
    const char* key;
    const char* text; // UTF-8; only "%@" and "%d" as placeholders
};

inline constexpr std::size_t kKeyCount = 133;
using Table = std::array<Entry, kKeyCount>;

// The source arrays, one file each, all with the same keys in the same order.
[[nodiscard]] const Table& english();
[[nodiscard]] const Table& russian();
[[nodiscard]] const Table& german();
[[nodiscard]] const Table& chinese();
[[nodiscard]] const Table& source(Language language);

// Turns one source array into its lookup map. A key that occurs twice is a
// programmer's error: the program stops with a message naming the table.
[[nodiscard]] QHash<QString, QString> buildLookup(std::span<const Entry> entries, const char* tableName);

// The lookup map of a language, built for all four on first use and never
// changed after; safe from any thread. A key twice in one table stops the
// program at that build.
[[nodiscard]] const QHash<QString, QString>& table(Language language);

} // namespace tw::catalogue
