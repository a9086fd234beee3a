#!/usr/bin/env bash
# The Windows builds: TQNRALM.dll, sNqxMsgNet.dll and tqnralm.exe for 32-bit
# Windows (the library's home: built and its exports checked) and for 64-bit
# Windows, whose whole test suite runs under Wine (Debian's wine64 runs only
# 64-bit programs) in a throw-away prefix with a Japanese locale, so that
# the ANSI code page is 932.
#
#   scripts/windows-tests.sh [BUILD_ROOT]     (default: the source folder)
set -euo pipefail
src="$(cd "$(dirname "$0")/.." && pwd)"
root="${1:-$src}"
jobs="$(nproc)"

TQNRALM_NEED_MINGW=1 TQNRALM_NEED_WINE=1 "$src/scripts/install-deps.sh"

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

echo "== 32-bit Windows (i686): the two libraries and the host"
cmake -S "$src" -B "$root/build-win32" -DCMAKE_TOOLCHAIN_FILE="$src/cmake/toolchain-mingw-i686.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQNRALM_TESTS=OFF
cmake --build "$root/build-win32" -j"$jobs" --target TQNRALM sNqxMsgNet tqnralm
check_exports i686-w64-mingw32-objdump "$root/build-win32/bin/TQNRALM.dll"
# The host was linked against the import library by the decorated stdcall
# names; it must import the plain ones.
if i686-w64-mingw32-objdump -p "$root/build-win32/bin/tqnralm.exe" | grep -q ' QV_[A-Za-z_]*@'; then
  echo "tqnralm.exe imports decorated names"; exit 1
fi

echo "== 64-bit Windows (x86_64): everything, and the tests under Wine"
cmake -S "$src" -B "$root/build-win64" -DCMAKE_TOOLCHAIN_FILE="$src/cmake/toolchain-mingw-x86_64.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$root/build-win64" -j"$jobs"
check_exports x86_64-w64-mingw32-objdump "$root/build-win64/bin/TQNRALM.dll"

wine_env="$root/build-win64/wine"
mkdir -p "$wine_env/locale"
[ -d "$wine_env/locale/ja_JP.UTF-8" ] || localedef -i ja_JP -f UTF-8 "$wine_env/locale/ja_JP.UTF-8"
export WINEPREFIX="$wine_env/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
export LOCPATH="$wine_env/locale" LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8
rm -rf "$WINEPREFIX"
wineboot -i >/dev/null 2>&1 || true
status=0
ctest --test-dir "$root/build-win64" --output-on-failure || status=$?
wineserver -k || true

echo "== differential: the sample stores walked by the Linux build and under Wine"
# The Linux side is the README's build folder; only what the walk needs is built.
cmake -S "$src" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$root/build" -j"$jobs" --target TQNRALM sNqxMsgNet tqnralm samplestore
bash "$src/scripts/differential.sh" "$root/build" "$root/build-win64" || status=$?
exit "$status"
