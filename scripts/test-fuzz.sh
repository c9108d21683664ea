#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build-fuzz/ and runs each one on its
# corpus and then on new inputs for a bounded time (VMK_FUZZ_SECONDS, default 20).
# Extra arguments go to ctest, e.g. -R fuzz.zip_archive.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/ccache-env.sh
werror=OFF
[ "${CI:-}" = "true" ] && werror=ON
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DVMK_FUZZ=ON -DVMK_BUILD_TESTS=OFF \
  -DVMK_FUZZ_SECONDS="${VMK_FUZZ_SECONDS:-20}" -DVMK_WERROR=${VMK_WERROR:-$werror} >/dev/null
cmake --build build-fuzz -j "$(nproc)" --target vmk_fuzz_all
cd build-fuzz
ctest --output-on-failure -j "$(nproc)" "$@"
