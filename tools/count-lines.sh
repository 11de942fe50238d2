#!/usr/bin/env bash
# Lines of tests against lines of code: non-blank lines that are not only a
# comment, in the files we write by hand (C and C++ sources and headers,
# Objective-C++, QML, shell, Python, CMake lists). Tests should stay within a
# third of the code.
set -euo pipefail
cd "$(dirname "$0")/.."

count() {
    find "$@" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.mm' -o -name '*.c' \
        -o -name '*.qml' -o -name '*.sh' -o -name '*.py' -o -name 'CMakeLists.txt' \
        -o -name '*.cmake' \) -print0 |
        xargs -0 cat |
        grep -Ev '^[[:space:]]*$' |
        grep -Ev '^[[:space:]]*(//|/\*|\*|#[[:space:]]|#$)' |
        wc -l
}

tests=$(count tests)
code=$(count src tools)
echo "tests $tests"
echo "code $code"
echo "ratio $(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.3f", t / c }')"
