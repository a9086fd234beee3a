#!/usr/bin/env bash
# windows-locale.sh WIN64_BUILD LINUX_BUILD - tqnralm.exe reads the mail
# client's Japanese text whatever the system's locale. The sample store (made
# by the Linux build's samplestore) as an installed machine, under wine64 with
# an English locale (ANSI code page 1252) and with a Japanese one (932):
# `tree` and `export` in each format equal the Linux build's byte for byte,
# and so does `tree` of the store as a copied XP drive read from an English
# system. Output goes to files, never through a console's code page.
#
# Masked, as they must differ: the manifest's source (a Wine prefix on Linux,
# "this machine" on Windows) and the Maildir flag separator (':' on Linux, '!'
# on Windows). Exit 0 when all agree, 1 on a difference, 2 on a setup error.
set -uo pipefail
win=$(cd "$1" && pwd) || exit 2
linux=$(cd "$2" && pwd) || exit 2
wine64=/usr/lib/wine/wine64
work=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-winlocale.XXXXXX") || exit 2
export WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
trap 'for p in "$work"/prefix-*; do WINEPREFIX=$p wineserver -k >/dev/null 2>&1; done; rm -rf "$work"' EXIT
mkdir -p "$work/locale"
localedef -i ja_JP -f UTF-8 "$work/locale/ja_JP.UTF-8" >/dev/null 2>&1
localedef -i en_US -f UTF-8 "$work/locale/en_US.UTF-8" >/dev/null 2>&1
export LOCPATH=$work/locale
unset TQNRALM_WINDOWS_ROOT TQNRALM_WINDOWS_USER
failed=0

"$linux/bin/samplestore" --machine win64 "$work/store" >/dev/null || exit 2
"$linux/bin/samplestore" --drive xp "$work/xp" >/dev/null || exit 2
WINEPREFIX=$work/store "$linux/bin/tqnralm" tree >"$work/linux.tree" 2>&1 || exit 2
WINEPREFIX=$work/none "$linux/bin/tqnralm" --windows "$work/xp" tree >"$work/linux-xp.tree" 2>&1 || exit 2
for format in mbox maildir eml; do
  WINEPREFIX=$work/store "$linux/bin/tqnralm" export "$work/linux-$format" --format $format --quiet 2>/dev/null || exit 2
  sed -i 's#^  "source": .*#  "source": SOURCE,#' "$work/linux-$format/manifest.json"
  find "$work/linux-$format" -name '*:2,S' -print0 |
    while IFS= read -r -d '' f; do mv "$f" "${f%:2,S}!2,S"; done
  sed -i 's#:2,S"#!2,S"#' "$work/linux-$format/manifest.json"
done

same() {  # WHAT LINUX WINDOWS
  if diff -r "$2" "$3" >"$work/diff" 2>&1; then
    echo "windows-locale: $1: the Linux build's"
  else
    echo "windows-locale: $1 differs from the Linux build's:"
    head -20 "$work/diff"
    failed=1
  fi
}

for lang in en_US ja_JP; do
  prefix=$work/prefix-$lang
  cp -a "$work/store" "$prefix"
  (
    export WINEPREFIX=$prefix LANG=$lang.UTF-8 LC_ALL=$lang.UTF-8
    cd "$work" || exit 2
    $wine64 wineboot -i >/dev/null 2>&1 || true
    timeout 300 $wine64 "$win/bin/tqnralm.exe" tree >"$work/$lang.tree" 2>/dev/null
    timeout 300 $wine64 "$win/bin/tqnralm.exe" --windows "Z:${work//\//\\}\\xp" tree >"$work/$lang-xp.tree" 2>/dev/null
    for format in mbox maildir eml; do
      timeout 300 $wine64 "$win/bin/tqnralm.exe" export "C:\\$format" --format $format --quiet
    done
  ) 2>/dev/null
  tr -d '\r' <"$work/$lang.tree" >"$work/$lang.tree.lf"
  tr -d '\r' <"$work/$lang-xp.tree" >"$work/$lang-xp.tree.lf"
  same "$lang tree" "$work/linux.tree" "$work/$lang.tree.lf"
  [ "$lang" = en_US ] && same "$lang tree of a copied drive" "$work/linux-xp.tree" "$work/$lang-xp.tree.lf"
  for format in mbox maildir eml; do
    out=$prefix/drive_c/$format
    [ -f "$out/manifest.json" ] && sed -i 's#^  "source": .*#  "source": SOURCE,#' "$out/manifest.json"
    same "$lang $format export" "$work/linux-$format" "$out"
  done
done
exit $failed
