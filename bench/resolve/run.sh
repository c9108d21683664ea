#!/usr/bin/env bash
# Case-insensitive path resolution of the drive namespace: 500 upper-cased paths
# in a folder of about 1,300 files. Usage: bench/resolve/run.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=${1:-build}/bin
[ -x "$bin/bench_resolve" ] || { echo "build bench_resolve first" >&2; exit 1; }
echo "load: $(cut -d' ' -f1-3 /proc/loadavg)"
"$bin/bench_resolve" "${FOLDER:-/usr/lib/x86_64-linux-gnu}" "${PATHS:-500}"
