# The 200 MB mixed tree of the compression benchmarks (stages, backup): text
# (headers), binaries (shared libraries) and incompressible data, as plain files
# (links are copied as what they lead to, so every tool sees the same files).
# Usage: source bench/stages/mixed-tree.sh; mixed_tree DIR
mixed_tree() {
  local tree=$1
  size_mb() { du -sm "$tree" | cut -f1; }
  mkdir -p "$tree/include" "$tree/lib" "$tree/random"
  for d in /usr/include/*; do
    cp -rL "$d" "$tree/include/" 2>/dev/null || true
    [ "$(size_mb)" -ge 90 ] && break
  done
  for f in /usr/lib/x86_64-linux-gnu/*.so*; do
    [ -f "$f" ] || continue
    cp -L "$f" "$tree/lib/" 2>/dev/null || true
    [ "$(size_mb)" -ge 180 ] && break
  done
  for i in $(seq 1 20); do head -c 1048576 /dev/urandom > "$tree/random/r$i.bin"; done
  # Anything cp could not make plain (a link leading nowhere) is not part of the tree.
  find "$tree" ! -type f ! -type d -delete
  echo "tree: $(du -sm "$tree" | cut -f1) MB, $(find "$tree" -type f | wc -l) files"
}
