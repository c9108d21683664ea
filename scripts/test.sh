#!/usr/bin/env bash
# Installs what is needed, builds Vormak and runs every test: the plain build,
# the same suite under AddressSanitizer and UndefinedBehaviorSanitizer, and each
# fuzz target for a bounded time.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
(cd build && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$(nproc)" --timeout 600)
bash scripts/test-sanitized.sh
bash scripts/test-fuzz.sh
