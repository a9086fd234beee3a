#!/usr/bin/env bash
# copied_drive.sh BUILD - every sample store read as a Wine prefix and as a
# copied Windows drive in XP and in Vista layout: `tqnralm tree` must print
# the same tree with the same exit code. (The drive runs name no prefix.)
# Then what the host says of drives it cannot read for one user alone.
set -uo pipefail
bin=$1/bin
work=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-drive.XXXXXX") || exit 2
trap 'rm -rf "$work"' EXIT
unset TQNRALM_WINDOWS_ROOT TQNRALM_WINDOWS_USER
failed=0
for variant in $("$bin/samplestore" --list); do
  "$bin/samplestore" "$work/prefix" "$variant" >/dev/null || exit 2
  WINEPREFIX=$work/prefix "$bin/tqnralm" tree >"$work/prefix.txt" 2>&1
  expected=$?
  for layout in xp vista; do
    "$bin/samplestore" --drive $layout "$work/$layout" "$variant" >/dev/null || exit 2
    if [ $layout = xp ]; then drive=(--windows "$work/$layout"); else drive=(); fi
    WINEPREFIX=$work/none TQNRALM_WINDOWS_ROOT=$work/$layout "$bin/tqnralm" "${drive[@]}" tree >"$work/$layout.txt" 2>&1
    code=$?
    if [ $code != $expected ] || ! diff -u "$work/prefix.txt" "$work/$layout.txt"; then
      echo "copied_drive: $variant ($layout) differs from the prefix: exit $code, expected $expected"
      failed=1
    fi
  done
done

# Each row: what is done to a fresh Vista drive, the options, the exit code
# and a text the message must hold.
expect() {
  local setup=$1 code=$2 text=$3
  shift 3
  rm -rf "$work/d"
  "$bin/samplestore" --drive vista "$work/d" >/dev/null || exit 2
  (cd "$work/d" && eval "$setup")
  WINEPREFIX=$work/none "$bin/tqnralm" "$@" tree >"$work/out.txt" 2>&1
  local got=$?
  if [ $got != $code ] || ! grep -qF -- "$text" "$work/out.txt"; then
    echo "copied_drive: [$setup] $*: exit $got, expected $code with '$text':"
    cat "$work/out.txt"
    failed=1
  fi
}
two='cp -r Users/Taro Users/Hanako'
expect "$two" 2 "Users/Hanako/NTUSER.DAT" --windows "$work/d"
expect "$two" 0 'user [0] name="山田太郎"' --windows "$work/d" --windows-user HANAKO
expect 'rm Users/Taro/NTUSER.DAT' 3 "Users/Default/NTUSER.DAT" --windows "$work/d"
expect 'rm -r Windows' 3 "d/Windows/System32/config/SOFTWARE" --windows "$work/d"
expect 'truncate -s 6000 Windows/System32/config/SOFTWARE' 3 "not a registry hive" --windows "$work/d"
expect 'mkdir -p Users/Other' 3 "no Windows user 'Jiro'" --windows "$work/d" --windows-user Jiro
exit $failed
