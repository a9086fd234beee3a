#!/usr/bin/env bash
# differential.sh LINUX_BUILD WINDOWS_BUILD [VARIANT...]
#
# Walks every sample store twice: with the Linux build, which reads the Wine
# prefix itself, and with the Windows x86_64 build under Wine, which asks
# Wine's registry and files. Wine is the reference. Compared per store:
#   - the exit codes and stdout of `tqnralm tree`, byte for byte;
#   - the trace logs, after masking the times, pointer values and source line
#     numbers, which differ from run to run;
#   - a second Linux walk over the Windows run's copy of the store, whose
#     registry files Wine has rewritten in its own form by then.
# Needs wine (Debian wine64), iconv and localedef. Exit 0 when all agree,
# 1 on a difference, 2 on a setup error. KEEP=1 keeps the work folder.
set -uo pipefail

if [ $# -lt 2 ]; then
  echo "usage: $0 LINUX_BUILD WINDOWS_BUILD [VARIANT...]" >&2
  exit 2
fi
linux_build=$(cd "$1" && pwd) || exit 2
windows_build=$(cd "$2" && pwd) || exit 2
shift 2

samplestore=$linux_build/bin/samplestore
linux_host=$linux_build/bin/tqnralm
windows_host=$windows_build/bin/tqnralm.exe
for f in "$samplestore" "$linux_host" "$windows_host" "$windows_build/bin/TQNRALM.dll" \
         "$windows_build/bin/sNqxMsgNet.dll"; do
  [ -f "$f" ] || { echo "differential: missing $f" >&2; exit 2; }
done
wine=""
for candidate in /usr/lib/wine/wine64 "$(command -v wine64 || true)" "$(command -v wine || true)"; do
  if [ -n "$candidate" ] && [ -x "$candidate" ]; then wine=$candidate; break; fi
done
[ -n "$wine" ] || { echo "differential: wine64 is not installed" >&2; exit 2; }
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver64)
for tool in iconv localedef sed diff; do
  command -v $tool >/dev/null || { echo "differential: $tool is missing" >&2; exit 2; }
done

work=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-differential.XXXXXX") || exit 2
prefixes=()
cleanup() {
  for p in "${prefixes[@]}"; do WINEPREFIX=$p "$wineserver" -k >/dev/null 2>&1; done
  if [ "${KEEP:-0}" = 1 ]; then echo "differential: kept $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT

# Code page 932 under Wine needs a Japanese locale; a private one needs no
# root and no locales-all.
locale_dir=$work/locale
mkdir -p "$locale_dir"
localedef -i ja_JP -f UTF-8 "$locale_dir/ja_JP.UTF-8" >/dev/null 2>&1
[ -d "$locale_dir/ja_JP.UTF-8" ] || { echo "differential: localedef ja_JP.UTF-8 failed" >&2; exit 2; }
export LOCPATH=$locale_dir LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8 WINEDEBUG=-all
unset WINEARCH DISPLAY

# A trace log (UTF-16LE) as UTF-8 text with what differs between runs masked:
# the time stamp, pointer values (upper-case hex of a 64-bit pointer) and the
# source line number behind the function group.
masked_log() {
  iconv -f UTF-16LE -t UTF-8 "$1" |
    sed -E -e 's#[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}#T#' \
           -e 's#(^|[^0-9A-Za-z])[0-9A-F]{16}([^0-9A-Za-z]|$)#\1P\2#g' \
           -e 's#(^|[^0-9A-Za-z])[0-9A-F]{16}([^0-9A-Za-z]|$)#\1P\2#g' \
           -e 's#^(\[[^],]*\],[0-9]+,T,[A-Za-z0-9_]+)\([0-9]+\)#\1(L)#'
}

# Windows form of a host path, as Wine's Z: drive shows it.
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

if [ $# -gt 0 ]; then
  variants=("$@")
else
  mapfile -t variants < <("$samplestore" --list)
fi

failed=0
report() { echo "DIFFERENT [$1]: $2"; failed=1; }

for v in "${variants[@]}"; do
  dir=$work/$v
  mkdir -p "$dir"
  if ! "$samplestore" "$dir/linux" "$v" >/dev/null; then
    echo "differential: samplestore $v failed" >&2
    exit 2
  fi
  # Each side gets its own copy: Wine completes the prefix and rewrites the
  # registry files. wine64 refuses a 32-bit prefix, so the Windows copy of a
  # 32-bit store is declared 64-bit; its HKLM keys then lie outside the
  # 32-bit view, and both builds fall back to the native one.
  cp -a "$dir/linux" "$dir/windows"
  sed -i 's/^#arch=win32$/#arch=win64/' "$dir/windows/system.reg" "$dir/windows/user.reg"
  prefixes+=("$dir/windows")

  (cd "$dir" && WINEPREFIX=$dir/linux "$linux_host" tree --log "$dir/L1" >"$dir/out1" 2>"$dir/err1")
  rc1=$?
  (cd "$dir" && WINEPREFIX=$dir/windows timeout 300 "$wine" "$windows_host" tree --log "$(windows_path "$dir/L2")" \
     >"$dir/out2.raw" 2>"$dir/err2")
  rc2=$?
  # Let the wineserver write the registry back and go before the next walk.
  WINEPREFIX=$dir/windows timeout 60 "$wineserver" -w >/dev/null 2>&1
  WINEPREFIX=$dir/windows "$wineserver" -k >/dev/null 2>&1
  # The Windows C runtime writes stdout in text mode: LF becomes CR LF there.
  sed 's/\r$//' "$dir/out2.raw" >"$dir/out2"
  (cd "$dir" && WINEPREFIX=$dir/windows "$linux_host" tree --log "$dir/L3" >"$dir/out3" 2>"$dir/err3")
  rc3=$?

  [ $rc1 = $rc2 ] || report "$v" "exit code: Linux $rc1, Windows $rc2 ($(head -c 300 "$dir/err2"))"
  [ $rc1 = $rc3 ] || report "$v" "exit code: Linux $rc1, Linux on Wine's registry $rc3"
  diff -u --label linux --label windows "$dir/out1" "$dir/out2" || report "$v" "tree output"
  diff -u --label linux --label linux-on-wine-registry "$dir/out1" "$dir/out3" || report "$v" "tree output"
  for log in L1 L2 L3; do
    [ -s "$dir/$log" ] || report "$v" "no trace log $log"
  done
  masked_log "$dir/L1" >"$dir/L1.txt"
  masked_log "$dir/L2" >"$dir/L2.txt"
  masked_log "$dir/L3" >"$dir/L3.txt"
  diff -u --label linux --label windows "$dir/L1.txt" "$dir/L2.txt" | head -60
  cmp -s "$dir/L1.txt" "$dir/L2.txt" || report "$v" "trace log"
  cmp -s "$dir/L1.txt" "$dir/L3.txt" || report "$v" "trace log on Wine's registry"
  echo "checked [$v]: exit $rc1, $(wc -l <"$dir/out1") tree lines, $(wc -l <"$dir/L1.txt") log lines"
done

if [ $failed = 0 ]; then echo "differential: the Linux and Windows builds agree on ${#variants[@]} stores"; fi
exit $failed
