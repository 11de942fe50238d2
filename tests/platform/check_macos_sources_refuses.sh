#!/usr/bin/env bash
# The Objective-C++ check passes a correct file and refuses each broken one
# for the fault it holds, not for some other reason.
set -uo pipefail
root=$1
check="$root/tools/check-macos-sources.sh"
fixtures="$root/tests/platform/macos-fixtures"
failures=0

if ! out=$(bash "$check" "$fixtures/Bridged.mm" 2>&1); then
    printf 'a correct file was refused:\n%s\n' "$out"
    failures=$((failures + 1))
fi
expect_refused() {
    local file=$1 reason=$2 out
    if out=$(bash "$check" "$fixtures/$file" 2>&1); then
        echo "$file passed the check"
        failures=$((failures + 1))
    elif ! grep -qF -- "$reason" <<<"$out"; then
        printf '%s was refused, but not for "%s":\n%s\n' "$file" "$reason" "$out"
        failures=$((failures + 1))
    fi
}
expect_refused UnbridgedCast.mm "is disallowed with ARC"
expect_refused MisspelledSelector.mm "activateFileViewerSelectingURL:"
expect_refused NewerThanTarget.mm "is only available on macOS 14.0 or newer"
# Each architecture has its own BOOL: right on Apple silicon, wrong on Intel.
expect_refused BoolIsBool.mm "REFUSED x86_64"
if ! grep -q "^ok      arm64" <<<"$(bash "$check" "$fixtures/BoolIsBool.mm" 2>&1)"; then
    echo "BoolIsBool.mm was refused for Apple silicon, where BOOL is bool"
    failures=$((failures + 1))
fi

echo "$((6 - failures)) passed, $failures failed"
((failures == 0))
