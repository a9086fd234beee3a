#!/usr/bin/env bash
# The Windows builds for 32-bit Windows (the library's home) and for 64-bit
# Windows, each with its tests: the exports checked, every binary's imports
# checked against the DLLs that a bare Windows has, and each whole test suite
# run under Wine in a throw-away prefix with a Japanese locale, so that the
# ANSI code page is 932: the 64-bit one under wine64, the 32-bit one under
# wine32:i386 where its loader runs (where it does not, one line says why,
# and the x86_64 build, the same code, stands in). Then the differential
# walks of the sample stores (scripts/differential.sh), a copied drive read
# as the Linux build reads it (scripts/windows-drive.sh), the sample store
# read under an English locale as under a Japanese one and as the Linux build
# reads it (scripts/windows-locale.sh), tqnralm.exe in a console
# (scripts/windows-console.sh), and the release zips
# (scripts/package-windows.sh), the x86_64 one run under wine64, and the
# migration assistant walked under wine64 and Xvfb (scripts/gui-check.sh).
#
#   scripts/windows-tests.sh [BUILD_ROOT]     (default: the source folder)
# TQNRALM_NEED_WINE32=0 leaves wine32 uninstalled.
set -euo pipefail
src="$(cd "$(dirname "$0")/.." && pwd)"
root="${1:-$src}"
jobs="$(nproc)"

TQNRALM_NEED_MINGW=1 TQNRALM_NEED_WINE=1 TQNRALM_NEED_WINE32=${TQNRALM_NEED_WINE32:-1} "$src/scripts/install-deps.sh"

# The twenty exports, by name, with the ordinals 1 to 20 in the list's order.
mapfile -t exports < <(grep '^[A-Za-z_]' "$src/cmake/tqnralm.exports")
check_exports() {  # objdump dll
  local table expected=""
  # "[  12] QV_Address_GetData": the index from 0, so the ordinal less one.
  table="$("$1" -p "$2" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' |
           sed -n 's/^[[:space:]]*\[ *\([0-9]*\)\] \(.*\)$/\1 \2/p' | sort -n)"
  for i in "${!exports[@]}"; do expected+="$i ${exports[$i]}"$'\n'; done
  if [ "$table" != "${expected%$'\n'}" ]; then
    echo "exports of $2 differ:"; diff <(echo "${expected%$'\n'}") <(echo "$table") || true
    return 1
  fi
  echo "exports of $2: the twenty names, ordinals 1 to 20"
}

# Every program and library of a build imports only DLLs that every Windows
# has, or the build's own: no libstdc++-6.dll, libgcc_s_dw2-1.dll or
# libwinpthread-1.dll left for the user to find.
system_dlls=" kernel32.dll user32.dll gdi32.dll comctl32.dll advapi32.dll shell32.dll ole32.dll oleaut32.dll msvcrt.dll ws2_32.dll "
own_dlls=" tqnralm.dll snqxmsgnet.dll "
check_imports() {  # objdump binary...
  local objdump=$1 f dll bad=0 count=0; shift
  for f in "$@"; do
    while read -r dll; do
      dll=$(tr 'A-Z' 'a-z' <<<"$dll")
      case "$system_dlls$own_dlls" in *" $dll "*) ;; *) echo "$f imports $dll, which Windows lacks"; bad=1 ;; esac
    done < <("$objdump" -p "$f" | sed -n 's/^[[:space:]]*DLL Name: //p')
    count=$((count + 1))
  done
  [ $bad = 0 ] && echo "imports of $count binaries: system DLLs only"
  return $bad
}

