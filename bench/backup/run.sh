#!/usr/bin/env bash
# The backup against the reference tools, in the same run:
#  - `vmk backup` of a 200 MB mixed tree (deflate 9, the device's settings) against
#    Info-ZIP `zip -9 -r` of the same tree; both archives must hold the same files
#  - `vmk ftp put` of that archive against `curl -T` to the same loopback FTP server
#    (pyftpdlib, as the FTP tests start it)
# Ours and the reference run alternately, three times each, each after a sync; prints
# the best time of each and the ratio (reference time / our time: above 1 is faster).
# Usage: bench/backup/run.sh [BUILD_DIR]   (default: build)
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=${1:-build}/bin
[ -x "$bin/vmk" ] || { echo "build vmk first" >&2; exit 1; }
work=$(mktemp -d "${TMPDIR:-/tmp}/vmk-bench-backup.XXXXXX")
server=""
trap '[ -n "$server" ] && kill "$server" 2>/dev/null; rm -rf "$work"' EXIT

source bench/stages/race.sh
# The files of an archive (Info-ZIP's folder entries left out).
files_in() { unzip -Z1 "$1" | grep -vc '/$'; }

echo "load average at start: $(cut -d' ' -f1-3 /proc/loadavg), $(nproc) cores"
echo "== 200 MB mixed tree: vmk backup (deflate 9) vs zip -9 -r"
tree="$work/tree"
source bench/stages/mixed-tree.sh
mixed_tree "$tree"
cat $(find "$tree" -type f) > /dev/null 2>&1 || true

# A device whose settings ask for deflate and no scan, and a selection of the tree.
device="$work/device"
mkdir -p "$device/VMK" "$device/Respaldos"
{
  printf '#ScanBeforeBackup=%s\r\n' "$("$bin/vmk" seal 0)"
  printf '#BackupsFolder=%s\r\n' "$("$bin/vmk" seal '\Respaldos\')"
  printf '#BCompAlgorithm=%s\r\n' "$("$bin/vmk" seal 2)"
} > "$device/VMK/VMK.cnf"
printf '[Add]\r\nC:%s\\\r\n[Exclude]\r\n' "$(echo "$tree" | tr / '\\')" > "$work/selection.txt"
ours="rm -f '$device'/Respaldos/*.zip && '$bin/vmk' backup '$work/selection.txt' --program-folder '$device/VMK' --device '$device'"
race "$ours" "cd '$tree' && rm -f '$work/ref.zip' && zip -9 -r -q '$work/ref.zip' ."
ours_zip=$OURS ref_zip=$REF
archive=$(ls "$device"/Respaldos/*.zip)
unzip -tq "$archive" >/dev/null || { echo "our archive fails unzip -t" >&2; exit 1; }
ours_files=$(files_in "$archive") ref_files=$(files_in "$work/ref.zip")
[ "$ours_files" = "$ref_files" ] || { echo "archives differ: ours $ours_files files, zip $ref_files" >&2; exit 1; }
echo "backup: vmk ${ours_zip}s ($(du -m "$archive" | cut -f1) MB, $ours_files files), zip -9 -r ${ref_zip}s ($(du -m "$work/ref.zip" | cut -f1) MB, $ref_files files), speed ratio $(ratio "$ref_zip" "$ours_zip") (target >= 1.8)"

echo "== FTP upload of the archive to pyftpdlib on 127.0.0.1: vmk ftp put vs curl -T"
mkdir -p "$work/ftproot"
printf 's3cret\n' > "$work/pass"
python3=/usr/bin/python3
"$python3" tests/data/ftp/ftp_server.py --root "$work/ftproot" > "$work/port" 2> "$work/server.log" &
server=$!
for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.1; done
port=$(head -n1 "$work/port")
[ -n "$port" ] || { echo "the FTP server did not start" >&2; exit 1; }
cp "$archive" "$work/upload.zip"
# Each upload goes to a folder of its own, made on the way by both tools, as a new
# dated archive does: sent again over the same name, the rename that completes our
# upload would replace a file, and the server's ext4 then flushes the new data
# before the rename returns, a cost curl's in-place write does not pay.
race "'$bin/vmk' ftp put '$work/upload.zip' \"ftp://alice@127.0.0.1:$port/ours/\$(date +%s%N)/\" --pass-file '$work/pass'" \
  "curl -s -S --ftp-create-dirs -T '$work/upload.zip' \"ftp://127.0.0.1:$port/ref/\$(date +%s%N)/\" --user alice:s3cret"
for sent in "$work"/ftproot/ours/*/upload.zip "$work"/ftproot/ref/*/upload.zip; do
  cmp -s "$work/upload.zip" "$sent" || { echo "uploaded archive differs: $sent" >&2; exit 1; }
done
mb=$(du -m "$work/upload.zip" | cut -f1)
echo "load average at end: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "upload: vmk ${OURS}s, curl -T ${REF}s (${mb} MB), speed ratio $(ratio "$REF" "$OURS") (target >= 0.9)"
