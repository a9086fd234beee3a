#!/usr/bin/python3
"""Reads back what `tqnralm export` writes, with readers that are not ours.

    check_export.py TQNRALM SAMPLESTORE MODE [FAIL_FIRST]

MODE mbox, maildir or eml: the sample store's export read back by Python's
mailbox and email (and Dovecot where installed), with --raw and without.
MODE exits: exit codes. MODE siblings: the first child of every list failing
(FAIL_FIRST preloaded). MODE names: every sample store in every form.
"""
import email
import email.errors
import email.utils
import email.policy
import hashlib
import mailbox
import os
import re
import shutil
import subprocess
import sys
import tempfile

from exported_tree import check, failures, read_manifest, tree_files

TOOL, SAMPLESTORE, MODE = sys.argv[1:4]
FAIL_FIRST = sys.argv[4] if len(sys.argv) > 4 else None


def store(work, variant="default"):
    prefix = os.path.join(work, "prefix-" + variant)
    subprocess.run([SAMPLESTORE, prefix, variant], check=True, stdout=subprocess.DEVNULL)
    return prefix


def tqnralm(prefix, *args, env=None):
    env = dict(os.environ, WINEPREFIX=prefix, **(env or {}))
    return subprocess.run([TOOL, *args], env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def mboxrd_body(api):
    """What a reader gives back for a message after it removes one '>' of each quoted From line."""
    text = api.replace(b"\r\n", b"\n")
    return text if text.endswith(b"\n") or not text else text + b"\n"


def unquote(data):
    return re.sub(rb"(?m)^>(>*From )", rb"\1", data)


def read_back(fmt, out, manifest, api):
    written = [m for m in manifest["messages"] if m["status"] == "written"]
    if fmt == "mbox":
        files = sorted({m["file"] for m in written})
        for name in files:
            entries = [m for m in written if m["file"] == name]
            box = mailbox.mbox(os.path.join(out, name), create=False)
            keys = list(box.keys())
            check(len(keys) == len(entries), f"{name}: {len(keys)} messages read, {len(entries)} listed")
            for key, entry in zip(keys, entries):
                check(unquote(box.get_bytes(key)) == mboxrd_body(api[entry["index"]]), f"{entry['index']}: mbox bytes")
                check(box.get_message(key).get_from().startswith(("MAILER-DAEMON ", "sender@")), "From line")
    elif fmt == "maildir":
        seen = 0
        for user in manifest["users"]:
            for account in user["accounts"]:
                if "same_as" in account:
                    continue
                box = mailbox.Maildir(os.path.join(out, account["path"], "Maildir"), factory=None, create=False)
                names = {maildir_name(f["path"]) for f in account["folders"]} - {"INBOX"}
                check(set(box.list_folders()) == names, f"{account['path']}: folders {box.list_folders()}")
                for folder in box.list_folders() + ["INBOX"]:
                    sub = box if folder == "INBOX" else box.get_folder(folder)
                    for key in sub.keys():
                        entry = next(m for m in written if os.path.basename(m["file"]).split(":")[0] == key
                                     and maildir_name(m["file"].split("/cur/")[0]) == folder)
                        check(sub.get_bytes(key) == api[entry["index"]], f"{entry['index']}: Maildir bytes")
                        check(sub.get_message(key).get_flags() == "S", f"{entry['index']}: seen")
                        seen += 1
        check(seen == len(written), f"Maildir: {seen} messages read, {len(written)} listed")
    else:
        for entry in written:
            with open(os.path.join(out, entry["file"]), "rb") as f:
                data = f.read()
            check(data == api[entry["index"]], f"{entry['index']}: EML bytes")
            parsed = email.message_from_bytes(data)
            check(parsed["Message-ID"] == entry["message_id"], f"{entry['index']}: Message-ID")


def maildir_name(path):
    """The folder's name in a Maildir++ from its path: INBOX for the Maildir itself."""
    return path.split("/Maildir", 1)[1].removeprefix("/.") or "INBOX"


def arrival(data):
    """When a message came, as email.utils reads its Date (else its first
    Received field's date); None when neither reads."""
    msg = email.message_from_bytes(data)
    for value in (msg["Date"], (msg["Received"] or "").rpartition(";")[2]):
        try:
            return int(email.utils.parsedate_to_datetime(str(value)).timestamp())
        except (TypeError, ValueError, IndexError):
            pass
    return None


def check_times(out, manifest, api, what):
    """Each Maildir or EML file has the time its message came (a message
    without one: that of the message before it in the folder)."""
    last = {}
    for m in manifest["messages"]:
        if m["status"] != "written":
            continue
        folder = os.path.dirname(m["file"])
        want = arrival(api[m["index"]])
        want = last.get(folder) if want is None else want
        last[folder] = want
        got = os.stat(os.path.join(out, m["file"])).st_mtime_ns
        if want is not None:
            check(got == want * 10**9, f"{what} {m['index']}: file time {got // 10**9}, message {want}")


def store_state(prefix):
    """Every file of the store with its bytes and times."""
    state = {}
    for folder, _, files in os.walk(prefix):
        for name in files:
            st = os.stat(os.path.join(folder, name))
            state[os.path.join(folder, name)] = (st.st_size, st.st_mtime_ns, st.st_atime_ns)
    return state


def export_and_read(fmt, work):
    prefix = store(work)
    for path, (_, mtime, _) in store_state(prefix).items():
        os.utime(path, ns=(mtime - 10**9, mtime))  # an access time that a read would move on
    before = store_state(prefix)
    out = os.path.join(work, "out")
    run = tqnralm(prefix, "export", out, "--format", fmt, "--quiet", "--raw")
    check(store_state(prefix) == before, "the store is left as it was, its access times too")
    check(run.returncode == 0, f"export exit {run.returncode}: {run.stderr!r}")
    check(run.stderr.decode().startswith("tqnralm: export: 7 written, 0 failed"), f"summary {run.stderr!r}")
    manifest = read_manifest(out)
    totals = manifest["totals"]
    check(manifest["format"] == fmt, "format")
    check(totals["expected"] == totals["written"] == 7 and totals["failed"] == 0, f"totals {totals}")
    shared = manifest["users"][2]["accounts"][0]
    check(shared.get("same_as") == "1/0" and shared["path"] == manifest["users"][1]["accounts"][0]["path"],
          "a shared account points at the first copy")

    api = {m["index"]: tqnralm(prefix, "cat", m["index"]).stdout for m in manifest["messages"]}
    files = tree_files(out)
    listed = {m["file"] for m in manifest["messages"]} | {"manifest.json"}
    address_files = {f["path"] for b in manifest["address_books"] for f in b["files"]}
    listed |= address_files
    if fmt == "mbox":  # an mbox file for every folder, empty ones too
        listed |= {f["path"] for u in manifest["users"] for a in u["accounts"] for f in a.get("folders", [])}
    check(set(files) == listed, f"files not listed: {set(files) ^ listed}")
    check(sum(len(files[name]) for name in listed - {"manifest.json"} - address_files) == totals["bytes"], "bytes")
    for m in manifest["messages"]:
        data = files[m["file"]][m.get("offset", 0):m.get("offset", 0) + m["length"]]
        check(hashlib.sha256(data).hexdigest() == m["sha256"], f"{m['index']}: SHA-256")
        if fmt != "mbox":
            check(data == api[m["index"]], f"{m['index']}: the bytes of QV_MailMessage_GetData")
    read_back(fmt, out, manifest, api)
    if fmt != "mbox":
        check_times(out, manifest, api, fmt)

    again = os.path.join(work, "again")
    check(tqnralm(prefix, "export", again, "--format", fmt, "--quiet", "--raw").returncode == 0, "second export")
    check(tree_files(again) == files, "two exports are byte-identical")
    # (An empty mbox file has no message to take a time from.)
    times = [(os.stat(os.path.join(out, n)).st_mtime_ns, os.stat(os.path.join(again, n)).st_mtime_ns)
             for n in {m["file"] for m in manifest["messages"] if m["status"] == "written"}]
    check(times and all(a == b for a, b in times), "two exports give their message files the same times")
    readable(fmt, work, prefix, manifest, files, api)


def message_bytes(files, entry):
    """A message as written, without the mbox From line and quoting."""
    data = files[entry["file"]][entry.get("offset", 0):entry.get("offset", 0) + entry["length"]]
    return unquote(data.split(b"\n", 1)[1]) if "offset" in entry else data


def doveadm(maildir, *args):
    """doveadm's output lines on a copy of the Maildir, with the UTF-8 option
    (owned by nobody when we are root: Dovecot refuses root and writes its
    index files); None without doveadm."""
    program = shutil.which("doveadm") or shutil.which("doveadm", path="/usr/bin")
    if program is None:
        return None
    home = tempfile.mkdtemp(prefix="tqnralm-dovecot-")
    try:
        shutil.copytree(maildir, os.path.join(home, "Maildir"))
        command = [program, "-o", f"mail_location=maildir:{home}/Maildir:UTF-8", *args]
        if os.geteuid() == 0:
            subprocess.run(["chown", "-R", "nobody", home], check=True)
            command = ["runuser", "-u", "nobody", "--", "env", "USER=nobody", "HOME=" + home] + command
        run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd="/")
        check(run.returncode == 0 and not run.stderr, f"doveadm: {run.stderr[:300]!r}")
        return run.stdout.decode().splitlines()
    finally:
        shutil.rmtree(home)


