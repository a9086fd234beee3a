"""The subjects of tests/msglib/CharsetRows.h as the message library reads
them against Python's email (raw 8-bit text decoded with the row's codec),
brought to code page 932 by Windows' best-fit forms.

    check_subjects.py TEST_MSGLIB
"""
import codecs
import email
import email.policy
import os
import subprocess
import sys
import tempfile

# Labels that mailers write and Python's codecs do not know.
ALIASES = {"x_sjis": "cp932", "x_euc_jp": "euc_jp"}
codecs.register(lambda name: codecs.lookup(ALIASES[name.replace("-", "_")])
                if name.replace("-", "_") in ALIASES else None)

# Windows' best-fit forms in code page 932: the JIS characters that Microsoft
# maps elsewhere, the no-break space, and the Latin-1 block.
BEST_FIT = {0xA0: " ", 0xA2: "\uffe0", 0xA3: "\uffe1", 0xAC: "\uffe2", 0x2014: "\u2015",
            0x2016: "\u2225", 0x2212: "\uff0d", 0x301C: "\uff5e",
            0xA1: "!", 0xA5: "\\", 0xA6: "|", 0xA9: "c", 0xAA: "a", 0xAB: "\u226a", 0xAD: "-",
            0xAE: "R", 0xAF: "\uffe3", 0xB2: "2", 0xB3: "3", 0xB5: "\u03bc", 0xB7: "\u30fb",
            0xB8: "\uff0c", 0xB9: "1", 0xBA: "o", 0xBB: "\u226b"}
BEST_FIT.update(zip(range(0xC0, 0x100),
                    "AAAAAAACEEEEIIIIDNOOOOO\u00d7OUUUUYTsaaaaaaaceeeeiiiidnooooo\u00f7ouuuuyty"))


def best_fit(text):
    out = []
    for c in text:
        c = BEST_FIT.get(ord(c), c)
        try:
            c.encode("cp932")
        except UnicodeEncodeError:
            c = "?"
        out.append(c)
    return "".join(out)


def python_subject(mail, raw_codec):
    msg = email.message_from_bytes(mail, policy=email.policy.default)
    if not raw_codec:
        return str(msg["subject"])
    raw = next(v for k, v in msg.raw_items() if k.lower() == "subject")
    text = raw.encode("ascii", "surrogateescape").decode(raw_codec)
    return str(email.policy.default.header_factory("Subject", text))


def main():
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        env = dict(os.environ, QV_SUBJECT_CORPUS=folder)
        subprocess.run([sys.argv[1], "--gtest_filter=MsgCharset.WritesTheCorpus"], env=env, check=True,
                       stdout=subprocess.DEVNULL)
        with open(os.path.join(folder, "rows.tsv"), encoding="utf-8") as rows:
            lines = rows.read().splitlines()
        for line in lines:
            number, name, raw_codec, ours = line.split("\t")
            with open(os.path.join(folder, number + ".eml"), "rb") as f:
                theirs = best_fit(python_subject(f.read(), raw_codec))
            if theirs != ours:
                failures += 1
                print(f"{name}: the library read {ours!r}, Python {theirs!r}")
    print(f"{len(lines)} subjects, {failures} different from Python's")
    return 1 if failures or not lines else 0


if __name__ == "__main__":
    sys.exit(main())
