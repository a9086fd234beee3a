#!/usr/bin/python3
"""The exported address books read back by vobject, python-ldap's ldif and
csv: every address and group `tqnralm tree` shows, in all three forms.

usage: check_addresses.py TQNRALM SAMPLESTORE"""
import csv
import filecmp
import hashlib
import io
import os
import re
import subprocess
import sys
import tempfile

import ldif
import vobject

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "export"))
from exported_tree import check, failures, read_manifest  # noqa: E402

TB_HEADER = ("First Name,Last Name,Display Name,Nickname,Primary Email,Secondary Email,Screen Name,Work Phone,"
             "Home Phone,Fax Number,Pager Number,Mobile Number,Home Address,Home Address 2,Home City,Home State,"
             "Home ZipCode,Home Country,Work Address,Work Address 2,Work City,Work State,Work ZipCode,Work Country,"
             "Job Title,Department,Organization,Web Page 1,Web Page 2,Birth Year,Birth Month,Birth Day,Custom 1,"
             "Custom 2,Custom 3,Custom 4,Notes").split(",")


def expected_books(tree):
    """{(user, book): {"groups": {path: [(heading, address)]}, "top": [...]}} from the tree listing."""
    books, user, stack = {}, None, []
    for line in tree.splitlines():
        depth = (len(line) - len(line.lstrip(" "))) // 2
        m = re.match(r'\s*(\w+) \[[^\]]*\] (?:name="([^"]*)"|heading="([^"]*)" address="([^"]*)")', line)
        if not m:
            continue
        kind = m.group(1)
        if kind == "user":
            user = m.group(2)
        elif kind == "group":
            del stack[depth - 3:]
            stack.append(m.group(2))
            if depth == 3:
                books[(user, m.group(2))] = {"groups": {}, "top": []}
            else:
                books[(user, stack[0])]["groups"]["/".join(stack[1:])] = []
        elif kind == "address":
            book = books[(user, stack[0])]
            path = "/".join(stack[1:depth - 3])
            (book["groups"][path] if path else book["top"]).append((m.group(3), m.group(4)))
    return books


def check_manifest(out, books):
    """Each book listed with its counts, each file with its size and SHA-256."""
    manifest = read_manifest(out)
    listed = manifest["address_books"]
    check(len(listed) == len(books), f"manifest: {len(listed)} books")
    paths = {e["path"]: e for e in listed if "same_as" not in e}
    for entry in listed:
        user = next(u["name"] for u in manifest["users"] if u["index"] == entry["user"])
        book = books.get((user, entry["name"]), {"groups": {}, "top": []})
        if "same_as" in entry:
            first = paths.get(entry["same_as"])
            check(first is not None and entry["path"] == entry["same_as"] and entry["files"] == [],
                  f"manifest: {entry['name']} same as {entry['same_as']}")
            if first is not None:
                first_user = next(u["name"] for u in manifest["users"] if u["index"] == first["user"])
                check(books.get((first_user, first["name"])) == book, f"manifest: {entry['name']} differs from its first")
            continue
        addresses = len(book["top"]) + sum(len(m) for m in book["groups"].values())
        check(entry["groups"] == {"expected": len(book["groups"]), "written": len(book["groups"]), "failed": 0}
              and entry["addresses"]["written"] == addresses, f"manifest: counts of {entry['path']}")
        forms = sorted(f["form"] for f in entry["files"])
        check(forms == sorted(["vcard", "ldif", "csv"] + (["vcard-groups"] if book["groups"] else [])),
              f"manifest: files of {entry['path']}: {forms}")
        for f in entry["files"]:
            data = open(os.path.join(out, f["path"]), "rb").read()
            check(len(data) == f["bytes"] and hashlib.sha256(data).hexdigest() == f["sha256"], f"manifest: {f['path']}")
    totals = manifest["totals"]["address_books"]
    check(totals["books"] == {"expected": len(books), "written": len(books), "failed": 0}, f"totals {totals}")
    names = {u["index"]: u["name"] for u in manifest["users"]}
    return {(names[e["user"]], e["name"]) for e in listed if "same_as" not in e}