def dovecot_subjects(account, text):
    """The mailboxes in which Dovecot's SEARCH finds text in a Subject."""
    lines = doveadm(os.path.join(account, "Maildir"), "fetch", "mailbox", "mailbox", "*", "subject", text)
    return None if lines is None else [line[len("mailbox: "):] for line in lines if line.startswith("mailbox: ")]


def readable(fmt, work, prefix, raw_manifest, raw_files, api):
    """The default export: the raw Shift_JIS subject made readable, every other byte as with --raw."""
    out = os.path.join(work, "readable")
    run = tqnralm(prefix, "export", out, "--format", fmt, "--quiet", "--no-addresses")
    check(run.returncode == 0, f"export exit {run.returncode}: {run.stderr!r}")
    manifest = read_manifest(out)
    files = tree_files(out)
    raw = {m["index"]: m for m in raw_manifest["messages"]}
    for m in manifest["messages"]:
        index = m["index"]
        check(m["library_sha256"] == raw[index]["library_sha256"] == hashlib.sha256(api[index]).hexdigest(),
              f"{index}: the SHA-256 of the library's bytes")
        check(not raw[index]["headers_rewritten"], f"{index}: --raw rewrites nothing")
        check(m["headers_rewritten"] == (m["message_id"] == "<sjis@example.jp>"), f"{index}: headers_rewritten")
        data, before = message_bytes(files, m), message_bytes(raw_files, raw[index])
        if fmt == "mbox":  # marked read for Thunderbird, unlike --raw
            check(data.startswith(b"X-Mozilla-Status: 0001\n") and b"X-Mozilla-Status" not in before, f"{index}: read")
            data = data.removeprefix(b"X-Mozilla-Status: 0001\n")
        if m["headers_rewritten"]:
            body = [re.split(rb"\n\r?\n", text, maxsplit=1)[-1] for text in (data, before)]
            check(body[0] == body[1], f"{index}: the body as it was")
            parsed = email.message_from_bytes(data, policy=email.policy.default)
            check(str(parsed["Subject"]) == m["subject"] == "請求書について", f"{index}: subject {m['subject']!r}")
        else:
            check(data == before, f"{index}: the bytes of --raw")
    subjects = {m["message_id"]: m["subject"] for m in manifest["messages"]}
    check(subjects["<utf8@example.jp>"] == "Réunion 日本語テスト", "the manifest's subject in full Unicode")
    if fmt == "maildir":
        account = os.path.join(out, "山田太郎", "仕事")
        found = dovecot_subjects(account, "請求書")
        check(found is None or found == ["プロジェクト.見積もり"], f"Dovecot's SEARCH SUBJECT finds {found}")
        if found is not None:  # the raw bytes: mojibake to Dovecot
            check(dovecot_subjects(os.path.join(work, "out", "山田太郎", "仕事"), "請求書") == [], "--raw: no match")
        if found:
            print("Dovecot's SEARCH CHARSET UTF-8 SUBJECT 請求書 finds the message")


