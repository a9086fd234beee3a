#!/usr/bin/env bash
# The Windows builds for 32-bit Windows (the library's home) and for 64-bit
# Windows: each one's exports checked and its whole test suite run under Wine
# (the 32-bit one under Debian's wine32:i386 in a 32-bit prefix, skipped with
# a line where that cannot be installed; the 64-bit one under wine64) in a
# throw-away prefix with a Japanese locale, so that the ANSI code page is 932.
# Then the differential walks of the sample stores (scripts/differential.sh).
#
#   scripts/windows-tests.sh [BUILD_ROOT]     (default: the source folder)
set -euo pipefail
src="$(cd "$(dirname "$0")/.." && pwd)"
root="${1:-$src}"
jobs="$(nproc)"

TQNRALM_NEED_MINGW=1 TQNRALM_NEED_WINE=1 TQNRALM_NEED_WINE32=1 "$src/scripts/install-deps.sh"

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

# The whole test suite of a build under Wine: a throw-away prefix of the
# build's own, made by the build's loader (/usr/bin/wine would pick the
# 32-bit one wherever it is installed), the Japanese locale.
run_suite() {  # build winearch loader
  local env_dir="$1/wine" rc=0
  mkdir -p "$env_dir/locale"
  [ -d "$env_dir/locale/ja_JP.UTF-8" ] || localedef -i ja_JP -f UTF-8 "$env_dir/locale/ja_JP.UTF-8"
  rm -rf "$env_dir/prefix"
  (
    export WINEPREFIX="$env_dir/prefix" WINEARCH="$2" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
    export LOCPATH="$env_dir/locale" LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8
    "$3" wineboot -i >/dev/null 2>&1 || true
    ctest --test-dir "$1" --output-on-failure || rc=$?
    wineserver -k || true
    exit $rc
  )
}
status=0
start=$SECONDS
# Debian's 32-bit Wine loader; where install-deps.sh could not install it, it
# has said so in one line, and the i686 build is only compiled.
wine32=/usr/lib/wine/wine

echo "== 32-bit Windows (i686): everything, and the tests under 32-bit Wine (without it: the libraries and the host)"
# The tests are built where they can run: they cost minutes of compiling.
i686_tests=OFF i686_targets=(--target TQNRALM sNqxMsgNet tqnralm)
[ -x $wine32 ] && i686_tests=ON i686_targets=()
cmake -S "$src" -B "$root/build-win32" -DCMAKE_TOOLCHAIN_FILE="$src/cmake/toolchain-mingw-i686.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQNRALM_TESTS=$i686_tests
cmake --build "$root/build-win32" -j"$jobs" "${i686_targets[@]}"
check_exports i686-w64-mingw32-objdump "$root/build-win32/bin/TQNRALM.dll"
# The host was linked against the import library by the decorated stdcall
# names; it must import the plain ones.
if i686-w64-mingw32-objdump -p "$root/build-win32/bin/tqnralm.exe" | grep -q ' QV_[A-Za-z_]*@'; then
  echo "tqnralm.exe imports decorated names"; exit 1
fi
if [ -x $wine32 ]; then
  run_suite "$root/build-win32" win32 $wine32 || status=$?
fi
echo "-- i686: $((SECONDS - start)) s"

echo "== 64-bit Windows (x86_64): everything, and the tests under Wine"
start=$SECONDS
cmake -S "$src" -B "$root/build-win64" -DCMAKE_TOOLCHAIN_FILE="$src/cmake/toolchain-mingw-x86_64.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$root/build-win64" -j"$jobs"
check_exports x86_64-w64-mingw32-objdump "$root/build-win64/bin/TQNRALM.dll"
run_suite "$root/build-win64" win64 /usr/lib/wine/wine64 || status=$?
echo "-- x86_64: $((SECONDS - start)) s"

echo "== differential: the sample stores walked by the Linux build and under Wine"
start=$SECONDS
# The Linux side is the README's build folder; only what the walk needs is built.
cmake -S "$src" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$root/build" -j"$jobs" --target TQNRALM sNqxMsgNet tqnralm samplestore
i686=()
[ -x $wine32 ] && i686=(--i686 "$root/build-win32")
bash "$src/scripts/differential.sh" "${i686[@]}" --x86_64 "$root/build-win64" "$root/build" || status=$?
echo "-- differential: $((SECONDS - start)) s"
exit "$status"
