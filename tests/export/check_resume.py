#!/usr/bin/python3
"""An export that is stopped and run again ends as one that never stopped.

    check_resume.py TQNRALM SAMPLESTORE FORMAT

Killed at the points TQNRALM_KILL_AT names, no final file holds less than
whole messages and the rerun's tree equals an uninterrupted export's; then
SIGINT, refused reruns, two exports at once, and a disk that fills.
"""
import json
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time

from exported_tree import check, failures, tree_files

TOOL, SAMPLESTORE, FMT = sys.argv[1:4]

# Each point with its countdowns. The sample store has 7 messages in 8
# folders; a commit comes after each folder ends (and in mbox after its file
# is made) and after the last message.
LAST_COMMIT = 17 if FMT == "mbox" else 9
KILLS = [
    ("message", 1), ("message", 4), ("message", 7),
    ("mid-message", 1), ("mid-message", 5),
    ("journal", 1), ("journal", 2), ("journal", 5), ("journal", LAST_COMMIT),
    ("file", 1), ("file", 4),
    ("rename", 1), ("rename", 2),
]
LEFTOVERS = re.compile(r"(\.part|\.partial|\.journal|\.new)$|/tmp/")


def run(prefix, out, *args, kill=None, limit=None):
    env = dict(os.environ, WINEPREFIX=prefix)
    env.pop("TQNRALM_KILL_AT", None)
    if kill:
        env["TQNRALM_KILL_AT"] = kill

    def small_disk():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a write past the limit fails with EFBIG
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
    return subprocess.run([TOOL, "export", out, "--format", FMT, "--quiet", *args], env=env, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, preexec_fn=small_disk if limit else None, timeout=300)


def tree_times(root):
    """The times of the mail files that take their messages' time (not an
    empty folder's mbox file, made now)."""
    times = {os.path.relpath(os.path.join(folder, name), root): os.stat(os.path.join(folder, name)).st_mtime_ns
             for folder, _, files in os.walk(root) for name in files
             if "addresses" not in folder and not name.startswith("manifest")}
    return {name: t for name, t in times.items() if t < (time.time() - 86400) * 1e9}


def whole_messages(files, ref, what):
    """Every file under a final name is the uninterrupted export's file (an
    mbox: a start of it that a mail reader splits into whole messages; only
    a kill inside a write may leave a cut one after what the journal
    counts, which the rerun cuts off)."""
    journal = json.loads(files.get("manifest.json.journal", b"{}"))
    for name, data in files.items():
        if LEFTOVERS.search("/" + name):
            continue
        if FMT == "mbox" and name in ref and "addresses/" not in name:
            cut = [m.start() for m in re.finditer(rb"^From ", ref[name], re.M)] + [len(ref[name])]
            torn = what.startswith("mid-message") and journal.get("folder") == name
            check(ref[name].startswith(data), f"{what}: {name} is not the start of the export's")
            check(len(data) in cut or torn and journal["folder_length"] in cut,
                  f"{what}: {name} ends inside a message ({len(data)} bytes)")
        else:
            check(ref.get(name) == data, f"{what}: {name} is not a whole file of the export")


def kill_and_resume(prefix, work, ref, ref_times):
    for point, n in KILLS:
        what = f"{point}:{n}"
        out = os.path.join(work, "kill-" + what.replace(":", "-"))
        first = run(prefix, out, kill=what)
        check(first.returncode == -signal.SIGKILL, f"{what}: killed, exit {first.returncode} {first.stderr!r}")
        whole_messages(tree_files(out), ref, what)
        if point == "rename" and n == 1:
            # Killed inside the rename (POSIX links the new name, then
            # unlinks the old): both names hold the manifest.
            os.link(os.path.join(out, "manifest.json.partial"), os.path.join(out, "manifest.json"))
        again = run(prefix, out)
        check(again.returncode == 0, f"{what}: rerun exit {again.returncode} {again.stderr!r}")
        got = tree_files(out)
        check(got == ref, f"{what}: differs from the uninterrupted export: "
                          f"{sorted(k for k in set(got) | set(ref) if got.get(k) != ref.get(k))[:5]}")
        got_times = tree_times(out)
        check(got_times == ref_times, f"{what}: the files' times differ: "
                                      f"{[(k, ref_times.get(k), got_times.get(k)) for k in ref_times if got_times.get(k) != ref_times[k]][:3]}")


