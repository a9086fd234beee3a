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
  # The console test runs tqnralm.exe in a tmux pane, which Wine takes for a console.
  command -v tmux >/dev/null || need+=(tmux)
  # The migration assistant's walk (scripts/gui-check.sh): a display, the
  # screenshots, and a Japanese font that Wine finds through fontconfig.
  command -v Xvfb >/dev/null || need+=(xvfb)
  command -v import >/dev/null || need+=(imagemagick)
  dpkg -s fonts-noto-cjk >/dev/null 2>&1 || need+=(fonts-noto-cjk)
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

# 32-bit Wine (the i686 tests), only where the kernel runs i386 programs at
# all (some kernels have the 32-bit emulation switched off: then wine32 would
# install and never start). The test is a 93-byte static i386 program that
# only exits 0, run under a time limit.
kernel_runs_i386() {
  local probe
  probe=$(mktemp "${TMPDIR:-/tmp}/tqnralm-i386.XXXXXX") || return 1
  printf '\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00\x01\x00\x00\x00\x54\x80\x04\x08'\
'\x34\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x34\x00\x20\x00\x01\x00\x00\x00\x00\x00\x00\x00\x01\x00\x00\x00'\
'\x00\x00\x00\x00\x00\x80\x04\x08\x00\x80\x04\x08\x5d\x00\x00\x00\x5d\x00\x00\x00\x05\x00\x00\x00\x00\x10\x00\x00'\
'\xb8\x01\x00\x00\x00\x31\xdb\xcd\x80' >"$probe"   # mov eax,1; xor ebx,ebx; int 0x80
  chmod +x "$probe"
  local rc=0
  timeout 10 "$probe" >/dev/null 2>&1 || rc=$?
  rm -f "$probe"
  return $rc
}

# wine32:i386 needs i386 libraries at the very versions of their amd64 twins,
# and the security suite's i386 index often fails to download ("Mirror sync
# in progress?"), so an amd64 twin that came from the security suite has no
# i386 twin to be had. The route that works: apt reads a sources list without
# the security suite and a preference that pins the release above what is
# installed, both given by option (no system file changes), and installs the
# three wine packages in one call, bringing the few amd64 twins down to the
# release's version. When it fails, nothing of i386 stays: the architecture
# is removed again if no i386 package got installed, so that a plain apt-get
# update works as before. Without wine32 the 64-bit tests run alone: this
# never fails the caller.
install_wine32() {
  local dir had_i386=0 sources=/etc/apt/sources.list.d/debian.sources why="" codename
  grep -qx i386 <<<"$(dpkg --print-foreign-architectures)" && had_i386=1
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  dir=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-apt.XXXXXX") || return 0
  if [ ! -f "$sources" ] || [ -z "$codename" ]; then
    why="no $sources or no release name in /etc/os-release"
  elif [ $had_i386 = 0 ] && ! $SUDO dpkg --add-architecture i386; then
    why="dpkg --add-architecture i386 failed"
  else
    mkdir -p "$dir/parts" "$dir/prefs" "$dir/lists/partial"
    awk -v RS= -v ORS='\n\n' '!/Suites:[^\n]*-security/' "$sources" >"$dir/parts/main.sources"
    printf 'Package: *\nPin: release n=%s\nPin-Priority: 1001\n' "$codename" >"$dir/prefs/main.pref"
    local o=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$dir/parts"
             -o "Dir::Etc::PreferencesParts=$dir/prefs" -o "Dir::State::Lists=$dir/lists")
    if ! $SUDO apt-get "${o[@]}" update >"$dir/log" 2>&1; then
      why=$(grep -m1 '^E:' "$dir/log" || tail -n1 "$dir/log")
    elif ! DEBIAN_FRONTEND=noninteractive $SUDO apt-get "${o[@]}" install -y --no-install-recommends \
           --allow-downgrades wine wine64 wine32:i386 >>"$dir/log" 2>&1; then
      why=$(grep -m1 -E ' : (Pre-)?Depends: |^E:' "$dir/log" || tail -n1 "$dir/log")
    fi
    why=$(echo $why)
  fi
  if [ -n "$why" ]; then
    echo "wine32:i386 could not be installed ($why): the 32-bit Windows tests are skipped"
    if [ $had_i386 = 0 ] && ! grep -qx i386 <<<"$(dpkg-query -W -f '${Architecture}\n')"; then
      $SUDO dpkg --remove-architecture i386 || true
    fi
  fi
  $SUDO rm -rf "$dir"
}
if [ "${TQNRALM_NEED_WINE32:-0}" = 1 ] && ! [ -e /usr/lib/wine/wine ]; then
  if kernel_runs_i386; then
    echo "installing: wine wine64 wine32:i386"
    install_wine32 || true
  else
    echo "wine32:i386 is not installed: this kernel runs no i386 program (32-bit emulation off)"
  fi
fi
