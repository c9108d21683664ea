#!/usr/bin/env bash
# Lays out the program part of a device from the build, so that it starts on
# any x86-64 Linux host whose C library is glibc 2.36 (the build machine's,
# Debian 12) or newer, with nothing else installed:
#   - the six programs in the device's root, stripped;
#   - every shared library they and their Qt plugins load, beyond the C
#     library's own objects, once each in lib/. The programs are linked with
#     the run path $ORIGIN/lib; each copied library gets $ORIGIN and each
#     plugin $ORIGIN/../../lib, so every object finds its own needs;
#   - Qt's platform plugins (xcb, offscreen), the compose input context and the
#     image plugins in plugins/, with qt.conf;
#   - a Latin and a CJK-capable font in fonts/ with their own fontconfig file,
#     which the programs use only on a host that has no fonts;
#   - the bundled signature set, its index and the updater's configuration,
#     each only when the device has none yet (an updated set stays);
#   - on a device without settings yet, the folders the default settings name
#     (they follow the language of the first start), and Language.cnf when a
#     language is given.
# lib/runtime.list names every file of lib/, plugins/ and fonts/ (so that the
# next layout removes what is no longer needed); lib/eject.list names the part
# eject.exe needs, which Vormak.exe copies into the host's system folder so
# that eject.exe runs after the device is gone.
#   make-device.sh DEST [LANGUAGE_LINE]   e.g. make-device.sh /media/$USER/STICK "[English]"
# VMK_BUILD names the build folder (default: build beside scripts/).
set -euo pipefail
unset LD_LIBRARY_PATH
repo=$(cd "$(dirname "$0")/.." && pwd)
build=${VMK_BUILD:-$repo/build}
bin=$build/bin
if [ $# -lt 1 ] || [ $# -gt 2 ] || [ -z "$1" ]; then
  echo "usage: make-device.sh DEST [LANGUAGE_LINE]" >&2
  exit 2
fi
mkdir -p "$1"
dest=$(cd "$1" && pwd)
lang=${2:-}
for tool in strip patchelf ldd; do
  command -v "$tool" >/dev/null || { echo "make-device.sh: $tool is missing (bash scripts/install-deps.sh)" >&2; exit 1; }
done

programs=(Vormak.exe vmk avupdate.exe eject.exe Unlock.exe Delete.exe)
for p in "${programs[@]}"; do
  [ -x "$bin/$p" ] || { echo "make-device.sh: $bin/$p is missing: build first (bash scripts/build.sh)" >&2; exit 1; }
done

qtplugins=$(qtpaths6 --query QT_INSTALL_PLUGINS 2>/dev/null || echo /usr/lib/x86_64-linux-gnu/qt6/plugins)
platform_plugins=(platforms/libqxcb.so platforms/libqoffscreen.so)
plugins=("${platform_plugins[@]}" platforminputcontexts/libcomposeplatforminputcontextplugin.so)
for f in "$qtplugins"/imageformats/*.so; do plugins+=("imageformats/${f##*/}"); done
fonts=(/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf /usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
  /usr/share/fonts/truetype/wqy/wqy-microhei.ttc)

# The C library's own objects: every host has them, and they must match the
# host's kernel interface and loader, so they are never carried.
is_c_library() {
  case "$1" in
    ld-linux*.so* | libc.so.* | libm.so.* | libpthread.so.* | libdl.so.* | librt.so.* | libresolv.so.*) return 0 ;;
  esac
  return 1
}

# "soname path" for every library the given objects load, directly or not.
needs() {
  local out
  out=$(ldd "$@")
  if grep -q "not found" <<<"$out"; then
    echo "make-device.sh: a library is missing on the build machine:" >&2
    grep "not found" <<<"$out" >&2
    exit 1
  fi
  awk '$2 == "=>" && $3 ~ /^\// { print $1, $3 }' <<<"$out" | sort -u
}

# Fills the named associative array with soname -> source path, one entry per
# soname, so that no library is copied twice.
declare -A all_libs=() eject_libs=()
collect() {
  local -n into=$1
  shift
  local name path
  while read -r name path; do
    is_c_library "$name" && continue
    [ -n "${into[$name]:-}" ] || into[$name]=$path
  done < <(needs "$@")
}
plugin_paths=()
for p in "${plugins[@]}"; do plugin_paths+=("$qtplugins/$p"); done
eject_plugin_paths=()
for p in "${platform_plugins[@]}"; do eject_plugin_paths+=("$qtplugins/$p"); done
program_paths=()
for p in "${programs[@]}"; do program_paths+=("$bin/$p"); done
collect all_libs "${program_paths[@]}" "${plugin_paths[@]}"
collect eject_libs "$bin/eject.exe" "${eject_plugin_paths[@]}"

