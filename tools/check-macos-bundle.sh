#!/usr/bin/env bash
# Every Mach-O file in a built Tidewick.app runs on both kinds of Mac and on
# the oldest macOS we promise: each holds arm64 and x86_64 (lipo -archs), and
# no slice asks for a macOS later than the deployment target (the minos of
# LC_BUILD_VERSION, or LC_VERSION_MIN_MACOSX in older files).
#
#   bash tools/check-macos-bundle.sh build/mac/src/Tidewick.app [13.0]
#
# macOS only (lipo, vtool and otool are Xcode's); written for the system's
# bash 3.2.
set -euo pipefail
app=${1:?usage: check-macos-bundle.sh PATH/Tidewick.app [DEPLOYMENT_TARGET]}
target=${2:-13.0}

# 13.0 -> 13000000, 12.7.1 -> 12070100: versions compared as numbers.
as_number() {
    local major minor patch
    IFS=. read -r major minor patch <<<"$1"
    echo $(( ${major:-0} * 1000000 + ${minor:-0} * 10000 + ${patch:-0} * 100 ))
}
limit=$(as_number "$target")

checked=0
bad=0
while IFS= read -r -d '' file; do
    file -b "$file" | grep -q 'Mach-O' || continue
    checked=$((checked + 1))
    archs=$(lipo -archs "$file" 2>/dev/null || echo "?")
    for arch in arm64 x86_64; do
        if ! grep -qw "$arch" <<<"$archs"; then
            echo "missing $arch: $file (has: $archs)"
            bad=$((bad + 1))
        fi
    done
    for arch in $archs; do
        minos=$(otool -arch "$arch" -l "$file" 2>/dev/null |
            awk '/LC_BUILD_VERSION/ {b = 1} b && $1 == "minos" {print $2; exit}
                 /LC_VERSION_MIN_MACOSX/ {v = 1} v && $1 == "version" {print $2; exit}')
        if [ -z "$minos" ]; then
            echo "no minimum macOS in the $arch slice: $file"
            bad=$((bad + 1))
        elif [ "$(as_number "$minos")" -gt "$limit" ]; then
            echo "needs macOS $minos (> $target) in the $arch slice: $file"
            bad=$((bad + 1))
        fi
    done
done < <(find "$app" -type f -print0)

if [ "$checked" -eq 0 ]; then
    echo "check-macos-bundle: no Mach-O file found in $app" >&2
    exit 2
fi
if [ "$bad" -gt 0 ]; then
    echo "check-macos-bundle: $bad problems in $checked Mach-O files" >&2
    exit 1
fi
echo "check-macos-bundle: $checked Mach-O files, each arm64 + x86_64, none needing more than macOS $target"
