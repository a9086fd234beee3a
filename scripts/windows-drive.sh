#!/usr/bin/env bash
# windows-drive.sh WIN64_BUILD LINUX_BUILD - tqnralm.exe reads a copied
# Windows drive as the Linux build does. The sample store as an XP and as a
# Vista drive (made by the Linux build's samplestore): `tree` and `export` in
# each format under wine64 equal the Linux build's `tqnralm --windows` byte
# for byte, manifest included. Then drives it cannot read for one user alone:
# two profiles (the several-users message, then --windows-user), a folder
# that is no Windows drive, a damaged NTUSER.DAT: the same exit code and the
# same message.
#
# Masked, as they must differ: the drive's own path in messages and in the
# manifest's source (a host path on Linux, a Z: path under Wine), path
# separators in messages, and the Maildir flag separator (':' on Linux, '!'
# on Windows). Exit 0 when all agree, 1 on a difference, 2 on a setup error.
set -uo pipefail
win=$1
linux=$2
wine64=/usr/lib/wine/wine64
work=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-windrive.XXXXXX") || exit 2
export WINEPREFIX=$work/prefix WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
trap 'wineserver -k >/dev/null 2>&1; rm -rf "$work"' EXIT
mkdir -p "$work/locale"
localedef -i ja_JP -f UTF-8 "$work/locale/ja_JP.UTF-8" >/dev/null 2>&1
export LOCPATH=$work/locale
{ export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8; } 2>/dev/null
$wine64 wineboot -i >/dev/null 2>&1 || true
unset TQNRALM_WINDOWS_ROOT TQNRALM_WINDOWS_USER
failed=0

windows_path() { printf 'Z:%s' "${1//\//\\}"; }
# Both sides' text with the drive's path as DRIVE and '/' between names.
masked() {  # FILE DRIVE
  tr -d '\r' <"$1" | sed -e 's#\\\\#/#g' -e 's#\\#/#g' -e "s#Z:$2#DRIVE#g" -e "s#$2#DRIVE#g"
}
linux_run() {  # OUT DRIVE ARG...
  local out=$1 drive=$2
  shift 2
  WINEPREFIX=$work/none "$linux/bin/tqnralm" --windows "$drive" "$@" >"$out" 2>&1
}
windows_run() {  # OUT DRIVE ARG...
  local out=$1 drive=$2
  shift 2
  (cd "$work" && timeout 300 $wine64 "$win/bin/tqnralm.exe" --windows "$(windows_path "$drive")" "$@" >"$out" 2>&1)
}
# Runs one command on both sides and compares exit codes and masked output.
both() {  # NAME DRIVE ARG...
  local name=$1 drive=$2 a b
  shift 2
  linux_run "$work/$name.linux" "$drive" "$@"; a=$?
  windows_run "$work/$name.win" "$drive" "$@"; b=$?
  if [ "$a" != "$b" ] || ! diff -u <(masked "$work/$name.linux" "$drive") <(masked "$work/$name.win" "$drive"); then
    echo "windows-drive: $name: tqnralm.exe exits $b, the Linux build $a"
    failed=1
  else
    echo "windows-drive: $name: the same (exit $a)"
  fi
}
# An export on both sides; the trees compared after masking.
both_export() {  # NAME DRIVE FORMAT
  local name=$1 drive=$2 format=$3 a b f
  linux_run "$work/$name.linux" "$drive" export "$work/$name-linux" --format "$format" --quiet; a=$?
  windows_run "$work/$name.win" "$drive" export "$(windows_path "$work/$name-win")" --format "$format" --quiet; b=$?
  for f in "$work/$name-linux/manifest.json" "$work/$name-win/manifest.json"; do
    [ -f "$f" ] && masked "$f" "$drive" | sed 's#!2,S"#:2,S"#' >"$f.masked" && rm "$f"
  done
  # Maildir's flags after '!' on Windows: the Linux names take the same.
  find "$work/$name-linux" -name '*:2,S' -print0 | while IFS= read -r -d '' f; do mv "$f" "${f%:2,S}!2,S"; done
  if [ "$a" != "$b" ] || ! diff -r "$work/$name-linux" "$work/$name-win"; then
    echo "windows-drive: $name: the exports differ (tqnralm.exe exits $b, the Linux build $a)"
    failed=1
  else
    echo "windows-drive: $name: the same files, manifest included (exit $a)"
  fi
}

for layout in xp vista; do
  "$linux/bin/samplestore" --drive $layout "$work/$layout" >/dev/null || exit 2
  both "$layout-tree" "$work/$layout" tree
  for format in mbox maildir eml; do both_export "$layout-$format" "$work/$layout" $format; done
done

# Each row: what is done to a fresh Vista drive, then the options.
row() {  # NAME SETUP ARG...
  local name=$1 setup=$2
  shift 2
  rm -rf "$work/d"
  "$linux/bin/samplestore" --drive vista "$work/d" >/dev/null || exit 2
  (cd "$work/d" && eval "$setup")
  both "$name" "$work/d" "$@" tree
}
row two-users 'cp -r Users/Taro Users/Hanako'
row named-user 'cp -r Users/Taro Users/Hanako' --windows-user HANAKO
row no-drive 'rm -r Windows Users'
row damaged-hive 'truncate -s 6000 Users/Taro/NTUSER.DAT'
row damaged-named 'cp -r Users/Taro Users/Hanako; truncate -s 6000 Users/Hanako/NTUSER.DAT' --windows-user hanako
exit $failed
