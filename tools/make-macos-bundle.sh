#!/usr/bin/env bash
# Turns a built Tidewick.app into one that launches anywhere its signature is
# accepted: macdeployqt copies Qt into it, which rewrites the executable and
# the frameworks and so breaks the linker's ad-hoc signature (Apple silicon
# kills an app whose signature is invalid at launch). Everything is then
# signed again, inside out, and the result verified.
#
#   bash tools/make-macos-bundle.sh build/mac/src/Tidewick.app
#
# Ad hoc by default, for this machine. With TIDEWICK_SIGN_IDENTITY set to a
# "Developer ID Application: ..." identity, signs for distribution instead:
# hardened runtime, secure timestamp, the app's entitlements (notarise after).
set -euo pipefail
app=${1:?usage: make-macos-bundle.sh PATH/Tidewick.app}
root=$(cd "$(dirname "$0")/.." && pwd)
qt_bin=${QT_BIN:-$(qmake6 -query QT_INSTALL_BINS 2>/dev/null || echo "$(brew --prefix qt)/bin")}

"$qt_bin/macdeployqt" "$app" -qmldir="$root/src"

identity=${TIDEWICK_SIGN_IDENTITY:--}
sign=(codesign --force --sign "$identity")
if [ "$identity" != "-" ]; then
    sign+=(--options runtime --timestamp)
fi
# Inner code first: loose libraries and plug-ins, then frameworks, then the
# app with its entitlements.
find "$app/Contents" -type f \( -name '*.dylib' -o -name '*.so' \) -exec "${sign[@]}" {} +
if [ -d "$app/Contents/Frameworks" ]; then
    find "$app/Contents/Frameworks" -maxdepth 1 -name '*.framework' -exec "${sign[@]}" {} +
fi
"${sign[@]}" --entitlements "$root/src/app/Tidewick.entitlements" "$app"

codesign --verify --deep --strict --verbose=2 "$app"
echo "signed ($([ "$identity" = "-" ] && echo "ad hoc" || echo "$identity")): $app"