def exits(work):
    prefix = store(work)
    damaged = store(work, "damaged")
    out = os.path.join(work, "damaged-out")
    run = tqnralm(damaged, "export", out)
    check(run.returncode == 1, f"damaged store: exit {run.returncode}")
    manifest = read_manifest(out)
    failed = [m for m in manifest["messages"] if m["status"] == "failed"]
    check(len(failed) == manifest["totals"]["failed"] > 0 and all(m["code"] < 0 and "file" not in m for m in failed),
          "failed messages are listed with their code and no file")
    check(manifest["problems"] and manifest["problems"][0]["item"] == "folder", "the unreadable folder is listed")
    folders = [f["name"] for u in manifest["users"] for a in u["accounts"] for f in a.get("folders", [])]
    check(folders[-1:] == ["日本語"], f"the folder after the unreadable one is exported: {folders}")
    for fmt in ("maildir", "eml"):
        out = os.path.join(work, "damaged-" + fmt)
        tqnralm(damaged, "export", out, "--format", fmt)
        listed = read_manifest(out)
        api = {m["index"]: tqnralm(damaged, "cat", m["index"]).stdout for m in listed["messages"]}
        check(any(arrival(data) is None for data in api.values()), "a message without a time")
        check_times(out, listed, api, "damaged " + fmt)

    dry = os.path.join(work, "dry")
    run = tqnralm(prefix, "export", dry, "--dry-run")
    check(run.returncode == 0 and not os.path.exists(dry), f"dry run: exit {run.returncode}, writes nothing")
    lines = run.stdout.decode().splitlines()
    check("       3  山田太郎/仕事/プロジェクト.sbd/見積もり" in lines, "dry run: a folder's count and target")
    check(lines[-1] == "7 messages in 8 folders, 2165 bytes to write", f"dry run totals: {lines[-1]!r}")

    mine = os.path.join(work, "mine")
    os.makedirs(os.path.join(mine, "山田太郎", "仕事"))
    with open(os.path.join(mine, "山田太郎", "仕事", "送信箱"), "wb") as f:
        f.write(b"mine")
    check(tqnralm(prefix, "export", mine).returncode == 4, "OUTDIR not empty without --force: exit 4")
    run = tqnralm(prefix, "export", mine, "--force")
    check(run.returncode == 4, f"--force on a file that exists: exit {run.returncode}")
    with open(os.path.join(mine, "山田太郎", "仕事", "送信箱"), "rb") as f:
        check(f.read() == b"mine", "the file that was there is untouched")
    check("manifest.json" not in os.listdir(mine), "no manifest after exit 4")

    blocked = os.path.join(work, "a-file")
    open(blocked, "wb").close()
    check(tqnralm(prefix, "export", os.path.join(blocked, "out")).returncode == 4, "OUTDIR below a file: exit 4")
    inside = os.path.join(prefix, "drive_c", "export")
    check(tqnralm(prefix, "export", inside).returncode == 4 and not os.path.exists(inside), "OUTDIR in the store")
    check(tqnralm(prefix, "export", os.path.join(work, "u"), "--format", "pst").returncode == 2, "bad format: exit 2")
    empty = os.path.join(work, "no-wine")
    os.mkdir(empty)
    check(tqnralm(empty, "export", os.path.join(work, "n")).returncode == 3, "no mail client: exit 3")

    one = os.path.join(work, "one-user")
    check(tqnralm(prefix, "export", one, "--user", "1", "--quiet").returncode == 0, "--user 1")
    check(sorted(os.listdir(one)) == ["manifest.json", "鈴木花子"], f"--user 1 writes {os.listdir(one)}")


