#pragma once

// A reader of our own for the entitlements in a Mach-O code signature, for
// systems without Apple's Security framework: thin and universal binaries
// (32- and 64-bit fat headers), 32- and 64-bit images of either byte order,
// LC_CODE_SIGNATURE, the embedded signature's blob index, the entitlements
// blob and its property list. Every offset is checked against the bytes at
// hand: malformed or truncated input yields nothing, never a read out of
// bounds. Thread-safe; no state.

#include <QByteArrayView>
#include <QSet>
#include <QString>
#include <optional>
#include <vector>

namespace tw {

// The entitlements property lists (XML text) of every slice that has one.
[[nodiscard]] std::vector<QByteArray> machOEntitlements(QByteArrayView binary);
// "com.apple.security.application-groups" of all slices, exactly as signed;
// empty when absent or not a list of text.
[[nodiscard]] QSet<QString> machOApplicationGroups(QByteArrayView binary);

// The same for a file on disk (mapped, never read past its end).
[[nodiscard]] QSet<QString> applicationGroupsOfFile(const QByteArray& path);

} // namespace tw