def run(tqnralm, prefix, *args):
    env = dict(os.environ, WINEPREFIX=prefix)
    return subprocess.run([tqnralm] + list(args), env=env, capture_output=True, text=True)


def subtree(groups, path):
    return {a for p, members in groups.items() if p == path or p.startswith(path + "/") for a in members}


def check_vcard(text, groups_text, book, name):
    persons = list(vobject.readComponents(text))
    check(all("kind" not in c.contents for c in persons), f"{name}.vcf: a group card among the persons")
    group_cards = list(vobject.readComponents(groups_text)) if groups_text else []
    check(all(c.kind.value == "group" for c in group_cards), f"{name}.groups.vcf: a card that is no group")
    cards = persons + group_cards
    lists = {c.fn.value: c for c in group_cards}
    # FN is a single text value: a ";" in it stands unescaped.
    for line in (text + groups_text).replace("\r\n ", "").split("\r\n"):
        if line.startswith("FN:"):
            check(not re.search(r"(^|[^\\])(\\\\)*\\;", line[3:]), f"{name}.vcf: escaped ';' in {line}")
    by_uid = {c.uid.value: c for c in cards}
    found = {(c.fn.value, c.email.value if "email" in c.contents else "") for c in persons}
    for path, members in list(book["groups"].items()) + [("", book["top"])]:
        for heading, address in members:
            check((heading or address, address) in found, f"{name}.vcf: no card {heading} <{address}>")
        if not path:
            continue
        group = lists.get(path.split("/")[-1]) or lists.get(path)
        check(group is not None and group.kind.value == "group", f"{name}.vcf: no group card {path}")
        if group is None:
            continue
        named = {(by_uid[m.value].fn.value, by_uid[m.value].contents.get("email", [None])[0].value
                  if "email" in by_uid[m.value].contents else "")
                 for m in group.contents.get("member", []) if "kind" not in by_uid[m.value].contents}
        check(named == {(h or a, a) for h, a in members}, f"{name}.vcf: members of {path}: {sorted(named)}")


def check_ldif(text, book, name):
    parser = ldif.LDIFRecordList(io.StringIO(text))
    parser.parse()
    persons = {}
    lists = {}
    dns = [dn.lower() for dn, _ in parser.all_records]
    check(len(dns) == len(set(dns)), f"{name}.ldif: a dn twice: {sorted(d for d in dns if dns.count(d) > 1)}")
    for dn, entry in parser.all_records:
        for member in entry.get("member", []):
            check(member.decode().lower() in dns, f"{name}.ldif: member {member.decode()} of {dn} names no entry")
        classes = {v.decode() for v in entry["objectclass"]}
        if "groupOfNames" in classes:
            lists[entry["cn"][0].decode()] = {v.decode() for v in entry.get("member", [])}
        else:
            check({"top", "person", "organizationalPerson", "inetOrgPerson", "mozillaAbPersonAlpha"} <= classes,
                  f"{name}.ldif: object classes of {dn}")
            persons[dn] = (entry["cn"][0].decode(), entry["mail"][0].decode() if "mail" in entry else "")
    found = set(persons.values())
    for path, members in list(book["groups"].items()) + [("", book["top"])]:
        for heading, address in members:
            check((heading or address, address) in found, f"{name}.ldif: no person {heading} <{address}>")
        if not path:
            continue
        members_dn = lists.get(path.split("/")[-1], lists.get(path))
        check(members_dn is not None, f"{name}.ldif: no list {path}")
        if members_dn is not None:
            # Lists do not nest: a list names the addresses of its subgroups too.
            want = {(h or a, a) for h, a in subtree(book["groups"], path)}
            got = {persons[dn] for dn in members_dn if dn in persons}
            check(got == want and len(got) == len(members_dn), f"{name}.ldif: members of {path}: {sorted(got)}")


