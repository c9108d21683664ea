#!/usr/bin/env bash
# CopyFileInBlocks of a 1 GiB file against cp, in the same run; prints the ratio.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --build build --target bench_copy >/dev/null
build/bench/bench_copy "${1:-1024}" "${2:-3}" "${3:-${TMPDIR:-/tmp}}"
