# Sourced by the scan and session benchmarks: the shared corpus, made once by
# make_corpus.py and read into the page cache so that every tool reads from
# memory alike, and the timing helpers. Expects $files and $mb; sets $corpus.
scan_bench_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
corpus=${VMK_BENCH_CORPUS:-${TMPDIR:-/tmp}/vmk-scan-corpus-$files}
if [[ ! -f "$corpus/.complete" ]]; then
  rm -rf "$corpus"
  /usr/bin/python3 "$scan_bench_dir/make_corpus.py" "$corpus" "$files" "$mb"
  touch "$corpus/.complete"
fi
find "$corpus" -type f -exec cat {} + >/dev/null

# Prints "wall user sys" seconds of the command (bash's own timer, no extra package).
timed() {
  local TIMEFORMAT='%R %U %S'
  { time "$@" >/dev/null 2>&1 || true; } 2>&1
}
wall() { echo "$1" | awk '{print $1}'; }
cpu() { echo "$1" | awk '{printf "%.2f", $2 + $3}'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.2f", a / b}'; }