# Our folders: a lib/ that the last layout did not write is someone else's.
list=$dest/lib/runtime.list
for d in lib plugins fonts; do
  if [ -d "$dest/$d" ] && [ ! -f "$list" ] && [ -n "$(ls -A "$dest/$d")" ]; then
    echo "make-device.sh: $dest/$d exists and was not laid out by Vormak; choose another folder" >&2
    exit 1
  fi
done
if [ -f "$list" ]; then
  while IFS= read -r rel; do
    case "$rel" in lib/* | plugins/* | fonts/*) ;; *) continue ;; esac
    case "/$rel/" in */../*) continue ;; esac
    rm -f "$dest/$rel"
  done <"$list"
fi

for p in "${programs[@]}"; do
  install -m 0755 "$bin/$p" "$dest/$p"
  strip --strip-unneeded "$dest/$p"
done

mkdir -p "$dest/lib"
runtime=()
for name in "${!all_libs[@]}"; do
  install -m 0644 "${all_libs[$name]}" "$dest/lib/$name"
  strip --strip-unneeded "$dest/lib/$name"
  patchelf --set-rpath '$ORIGIN' "$dest/lib/$name"
  runtime+=("lib/$name")
done
for p in "${plugins[@]}"; do
  mkdir -p "$dest/plugins/${p%/*}"
  install -m 0644 "$qtplugins/$p" "$dest/plugins/$p"
  strip --strip-unneeded "$dest/plugins/$p"
  patchelf --set-rpath '$ORIGIN/../../lib' "$dest/plugins/$p"
  runtime+=("plugins/$p")
done
install -m 0644 "$repo/data/device/qt.conf" "$dest/qt.conf"
mkdir -p "$dest/fonts"
for f in "${fonts[@]}" "$repo/data/device/fonts.conf"; do
  install -m 0644 "$f" "$dest/fonts/${f##*/}"
  runtime+=("fonts/${f##*/}")
done
printf '%s\n' "${runtime[@]}" | sort >"$list"
{
  for name in "${!eject_libs[@]}"; do echo "lib/$name"; done
  for p in "${platform_plugins[@]}"; do echo "plugins/$p"; done
  echo qt.conf
  for f in "${fonts[@]}" "$repo/data/device/fonts.conf"; do echo "fonts/${f##*/}"; done
} | sort >"$dest/lib/eject.list"

if [ ! -d "$dest/sigs" ] && [ -d "$bin/sigs" ]; then
  mkdir -p "$dest/sigs" && cp -rf "$bin/sigs/." "$dest/sigs/"
fi
if [ ! -d "$dest/idx" ] && [ -d "$bin/idx" ]; then
  mkdir -p "$dest/idx" && cp -rf "$bin/idx/." "$dest/idx/"
fi
[ -f "$dest/avupdate.conf" ] || cp -f "$bin/avupdate.conf" "$dest/avupdate.conf"

if [ -n "$lang" ]; then
  printf '%s\r\n' "$lang" >"$dest/Language.cnf"
elif [ -f "$dest/Language.cnf" ]; then
  lang=$(head -n 1 "$dest/Language.cnf" | tr -d '\r')
fi
if [ ! -f "$dest/VMK.cnf" ]; then
  if [ -z "$lang" ] || [ "$lang" = "[Español]" ]; then
    folders=("Mis Documentos/Cuarentena" "Mis Documentos/Respaldos" "Documentos Comprimidos" "Documentos Encriptados")
  else
    folders=("My Documents/Quarentene" "My Documents/Backups" "Compressed Documents" "Encrypted Documents")
  fi
  for d in "${folders[@]}"; do mkdir -p "$dest/$d"; done
fi

# The size budget of the carried runtime.
kb=$(du -sk "$dest/lib" "$dest/plugins" "$dest/fonts" | awk '{ s += $1 } END { print s }')
prog_kb=$(cd "$dest" && du -ck "${programs[@]}" | tail -1 | cut -f1)
echo "device programs: $((prog_kb / 1024)) MB; libraries, plugins and fonts: $((kb / 1024)) MB (${#all_libs[@]} libraries)"
if [ "$kb" -ge $((120 * 1024)) ]; then
  echo "make-device.sh: the libraries, plugins and fonts take $((kb / 1024)) MB, over the 120 MB budget" >&2
  exit 1
fi
