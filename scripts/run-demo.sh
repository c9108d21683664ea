#!/usr/bin/env bash
# Installs what is needed, builds Vormak, lays out the demo device and starts the program on it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
bash scripts/make-demo-device.sh build/demo-device
cd build/demo-device
if [ -x ./Vormak.exe ]; then
  exec ./Vormak.exe --device "$PWD" "$@"
fi
# Until the screens exist the command-line tool shows the device.
./vmk drives && ./vmk settings --program-folder "$PWD"
