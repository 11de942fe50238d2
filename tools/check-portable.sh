#!/usr/bin/env bash
# Refuses, in shared code, the names and headers that only Linux has, so that
# what builds here also builds on a Mac. Shared code is every C, C++ and
# Objective-C++ source and header under src/, tools/, tests/, bench/ and fuzz/,
# except src/platform/linux and src/platform/macos (each the one system's
# own) and the test files that tests/**/CMakeLists.txt builds on Linux only
# (those listed inside an `if(CMAKE_SYSTEM_NAME STREQUAL "Linux")` or
# `if(NOT APPLE)` block).
#
# Each entry below says where the two systems part. "Linux:" names the Linux
# man page that documents the name as Linux's own; "macOS:" what the macOS
# page (or SDK header) has instead. Comments are checked too: a comment that
# names /dev/full as what a test uses is as wrong on a Mac as the code.
#
# It also keeps the platform directories apart: shared code reaches
# src/platform/linux and src/platform/macos only through the headers in
# src/platform/, never by including a file from either.
#
# Usage: bash tools/check-portable.sh [ROOT]   (default: this checkout)
# A name this list lacks: add it with its source, and a line to
# tests/platform/check_portable_refuses.sh if it needs a new kind of match.
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root"

# pattern (extended regex) => why it is Linux's only
rules=$(cat <<'EOF'
#include[[:space:]]*<linux/ => Linux kernel headers; macOS has none (its own are <sys/...> and <mach/...>)
#include[[:space:]]*<sys/vfs\.h> => statfs(2), Linux; macOS: statfs(2) is in <sys/mount.h>
#include[[:space:]]*<sys/statfs\.h> => statfs(2), Linux; macOS: <sys/mount.h>
#include[[:space:]]*<mntent\.h> => getmntent(3), glibc; macOS: getmntinfo(3) in <sys/mount.h>
#include[[:space:]]*<sys/sysmacros\.h> => makedev(3), glibc; macOS: major()/minor() in <sys/types.h>
#include[[:space:]]*<sys/(inotify|epoll|eventfd|signalfd|timerfd|sendfile|prctl|auxv|fsuid|personality)\.h> => inotify(7), epoll(7), eventfd(2), signalfd(2), timerfd_create(2), sendfile(2), prctl(2), getauxval(3): Linux; macOS: kqueue(2), FSEvents, its own sendfile(2) in <sys/socket.h>
#include[[:space:]]*<(malloc|features|endian|byteswap|error|argp)\.h> => glibc headers; macOS: <malloc/malloc.h>, <machine/endian.h>, <libkern/OSByteOrder.h>, err(3)
\bst_(a|m|c)tim\b => stat(2) on Linux (POSIX.1-2008 names); macOS: st_atimespec, st_mtimespec, st_ctimespec; st_atime etc. (whole seconds) are on both
\bstatx\b => statx(2), Linux; macOS: stat(2), getattrlist(2)
\bgetdents(64)?\b => getdents(2), Linux; macOS: readdir(3), getattrlistbulk(2)
\bCLOCK_(BOOTTIME|REALTIME_COARSE|MONOTONIC_COARSE|TAI|REALTIME_ALARM|BOOTTIME_ALARM)\b => clock_gettime(2), Linux; macOS clock_gettime(3): REALTIME, MONOTONIC, MONOTONIC_RAW, UPTIME_RAW and their _APPROX, PROCESS_CPUTIME_ID, THREAD_CPUTIME_ID
\bclock_nanosleep\b => clock_nanosleep(2), Linux; macOS has nanosleep(2) only
\bO_(PATH|TMPFILE|DIRECT|NOATIME|LARGEFILE|ASYNC_ONLY)\b => open(2), Linux; macOS open(2) has none of these
\bMS_[A-Z]+\b => mount(2), Linux's flags; macOS mount(2) takes MNT_ flags and another signature
\bumount2\b => umount2(2), Linux; macOS: unmount(2)
\bMNT_(DETACH|FORCE|EXPIRE)\b => umount2(2), Linux; macOS unmount(2) has MNT_FORCE under another value, no DETACH
\b(pipe2|accept4|dup3)\b => pipe2(2), accept4(2), dup3(2): Linux; macOS: pipe(2), accept(2), dup2(2) with fcntl(2)
\bmemfd_create\b => memfd_create(2), Linux; macOS: shm_open(2) or a file in a temporary folder
\binotify_[a-z_]+\b => inotify(7), Linux; macOS: kqueue(2) EVFILT_VNODE or FSEvents
\bepoll_[a-z_]+\b => epoll(7), Linux; macOS: kqueue(2)
\b(eventfd|signalfd|timerfd_[a-z]+)\b => eventfd(2), signalfd(2), timerfd_create(2): Linux; macOS: kqueue(2)
\b(splice|tee|vmsplice|copy_file_range|fallocate|posix_fallocate|posix_fadvise|readahead|syncfs|renameat2)[[:space:]]*\( => splice(2), copy_file_range(2), fallocate(2), posix_fadvise(2), readahead(2), syncfs(2), renameat2(2): Linux (and glibc); macOS: fcntl(2) F_PREALLOCATE, F_RDADVISE, renamex_np(2)
\bRENAME_(NOREPLACE|EXCHANGE|WHITEOUT)\b => renameat2(2), Linux; macOS: renamex_np(2) with RENAME_EXCL, RENAME_SWAP
\b(SOCK_CLOEXEC|SOCK_NONBLOCK|MSG_NOSIGNAL)\b => socket(2), send(2): Linux flags; macOS: fcntl(2) FD_CLOEXEC/O_NONBLOCK, SO_NOSIGPIPE
\bAT_(EMPTY_PATH|NO_AUTOMOUNT)\b => openat(2), fstatat(2): Linux; macOS fstatat(2) has AT_SYMLINK_NOFOLLOW and AT_REMOVEDIR only
\b(getmntent|setmntent|endmntent|get_nprocs|secure_getenv|program_invocation_name|mempcpy|getrandom|gettid|sched_getcpu|prctl|sem_timedwait|ppoll|pthread_timedjoin_np|pthread_tryjoin_np)\b => glibc or Linux only; macOS: getmntinfo(3), sysconf(3), getenv(3), getentropy(2), pthread_threadid_np(3), poll(2)
\b(SCHED_IDLE|SCHED_BATCH|MAP_POPULATE|MAP_LOCKED|MADV_HUGEPAGE|F_SETPIPE_SZ|SIGRTMIN|SIGRTMAX)\b => sched(7), mmap(2), madvise(2), fcntl(2), signal(7): Linux; macOS has none
/proc/ => proc(5), Linux's process file system; macOS: sysctl(3), proc_pidinfo, getrusage(2)
/sys/ => sysfs(5), Linux; macOS: IOKit, sysctl(3)
/dev/(full|shm)\b => null(4) /dev/full and shm_overview(7) /dev/shm: Linux; macOS has neither
#include[[:space:]]*"platform/(linux|macos)/ => one system's own code: shared code reaches it through the headers in src/platform/
EOF
)

# The test files CMake builds on Linux only.
linux_only_tests() {
    find tests -name CMakeLists.txt -print0 2>/dev/null | while IFS= read -r -d '' list; do
        awk -v dir="$(dirname "$list")" '
            /^[[:space:]]*if[[:space:]]*\(/ {
                depth++
                linux[depth] = ($0 ~ /CMAKE_SYSTEM_NAME[[:space:]]+STREQUAL[[:space:]]+"Linux"/ || $0 ~ /NOT[[:space:]]+APPLE/)
                next
            }
            /^[[:space:]]*else(if)?[[:space:]]*\(/ { linux[depth] = 0; next }
            /^[[:space:]]*endif[[:space:]]*\(/ { depth--; next }
            {
                inside = 0
                for (d = 1; d <= depth; d++) if (linux[d]) inside = 1
                if (!inside) next
                for (i = 1; i <= NF; i++) {
                    token = $i
                    gsub(/[()]/, "", token)
                    if (token ~ /\.(cpp|h|mm|c)$/) print dir "/" token
                }
            }' "$list"
    done
}

mapfile -t exempt < <(linux_only_tests)
is_exempt() {
    local file=$1 e
    case $file in src/platform/linux/* | src/platform/macos/*) return 0 ;; esac
    for e in "${exempt[@]}"; do
        [ "$file" = "$e" ] && return 0
    done
    return 1
}

mapfile -d '' candidates < <(find src tools tests bench fuzz \
    \( -path tools/macos-sdk -o -path '*/macos-fixtures' \) -prune -o \
    -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.c' -o -name '*.mm' -o -name '*.hpp' \) -print0 2>/dev/null | sort -z)
files=()
for f in "${candidates[@]}"; do
    is_exempt "$f" || files+=("$f")
done
if ((${#files[@]} == 0)); then
    echo "check-portable: no shared sources found under $root" >&2
    exit 2
fi

found=0
while IFS= read -r rule; do
    pattern=${rule%% => *}
    why=${rule#* => }
    [ -n "$pattern" ] || continue
    if hits=$(grep -nHE -- "$pattern" "${files[@]}"); then
        while IFS= read -r hit; do
            printf '%s\n    Linux only: %s\n' "$hit" "$why" >&2
        done <<<"$hits"
        found=$((found + $(wc -l <<<"$hits")))
    fi
done <<<"$rules"

if ((found)); then
    echo "check-portable: $found Linux-only uses in shared code (see above); move them to src/platform/linux or a Linux-only test" >&2
    exit 1
fi
echo "check-portable: ${#files[@]} shared files use nothing Linux-only (${#exempt[@]} Linux-only test files left out)"
