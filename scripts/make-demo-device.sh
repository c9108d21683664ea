#!/usr/bin/env bash
# Lays out a demo device folder from the build: the program part that any
# drive gets (make-device.sh: the programs, their libraries, plugins and fonts,
# the signatures and their index), then the updater's configuration
# pointing at a local update source, an autorun file and its clean copy in
# \VMK\AUTORUN.bck.
#   make-demo-device.sh [DEVICE_DIR] [LANGUAGE_LINE]
# LANGUAGE_LINE, e.g. "[English]", is written to Language.cnf (none: Spanish).
set -euo pipefail
cd "$(dirname "$0")/.."
dev=${1:-build/demo-device}
lang=${2:-}
mkdir -p "$dev"
dev=$(cd "$dev" && pwd)
# The demo always starts from the bundled signature set, in the language given.
rm -rf "$dev/sigs" "$dev/idx"
[ -n "$lang" ] || rm -f "$dev/Language.cnf"
bash scripts/make-device.sh "$dev" "$lang"

# The update source: a folder on the host holding the signature set, as a
# mirror would. Newer files dropped there are what the Update button fetches.
src=$(cd "${VMK_BUILD:-build}" && pwd)/demo-update-source
mkdir -p "$src"
if [ -d "${VMK_BUILD:-build}/bin/sigs" ]; then cp -rf "${VMK_BUILD:-build}/bin/sigs/." "$src/"; fi
printf '# Where avupdate.exe looks for signatures: a folder, http:// or ftp://\r\nsource=%s\r\nfiles=vormak.cud main.cvd daily.cvd bytecode.cvd\r\ntimeout=60\r\n' "$src" \
  > "$dev/avupdate.conf"

printf '[autorun]\r\nopen=Vormak.exe\r\nicon=Vormak.exe\r\nlabel=VORMAK\r\n' > "$dev/VMK_AUTORUN.tmp"
mkdir -p "$dev/VMK"
cp -f "$dev/VMK_AUTORUN.tmp" "$dev/VMK/AUTORUN.bck"
# A writable autorun file (the program makes it read-only while it runs).
[ -f "$dev/AUTORUN.inf" ] && chmod u+w "$dev/AUTORUN.inf"
mv -f "$dev/VMK_AUTORUN.tmp" "$dev/AUTORUN.inf"

echo "demo device: $dev"