def siblings(work):
    """Users, accounts, folders, messages: the first of each list fails (classes
    3 to 6); every other item must be exported, and the totals add up."""
    prefix = store(work, "threes")
    rows = [("345", 8 * 2, 0), ("3456", 8, 8), ("6", 27, 27), ("5", 18 * 2, 0)]
    for classes, written, unread in rows:
        env = {"LD_PRELOAD": FAIL_FIRST, "TQNRALM_FAIL_FIRST": classes, "ASAN_OPTIONS": "verify_asan_link_order=0"}
        fails = {c: str(c) in classes for c in (3, 4, 5, 6)}
        # The messages that must arrive: u, a, f, m counted from 1, the first of each failing list left out.
        ids = {f"<u{u}a{a}f{f}m{m}@example.jp>" for u in (1, 2, 3) for a in (1, 2, 3) for f in (1, 2, 3) for m in (1, 2)
               if not (fails[3] and u == 1 or fails[4] and a == 1 or fails[5] and f == 1 or fails[6] and m == 1)}
        out = os.path.join(work, "out-" + classes)
        run = tqnralm(prefix, "export", out, "--quiet", env=env)
        check(run.returncode == 1, f"{classes}: exit {run.returncode}: {run.stderr!r}")
        manifest = read_manifest(out)
        totals = manifest["totals"]
        got = {m["message_id"] for m in manifest["messages"] if m["status"] == "written"}
        check(got == ids, f"{classes}: {len(got)} messages written, {len(ids)} expected")
        check((totals["written"], totals["unread"]) == (written, unread), f"{classes}: totals {totals}")
        check(totals["expected"] == totals["written"] + totals["failed"] + totals["unread"], f"{classes}: sum {totals}")
        problems = len(manifest["problems"])
        lost = fails[3] + (3 - fails[3]) * (fails[4] + (3 - fails[4]) * fails[5]) + unread
        check(problems == lost, f"{classes}: {problems} problems, {lost} expected")
        for name in {m["file"] for m in manifest["messages"]}:
            listed = sum(m["file"] == name for m in manifest["messages"])
            check(len(mailbox.mbox(os.path.join(out, name), create=False)) == listed, f"{classes}: {name} read back")
        tree = tqnralm(prefix, "tree", env=env)
        lines = tree.stdout.decode().splitlines()
        check(tree.returncode == 1 and sum("<error" in line for line in lines) == lost, f"{classes}: tree")
        check(sum(line.lstrip().startswith("message [") for line in lines) == len(ids), f"{classes}: tree messages")
    # The first address of every group of the sample store's books: the others are written.
    env = {"LD_PRELOAD": FAIL_FIRST, "TQNRALM_FAIL_FIRST": "9", "ASAN_OPTIONS": "verify_asan_link_order=0"}
    out = os.path.join(work, "out-addresses")
    run = tqnralm(store(work), "export", out, "--quiet", "--no-mail", env=env)
    addresses = read_manifest(out)["totals"]["address_books"]["addresses"]
    check(run.returncode == 1 and addresses["written"] > 0 and addresses["written"] + addresses["failed"] == 9,
          f"addresses: exit {run.returncode}, {addresses}")


