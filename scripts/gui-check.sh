#!/usr/bin/env bash
# gui-check.sh WIN64_BUILD LINUX_BUILD [OUT]
#
# Runs the x86_64 migration assistant under wine64 and Xvfb with a Japanese
# locale (the last walk with an English one), in its test walk (tqnralm-gui.exe --walk), and takes a screenshot
# of each step into OUT (default WIN64_BUILD/gui-check) for a person to look
# at (step 5: the last step showing the Thunderbird steps; step 6: Explorer
# opened on a problem; step1-pickN: the first step before the walk's next
# pick of a folder, N picks made). Ten runs:
#   export   the sample store (samplestore --machine win64): the assistant's
#            export must equal `tqnralm.exe export` of the same store, byte
#            for byte, manifest included;
#   users    two of the three users, as Maildir: equal to the command line's
#            export with --user and --format;
#   damaged  the damaged sample store: equal too, and in the last step its
#            first problem is double-clicked (Explorer opens on its folder);
#   resume   Cancel as soon as the export begins (exit 130), a second walk
#            on the same folder stopped after its third message, and a third
#            that goes on from there: again equal;
#   short    a destination of 8 KB (a tmpfs, where one may be mounted): the
#            second step warns that it is short, the export exits 4;
#   missing  a prefix without the mail client: the first step says so and
#            offers to read an old disk; the assistant exits 3;
#   drive    on that machine an old disk (samplestore --drive vista), picked
#            by the test-only --drive: equal to `tqnralm.exe --windows DIR
#            export`, manifest included, also when stopped after its third
#            message and resumed;
#   no-disk  a folder that is no Windows disk: the first step says so;
#   two-users that disk picked, then another with a second profile that
#            used the client, its Windows folder picked: the profiles are
#            offered, Hanako is chosen, and the export equals
#            --windows-user Hanako's;
#   back     on the sample store's machine a folder that is no disk picked,
#            then an old disk of other mail (XP), then back to this computer
#            (--back), in English: the export equals the first run's,
#            manifest included.
# Needs wine64, Xvfb, ImageMagick's import, fonts-noto-cjk and localedef.
# Exit 0 when all agree, 1 on a difference, 2 on a setup error.
set -uo pipefail

