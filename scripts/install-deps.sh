#!/usr/bin/env bash
# Installs what building and testing TQNRALM needs on a Debian machine, and
# nothing that is already there.
set -euo pipefail
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v g++ >/dev/null || need+=(g++)
command -v make >/dev/null || need+=(make)
command -v clang++ >/dev/null || need+=(clang)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
# The command-line host: its command line, its manifest; the readers of a
# copied Windows drive's registry hives.
[ -f /usr/include/CLI/CLI.hpp ] || need+=(libcli11-dev)
[ -f /usr/include/nlohmann/json.hpp ] || need+=(nlohmann-json3-dev)
[ -f /usr/include/hivex.h ] || need+=(libhivex-dev)
# Independent readers of what the export writes, run by the tests with
# Debian's own Python.
[ -x /usr/bin/python3 ] || need+=(python3)
/usr/bin/python3 -c 'import vobject' 2>/dev/null || need+=(python3-vobject)
/usr/bin/python3 -c 'import ldif' 2>/dev/null || need+=(python3-ldap)
dpkg -s libclang-rt-14-dev >/dev/null 2>&1 || [ -n "$(ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a 2>/dev/null)" ] || need+=(libclang-rt-dev)
if [ "${TQNRALM_NEED_MINGW:-0}" = 1 ]; then
  command -v i686-w64-mingw32-g++-posix >/dev/null || need+=(g++-mingw-w64-i686-posix)
  command -v x86_64-w64-mingw32-g++-posix >/dev/null || need+=(g++-mingw-w64-x86-64-posix)
  [ -f /usr/src/googletest/CMakeLists.txt ] || need+=(googletest)
fi
if [ "${TQNRALM_NEED_WINE:-0}" = 1 ]; then
  { command -v wine >/dev/null && [ -x /usr/lib/wine/wine64 ]; } || need+=(wine wine64)
  [ -f /usr/share/i18n/locales/ja_JP ] || need+=(locales)
fi
if [ ${#need[@]} -gt 0 ]; then
  echo "installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" = 0 ] || SUDO=sudo
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y "${need[@]}"
fi