def check_csv(data, book, name):
    check(data.startswith(b"\xef\xbb\xbf"), f"{name}.csv: no BOM")
    rows = list(csv.reader(io.StringIO(data.decode("utf-8-sig"), newline="")))
    check(rows[0][:37] == TB_HEADER and rows[0][-1] == "Groups", f"{name}.csv: header {rows[0]}")
    found = set()
    for row in rows[1:]:
        check(len(row) == len(rows[0]), f"{name}.csv: row of {len(row)} cells")
        cell = dict(zip(rows[0], row))
        for path in cell["Groups"].split("; ") if cell["Groups"] else [""]:
            found.add((cell["Display Name"], cell["Primary Email"], path))
    rows_found = {(n, a) for n, a, _ in found}
    for path, members in list(book["groups"].items()) + [("", book["top"])]:
        for heading, address in members:
            # An address outside any group has a row, whose Groups may name
            # the groups that hold it as well.
            check((heading or address, address, path) in found or not path and (heading or address, address)
                  in rows_found, f"{name}.csv: no row {heading} <{address}> in {path}")


def main():
    tqnralm, samplestore = sys.argv[1:3]
    # Every variant of the store: the damaged one has deep and unclosed groups.
    for variant in ("default", "damaged", "win64", "registry-only", "listed-twice"):
        with tempfile.TemporaryDirectory() as work:
            check_store(tqnralm, samplestore, variant, work)
    return 1 if failures else 0


def check_store(tqnralm, samplestore, variant, work):
    prefix = os.path.join(work, "prefix")
    subprocess.run([samplestore, prefix, "default" if variant == "listed-twice" else variant], check=True,
                   capture_output=True)
    if variant == "listed-twice":
        # The default file and friends.txt listed again, in other cases, and
        # a file whose person and group share a name.
        mailbox = os.path.join(prefix, "drive_c", "AL-Mail", "Mailbox")
        with open(os.path.join(mailbox, "Mailbox.ini"), "w", newline="") as f:
            f.write("[Property]\r\nAddressFile=*x;C:\\AL-Mail\\Mailbox\\friends.txt;c:\\al-mail\\MAILBOX\\address;"
                    "C:\\AL-Mail\\Mailbox\\FRIENDS.TXT;C:\\AL-Mail\\Mailbox\\team.txt\r\n")
        with open(os.path.join(mailbox, "team.txt"), "w", newline="") as f:
            f.write("team\r\nGroup team\r\n  x: x@example.jp\r\n  team\r\nEnd Group\r\n")
    tree = run(tqnralm, prefix, "tree")
    books = expected_books(tree.stdout)
    check(len(books) >= 1 or variant != "default", f"the tree shows {len(books)} books")
    outs = [os.path.join(work, "out1"), os.path.join(work, "out2")]
    for out in outs:
        r = run(tqnralm, prefix, "export", out, "--no-mail")
        check(r.returncode in (0, 1), f"export {out}: exit {r.returncode}: {r.stderr}")
    written = check_manifest(outs[0], books)
    if variant == "listed-twice":
        check(len(written) == 3 and len(books) == 5, f"listed twice: {len(written)} of {len(books)} books written")
    for (user, book), content in sorted(books.items()):
        if (user, book) not in written:
            continue
        folder = os.path.join(outs[0], user, "addresses")
        for ext in ("vcf", "groups.vcf", "ldif", "csv"):
            path = os.path.join(folder, f"{book}.{ext}")
            if ext == "groups.vcf" and not content["groups"]:
                check(not os.path.exists(path), f"{path}: a group file for a book without groups")
                continue
            if not os.path.isfile(path):
                check(False, f"missing {path}")
                continue
            other = os.path.join(outs[1], user, "addresses", f"{book}.{ext}")
            check(filecmp.cmp(path, other, shallow=False), f"{path} differs between two exports")
            data = open(path, "rb").read()
            if ext.endswith("vcf"):
                check(b"\n" not in data.replace(b"\r\n", b""), f"{path}: a line end that is not CR LF")
            if ext == "vcf":
                groups = os.path.join(folder, f"{book}.groups.vcf")
                groups_text = open(groups, encoding="utf-8").read() if os.path.isfile(groups) else ""
                check_vcard(data.decode("utf-8"), groups_text, content, f"{user}/{book}")
            elif ext == "ldif":
                check_ldif(data.decode("ascii"), content, f"{user}/{book}")
            elif ext == "csv":
                check_csv(data, content, f"{user}/{book}")
    print(f"{variant}: {len(books)} books checked, {len(failures)} failures so far")


if __name__ == "__main__":
    sys.exit(main())
