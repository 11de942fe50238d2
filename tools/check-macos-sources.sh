#!/usr/bin/env bash
# Compiles every Objective-C++ file under src/platform/macos on Linux with
#   clang++ -target {arm64,x86_64}-apple-macos13 -fsyntax-only -x objective-c++ -fobjc-arc
# against the Qt headers and tools/macos-sdk/AppleDeclarations.h, the Apple
# interfaces we use, declared from Apple's documentation. It catches
# misspelled selectors, wrong argument types, casts ARC refuses without a
# bridge, C++ mistakes and warnings (all are errors, as on the Mac), once for
# each architecture of the universal app (BOOL is bool on one and signed char
# on the other), and a call newer than the deployment target (the header
# carries each interface's availability; unguarded use is an error).
#
# The C and C++ libraries are the host's GNU ones for the same architecture
# (the arm64 ones from Debian's cross packages): they stand in for Apple's
# SDK, which we may not have here; only what the .mm files call of Apple's
# is checked against Apple's own declarations.
# It cannot catch a declaration copied wrongly into that header, nor anything
# that happens at run time (threads, queues, what AppKit does with a view):
# for those see docs/macos-smoke-test.md.
#
# A new .mm file under src/platform/macos is checked without being listed.
# When it calls an interface the header lacks, the check says so: add that
# declaration to its framework's section of AppleDeclarations.h, written from
# its documentation page, with the page's path in a comment above it. A new
# framework gets a section there and a header tools/macos-sdk/NAME/NAME.h
# that imports AppleDeclarations.h.
#
# Usage: bash tools/check-macos-sources.sh [FILE.mm ...]   (default: all)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

deployment=13.0
gcc_version=$(gcc -dumpversion 2>/dev/null || echo 12)
host_arch=$(gcc -print-multiarch 2>/dev/null || echo x86_64-linux-gnu)
arm_include=/usr/aarch64-linux-gnu/include
needed=()
command -v clang++ >/dev/null || needed+=(clang)
[ -d "$arm_include/c++/$gcc_version" ] || needed+=(libc6-dev-arm64-cross "libstdc++-$gcc_version-dev-arm64-cross")
if ((${#needed[@]})); then
    if [ "$(id -u)" = 0 ] && command -v apt-get >/dev/null; then
        echo "Installing ${needed[*]}"
        export DEBIAN_FRONTEND=noninteractive
        apt-get update -qq && apt-get install -y -qq --no-install-recommends "${needed[@]}" >/dev/null
    else
        echo "check-macos-sources: needs ${needed[*]} (apt-get install)" >&2
        exit 2
    fi
fi

if (($#)); then
    files=("$@")
else
    mapfile -d '' files < <(find "$root/src/platform/macos" -name '*.mm' -print0 | sort -z)
fi
if ((${#files[@]} == 0)); then
    echo "check-macos-sources: no .mm files found" >&2
    exit 2
fi

qt_headers=$(pkg-config --variable=includedir Qt6Core 2>/dev/null || qmake6 -query QT_INSTALL_HEADERS)
flags=(
    -fsyntax-only -x objective-c++ -std=c++20 -fobjc-arc -fblocks
    -fPIC -fno-color-diagnostics
    # A Darwin target defines __nonnull as Apple's nullability keyword, which
    # the GNU headers use as a macro of their own; and GNU's headers show
    # POSIX and BSD interfaces only with _GNU_SOURCE, as Apple's show them by
    # default.
    -U__nonnull -D_GNU_SOURCE
    -I "$root/src"
    -isystem "$qt_headers" -isystem "$qt_headers/QtCore" -isystem "$qt_headers/QtGui" -isystem "$qt_headers/QtQuick"
    -isystem "$qt_headers/QtQml" -isystem "$qt_headers/QtNetwork"
    -DQT_NO_KEYWORDS -DQT_NO_FOREACH -DQT_USE_QSTRINGBUILDER -DQT_CORE_LIB -DQT_GUI_LIB
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Werror
    -Werror=unguarded-availability -Werror=unguarded-availability-new
)
# Per architecture: the target, and the GNU C++ and C headers of that
# architecture in place of the SDK's.
# Apple's stand-ins come first: tools/macos-sdk/sys/ adds to some system
# headers what macOS declares in them.
arm64=(-target "arm64-apple-macos$deployment" -nostdinc++ -isystem "$root/tools/macos-sdk"
    -isystem "$arm_include/c++/$gcc_version" -isystem "$arm_include/c++/$gcc_version/aarch64-linux-gnu"
    -isystem "$arm_include")
x86_64=(-target "x86_64-apple-macos$deployment" -nostdinc++ -isystem "$root/tools/macos-sdk"
    -isystem "/usr/include/c++/$gcc_version" -isystem "/usr/include/$host_arch/c++/$gcc_version"
    -isystem "/usr/include/$host_arch")

# Two at a time: the machines this runs on have two cores.
failed=0
for arch in arm64 x86_64; do
    declare -n arch_flags=$arch
    printf '%s\0' "${files[@]}" | xargs -0 -P 2 -I{} sh -c \
        'if out=$("$0" "$@" "{}" 2>&1); then echo "ok      '"$arch"' {}"; else printf "%s\n" "$out" >&2; echo "REFUSED '"$arch"' {}"; exit 1; fi' \
        clang++ "${arch_flags[@]}" "${flags[@]}" || failed=1
done
if ((failed)); then
    echo "check-macos-sources: refused (see above)" >&2
    exit 1
fi
echo "check-macos-sources: ${#files[@]} files pass for arm64 and x86_64, macOS $deployment"
