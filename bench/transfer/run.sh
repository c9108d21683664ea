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
fresh() { rm -rf "$device/out"; mkdir -p "$device/out"; sync; }

median() { sort -n | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}'; }

cp_plain=(); vmk_plain=(); cp_scan=(); vmk_scan=()
for ((i = 0; i < rounds; ++i)); do
  fresh; t=$(timed "$bin/vmk" copy --device "$device" "$corpus" "$device/out"); vmk_plain+=("$(wall "$t")")
  copied=$(find "$device/out" -type f | wc -l)
  fresh; t=$(timed cp -r "$corpus" "$device/out"); cp_plain+=("$(wall "$t")")
  fresh; t=$(timed bash -c "cp -r '$corpus' '$device/out' && '$bin/vmk' scan --db '$sigs' --jobs 2 '$device/out'")
  cp_scan+=("$(wall "$t")")
  fresh; t=$(timed "$bin/vmk" copy --scan --db "$sigs" --device "$device" "$corpus" "$device/out"); vmk_scan+=("$(wall "$t")")
  left_out=$(( $(find "$corpus" -type f ! -name .complete | wc -l) - $(find "$device/out" -type f | wc -l) ))
done

m_cp=$(printf '%s\n' "${cp_plain[@]}" | median)
m_vmk=$(printf '%s\n' "${vmk_plain[@]}" | median)
m_cps=$(printf '%s\n' "${cp_scan[@]}" | median)
m_vmks=$(printf '%s\n' "${vmk_scan[@]}" | median)
printf 'corpus                         %s (%d files), %d rounds, medians\n' "$corpus" "$files" "$rounds"
printf 'cp -r                          %7.2f s   (%s)\n' "$m_cp" "${cp_plain[*]}"
printf 'vmk copy                       %7.2f s   (%s), %s files copied\n' "$m_vmk" "${vmk_plain[*]}" "$copied"
printf 'cp -r + vmk scan --jobs 2      %7.2f s   (%s)\n' "$m_cps" "${cp_scan[*]}"
printf 'vmk copy --scan                %7.2f s   (%s), %s infected files left out\n' "$m_vmks" "${vmk_scan[*]}" "$left_out"
printf 'ratio scanning off: %s  (cp -r / vmk copy, target >= 1.00)\n' "$(ratio "$m_cp" "$m_vmk")"
printf 'ratio scanning on:  %s  (cp -r then vmk scan / vmk copy --scan, target >= 1.20)\n' "$(ratio "$m_cps" "$m_vmks")"
