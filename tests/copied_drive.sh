#!/usr/bin/env bash
# copied_drive.sh BUILD - every sample store read as a Wine prefix and as a
# copied Windows drive in XP and in Vista layout: `tqnralm tree` must print
# the same tree with the same exit code. (The drive runs name no prefix.)
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
    WINEPREFIX=$work/none TQNRALM_WINDOWS_ROOT=$work/$layout "$bin/tqnralm" tree >"$work/$layout.txt" 2>&1
    code=$?
    if [ $code != $expected ] || ! diff -u "$work/prefix.txt" "$work/$layout.txt"; then
      echo "copied_drive: $variant ($layout) differs from the prefix: exit $code, expected $expected"
      failed=1
    fi
  done
done
exit $failed
