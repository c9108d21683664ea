#!/usr/bin/env bash
# Runs one fuzz target: every input of its corpus, then new inputs for SECONDS.
#   run-fuzz.sh TARGET CORPUS WORK [SECONDS] [libFuzzer options...]
# New interesting inputs go to WORK/new, so the committed corpus stays as it is;
# a crash leaves WORK/crash-* (or timeout-*, leak-*), which is fixed and then
# copied into the corpus folder.
set -euo pipefail
bin=$1 corpus=$2 work=$3 seconds=${4:-20}
shift $(( $# < 4 ? $# : 4 ))
# Absolute paths: a target changes into its private folder before it reads inputs.
mkdir -p "$work/new" "$work/tmp"
bin=$(realpath "$bin") corpus=$(realpath "$corpus") work=$(realpath "$work")
source "$(dirname "$0")/sanitizer-env.sh"
# No fuzz target loads libclamav, so the fast unwinder keeps them quick.
export ASAN_OPTIONS="${ASAN_OPTIONS/:fast_unwind_on_malloc=0/}"
# The target's private folder is made below here.
export TMPDIR="$work/tmp"
# libFuzzer itself writes its new inputs and crash files there.
export VMK_FUZZ_ALLOW="$work"
exec "$bin" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=2048 -print_final_stats=1 \
  -artifact_prefix="$work/" "$@" "$work/new" "$corpus"