[ $# -ge 2 ] || { echo "usage: $0 WIN64_BUILD LINUX_BUILD [OUT]" >&2; exit 2; }
win=$(cd "$1" && pwd) || exit 2
linux=$(cd "$2" && pwd) || exit 2
out=${3:-$win/gui-check}
wine64=/usr/lib/wine/wine64
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
for f in "$win/bin/tqnralm-gui.exe" "$win/bin/tqnralm.exe" "$win/bin/TQNRALM.dll" "$win/bin/sNqxMsgNet.dll" \
         "$linux/bin/samplestore" $wine64; do
  [ -e "$f" ] || { echo "gui-check: missing $f" >&2; exit 2; }
done
for tool in Xvfb import localedef; do
  command -v $tool >/dev/null || { echo "gui-check: $tool is missing" >&2; exit 2; }
done

rm -rf "$out"
mkdir -p "$out/locale"
localedef -i ja_JP -f UTF-8 "$out/locale/ja_JP.UTF-8" 2>/dev/null
localedef -i en_US -f UTF-8 "$out/locale/en_US.UTF-8" 2>/dev/null
# Wine's programs run in the Japanese locale (ANSI code page 932), this
# script in its own.
export LOCPATH=$out/locale
english="env LANG=en_US.UTF-8 LC_ALL=en_US.UTF-8 $wine64"
wine64="env LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8 $wine64"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" WINEARCH=win64
unset WINEPREFIX

# A display of our own: the first free number from 90 on.
display=90
while [ -e /tmp/.X11-unix/X$display ] || [ -e /tmp/.X$display-lock ]; do display=$((display + 1)); done
Xvfb :$display -screen 0 800x600x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
export DISPLAY=:$display
small=
cleanup() { kill $xvfb 2>/dev/null; [ -z "$small" ] || umount "$small" 2>/dev/null; }
trap cleanup EXIT
sleep 1

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# walk NAME PREFIX OUTDIR [ARG...]: one walk through the steps, a screenshot
# of each stage as NAME-STAGE.png (step1 ... step6, step1-profiles when an
# old disk asks which profile to read); prints the exit code.
walk() {
  local name=$1 prefix=$2 dir=$3 shots="$out/$1.shots" rc
  shift 3
  mkdir -p "$shots"
  WINEPREFIX=$prefix timeout 300 $wine64 "$win/bin/tqnralm-gui.exe" --walk "$(windows_path "$dir")" \
    --shots "$(windows_path "$shots")" "$@" >"$out/$name.log" 2>&1 &
  local pid=$! ready stage
  while kill -0 $pid 2>/dev/null; do
    for ready in "$shots"/*.ready; do
      stage=$(basename "$ready" .ready)
      [ -e "$ready" ] && [ ! -e "$shots/$stage.go" ] || continue
      sleep 0.5  # the last paint
      import -window root "$out/$name-$stage.png"
      touch "$shots/$stage.go"
    done
    sleep 0.1
  done
  wait $pid; rc=$?
  echo $rc
}

cli_export() {  # PREFIX OUTDIR [ARG...]
  local prefix=$1 dir=$2
  shift 2
  (cd "$out" && WINEPREFIX=$prefix timeout 300 $wine64 "$win/bin/tqnralm.exe" export "$(windows_path "$dir")" \
     --quiet "$@" >/dev/null 2>>"$out/cli.err"); echo $?
}

status=0
check() {  # WHAT CONDITION...
  local what=$1; shift
  if "$@"; then echo "gui-check: $what"; else echo "gui-check: FAILED: $what"; status=1; fi
}

prefix=$out/store
"$linux/bin/samplestore" --machine win64 "$prefix" >/dev/null || { echo "gui-check: samplestore failed" >&2; exit 2; }
WINEPREFIX=$prefix timeout 120 $wine64 wineboot -u >/dev/null 2>&1
cli=$(cli_export "$prefix" "$out/cli")
cli0=$cli
rc=$(walk export "$prefix" "$out/gui")
check "the assistant exports the sample store (exit $rc) as the command line does (exit $cli)" \
  test "$rc" = "$cli" -a "$rc" -le 1
check "the assistant's export equals the command line's, manifest included" diff -r "$out/cli" "$out/gui"

cli2=$(cli_export "$prefix" "$out/cli-users" --format maildir --user 0 --user 2)
rc=$(walk users "$prefix" "$out/gui-users" --format maildir --users 0,2)
check "the assistant exports two users as Maildir (exit $rc) as the command line does (exit $cli2)" \
  test "$rc" = "$cli2" -a "$rc" -le 1
check "the two users' export equals the command line's" diff -r "$out/cli-users" "$out/gui-users"

damaged=$out/damaged
"$linux/bin/samplestore" --machine win64 "$damaged" damaged >/dev/null || { echo "gui-check: samplestore failed" >&2; exit 2; }
WINEPREFIX=$damaged timeout 120 $wine64 wineboot -u >/dev/null 2>&1
cli2=$(cli_export "$damaged" "$out/cli-damaged")
rc=$(walk damaged "$damaged" "$out/gui-damaged" --show-problem)
check "the assistant exports the damaged store (exit $rc) as the command line does (exit $cli2)" \
  test "$rc" = "$cli2" -a "$rc" = 1
check "the damaged store's export equals the command line's" diff -r "$out/cli-damaged" "$out/gui-damaged"
WINEPREFIX=$damaged "$wineserver" -k >/dev/null 2>&1

rc=$(walk cancel "$prefix" "$out/resumed" --cancel)
check "Cancel stops the export (exit $rc)" test "$rc" = 130
check "a stopped export has no manifest" test ! -e "$out/resumed/manifest.json"
# Stopped again in the middle: after its third message the export asks
# itself to stop, as Cancel does (the tests' kill point, KillPoint.h).
rc=$(TQNRALM_KILL_AT=message:3:stop walk stopped "$prefix" "$out/resumed")
check "stopped after the third message (exit $rc), with messages written" \
  test "$rc" = 130 -a -n "$(find "$out/resumed" -type f -size +0 ! -name 'manifest.json*' | head -n 1)"
rc=$(walk resume "$prefix" "$out/resumed")
check "a second walk goes on with the stopped export (exit $rc)" test "$rc" = "$cli"
check "the resumed export equals the command line's" diff -r "$out/cli" "$out/resumed"

# A destination with 8 KB free: the second step warns (its screenshot), and
# the export stops at the full disk (exit 4). Only where tmpfs may be mounted.
small=$out/small
mkdir -p "$small"
if mount -t tmpfs -o size=8k tmpfs "$small" 2>/dev/null; then
  rc=$(walk short "$prefix" "$small/out")
  umount "$small" && small=
  check "a destination short of space: the export stops at the full disk (exit $rc)" test "$rc" = 4
else
  echo "gui-check: no tmpfs could be mounted; the warning of a short destination is not walked"
fi
WINEPREFIX=$prefix "$wineserver" -k >/dev/null 2>&1

empty=$out/empty
WINEPREFIX=$empty timeout 120 $wine64 wineboot -i >/dev/null 2>&1
rc=$(walk missing "$empty" "$out/none")
check "without the mail client the first step says so and the assistant exits 3 (exit $rc)" test "$rc" = 3

# An old disk (samplestore --drive vista) read on a machine without the
# client, as if its folder had been picked: the same export as
# `tqnralm.exe --windows DIR export`.
drive=$out/drive
"$linux/bin/samplestore" --drive vista "$drive" >/dev/null || { echo "gui-check: samplestore failed" >&2; exit 2; }
cli_drive() {  # DRIVE OUTDIR [ARG...]
  local root=$1 dir=$2
  shift 2
  (cd "$out" && WINEPREFIX=$empty timeout 300 $wine64 "$win/bin/tqnralm.exe" --windows "$(windows_path "$root")" \
     "$@" export "$(windows_path "$dir")" --quiet >/dev/null 2>"$out/cli-drive.err"); echo $?
}
cli=$(cli_drive "$drive" "$out/cli-drive")
rc=$(walk drive "$empty" "$out/gui-drive" --drive "$(windows_path "$drive")")
check "the assistant exports the old disk (exit $rc) as the command line does (exit $cli)" \
  test "$rc" = "$cli" -a "$rc" -le 1
check "the old disk's export equals the command line's, manifest included" diff -r "$out/cli-drive" "$out/gui-drive"
# Stopped after its third message, then started again on the same folder.
rc=$(TQNRALM_KILL_AT=message:3:stop walk drive-stopped "$empty" "$out/drive-resumed" --drive "$(windows_path "$drive")")
check "the old disk's export stopped after the third message (exit $rc)" test "$rc" = 130
rc=$(walk drive-resume "$empty" "$out/drive-resumed" --drive "$(windows_path "$drive")")
check "the old disk's export resumed (exit $rc) equals the command line's" \
  diff -r "$out/cli-drive" "$out/drive-resumed"

# A folder that is no Windows disk: the first step says so, with a hint.
mkdir -p "$out/no-disk/Photos"
rc=$(walk no-disk "$empty" "$out/none" --drive "$(windows_path "$out/no-disk")")
check "a folder that is no Windows disk is refused in the first step (exit $rc)" test "$rc" = 3

# Two profiles that used the client, the disk's Windows folder picked: the
# assistant lists both, reads the one chosen, and exports it as
# `--windows-user` does.
two=$out/two-users
cp -r "$drive" "$two" && cp -r "$two/Users/Taro" "$two/Users/Hanako"
cli=$(cli_drive "$two" "$out/cli-two" --windows-user Hanako)
rc=$(walk two-users "$empty" "$out/gui-two" --drive "$(windows_path "$drive")" \
  --drive "$(windows_path "$two/Windows")" --drive-user Hanako)
check "the two profiles are offered for a choice" test -e "$out/two-users-step1-profiles.png"
check "the chosen profile is exported (exit $rc) as with --windows-user (exit $cli)" test "$rc" = "$cli" -a "$rc" -le 1
check "the chosen profile's export equals the command line's" diff -r "$out/cli-two" "$out/gui-two"
WINEPREFIX=$empty "$wineserver" -k >/dev/null 2>&1

# Back from old disks to the installed client: the step shows this
# computer's mail again, and that is what is exported.
xp=$out/drive-xp
"$linux/bin/samplestore" --drive xp "$xp" inbox >/dev/null || { echo "gui-check: samplestore failed" >&2; exit 2; }
rc=$(wine64=$english walk back "$prefix" "$out/gui-back" --drive "$(windows_path "$out/no-disk")" --drive "$(windows_path "$xp")" --back)
check "back on this computer, the export (exit $rc) is its own (exit $cli0)" test "$rc" = "$cli0"
check "back on this computer, the export equals the command line's, manifest included" \
  diff -r "$out/cli" "$out/gui-back"
WINEPREFIX=$prefix "$wineserver" -k >/dev/null 2>&1

echo "gui-check: screenshots in $out"
exit $status
