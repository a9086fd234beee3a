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
# Dovecot's doveadm reads the Maildir export back and searches it as an IMAP
# server would.
command -v doveadm >/dev/null || need+=(dovecot-core dovecot-imapd)
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
SUDO=""
[ "$(id -u)" = 0 ] || SUDO=sudo
if [ ${#need[@]} -gt 0 ]; then
  echo "installing: ${need[*]}"
  # With wine32 installed the i386 architecture stays, and the security
  # suite's i386 index may fail to download: the amd64 indexes still update.
  $SUDO apt-get update || [ -n "$(dpkg --print-foreign-architectures)" ]
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y "${need[@]}"
fi

# The check in Thunderbird (scripts/thunderbird-check.sh), which asks for
# these itself; without them that check says so and passes.
if [ "${TQNRALM_NEED_THUNDERBIRD:-0}" = 1 ]; then
  tb=()
  command -v thunderbird >/dev/null || tb+=(thunderbird)
  command -v Xvfb >/dev/null || tb+=(xvfb)
  command -v xdotool >/dev/null || tb+=(xdotool)
  command -v import >/dev/null || tb+=(imagemagick)
  dpkg -s fonts-noto-cjk >/dev/null 2>&1 || tb+=(fonts-noto-cjk)
  if [ ${#tb[@]} -gt 0 ]; then
    echo "installing: ${tb[*]}"
    # A machine whose package lists are old or missing updates them first.
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y "${tb[@]}" ||
      { $SUDO apt-get update && DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y "${tb[@]}"; } ||
      echo "could not install ${tb[*]}"
  fi
fi

# 32-bit Wine (the i686 tests): wine32 comes from the i386 architecture, and
# its libraries must have the very versions of their amd64 twins. apt reads
# private sources lists, given by option (no system file changes), and installs
# the three wine packages in one call, so that apt keeps the two in step:
# first the system's own list; when an index fails to download (the security
# suite's i386 index does so at times: "Mirror sync in progress?"), its main
# and updates suites alone. When no route works, nothing of i386 stays: the
# architecture is removed again if no i386 package got installed, so plain
# apt-get update works as before. Without wine32 the 64-bit tests run alone:
# this never fails the caller.
install_wine32() {
  local dir had_i386=0 sources=/etc/apt/sources.list.d/debian.sources why="" parts
  grep -qx i386 <<<"$(dpkg --print-foreign-architectures)" && had_i386=1
  dir=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-apt.XXXXXX") || return 0
  if [ ! -f "$sources" ]; then
    why="no $sources"
  elif [ $had_i386 = 0 ] && ! $SUDO dpkg --add-architecture i386; then
    why="dpkg --add-architecture i386 failed"
  else
    for parts in all main; do
      mkdir -p "$dir/$parts/parts" "$dir/$parts/lists/partial"
      if [ $parts = all ]; then cp "$sources" "$dir/$parts/parts/"
      else awk -v RS= -v ORS='\n\n' '!/Suites:[^\n]*-security/' "$sources" >"$dir/$parts/parts/main.sources"; fi
      local o=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$dir/$parts/parts"
               -o "Dir::State::Lists=$dir/$parts/lists")
      if ! $SUDO apt-get "${o[@]}" update >"$dir/log" 2>&1; then
        [ $parts = main ] || continue
      fi
      if DEBIAN_FRONTEND=noninteractive $SUDO apt-get "${o[@]}" install -y --no-install-recommends \
           wine wine64 wine32:i386 >>"$dir/log" 2>&1; then
        why=""; break
      fi
      why=$(grep -m1 -E ' : (Pre-)?Depends: |^E:' "$dir/log" || tail -n1 "$dir/log")
      why=$(echo $why)
    done
  fi
  if [ -n "$why" ]; then
    echo "wine32:i386 could not be installed ($why): the 32-bit Windows tests are skipped"
    if [ $had_i386 = 0 ] && ! grep -qx i386 <<<"$(dpkg-query -W -f '${Architecture}\n')"; then
      $SUDO dpkg --remove-architecture i386 || true
    fi
  fi
  $SUDO rm -rf "$dir"
}
if [ "${TQNRALM_NEED_WINE32:-0}" = 1 ] && ! [ -x /usr/lib/wine/wine ]; then
  echo "installing: wine wine64 wine32:i386"
  install_wine32 || true
fi
