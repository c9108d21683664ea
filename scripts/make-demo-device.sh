#!/usr/bin/env bash
# Lays out a demo device folder from the build: the program and its helpers,
# the signatures, the updater's configuration and an autorun file.
set -euo pipefail
cd "$(dirname "$0")/.."
dev=${1:-build/demo-device}
mkdir -p "$dev"
for f in build/bin/*; do
  [ -f "$f" ] && [ -x "$f" ] && cp -f "$f" "$dev/"
done
if [ -d build/bin/sigs ]; then
  mkdir -p "$dev/sigs" && cp -rf build/bin/sigs/. "$dev/sigs/"
fi
