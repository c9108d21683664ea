#!/bin/bash
# Scan throughput of `vmk scan` against clamscan, same signatures, same corpus,
# measured in the same run. Usage: bench/scan/run.sh [--small] [BUILD_DIR]
#   default corpus: 20,000 files, ~1 GB; --small: 4,000 files, ~200 MB.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
files=20000; mb=1024
if [[ "${1:-}" == "--small" ]]; then files=4000; mb=200; shift; fi
build=${1:-$here/../../build}
bin=$(cd "$build/bin" && pwd)
sigs=$bin/sigs
source "$here/corpus.sh"

# clamscan with the same set: PUA signatures on, every alert reported, cache as it
# ships (on) and off (our engine runs with it off).
t_clam=$(timed clamscan --no-summary -r -d "$sigs" --detect-pua=yes --allmatch "$corpus")
t_clam_nocache=$(timed clamscan --no-summary -r -d "$sigs" --detect-pua=yes --allmatch --disable-cache "$corpus")
t_vmk1=$(timed "$bin/vmk" scan --db "$sigs" --jobs 1 "$corpus")
t_vmk2=$(timed "$bin/vmk" scan --db "$sigs" --jobs 2 "$corpus")

# Same verdicts: the infected files each tool reports.
clam_found=$(clamscan --no-summary -r -i -d "$sigs" --detect-pua=yes "$corpus" 2>/dev/null | grep -c FOUND || true)
vmk_found=$("$bin/vmk" scan --db "$sigs" --jobs 2 "$corpus" 2>/dev/null | grep '^Infected files:' | awk '{print $3}' || true)

printf 'corpus            %s (%d files)\n' "$corpus" "$files"
printf '                   wall s   cpu s\n'
printf 'clamscan          %7.2f %7.2f\n' "$(wall "$t_clam")" "$(cpu "$t_clam")"
printf 'clamscan no cache %7.2f %7.2f\n' "$(wall "$t_clam_nocache")" "$(cpu "$t_clam_nocache")"
printf 'vmk scan --jobs 1 %7.2f %7.2f\n' "$(wall "$t_vmk1")" "$(cpu "$t_vmk1")"
printf 'vmk scan --jobs 2 %7.2f %7.2f\n' "$(wall "$t_vmk2")" "$(cpu "$t_vmk2")"
printf 'infected files    clamscan %s, vmk %s\n' "$clam_found" "$vmk_found"
printf 'ratio jobs 1: %s  (throughput vmk / clamscan by wall time, target >= 1.00; by cpu time %s)\n' \
  "$(ratio "$(wall "$t_clam")" "$(wall "$t_vmk1")")" "$(ratio "$(cpu "$t_clam")" "$(cpu "$t_vmk1")")"
printf 'ratio jobs 2: %s  (target >= 1.25)\n' "$(ratio "$(wall "$t_clam")" "$(wall "$t_vmk2")")"