# The whole test suite of a build under Wine: a throw-away prefix of the
# build's own, made by the build's loader (/usr/bin/wine would pick the
# 32-bit one wherever it is installed), the Japanese locale or the one given.
# The readers' ANSI text is code page 932 whatever the system's, so the
# suite also passes with an English locale (code page 1252).
run_suite() {  # build winearch loader [locale]
  local env_dir="$1/wine" lang="${4:-ja_JP}" rc=0
  mkdir -p "$env_dir/locale"
  [ -d "$env_dir/locale/$lang.UTF-8" ] || localedef -i "$lang" -f UTF-8 "$env_dir/locale/$lang.UTF-8"
  rm -rf "$env_dir/prefix"
  (
    export WINEPREFIX="$env_dir/prefix" WINEARCH="$2" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
    export LOCPATH="$env_dir/locale" LANG=$lang.UTF-8 LC_ALL=$lang.UTF-8
    "$3" wineboot -i >/dev/null 2>&1 || true
    ctest --test-dir "$1" --output-on-failure || rc=$?
    wineserver -k || true
    exit $rc
  )
}
# The zips of both builds; each one's binaries checked again, and the x86_64
# one unzipped and run as a person would, on the sample store, against the
# Linux build: the same tree, the same exit code of an export.
check_package() {
  local dir zip rc=0 a b
  dir=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-zip.XXXXXX") || return 2
  for flavour in win32:i686 win64:x86_64; do
    zip=$("$src/scripts/package-windows.sh" "$root/build-${flavour%%:*}" "$root/package") || { rc=1; continue; }
    echo "$zip"
    mkdir -p "$dir/${flavour#*:}"
    (cd "$dir/${flavour#*:}" && /usr/bin/python3 -m zipfile -e "$zip" . && cd tqnralm-* &&
       sha256sum --quiet -c SHA256SUMS.txt) || rc=1
    check_imports "${flavour#*:}-w64-mingw32-objdump" "$dir/${flavour#*:}"/tqnralm-*/*.{exe,dll} || rc=1
  done
  mkdir -p "$dir/locale"
  localedef -i ja_JP -f UTF-8 "$dir/locale/ja_JP.UTF-8" >/dev/null 2>&1
  "$root/build/bin/samplestore" --machine win64 "$dir/store" >/dev/null
  cp -a "$dir/store" "$dir/prefix"
  (
    export WINEPREFIX="$dir/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LOCPATH="$dir/locale"
    { export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8; } 2>/dev/null
    cd "$dir" && exe=$(echo "$dir"/x86_64/tqnralm-*/tqnralm.exe)
    WINEPREFIX="$dir/store" "$root/build/bin/tqnralm" tree >linux.tree 2>/dev/null
    WINEPREFIX="$dir/store" "$root/build/bin/tqnralm" export linux-out >/dev/null 2>&1; a=$?
    /usr/lib/wine/wine64 "$exe" tree 2>/dev/null >zip.tree
    /usr/lib/wine/wine64 "$exe" export 'C:\export' >/dev/null 2>&1; b=$?
    wineserver -k || true
    cmp -s linux.tree zip.tree || { echo "the zip's tqnralm.exe prints another tree"; exit 1; }
    [ "$a" = "$b" ] || { echo "the zip's export exits $b, the Linux build's $a"; exit 1; }
    echo "the zip's tqnralm.exe under wine64: the Linux build's tree, export exit $b"
  ) || rc=1
  rm -rf "$dir"
  return $rc
}

# One step of the run: its heading, its command, and the seconds it took. A
# command that fails has its exit code kept for the run's end and the run
# goes on with the next step. A command runs where set -e does not reach (the
# left of ||), so the builds a step needs end the whole run explicitly when
# they fail, as they would under set -e: nothing after them could be checked.
status=0
step() {  # NAME HEADING COMMAND...
  local name=$1 start=$SECONDS rc=0
  echo "== $2"
  shift 2
  "$@" || rc=$?
  [ $rc = 0 ] || status=$rc
  echo "-- $name: $((SECONDS - start)) s"
}

# Debian's 32-bit Wine loader. Whether it runs is decided by running it: on a
# kernel with its 32-bit emulation switched off it is installed and fails.
wine32=${TQNRALM_WINE32_LOADER:-/usr/lib/wine/wine}
wine32_why=""
if [ ! -e "$wine32" ]; then
  wine32_why="$wine32 (wine32:i386) is not installed"
