#!/usr/bin/env bash
# Builds the whole suite with AddressSanitizer and UndefinedBehaviorSanitizer in
# build-asan/ and runs every test there; the first fault fails its test.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/ccache-env.sh
source scripts/sanitizer-env.sh
werror=OFF
[ "${CI:-}" = "true" ] && werror=ON
cmake -S . -B build-asan -G Ninja -DVMK_SANITIZE=ON -DVMK_WERROR=${VMK_WERROR:-$werror} >/dev/null
cmake --build build-asan -j "$(nproc)"
cd build-asan
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$(nproc)" --timeout 900 "$@"
