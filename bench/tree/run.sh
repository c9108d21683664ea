#!/usr/bin/env bash
# Tree benchmark: opening a folder of 100,000 files in the shared tree widget
# (one batch insert into the model), against the target of 0.5 s. The folder is
# made once in a temporary folder and removed at the end.
# Usage: bench/tree/run.sh [BUILD_DIR]   (default: build)
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=${1:-build}/bin
[ -x "$bin/bench_tree_expand" ] || { echo "build bench_tree_expand first" >&2; exit 1; }
work=$(mktemp -d "${TMPDIR:-/tmp}/vmk-bench-tree.XXXXXX")
trap 'rm -rf "$work"' EXIT
echo "load: $(cut -d' ' -f1-3 /proc/loadavg)"
QT_QPA_PLATFORM=offscreen "$bin/bench_tree_expand" "$work" "${FILES:-100000}" "${RUNS:-5}"
