#pragma once

// The texts of the interface, one table per language, held in the program.

#include "localization/Language.h"
#include "localization/TextPlatform.h"

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

inline constexpr std::size_t kKeyCount = 175;
using Table = std::array<Entry, kKeyCount>;

// The few texts that name the Mac or the Finder, in the words of a
// freedesktop.org desktop (the computer, the file manager, the Trash). The
// same keys in every language, each also in Table.
inline constexpr std::size_t kFreedesktopKeyCount = 10;
using Variants = std::array<Entry, kFreedesktopKeyCount>;

// The source arrays, one file each, all with the same keys in the same order.
[[nodiscard]] const Table& english();
[[nodiscard]] const Table& russian();
[[nodiscard]] const Table& german();
[[nodiscard]] const Table& chinese();
[[nodiscard]] const Table& source(Language language);

[[nodiscard]] const Variants& englishFreedesktop();
[[nodiscard]] const Variants& russianFreedesktop();
[[nodiscard]] const Variants& germanFreedesktop();
[[nodiscard]] const Variants& chineseFreedesktop();
// The texts `platform` says in its own words instead of the table's; none
// for macOS, whose words the tables hold.
[[nodiscard]] std::span<const Entry> variants(TextPlatform platform, Language language);

// Turns one source array into its lookup map. A key that occurs twice is a
// programmer's error: the program stops with a message naming the table.
[[nodiscard]] QHash<QString, QString> buildLookup(std::span<const Entry> entries, const char* tableName);

// The lookup map of a language as `platform` words it, built for all on
// first use and never changed after; safe from any thread. A key twice in
// one table, or a variant of a key no table holds, stops the program at
// that build.
[[nodiscard]] const QHash<QString, QString>& table(TextPlatform platform, Language language);

} // namespace tw::catalogue
