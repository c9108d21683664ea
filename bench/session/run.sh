#!/bin/bash
# A scan session driven offscreen through scanTree over the scan benchmark's
# corpus, against `vmk scan --jobs 2` and clamscan in the same run. Prints the
# throughput ratio of the session to `vmk scan --jobs 2` (target >= 0.95) and the
# session's peak memory with every file listed (target < 400 MB for 20,000 rows).
# Usage: bench/session/run.sh [--small] [BUILD_DIR]
#   default corpus: 20,000 files, ~1 GB; --small: 4,000 files, ~200 MB.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
files=20000; mb=1024
if [[ "${1:-}" == "--small" ]]; then files=4000; mb=200; shift; fi
build=${1:-$here/../../build}
bin=$(cd "$build/bin" && pwd)
sigs=$bin/sigs
[ -x "$bin/bench_session" ] || { echo "build bench_session first" >&2; exit 1; }

# The same corpus as bench/scan, and its timing helpers.
source "$here/../scan/corpus.sh"
echo "load: $(cut -d' ' -f1-3 /proc/loadavg)"

t_clam=$(timed clamscan --no-summary -r -d "$sigs" --detect-pua=yes --allmatch "$corpus")
t_vmk2=$(timed "$bin/vmk" scan --db "$sigs" --jobs 2 "$corpus")
errors=$(mktemp); trap 'rm -f "$errors"' EXIT
session=$(QT_QPA_PLATFORM=offscreen "$bin/bench_session" "$sigs" "$corpus" 2>"$errors") || { cat "$errors" >&2; exit 1; }
t_session=$(echo "$session" | awk '/^session_seconds/ {print $2}')
peak_kb=$(echo "$session" | awk '/^peak_kb/ {print $2}')
vmk_found=$("$bin/vmk" scan --db "$sigs" --jobs 2 "$corpus" 2>/dev/null | grep '^Infected files:' | awk '{print $3}' || true)

printf 'corpus             %s (%d files)\n' "$corpus" "$files"
printf 'clamscan           %7.2f s\n' "$(wall "$t_clam")"
printf 'vmk scan --jobs 2  %7.2f s  (infected files %s)\n' "$(wall "$t_vmk2")" "$vmk_found"
printf 'scanTree session   %7.2f s\n' "$t_session"
echo "$session" | grep -v '^session_seconds' | sed 's/^/  /'
printf 'ratio session / vmk --jobs 2: %s  (throughput, target >= 0.95)\n' "$(ratio "$(wall "$t_vmk2")" "$t_session")"
printf 'ratio session / clamscan:     %s\n' "$(ratio "$(wall "$t_clam")" "$t_session")"
printf 'peak memory of the session: %d MB  (target < 400 MB)\n' "$((peak_kb / 1024))"
