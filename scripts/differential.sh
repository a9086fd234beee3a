#!/usr/bin/env bash
# differential.sh [--i686 BUILD] [--x86_64 BUILD] LINUX_BUILD [VARIANT...]
#
# Walks every sample store with the Linux build, which reads the Wine prefix
# itself, and with the Windows builds under Wine, which ask Wine's registry
# and files. Wine is the reference. The configurations:
#   i686-win32    the i686 tqnralm.exe in a 32-bit prefix (the 32-bit loader,
#                 WINEARCH=win32);
#   i686-wow64    the i686 tqnralm.exe in a 64-bit prefix whose HKLM values lie
#                 below Software\Wow6432Node, where the installer of a 32-bit
#                 program writes them on 64-bit Windows (HKCU as it is);
#   x86_64-win64  the x86_64 tqnralm.exe in a 64-bit prefix with the values at
#                 their own path.
# --i686 runs the first two, --x86_64 the third. The Linux build walks every
# store in all three forms, with or without Wine, and must give the same
# answers for all three. Compared per store and configuration:
#   - the exit codes and stdout of `tqnralm tree`, byte for byte;
#   - the trace logs, after masking the times, pointer values and source line
#     numbers, which differ from run to run; a pointer has 8 hexadecimal
#     digits on i686 and 16 on x86_64, and each log is checked for its width;
#   - a second Linux walk over the Windows run's copy of the store, whose
#     registry files Wine has rewritten in its own form by then.
# Needs wine (Debian wine64; wine32:i386 for --i686), iconv and localedef.
# Exit 0 when all agree, 1 on a difference, 2 on a setup error. KEEP=1 keeps
# the work folder.
set -uo pipefail

usage() { echo "usage: $0 [--i686 BUILD] [--x86_64 BUILD] LINUX_BUILD [VARIANT...]" >&2; exit 2; }
i686_build="" x86_64_build=""
while [ $# -gt 0 ]; do
  case $1 in
    --i686) [ $# -ge 2 ] || usage; i686_build=$(cd "$2" && pwd) || exit 2; shift 2 ;;
    --x86_64) [ $# -ge 2 ] || usage; x86_64_build=$(cd "$2" && pwd) || exit 2; shift 2 ;;
    -*) usage ;;
    *) break ;;
  esac
