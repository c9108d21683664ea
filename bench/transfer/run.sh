#!/bin/bash
# `vmk copy` of a folder of 5,000 files (about 1 GB) from the host to the device,
# against `cp -r`; then with scanning on, against `cp -r` followed by
# `vmk scan --jobs 2` of the copied files. Same corpus, same run, alternating order.
# Usage: bench/transfer/run.sh [--small] [BUILD_DIR]   (--small: 1,000 files, ~200 MB)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
files=5000; mb=1024
if [[ "${1:-}" == "--small" ]]; then files=1000; mb=200; shift; fi
build=${1:-$here/../../build}
bin=$(cd "$build/bin" && pwd)
sigs=$bin/sigs
rounds=${VMK_BENCH_ROUNDS:-3}
source "$here/../scan/corpus.sh"

# The device: a folder of its own that vmk takes as the device drive.
device=$(mktemp -d "${TMPDIR:-/tmp}/vmk-transfer-device-XXXXXX")
trap 'rm -rf "$device"' EXIT
# Each run writes into a folder of its own, and all are removed at the end: ext4
# spends its time skipping inodes freed in the last half minute when a run
# follows the removal of the one before, which would bury the tools under it.
n=0
# The writes of one run are flushed, and the disk left to settle, before the next.
settle=${VMK_BENCH_SETTLE:-15}
fresh() { n=$((n + 1)); out="$device/out$n"; mkdir -p "$out"; sync; sleep "$settle"; }

median() { sort -n | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}'; }

cp_plain=(); vmk_plain=(); cp_scan=(); vmk_scan=()
cpu_cp=(); cpu_vmk=(); cpu_cps=(); cpu_vmks=()
run_vmk() { fresh; t=$(timed "$bin/vmk" copy --device "$device" "$corpus" "$out"); vmk_plain+=("$(wall "$t")"); cpu_vmk+=("$(cpu "$t")")
  copied=$(find "$out" -type f | wc -l); }
run_cp() { fresh; t=$(timed cp -r "$corpus" "$out"); cp_plain+=("$(wall "$t")"); cpu_cp+=("$(cpu "$t")"); }
run_cps() { fresh; t=$(timed bash -c "cp -r '$corpus' '$out' && '$bin/vmk' scan --db '$sigs' --jobs 2 '$out'")
  cp_scan+=("$(wall "$t")"); cpu_cps+=("$(cpu "$t")"); }
run_vmks() { fresh; t=$(timed "$bin/vmk" copy --scan --db "$sigs" --device "$device" "$corpus" "$out")
  vmk_scan+=("$(wall "$t")"); cpu_vmks+=("$(cpu "$t")")
  left_out=$(( $(find "$corpus" -type f ! -name .complete | wc -l) - $(find "$out" -type f | wc -l) )); }
load_before=$(cut -d' ' -f1 /proc/loadavg)
# Alternating order, so that neither tool always runs on a machine the other warmed or loaded.
for ((i = 0; i < rounds; ++i)); do
  if (( i % 2 == 0 )); then run_vmk; run_cp; run_cps; run_vmks; else run_vmks; run_cps; run_cp; run_vmk; fi
done
load_after=$(cut -d' ' -f1 /proc/loadavg)

med() { printf '%s\n' "$@" | median; }
m_cp=$(med "${cp_plain[@]}"); m_vmk=$(med "${vmk_plain[@]}"); m_cps=$(med "${cp_scan[@]}"); m_vmks=$(med "${vmk_scan[@]}")
c_cp=$(med "${cpu_cp[@]}"); c_vmk=$(med "${cpu_vmk[@]}"); c_cps=$(med "${cpu_cps[@]}"); c_vmks=$(med "${cpu_vmks[@]}")
printf 'corpus                         %s (%d files), %d rounds, medians; load %s before, %s after\n' \
  "$corpus" "$files" "$rounds" "$load_before" "$load_after"
printf '                                 wall s    cpu s   (wall of each round)\n'
printf 'cp -r                          %7.2f  %7.2f   (%s)\n' "$m_cp" "$c_cp" "${cp_plain[*]}"
printf 'vmk copy                       %7.2f  %7.2f   (%s), %s files copied\n' "$m_vmk" "$c_vmk" "${vmk_plain[*]}" "$copied"
printf 'cp -r + vmk scan --jobs 2      %7.2f  %7.2f   (%s)\n' "$m_cps" "$c_cps" "${cp_scan[*]}"
printf 'vmk copy --scan                %7.2f  %7.2f   (%s), %s infected files left out\n' "$m_vmks" "$c_vmks" "${vmk_scan[*]}" "$left_out"
printf 'ratio scanning off: %s  (cp -r / vmk copy by wall time, target >= 1.00; by cpu time %s)\n' \
  "$(ratio "$m_cp" "$m_vmk")" "$(ratio "$c_cp" "$c_vmk")"
printf 'ratio scanning on:  %s  (cp -r then vmk scan / vmk copy --scan by wall time, target >= 1.20; by cpu time %s)\n' \
  "$(ratio "$m_cps" "$m_vmks")" "$(ratio "$c_cps" "$c_vmks")"
