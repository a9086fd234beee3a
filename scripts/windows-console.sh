#!/usr/bin/env bash
# windows-console.sh WINDOWS_BUILD LINUX_BUILD
#
# tqnralm.exe as a person on Japanese Windows meets it: under Wine with a
# Japanese locale (code page 932), in a real console (a tmux pane, which Wine
# takes for one) and piped. On the sample store, against the Linux build:
#   - `tree` in the pane shows the Japanese names as the Linux build prints them;
#   - `export C:\移行テスト --log C:\ログ.txt` in the pane exits with the Linux
#     build's code, writes the same files (the manifest's source line aside)
#     and creates the log under its Japanese name;
#   - `tree` piped writes the Linux build's UTF-8 bytes, and `cat` of a
#     message its raw bytes (no CR added).
# WINDOWS_BUILD is an x86_64 build (run by wine64); the i686 one shares every
# line of this code. Needs wine64, tmux, localedef. Exit 0 when all agree,
# 1 on a difference, 2 on a setup error. KEEP=1 keeps the work folder.
set -uo pipefail
[ $# = 2 ] || { echo "usage: $0 WINDOWS_BUILD LINUX_BUILD" >&2; exit 2; }
win=$(cd "$1" && pwd) && linux=$(cd "$2" && pwd) || exit 2
wine64=/usr/lib/wine/wine64
for f in "$win/bin/tqnralm.exe" "$linux/bin/tqnralm" "$linux/bin/samplestore" $wine64; do
  [ -e "$f" ] || { echo "windows-console: missing $f" >&2; exit 2; }
done
for tool in tmux localedef; do
  command -v $tool >/dev/null || { echo "windows-console: $tool is missing" >&2; exit 2; }
done

work=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-console.XXXXXX") || exit 2
sock=$work/tmux.sock
prefix=$work/prefix
cleanup() {
  tmux -S "$sock" kill-server >/dev/null 2>&1
  WINEPREFIX=$prefix wineserver -k >/dev/null 2>&1
  if [ "${KEEP:-0}" = 1 ]; then echo "windows-console: kept $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT

mkdir -p "$work/locale"
localedef -i ja_JP -f UTF-8 "$work/locale/ja_JP.UTF-8" >/dev/null 2>&1
[ -d "$work/locale/ja_JP.UTF-8" ] || { echo "windows-console: localedef ja_JP.UTF-8 failed" >&2; exit 2; }
"$linux/bin/samplestore" --machine win64 "$work/store" >/dev/null || exit 2
cp -a "$work/store" "$prefix"
export LOCPATH=$work/locale WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
{ export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8; } 2>/dev/null
unset DISPLAY WINEARCH

failed=0
report() { echo "DIFFERENT: $1"; failed=1; }

# The Linux build on its own copy of the store.
(cd "$work" && WINEPREFIX=$work/store "$linux/bin/tqnralm" tree >linux.tree 2>/dev/null
 WINEPREFIX=$work/store "$linux/bin/tqnralm" export linux-export >/dev/null 2>&1; echo $? >linux.rc
 WINEPREFIX=$work/store "$linux/bin/tqnralm" cat 0/0/2/0 >linux.eml)

# A command in a fresh console: a detached tmux pane, 250 columns wide; its
# exit code lands in NAME.rc, the whole pane (wrapped lines joined) in NAME.pane.
in_console() {  # name command...
  local name=$1; shift
  rm -f "$work/$name.rc"
  tmux -S "$sock" new-session -d -x 250 -y 100 \
    "cd '$work' && $(printf '%q ' "$@"); echo \$? >'$work/$name.rc.tmp'; mv '$work/$name.rc.tmp' '$work/$name.rc'; sleep 60"
  for _ in $(seq 1 300); do [ -f "$work/$name.rc" ] && break; sleep 1; done
  tmux -S "$sock" capture-pane -p -J -S - | sed -e 's/[[:space:]]*$//' -e '/./,$!d' >"$work/$name.pane"
  tmux -S "$sock" kill-server >/dev/null 2>&1
  [ -f "$work/$name.rc" ] || { echo "timed out" >"$work/$name.rc"; }
}

# Wine makes the prefix its own on the first run.
timeout 300 $wine64 wineboot -u >/dev/null 2>&1

in_console tree $wine64 "$win/bin/tqnralm.exe" tree
# The pane holds the tree and nothing after it; blank lines at the end go.
sed -e ':a' -e '/^\n*$/{$d;N;ba' -e '}' "$work/tree.pane" >"$work/tree.txt"
[ "$(cat "$work/tree.rc")" = 0 ] || report "tree in the console exited $(cat "$work/tree.rc")"
diff -u --label linux --label console "$work/linux.tree" "$work/tree.txt" | head -20
cmp -s "$work/linux.tree" "$work/tree.txt" || report "tree in the console differs from the Linux build's"

in_console export $wine64 "$win/bin/tqnralm.exe" export 'C:\移行テスト' --log 'C:\ログ.txt'
[ "$(cat "$work/export.rc")" = "$(cat "$work/linux.rc")" ] ||
  report "export exited $(cat "$work/export.rc"), the Linux build $(cat "$work/linux.rc"): $(cat "$work/export.pane")"
out="$prefix/drive_c/移行テスト"
diff <(cd "$work/linux-export" && find . | sort) <(cd "$out" 2>/dev/null && find . | sort) ||
  report "the export's files differ from the Linux build's"
diff -r -x manifest.json "$work/linux-export" "$out" >/dev/null || report "the exported files' bytes differ"
diff <(grep -v '"source"' "$work/linux-export/manifest.json") <(grep -v '"source"' "$out/manifest.json") >/dev/null ||
  report "the manifests differ beyond their source"
[ -s "$prefix/drive_c/ログ.txt" ] || report "no log file C:\\ログ.txt"

# Piped: no console, UTF-8 bytes; the raw message unchanged.
(cd "$work" && $wine64 "$win/bin/tqnralm.exe" tree 2>/dev/null | cat >piped.tree)
cmp -s "$work/linux.tree" "$work/piped.tree" || report "tree piped differs from the Linux build's"
(cd "$work" && $wine64 "$win/bin/tqnralm.exe" cat 0/0/2/0 2>/dev/null | cat >piped.eml)
cmp -s "$work/linux.eml" "$work/piped.eml" ||
  report "cat piped: $(wc -c <"$work/piped.eml") bytes where Linux writes $(wc -c <"$work/linux.eml")"

if [ $failed = 0 ]; then
  echo "windows-console: in a console and piped, tree, export (exit $(cat "$work/linux.rc"), $(find "$out" -type f | wc -l) files)," \
       "the log C:\\ログ.txt and cat agree with the Linux build"
fi
exit $failed
