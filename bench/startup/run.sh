#!/usr/bin/env bash
# Start-up benchmark: time from process start to the control panel shown, on the
# demo device with our signature set, against the target of 0.5 s; and the cost
# of one Timer1 tick. Needs a build (scripts/build.sh) and xvfb-run.
set -euo pipefail
cd "$(dirname "$0")/../.."
runs=${RUNS:-5}
dev=build/bench-startup-device
bash scripts/make-demo-device.sh "$dev" >/dev/null
dev=$(cd "$dev" && pwd)
# A first start writes VMK.cnf and installs the helpers; the timed starts are the usual ones.
(cd "$dev" && VMK_EXIT_WHEN_SHOWN=1 xvfb-run -a ./Vormak.exe --device "$dev" >/dev/null 2>&1) || true
times=()
for _ in $(seq "$runs"); do
  out=$(cd "$dev" && VMK_EXIT_WHEN_SHOWN=1 xvfb-run -a ./Vormak.exe --device "$dev" 2>/dev/null | grep 'panel shown')
  times+=("$(echo "$out" | awk '{print $4}')")
done
printf '%s\n' "${times[@]}" | sort -n | awk -v target=500 '
  { v[NR] = $1 }
  END {
    med = (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2
    printf "process start to panel shown: median %.1f ms over %d runs (min %.1f, max %.1f)\n", med, NR, v[1], v[NR]
    printf "ratio to the 500 ms target: %.2f (below 1 meets it)\n", med / target
  }'
build/bin/bench_panel_tick "$dev"