else
  # Through bash: timeout's own exec hands a program the kernel refuses to
  # /bin/sh, whose complaint ("ELF: not found") hides the reason.
  rc=0
  answer=$(timeout 60 bash -c '"$0" --version' "$wine32" 2>&1) || rc=$?
  [ $rc = 0 ] || wine32_why="$wine32 --version exits $rc ($(tail -n1 <<<"$answer" | sed 's/^[^:]*: line 1: //' | cut -c1-160))"
fi

build_windows() {  # FLAVOUR ARCH [CMAKE_ARG...]: build-FLAVOUR with the ARCH mingw toolchain, its exports checked
  local dir="$root/build-$1" arch=$2
  shift 2
  cmake -S "$src" -B "$dir" -DCMAKE_TOOLCHAIN_FILE="$src/cmake/toolchain-mingw-$arch.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" || exit
  cmake --build "$dir" -j"$jobs" || exit
  check_exports "$arch-w64-mingw32-objdump" "$dir/bin/TQNRALM.dll" || exit
}

windows_i686() {
  local rc=0
  build_windows win32 i686 -DTQNRALM_TESTS=ON
  # The host was linked against the import library by the decorated stdcall
  # names; it must import the plain ones.
  if i686-w64-mingw32-objdump -p "$root/build-win32/bin/tqnralm.exe" | grep -q ' QV_[A-Za-z_]*@'; then
    echo "tqnralm.exe imports decorated names"; exit 1
  fi
  check_imports i686-w64-mingw32-objdump "$root/build-win32"/bin/*.exe "$root/build-win32"/bin/*.dll || rc=1
  if [ -z "$wine32_why" ]; then
    run_suite "$root/build-win32" win32 "$wine32" || rc=$?
  else
    echo "the 32-bit test suite was not run: $wine32_why; the x86_64 suite below runs the same code"
  fi
  return $rc
}

windows_x86_64() {
  local rc=0
  build_windows win64 x86_64
  check_imports x86_64-w64-mingw32-objdump "$root/build-win64"/bin/*.exe "$root/build-win64"/bin/*.dll || rc=1
  run_suite "$root/build-win64" win64 /usr/lib/wine/wine64 || rc=$?
  echo "-- the x86_64 tests again with an English locale"
  run_suite "$root/build-win64" win64 /usr/lib/wine/wine64 en_US || rc=$?
  return $rc
}

differential() {
  # The Linux side is the README's build folder; only what the walk needs is built.
  cmake -S "$src" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo || exit
  cmake --build "$root/build" -j"$jobs" --target TQNRALM sNqxMsgNet tqnralm samplestore || exit
  local i686=()
  [ -z "$wine32_why" ] && i686=(--i686 "$root/build-win32")
  bash "$src/scripts/differential.sh" "${i686[@]}" --x86_64 "$root/build-win64" "$root/build"
}

step i686 "32-bit Windows (i686): everything with its tests; the tests under 32-bit Wine where it runs" windows_i686
step x86_64 "64-bit Windows (x86_64): everything, and the tests under Wine" windows_x86_64
step differential "differential: the sample stores walked by the Linux build and under Wine" differential
step "copied drive" "a copied Windows drive (XP and Vista) read by tqnralm.exe under wine64 as by the Linux build" \
  bash "$src/scripts/windows-drive.sh" "$root/build-win64" "$root/build"
step locales "the sample store read by tqnralm.exe under wine64 with an English and a Japanese locale as by the Linux build" \
  bash "$src/scripts/windows-locale.sh" "$root/build-win64" "$root/build"
step console "tqnralm.exe in a console with code page 932, and piped" \
  bash "$src/scripts/windows-console.sh" "$root/build-win64" "$root/build"
step package "the release zips; the x86_64 twin unzipped and run under wine64 on the sample store" check_package
step assistant "the migration assistant (x86_64) walked under wine64 and Xvfb: screenshots, export equal to tqnralm.exe's" \
  bash "$src/scripts/gui-check.sh" "$root/build-win64" "$root/build"
exit "$status"
