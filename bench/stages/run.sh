#!/usr/bin/env bash
# Pack and seal stages against the reference tools, in the same run:
#  - a 1 GiB file encrypted and decrypted by `vmk` (AES-256) against `openssl enc -aes-256-ctr`
#  - a 200 MB mixed tree compressed by the zip component (deflate 9) against Info-ZIP `zip -9 -r`
# Ours and the reference run alternately, three times each, each after a sync;
# prints the best time of each and the ratio (reference time / our time: above 1 means faster than the reference).
# Usage: bench/stages/run.sh [BUILD_DIR]   (default: build)
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=${1:-build}/bin
[ -x "$bin/vmk" ] && [ -x "$bin/bench_zip_tree" ] || { echo "build vmk and bench_zip_tree first" >&2; exit 1; }
work=$(mktemp -d "${TMPDIR:-/tmp}/vmk-bench-stages.XXXXXX")
trap 'rm -rf "$work"' EXIT

now() { date +%s.%N; }
# One timed run, in seconds. Dirty pages of earlier runs are flushed first, so
# every run starts from the same page-cache state: a gigabyte written by the
# previous run would otherwise throttle whichever tool comes next.
timed() {
  local s e
  sync
  s=$(now); "$@" >/dev/null; e=$(now)
  echo "$e - $s" | bc -l
}
min() { if [ -z "$1" ] || [ "$(echo "$2 < $1" | bc -l)" = 1 ]; then echo "$2"; else echo "$1"; fi; }
# Ours and the reference alternately, three times each; the best time of each.
# Sets OURS and REF. Usage: race "ours command" "reference command"
race() {
  local a="" b="" t
  for _ in 1 2 3; do
    t=$(timed sh -c "$1"); a=$(min "$a" "$t")
    t=$(timed sh -c "$2"); b=$(min "$b" "$t")
  done
  OURS=$(printf '%.3f' "$a"); REF=$(printf '%.3f' "$b")
}
ratio() { printf '%.2f' "$(echo "$1 / $2" | bc -l)"; }

# Every core matters here (the deflate runs on all of them): note the load.
echo "load average at start: $(cut -d' ' -f1-3 /proc/loadavg), $(nproc) cores"
echo "== 1 GiB AES-256: vmk encrypt/decrypt vs openssl enc -aes-256-ctr"
head -c 1073741824 /dev/urandom > "$work/big.bin"
printf 'bench pass phrase\n' > "$work/pass"
cat "$work/big.bin" > /dev/null
race "'$bin/vmk' encrypt --algorithm 0 --pass-file '$work/pass' '$work/big.bin' '$work/big.vmk'" \
  "openssl enc -aes-256-ctr -pbkdf2 -pass file:'$work/pass' -in '$work/big.bin' -out '$work/big.ossl'"
ours_enc=$OURS ref_enc=$REF
race "'$bin/vmk' decrypt --pass-file '$work/pass' '$work/big.vmk' '$work/big.back'" \
  "openssl enc -d -aes-256-ctr -pbkdf2 -pass file:'$work/pass' -in '$work/big.ossl' -out '$work/big.oback'"
ours_dec=$OURS ref_dec=$REF
cmp -s "$work/big.bin" "$work/big.back" || { echo "decrypted file differs" >&2; exit 1; }
mb=1024
echo "encrypt: vmk ${ours_enc}s ($(printf '%.0f' "$(echo "$mb / $ours_enc" | bc -l)") MB/s), openssl ${ref_enc}s ($(printf '%.0f' "$(echo "$mb / $ref_enc" | bc -l)") MB/s), throughput ratio $(ratio "$ref_enc" "$ours_enc") (target >= 0.8)"
echo "decrypt: vmk ${ours_dec}s ($(printf '%.0f' "$(echo "$mb / $ours_dec" | bc -l)") MB/s), openssl ${ref_dec}s ($(printf '%.0f' "$(echo "$mb / $ref_dec" | bc -l)") MB/s), throughput ratio $(ratio "$ref_dec" "$ours_dec") (target >= 0.8)"
rm -f "$work"/big.*

echo "== 200 MB mixed tree: zip component deflate 9 vs zip -9 -r"
tree="$work/tree"
source bench/stages/mixed-tree.sh
mixed_tree "$tree"
cat $(find "$tree" -type f) > /dev/null 2>&1 || true
race "'$bin/bench_zip_tree' '$tree' '$work/ours.zip'" "cd '$tree' && rm -f '$work/ref.zip' && zip -9 -r -q '$work/ref.zip' ."
ours_zip=$OURS ref_zip=$REF
unzip -tq "$work/ours.zip" >/dev/null || { echo "our archive fails unzip -t" >&2; exit 1; }
echo "load average at end: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "compress: ours ${ours_zip}s ($(du -m "$work/ours.zip" | cut -f1) MB), zip -9 -r ${ref_zip}s ($(du -m "$work/ref.zip" | cut -f1) MB), speed ratio $(ratio "$ref_zip" "$ours_zip") (target >= 1.0)"