def thunderbird_opens(name):
    """What Thunderbird 153 was seen to open: no % # ;, no leading dot or
    final tilde, at most 55 UTF-16 units."""
    units = len(name.encode("utf-16-le")) // 2
    return not re.search(r"[%#;]", name) and not name.startswith(".") and not name.endswith("~") and units <= 55


def dovecot(maildir):
    """{mailbox: messages} as Dovecot lists the Maildir; None without doveadm."""
    lines = doveadm(maildir, "-f", "tab", "mailbox", "status", "messages", "*")
    return None if lines is None else {name: int(count) for name, count in (l.rsplit("\t", 1) for l in lines[1:])}


def names(work):
    variants = subprocess.run([SAMPLESTORE, "--list"], check=True, stdout=subprocess.PIPE).stdout.decode().split()
    for variant in variants:
        prefix = store(work, variant)
        for fmt in ("mbox", "maildir", "eml"):
            out = os.path.join(work, f"{variant}-{fmt}")
            tqnralm(prefix, "export", out, "--format", fmt, "--quiet")
            manifest = read_manifest(out)
            paths = [os.path.relpath(os.path.join(d, n), out) for d, dirs, files in os.walk(out) for n in dirs + files]
            escaped = [p for p in paths if re.search(r"%(23|2f|5c)", p, re.I)]
            check(not escaped, f"{variant} {fmt}: escapes in {escaped}")
            accounts = [a for u in manifest["users"] for a in u["accounts"] if "same_as" not in a]
            if fmt == "mbox":
                for a in accounts:
                    parts = [os.path.basename(a["path"])]
                    parts += [p.removesuffix(".sbd") for f in a["folders"] for p in f["path"][len(a["path"]) + 1:].split("/")]
                    bad = [p for p in parts if not thunderbird_opens(p)]
                    check(not bad, f"{variant}: names Thunderbird does not open: {bad}")
                # Every message counts as one, an empty one too, and is read.
                for name in {m["file"] for m in manifest["messages"] if "file" in m}:
                    entries = [m for m in manifest["messages"] if m.get("file") == name]
                    box = mailbox.mbox(os.path.join(out, name), create=False)
                    check(len(box) == len(entries), f"{variant} {name}: {len(box)} messages, {len(entries)} listed")
                    for msg, entry in zip(box, entries):
                        check(msg["X-Mozilla-Status"] == "0001", f"{entry['index']}: read")
                        check((msg["X-Tqnralm-Empty"] == "1") == entry.get("empty", False), f"{entry['index']}: empty")
                        # Thunderbird counts a message only where a field of
                        # its own, not just X-Mozilla-Status, follows the From line.
                        check(set(msg.keys()) - {"X-Mozilla-Status"} and not any(
                            isinstance(d, email.errors.MissingHeaderBodySeparatorDefect) for d in msg.defects),
                            f"{entry['index']}: no header of its own")
                if variant == "inbox":
                    check(sum(m.get("empty", False) for m in manifest["messages"]) == 1, "the empty message")
            if fmt == "maildir":
                folders = set()
                for a in accounts:
                    seen = dovecot(os.path.join(out, a["path"], "Maildir"))
                    written = [m["file"] for m in manifest["messages"] if m["status"] == "written"]
                    want = {maildir_name(f["path"]): sum(w.startswith(f["path"] + "/cur/") for w in written)
                            for f in a["folders"]}
                    want.setdefault("INBOX", 0)
                    check(seen is None or seen == want, f"{variant} {a['path']}: Dovecot lists {seen}, not {want}")
                    folders |= {a["path"] + ":" + name for name in want}
                inboxes = [a.get("inbox") for a in accounts]
                if variant == "inbox":
                    check(inboxes == ["0/0/1", "0/1/1", None], f"inboxes {inboxes}")
                    check("DEFAULT_USER1/甲:INBOX.下" in folders, "the inbox's subfolder hangs below INBOX")
            else:
                check(all("inbox" not in a for a in accounts), f"{variant} {fmt}: an inbox apart")


with tempfile.TemporaryDirectory(prefix="tqnralm-export-") as work:
    if MODE == "exits":
        exits(work)
    elif MODE == "siblings":
        siblings(work)
    elif MODE == "names":
        names(work)
    else:
        export_and_read(MODE, work)
sys.exit(1 if failures else 0)
