#!/usr/bin/env bash
# The portability check refuses what it must, where it must: a Linux-only
# name in shared code, a shared file reaching into one system's directory,
# and lets the same names pass in Linux's own code and Linux-only tests.
set -uo pipefail
check="$1/tools/check-portable.sh"
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0
passes=0

plant() { mkdir -p "$(dirname "$tree/$1")" && printf '%s\n' "$2" >"$tree/$1"; }
# One planted fault at a time in an otherwise clean tree: refused for it.
expect() {
    local verdict=$1 file=$2 text=$3 reason=${4:-} out
    rm -rf "$tree"/*
    plant src/clean.cpp 'int clean() { return 0; }'
    plant tests/linux/CMakeLists.txt 'tidewick_add_test_class(tst_shared SOURCES tst_shared.cpp)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    tidewick_add_test_class(tst_mounts SOURCES tst_mounts.cpp Helper.h)
else()
    tidewick_add_test_class(tst_elsewhere SOURCES tst_elsewhere.cpp)
endif()'
    plant "$file" "$text"
    if out=$(bash "$check" "$tree" 2>&1); then
        [ "$verdict" = pass ] && { passes=$((passes + 1)); return; }
        echo "$file passed: $text"
    elif [ "$verdict" = refuse ] && grep -qF -- "$file:1:" <<<"$out" && grep -qF -- "$reason" <<<"$out"; then
        passes=$((passes + 1)); return
    else
        printf '%s: expected %s (%s), got:\n%s\n' "$file" "$verdict" "$reason" "$out"
    fi
    failures=$((failures + 1))
}

expect refuse src/uninstaller/Dates.cpp 'auto t = facts.st_atim.tv_sec;' 'macOS: st_atimespec'
expect refuse bench/Start.cpp 'clock_gettime(CLOCK_BOOTTIME, &ts);' 'clock_gettime'
expect refuse tests/linux/tst_shared.cpp 'run(cli, "/dev/full");' '/dev/full'
expect refuse src/scan/Mounts.h '#include <mntent.h>' 'getmntinfo'
expect refuse src/app/Chrome.cpp '#include "platform/macos/Window.h"' 'through the headers in src/platform/'
expect refuse tests/linux/tst_elsewhere.cpp '::umount2(point, MNT_DETACH);' 'umount2'
expect pass src/platform/linux/Times.cpp 'auto t = facts.st_atim.tv_sec;'
expect pass tests/linux/tst_mounts.cpp '::umount2(point, MNT_DETACH);'
expect pass tests/linux/Helper.h 'int fd = ::open("/proc/self/mountinfo", O_RDONLY);'
expect pass src/scan/Times.cpp 'auto t = facts.st_atime; // whole seconds are on both systems'

echo "$passes passed, $failures failed"
((failures == 0))
