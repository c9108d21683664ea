# Timing of the benchmarks that race a reference tool (stages, backup).
# Usage: source bench/stages/race.sh; race "ours command" "reference command"
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
