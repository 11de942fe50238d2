#!/usr/bin/env bash
# Compiles every Objective-C++ file under src/platform/macos on Linux with
#   clang++ -fsyntax-only -x objective-c++ -fobjc-arc
# against the Qt headers and tools/macos-sdk/AppleDeclarations.h, the Apple
# interfaces we use, declared from Apple's documentation. It catches
# misspelled selectors, wrong argument types, casts ARC refuses without a
# bridge, C++ mistakes and warnings (all are errors, as on the Mac).
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

if ! command -v clang++ >/dev/null; then
    if [ "$(id -u)" = 0 ] && command -v apt-get >/dev/null; then
        echo "Installing clang"
        export DEBIAN_FRONTEND=noninteractive
        apt-get update -qq && apt-get install -y -qq --no-install-recommends clang >/dev/null
    else
        echo "check-macos-sources: clang++ is needed (apt-get install clang)" >&2
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
    -fsyntax-only -x objective-c++ -std=c++20 -fobjc-arc -fblocks -fobjc-runtime=macosx-13.0
    -fPIC -fno-color-diagnostics
    # Qt's headers take their macOS branch (QString::toNSString and the like).
    -D__APPLE__ -isystem "$root/tools/macos-sdk"
    -I "$root/src"
    -isystem "$qt_headers" -isystem "$qt_headers/QtCore" -isystem "$qt_headers/QtGui" -isystem "$qt_headers/QtQuick"
    -isystem "$qt_headers/QtQml" -isystem "$qt_headers/QtNetwork"
    -DQT_NO_KEYWORDS -DQT_NO_FOREACH -DQT_USE_QSTRINGBUILDER -DQT_CORE_LIB -DQT_GUI_LIB
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Werror
)

# Two at a time: the machines this runs on have two cores.
failed=0
printf '%s\0' "${files[@]}" | xargs -0 -P 2 -I{} sh -c \
    'if out=$("$0" "$@" "{}" 2>&1); then echo "ok      {}"; else printf "%s\n" "$out" >&2; echo "REFUSED {}"; exit 1; fi' \
    clang++ "${flags[@]}" || failed=1
if ((failed)); then
    echo "check-macos-sources: refused (see above)" >&2
    exit 1
fi
echo "check-macos-sources: ${#files[@]} files pass"
