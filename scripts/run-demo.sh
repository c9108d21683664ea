#!/usr/bin/env bash
# Installs what is needed, builds Vormak, lays out the demo device and starts the program on it.
#   run-demo.sh [LANGUAGE_LINE]   e.g. run-demo.sh "[English]"
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
bash scripts/make-demo-device.sh build/demo-device "${1:-}"
cd build/demo-device
exec ./Vormak.exe --device "$PWD"