def stop_and_refusals(prefix, work, ref):
    out = os.path.join(work, "stopped")
    first = run(prefix, out, kill="message:3:stop")
    err = first.stderr.decode()
    check(first.returncode == 130, f"SIGINT: exit {first.returncode}")
    check(re.search(r"export stopped: [34] written, 0 failed, \d+ bytes.*goes on", err), f"SIGINT summary {err!r}")
    check("manifest.json" not in os.listdir(out), "SIGINT: no manifest")
    whole_messages(tree_files(out), ref, "SIGINT")
    other = "eml" if FMT != "eml" else "mbox"
    env = dict(os.environ, WINEPREFIX=prefix)
    refused = subprocess.run([TOOL, "export", out, "--format", other, "--quiet"], env=env, stderr=subprocess.PIPE)
    check(refused.returncode == 4 and b"unfinished export" in refused.stderr, f"other options: {refused.stderr!r}")
    check(run(prefix, out, "--no-addresses").returncode == 4, "other options: --no-addresses refused")
    journal = os.path.join(out, "manifest.json.journal")
    with open(journal, "rb") as f:
        kept = f.read()
    for what, damage in (("cut", kept[:len(kept) // 2]),
                         ("a fraction", re.sub(rb'"steps":\d+', b'"steps":1e30', kept)),
                         ("a negative length", re.sub(rb'"manifest":\d+', b'"manifest":-1', kept))):
        with open(journal, "wb") as f:
            f.write(damage)
        damaged = run(prefix, out)
        check(damaged.returncode == 4 and b"is damaged" in damaged.stderr, f"a journal {what}: {damaged.stderr!r}")
    with open(journal, "wb") as f:
        f.write(kept)
    check(run(prefix, out).returncode == 0 and tree_files(out) == ref, "SIGINT, then the rerun")
    check(run(prefix, out).returncode == 4, "a finished export is not written again")


def two_exports(prefix, work, ref):
    """While one export writes OUTDIR (paused at a kill point) another is
    refused before it writes; the first then ends as if alone, and its lock
    leaves nothing in the tree. (A killed export's lock goes with it: every
    rerun in kill_and_resume takes OUTDIR again.)"""
    out = os.path.join(work, "two")
    env = dict(os.environ, WINEPREFIX=prefix, TQNRALM_KILL_AT="message:2:pause")
    first = subprocess.Popen([TOOL, "export", out, "--format", FMT, "--quiet"], env=env, stdin=subprocess.PIPE,
                             stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    check(first.stderr.readline() == b"tqnralm: paused\n", "the first export pauses")
    before = tree_files(out)
    for args in ((), ("--force",)):
        second = run(prefix, out, *args)
        check(second.returncode == 4 and b"being written by another export" in second.stderr,
              f"a second export {args}: exit {second.returncode} {second.stderr!r}")
    check(tree_files(out) == before, "the refused exports wrote nothing")
    _, err = first.communicate(b"\n", timeout=300)
    check(first.returncode == 0 and tree_files(out) == ref, f"the first export, let go on: {err!r}")


def full_disk(work):
    big = os.path.join(work, "big")
    # Maildir and EML make a file per message: fewer of them. The mbox
    # folder is larger than what goes between two commits (8 MB).
    messages, folders = (6000, "1") if FMT == "mbox" else (1500, "2")
    subprocess.run([SAMPLESTORE, "--generate", big, "--messages", str(messages), "--folders", folders], check=True,
                   stdout=subprocess.DEVNULL)
    # Only a folder's first message has a date: the others take its time,
    # also those that a rerun writes after the ones an earlier run wrote.
    for folder, _, files in os.walk(os.path.join(big, "drive_c", "AL-Mail", "Mailbox")):
        for name in sorted(files)[1:]:
            with open(os.path.join(folder, name), "r+b") as f:
                data = f.read()
                f.seek(0)
                f.write(data.replace(b"\r\nDate: ", b"\r\nXate: ", 1))
    ref_out = os.path.join(work, "big-ref")
    check(run(big, ref_out).returncode == 0, "big store: export")
    ref = tree_files(ref_out)
    out = os.path.join(work, "big-full")
    # The disk fills (for mbox in a folder file, else in the manifest), is
    # freed a little, then wholly.
    for limit in ((2 << 20, 4 << 20) if FMT == "mbox" else (100 << 10, 200 << 10)):
        full = run(big, out, limit=limit)
        check(full.returncode == 4 and b"the same command goes on" in full.stderr, f"full disk: {full.stderr!r}")
        whole_messages(tree_files(out), ref, f"full disk at {limit}")
    again = run(big, out)
    check(again.returncode == 0 and tree_files(out) == ref, f"full disk, then space: {again.stderr!r}")
    # Killed after a commit inside the large folder, before the next one.
    out = os.path.join(work, "big-kill")
    check(run(big, out, kill="journal:3").returncode == -signal.SIGKILL, "big store: killed")
    check(run(big, out).returncode == 0 and tree_files(out) == ref, "big store: killed inside a folder, rerun")
    check(tree_times(out) == tree_times(ref_out), "big store: the files' times")


with tempfile.TemporaryDirectory(prefix="tqnralm-resume-") as work:
    prefix = os.path.join(work, "prefix")
    subprocess.run([SAMPLESTORE, prefix, "default"], check=True, stdout=subprocess.DEVNULL)
    ref_out = os.path.join(work, "ref")
    check(run(prefix, ref_out).returncode == 0, "uninterrupted export")
    reference = tree_files(ref_out)
    kill_and_resume(prefix, work, reference, tree_times(ref_out))
    stop_and_refusals(prefix, work, reference)
    two_exports(prefix, work, reference)
    full_disk(work)
sys.exit(1 if failures else 0)
