#!/usr/bin/env bash
# Rebuilds the panel's PNG pictures from make-icons.cpp (Qt's painter, no
# other tool needed). The PNGs are committed; run this only after a change.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
g++ -std=c++20 -O1 -fPIC "$here/make-icons.cpp" -o "$tmp/make-icons" $(pkg-config --cflags --libs Qt6Gui)
"$tmp/make-icons" "$here"
