#!/usr/bin/env bash
# package-windows.sh BUILD OUTDIR
#
# The release a person downloads: one zip of a Windows build (i686 for the
# mail client's 32-bit Windows; the x86_64 twin is made the same way) with
# TQNRALM.dll, sNqxMsgNet.dll, tqnralm-gui.exe (the migration assistant), tqnralm.exe, tqnralm.h, the import library
# libTQNRALM.dll.a, a README.txt in Japanese and English, and SHA256SUMS.txt
# of them all. Writes OUTDIR/tqnralm-VERSION-windows-ARCH.zip and prints its path.
set -euo pipefail
[ $# = 2 ] || { echo "usage: $0 BUILD OUTDIR" >&2; exit 2; }
src="$(cd "$(dirname "$0")/.." && pwd)"
build=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
arch=$(sed -n 's/^CMAKE_C_COMPILER_AR:[A-Z]*=.*\/\([a-z0-9_]*\)-w64-mingw32-.*/\1/p' "$build/CMakeCache.txt")
[ -n "$version" ] && [ -n "$arch" ] || { echo "package-windows: $build is no Windows build" >&2; exit 2; }
name=tqnralm-$version-windows-$arch
stage=$(mktemp -d "${TMPDIR:-/tmp}/tqnralm-package.XXXXXX")
trap 'rm -rf "$stage"' EXIT
mkdir "$stage/$name"
cp "$build/bin/TQNRALM.dll" "$build/bin/sNqxMsgNet.dll" "$build/bin/tqnralm-gui.exe" "$build/bin/tqnralm.exe" \
   "$src/include/tqnralm.h" \
   "$build/archive/libTQNRALM.dll.a" "$stage/$name/"

# Notepad and every editor read a UTF-8 file with a byte order mark; CR LF ends the lines.
{ printf '\xef\xbb\xbf'; sed 's/$/\r/' <<EOF
TQNRALM $version for Windows ($arch)
==========================================

[日本語]

この zip を展開し、tqnralm-gui.exe をダブルクリックしてください。メールを探し、
書き出し先と形式を選ぶと、すべてのメールとアドレス帳を書き出します。
最後の画面の「Thunderbird への読み込み方」で、Thunderbird に読み込む手順を表示します。

AL-Mail32 のメール・アカウント・アドレス帳を読み出し、Thunderbird などほかのメール
ソフトへ移すための道具です。AL-Mail32 のデータを書き換えることはありません。
以下はコマンド プロンプトで使う tqnralm.exe の説明です。

使い方
1. この zip を展開し、できたフォルダ（例: C:\\tqnralm）を開きます。
2. エクスプローラーのアドレス欄に cmd と入力して Enter を押すと、そのフォルダで
   コマンド プロンプトが開きます（PowerShell でも同じように使えます）。
3. まず何が書き出されるかを確かめます（何も書き込みません）:
       tqnralm.exe export --dry-run C:\\移行
4. 書き出します。C:\\移行 の下に mbox ファイル（Thunderbird の「ローカルフォルダ」の形）、
   アドレス帳（.vcf .ldif .csv）、一覧の manifest.json ができます:
       tqnralm.exe export C:\\移行
   PowerShell では先頭に .\\ を付けます:  .\\tqnralm.exe export C:\\移行
   Maildir や EML で欲しいときは --format maildir / --format eml を付けます。
5. 全体の一覧は  tqnralm.exe tree  で表示できます。ファイルにするには
       tqnralm.exe tree > 一覧.txt      （UTF-8 のテキストになります）

終了コード（%ERRORLEVEL% / PowerShell では \$LASTEXITCODE）
  0  すべて書き出した
  1  読めないメッセージやフォルダがあった（manifest.json に記録、残りは書き出した）
  2  コマンドの書き方が違う
  3  AL-Mail32 が見つからない
  4  書き出せなかった（ディスクがいっぱい、権限がない、同じ名前のファイルがある、
     出力先が空でない（--force で追加できます）、出力先が AL-Mail32 のフォルダの中）
  130  Ctrl+C で止めた（同じコマンドをもう一度実行すると続きから書き出します）

TQNRALM.dll と sNqxMsgNet.dll は必ず tqnralm-gui.exe、tqnralm.exe と同じフォルダに置いてください。

[English]

Unzip this file and double-click tqnralm-gui.exe: it finds the mail, asks
where and in which form to write it, and exports all mail and address books.
Its last step's "Into Thunderbird" button shows how to open them in Thunderbird.

Reads the mail, accounts and address books of AL-Mail32 and writes them out for
Thunderbird and other mail programs. It never changes AL-Mail32's data.
What follows is about tqnralm.exe, for the command prompt.

How to run it
1. Unzip this file and open the folder it made (for example C:\\tqnralm).
2. Type cmd into Explorer's address bar and press Enter: a command prompt opens
   in that folder (PowerShell works the same way).
3. See first what would be written (nothing is written):
       tqnralm.exe export --dry-run C:\\export
4. Write it: mbox files in Thunderbird's "Local Folders" layout, the address
   books (.vcf .ldif .csv) and the list manifest.json below C:\\export:
       tqnralm.exe export C:\\export
   In PowerShell put .\\ in front:  .\\tqnralm.exe export C:\\export
   --format maildir or --format eml writes Maildir or EML files instead.
5. tqnralm.exe tree  shows everything; tqnralm.exe tree > list.txt  writes it
   to a UTF-8 text file.

Exit codes (%ERRORLEVEL%, in PowerShell \$LASTEXITCODE)
  0  everything was written
  1  some messages or folders could not be read (listed in manifest.json; the
     rest was written)
  2  the command line is wrong
  3  AL-Mail32 was not found
  4  the output could not be written (disk full, no permission, a file of that
     name exists, the folder is not empty (--force adds to it), or it lies
     inside AL-Mail32's folders)
  130  stopped with Ctrl+C (the same command run again goes on from there)

Keep TQNRALM.dll and sNqxMsgNet.dll in the same folder as tqnralm-gui.exe and tqnralm.exe.
For programmers: tqnralm.h is the C interface of TQNRALM.dll, and
libTQNRALM.dll.a its import library for MinGW.
EOF
} >"$stage/$name/README.txt"

(cd "$stage/$name" && sha256sum TQNRALM.dll sNqxMsgNet.dll tqnralm-gui.exe tqnralm.exe tqnralm.h libTQNRALM.dll.a README.txt \
   >SHA256SUMS.txt)
rm -f "$out/$name.zip"
(cd "$stage" && /usr/bin/python3 -m zipfile -c "$out/$name.zip" "$name")
echo "$out/$name.zip"
