#!/usr/bin/env bash
# Opens the mbox export of the sample store in Thunderbird and checks that
# every folder holds the messages the manifest lists as written, all read;
# then imports every address book through Thunderbird's own importer.
#
#   scripts/thunderbird-check.sh BUILD [VARIANT]
#
# BUILD is a build folder with bin/tqnralm and bin/samplestore; VARIANT one
# of the sample store's variants (default: "default"). The work goes
# to BUILD/thunderbird-check: the export, a fresh profile whose user.js
# defines the Local Folders account (a profile without it never gets one),
# the export copied in as the README says (each user a folder of Local
# Folders, each account a folder below it), and folder-pane.png, a screenshot
# of the folder pane. Thunderbird runs under Xvfb with no window manager:
# xdotool places its window, clicks the Local Folders row and walks every row
# with Right and Down, which opens each folder; Ctrl+Q makes it write
# folderCache.json, where each folder's totalMsgs stands under the path of
# its .msf file. The address books go through a second, headless run of a
# private copy of Thunderbird (links to its files, its own binary) whose
# AutoConfig file, thunderbird-import.cfg, imports each book's .vcf, .ldif
# and .csv into a new address book and lists what came of them. Without
# Thunderbird, Xvfb, xdotool or ImageMagick (and no way to install them) it
# says so in one line and passes.
set -euo pipefail
[ $# = 1 ] || [ $# = 2 ] || { echo "usage: $0 BUILD [VARIANT]" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
work=$build/thunderbird-check

missing() {
  local c m=()
  for c in thunderbird Xvfb xdotool import; do command -v $c >/dev/null || m+=("$c"); done
  echo "${m[*]}"
}
if [ -n "$(missing)" ]; then
  TQNRALM_NEED_THUNDERBIRD=1 "$here/install-deps.sh" >/dev/null 2>&1 || true
fi
if [ -n "$(missing)" ]; then
  echo "thunderbird-check: skipped: $(missing) not installed and cannot be installed here"
  exit 0
fi

rm -rf "$work"
mkdir -p "$work/home"
"$build/bin/samplestore" "$work/prefix" "${2:-default}" >/dev/null
status=0
WINEPREFIX=$work/prefix "$build/bin/tqnralm" export "$work/export" --quiet 2>"$work/export.log" || status=$?
[ $status -le 1 ] || { echo "thunderbird-check: the export failed ($status)"; exit 1; }

export HOME=$work/home MOZ_CRASHREPORTER_DISABLE=1
profile=$work/profile
thunderbird --headless -CreateProfile "check $profile" >/dev/null 2>&1
cat >"$profile/user.js" <<'EOF'
user_pref("mail.accountmanager.accounts", "account1");
user_pref("mail.accountmanager.localfoldersserver", "server1");
user_pref("mail.account.account1.server", "server1");
user_pref("mail.server.server1.type", "none");
user_pref("mail.server.server1.hostname", "Local Folders");
user_pref("mail.server.server1.name", "Local Folders");
user_pref("mail.server.server1.userName", "nobody");
user_pref("mail.server.server1.directory-rel", "[ProfD]Mail/Local Folders");
user_pref("mail.provider.suppress_dialog_on_startup", true);
user_pref("mail.shell.checkDefaultClient", false);
user_pref("mail.rights.override", true);
user_pref("mailnews.start_page.enabled", false);
user_pref("mailnews.database.global.indexer.enabled", false);
user_pref("toolkit.telemetry.enabled", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("datareporting.healthreport.uploadEnabled", false);
user_pref("app.update.auto", false);
EOF
rows=$(/usr/bin/python3 "$here/thunderbird_check.py" place "$work/export" "$profile/Mail/Local Folders")

pids=()
# shellcheck disable=SC2317  # called by the trap
cleanup() { local p; for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done; }
trap cleanup EXIT
exec 3>"$work/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 2>"$work/xvfb.log" &
pids+=("$!")
exec 3>&-
for _ in $(seq 50); do [ -s "$work/display" ] && break; sleep 0.1; done
DISPLAY=:$(head -n1 "$work/display")
export DISPLAY
thunderbird --profile "$profile" --no-remote >"$work/thunderbird.log" 2>&1 &
tb=$!
pids+=("$tb")
window=$(timeout 60 xdotool search --sync --onlyvisible --class thunderbird | head -n1) || {
  echo "thunderbird-check: no Thunderbird window within 60 s (see $work/thunderbird.log)"; exit 1; }
xdotool windowmove "$window" 0 0 windowsize "$window" 1280 1024
sleep 3
# The Local Folders row, the first of the folder pane in this window size;
# Right opens a folder's subfolders, Down selects (and so opens) the next row.
xdotool mousemove 143 113 click 1
sleep 1
for _ in $(seq $((rows + 2))); do
  xdotool key Right
  sleep 0.2
  xdotool key Down
  sleep 0.5
done
sleep 1
import -window root -crop 600x1024+0+0 "$work/folder-pane.png"
xdotool key --window "$window" ctrl+q 2>/dev/null
for _ in $(seq 60); do kill -0 $tb 2>/dev/null || break; sleep 0.5; done
if kill -0 $tb 2>/dev/null; then
  echo "thunderbird-check: Thunderbird did not quit within 30 s"
  exit 1
fi
echo "thunderbird-check: $(thunderbird --version 2>/dev/null | tail -n1); screenshot $work/folder-pane.png"
result=0
/usr/bin/python3 "$here/thunderbird_check.py" compare "$work/export" "$profile/Mail/Local Folders" \
  "$profile/folderCache.json" || result=1

# The address books, in a private copy that reads thunderbird-import.cfg.
# Debian's thunderbird is a script that starts /usr/lib/thunderbird/thunderbird-bin.
installed=""
for dir in "$(dirname "$(readlink -f "$(command -v thunderbird)")")" /usr/lib/thunderbird; do
  if [ -x "$dir/thunderbird-bin" ]; then installed=$dir; break; fi
done
if [ -z "$installed" ]; then
  echo "thunderbird-check: the address import is skipped: no thunderbird-bin found"
  exit $result
fi
app=$work/app
mkdir -p "$app"
cp -rsL "$installed/." "$app/"
rm -f "$app/thunderbird-bin" "$app/thunderbird"
cp "$installed/thunderbird-bin" "$app/"
cp "$here/thunderbird-import.cfg" "$app/tqnralm-import.cfg"
cat >"$app/defaults/pref/autoconfig.js" <<'EOF'
pref("general.config.filename", "tqnralm-import.cfg");
pref("general.config.obscure_value", 0);
pref("general.config.sandbox_enabled", false);
EOF
mkdir "$work/profile-addresses"
cp "$profile/user.js" "$work/profile-addresses/"
TQNRALM_TB_IMPORT=$(/usr/bin/python3 "$here/thunderbird_check.py" imports "$work/export") \
TQNRALM_TB_RESULT=$work/addresses.json \
  timeout 120 "$app/thunderbird-bin" --headless --profile "$work/profile-addresses" --no-remote \
  >"$work/thunderbird-addresses.log" 2>&1 || true
/usr/bin/python3 "$here/thunderbird_check.py" addresses "$work/export" "$work/addresses.json" || result=1
exit $result