done
[ $# -ge 1 ] || usage
linux_build=$(cd "$1" && pwd) || exit 2
shift

samplestore=$linux_build/bin/samplestore
linux_host=$linux_build/bin/tqnralm
for f in "$samplestore" "$linux_host"; do
  [ -f "$f" ] || { echo "differential: missing $f" >&2; exit 2; }
done
for build in $i686_build $x86_64_build; do
  for f in tqnralm.exe TQNRALM.dll sNqxMsgNet.dll; do
    [ -f "$build/bin/$f" ] || { echo "differential: missing $build/bin/$f" >&2; exit 2; }
  done
done
# Debian's loaders: wine runs 32-bit programs (wine32:i386), wine64 64-bit ones.
wine32=/usr/lib/wine/wine wine64=/usr/lib/wine/wine64
if [ -n "$i686_build" ] && [ ! -x $wine32 ]; then echo "differential: $wine32 (wine32:i386) is not installed" >&2; exit 2; fi
if [ -n "$x86_64_build" ] && [ ! -x $wine64 ]; then echo "differential: $wine64 is not installed" >&2; exit 2; fi
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
for tool in iconv localedef sed diff getconf; do
  command -v $tool >/dev/null || { echo "differential: $tool is missing" >&2; exit 2; }
done

# configuration: the prefix form (samplestore --machine), loader, build, pointer digits.
declare -A form=([i686-win32]=win32 [i686-wow64]=wow64 [x86_64-win64]=win64)
declare -A loader=([i686-win32]=$wine32 [i686-wow64]=$wine32 [x86_64-win64]=$wine64)
declare -A winbuild=([i686-win32]=$i686_build [i686-wow64]=$i686_build [x86_64-win64]=$x86_64_build)
declare -A digits=([i686-win32]=8 [i686-wow64]=8 [x86_64-win64]=16)
configs=()
[ -z "$i686_build" ] || configs+=(i686-win32 i686-wow64)
[ -z "$x86_64_build" ] || configs+=(x86_64-win64)
linux_digits=$(( $(getconf LONG_BIT) / 4 ))

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
export LOCPATH=$locale_dir
# (bash itself cannot load it and says so: its own warning is dropped.)
{ export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8; } 2>/dev/null
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset WINEARCH DISPLAY

failed=0
report() { echo "DIFFERENT [$1]: $2"; failed=1; }

# A trace log (UTF-16LE) as UTF-8 text with what differs between runs masked:
# the time stamp, the pointer values (upper-case hex, DIGITS wide, behind "="
# or "オブジェクト ") and the source line number behind the function group.
# The root handle's record shows the width: a log without it at DIGITS digits
# is reported.
masked_log() {  # log digits name out
  local text
  : >"$4"
  text=$(iconv -f UTF-16LE -t UTF-8 "$1") || { report "$3" "trace log $1 is no UTF-16LE text"; return; }
  grep -qE "\*pqvObjRoot=[0-9A-F]{$2}"$'\r?$' <<<"$text" ||
    report "$3" "trace log $1: the root handle is not $2 hexadecimal digits"
  sed -E -e 's#[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}#T#' \
         -e "s#(=|オブジェクト )[0-9A-F]{$2}([^0-9A-Za-z]|\$)#\\1P\\2#g" \
         -e 's#^(\[[^],]*\],[0-9]+,T,[A-Za-z0-9_]+)\([0-9]+\)#\1(L)#' <<<"$text" >"$4"
}

# Windows form of a host path, as Wine's Z: drive shows it.
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# tree with the Linux build: prefix, output and log stem in the prefix's folder.
linux_walk() {  # prefix stem
  (cd "$(dirname "$1")" && WINEPREFIX=$1 "$linux_host" tree --log "$2.log" >"$2.out" 2>"$2.err")
  echo $? >"$2.rc"
}

if [ $# -gt 0 ]; then
  variants=("$@")
else
  mapfile -t variants < <("$samplestore" --list)
fi

for v in "${variants[@]}"; do
  # The Linux build on the three prefix forms: the same answers for each.
  for m in win32 wow64 win64; do
    dir=$work/$v/$m
    mkdir -p "$dir"
    if ! "$samplestore" --machine $m "$dir/store" "$v" >/dev/null; then
      echo "differential: samplestore --machine $m $v failed" >&2
      exit 2
    fi
    linux_walk "$dir/store" "$dir/linux"
    masked_log "$dir/linux.log" "$linux_digits" "$v $m" "$dir/linux.txt"
  done
  for m in wow64 win64; do
    for f in rc out txt; do
      cmp -s "$work/$v/win32/linux.$f" "$work/$v/$m/linux.$f" ||
        report "$v" "the Linux build reads the $m prefix otherwise than the 32-bit one ($f)"
    done
  done

  for c in "${configs[@]}"; do
    dir=$work/$v/${form[$c]}
    win=$dir/$c
    # Wine completes its copy of the prefix and rewrites the registry files.
    cp -a "$dir/store" "$win"
    prefixes+=("$win")
    arch=()
    [ "${form[$c]}" = win32 ] && arch=(WINEARCH=win32)
    (cd "$dir" && env "${arch[@]}" WINEPREFIX="$win" timeout 300 "${loader[$c]}" "${winbuild[$c]}/bin/tqnralm.exe" \
       tree --log "$(windows_path "$dir/$c.log")" >"$dir/$c.raw" 2>"$dir/$c.err")
    rc=$?
    # Let the wineserver write the registry back and go before the next walk.
    WINEPREFIX=$win timeout 60 "$wineserver" -w >/dev/null 2>&1
    WINEPREFIX=$win "$wineserver" -k >/dev/null 2>&1
    # The Windows C runtime writes stdout in text mode: LF becomes CR LF there.
    sed 's/\r$//' "$dir/$c.raw" >"$dir/$c.out"
    linux_walk "$win" "$dir/$c.again"

    rc1=$(cat "$dir/linux.rc") rc3=$(cat "$dir/$c.again.rc")
    [ "$rc1" = $rc ] || report "$v $c" "exit code: Linux $rc1, Windows $rc ($(head -c 300 "$dir/$c.err"))"
    [ "$rc1" = "$rc3" ] || report "$v $c" "exit code: Linux $rc1, Linux on Wine's registry $rc3"
    diff -u --label linux --label "$c" "$dir/linux.out" "$dir/$c.out" || report "$v $c" "tree output"
    diff -u --label linux --label linux-on-wine-registry "$dir/linux.out" "$dir/$c.again.out" ||
      report "$v $c" "tree output on Wine's registry"
    for log in "$dir/$c.log" "$dir/$c.again.log"; do
      [ -s "$log" ] || report "$v $c" "no trace log $log"
    done
    masked_log "$dir/$c.log" "${digits[$c]}" "$v $c" "$dir/$c.txt"
    masked_log "$dir/$c.again.log" "$linux_digits" "$v $c" "$dir/$c.again.txt"
    diff -u --label linux --label "$c" "$dir/linux.txt" "$dir/$c.txt" | head -60
    cmp -s "$dir/linux.txt" "$dir/$c.txt" || report "$v $c" "trace log"
    cmp -s "$dir/linux.txt" "$dir/$c.again.txt" || report "$v $c" "trace log on Wine's registry"
  done
  echo "checked [$v]: exit $(cat "$work/$v/win32/linux.rc"), $(wc -l <"$work/$v/win32/linux.out") tree lines," \
       "$(wc -l <"$work/$v/win32/linux.txt") log lines; Linux on win32 wow64 win64${configs[*]:+, Wine: ${configs[*]}}"
done

if [ $failed = 0 ]; then
  echo "differential: all agree on ${#variants[@]} stores (Linux on three prefix forms${configs[*]:+; ${configs[*]}})"
fi
exit $failed
