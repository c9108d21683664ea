#!/usr/bin/env bash
# Installs every Debian 12 package that building, running and testing Vormak needs.
set -euo pipefail
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
PKGS=(
  build-essential cmake ninja-build ccache pkg-config git
  clang libclang-rt-14-dev
  qt6-base-dev qt6-base-dev-tools libqt6test6 qt6-qpa-plugins libgl-dev
  libclamav-dev clamav clamav-testfiles
  libzip-dev zlib1g-dev zip unzip
  libgcrypt20-dev
  libcurl4-openssl-dev
  patchelf
  libgtest-dev libgmock-dev
  python3 python3-pyftpdlib vsftpd openssl
  xvfb xauth fonts-dejavu-core fonts-wqy-microhei
  e2fsprogs
)
missing=()
for p in "${PKGS[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
