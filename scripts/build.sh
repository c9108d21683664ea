#!/usr/bin/env bash
# Configures and builds Vormak into build/ (programs in build/bin).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/ccache-env.sh
werror=OFF
[ "${CI:-}" = "true" ] && werror=ON
cmake -S . -B build -G Ninja -DVMK_WERROR=${VMK_WERROR:-$werror} >/dev/null
cmake --build build -j "$(nproc)"
