#!/usr/bin/python3
"""The export's header rewriting, read back by Python's email package.

    check_headers.py REWRITE_HEADERS

Each row of raw 8-bit fields, with CR LF and with LF, must read back as
decoded, in an ASCII header folded at 78 with its line ends and body kept.
"""
import email
import subprocess
import sys
from email import policy

from exported_tree import check, failures

TOOL = sys.argv[1]


def sjis(text):
    return text.encode("cp932")


LONG = "長い件名のテスト、" * 8
ROWS = [
    # case, header lines (bytes), expected {field: text, or [(display name, address)]}
    ("shift_jis subject", [b"Subject: " + sjis("請求書について")], {"Subject": "請求書について"}),
    ("euc-jp subject", [b"Subject: " + "見積もりの件".encode("euc_jp"),
                        b"Content-Type: text/plain; charset=EUC-JP"], {"Subject": "見積もりの件"}),
    ("iso-2022-jp subject", [b"Subject: " + "会議のお知らせ".encode("iso2022_jp")], {"Subject": "会議のお知らせ"}),
    ("utf-8 subject", [b"Subject: " + "Réunion 日本語".encode()], {"Subject": "Réunion 日本語"}),
    ("utf-8 past 16 bits", [b"Subject: " + "絵文字 😀 ok".encode()], {"Subject": "絵文字 😀 ok"}),
    ("raw display name", [b"From: " + sjis("山田 太郎") + b" <taro@example.jp>"],
     {"From": [("山田 太郎", "taro@example.jp")]}),
    ("several addresses", [b"To: " + sjis('"佐藤, 一郎" <sato@example.jp>, 鈴木花子 <hanako@example.jp>,'),
                           b" plain@example.jp, " + sjis("表示") + b" <hyouji@example.jp>"],
     {"To": [("佐藤, 一郎", "sato@example.jp"), ("鈴木花子", "hanako@example.jp"), ("", "plain@example.jp"),
             ("表示", "hyouji@example.jp")]}),
    ("a comment", [b"Cc: taro@example.jp (" + sjis("山田太郎") + b")"], {"Cc": [("", "taro@example.jp")]}),
    ("long subject folds", [b"Subject: Re: " + sjis(LONG)], {"Subject": "Re: " + LONG}),
    ("encoded words kept", [b"Subject: =?ISO-2022-JP?B?GyRCMnE1RBsoQg==?= " + sjis("追加") + b" (2)"],
     {"Subject": "会議 追加 (2)"}),
    ("continuation line", [b"Subject: " + sjis("前半の件名"), b"\t" + sjis("後半の件名")],
     {"Subject": "前半の件名\t後半の件名"}),
    ("unknown field", [b"X-Note: " + sjis("メモ") + b" ok", b"Subject: plain"], {"X-Note": "メモ ok", "Subject": "plain"}),
]


def run(message, *args):
    return subprocess.run([TOOL, *args], input=message, stdout=subprocess.PIPE)


def split(message, eol):
    at = message.find(eol + eol)
    return (message, b"") if at < 0 else (message[:at + len(eol)], message[at + len(eol):])


def check_row(case, lines, expected, eol, separator=True):
    body = sjis("本文です。") + eol + b">From here" + eol
    head = b"".join(line + eol for line in lines + [b"Message-ID: <m@example.jp>"])
    source = head + (eol + body if separator else b"")
    ends = "CRLF" if eol == b"\r\n" else "LF"
    label = f"{case} ({ends}{'' if separator else ', no separator'})"
    result = run(source)
    check(result.returncode == 0, f"{label}: rewritten")
    out_head, out_body = split(result.stdout, eol) if separator else (result.stdout, b"")
    check(out_body == (eol + body if separator else b""), f"{label}: the body stays as it was")
    check(all(b < 0x80 and b != 0x1B for b in out_head), f"{label}: an ASCII header {out_head!r}")
    check(eol == b"\r\n" and out_head.count(b"\n") == out_head.count(b"\r\n")
          or eol == b"\n" and b"\r" not in out_head, f"{label}: line ends")
    check(all(len(line) <= 78 for line in out_head.split(eol)), f"{label}: folded at 78 {out_head!r}")
    parsed = email.message_from_bytes(result.stdout, policy=policy.default)
    for field, want in expected.items():
        if isinstance(want, str):
            check(str(parsed[field]) == want, f"{label}: {field} {str(parsed[field])!r}")
        else:
            got = [(a.display_name, a.addr_spec) for a in parsed[field].addresses]
            check(got == want, f"{label}: {field} {got!r}")
    check(parsed["Message-ID"] == "<m@example.jp>", f"{label}: the other fields stay")
    if "Subject" in expected:
        subject = run(source, "--subject")
        check(subject.returncode == 0 and subject.stdout.decode() == expected["Subject"],
              f"{label}: the manifest's subject {subject.stdout!r}")


for eol in (b"\r\n", b"\n"):
    for case, lines, expected in ROWS:
        check_row(case, lines, expected, eol)
    check_row("shift_jis subject", ROWS[0][1], ROWS[0][2], eol, separator=False)

# What needs no rewriting is not touched: encoded words only, 8-bit bodies.
for case, message in [("ascii header", b"Subject: =?UTF-8?B?5pel5pys?=\r\n\r\n" + sjis("本文")),
                      ("no header", b"\r\n" + sjis("本文")), ("empty", b""),
                      ("raw bytes in no field", b"Subject: x\n" + sjis("本文") + b"\n\nbody")]:
    check(run(message).returncode == 1, f"{case}: left as it is")
# Stray closing brackets in an address field: the rewriting ends, the address stays.
result = subprocess.run([TOOL], input=b"To: ) > " + sjis("山田") + b" <y@example.jp>\n\nb", stdout=subprocess.PIPE,
                        timeout=10)
check(result.returncode == 0 and result.stdout.endswith(b"?= <y@example.jp>\n\nb") and result.stdout.isascii(),
      f"stray brackets: {result.stdout!r}")
# A field of megabytes costs one pass: a display name of 500,000 words before a raw comment.
result = subprocess.run([TOOL], input=b"To: " + b"a " * 500000 + b"<a@example.jp> (" + sjis("山田") + b")\n\nb",
                        stdout=subprocess.PIPE, timeout=20)
check(result.returncode == 0 and result.stdout.endswith(b"?=)\n\nb") and result.stdout.isascii(), "a long field")
# Structured fields hold no encoded words: their raw bytes become UTF-8.
result = run(b"Subject: x\nContent-Type: text/plain; name=\"" + sjis("請求書") + b".txt\"\n\nbody")
check(result.stdout == "Subject: x\nContent-Type: text/plain; name=\"請求書.txt\"\n\nbody".encode(),
      f"structured field: {result.stdout!r}")
sys.exit(1 if failures else 0)
