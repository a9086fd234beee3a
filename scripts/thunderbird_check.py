#!/usr/bin/python3
"""The file steps of thunderbird-check.sh.

  thunderbird_check.py place EXPORT LOCALFOLDERS
      copies the mbox export into a profile's Local Folders: each user an
      empty mbox with its accounts in <user>.sbd/, each account an empty mbox
      with its folders in <account>.sbd/ (the README's way of copying an
      account in). Prints the number of rows the folder pane will show.
  thunderbird_check.py compare EXPORT LOCALFOLDERS FOLDERCACHE
      compares each exported folder's count of written messages (from the
      manifest) with totalMsgs in Thunderbird's folderCache.json, under the
      path of the folder's .msf file, and checks that none is unread. Exit 1
      on any difference.
  thunderbird_check.py imports EXPORT
      prints the address book files a person imports ("form<TAB>path"
      lines): each book's .vcf, .ldif and .csv.
  thunderbird_check.py addresses EXPORT RESULT
      compares what Thunderbird's import made of them (RESULT, written by
      thunderbird-import.cfg) with the .vcf and .groups.vcf read by vobject:
      the same names and addresses from every form, no group as a contact,
      and from the LDIF one mailing list per group with members among the
      book's addresses. Exit 1 on any difference."""
import collections
import json
import os
import shutil
import sys

import vobject


def accounts(export):
    """(user path, account path, account) of each account written (not the same as another)."""
    with open(os.path.join(export, "manifest.json"), encoding="utf-8") as f:
        manifest = json.load(f)
    out = [(user["path"], account["path"], account)
           for user in manifest["users"] for account in user["accounts"] if "same_as" not in account]
    return manifest, out


def account_dir(local, user_path, account_path):
    return os.path.join(local, os.path.basename(user_path) + ".sbd", os.path.basename(account_path) + ".sbd")


def place(export, local):
    _, written = accounts(export)
    os.makedirs(local, exist_ok=True)
    users = set()
    for user_path, account_path, _ in written:
        user = os.path.basename(user_path)
        users.add(user)
        open(os.path.join(local, user), "ab").close()
        os.makedirs(os.path.join(local, user + ".sbd"), exist_ok=True)
        open(os.path.join(local, user + ".sbd", os.path.basename(account_path)), "ab").close()
        source = os.path.join(export, account_path)
        target = account_dir(local, user_path, account_path)
        if os.path.isdir(source):
            shutil.copytree(source, target)
        else:
            os.makedirs(target)
    folders = sum(len(a["folders"]) for _, _, a in written)
    # Local Folders, Trash and Outbox, then the users, accounts and folders.
    print(3 + len(users) + len(written) + folders)


def compare(export, local, cache_path):
    manifest, written = accounts(export)
    with open(cache_path, encoding="utf-8") as f:
        cache = json.load(f)
    counts = collections.Counter(m["file"] for m in manifest["messages"] if m.get("status") == "written")
    failures = 0
    for user_path, account_path, account in written:
        for folder in account["folders"]:
            rest = os.path.relpath(folder["path"], account_path)
            msf = os.path.join(account_dir(local, user_path, account_path), rest) + ".msf"
            want = counts[folder["path"]]
            entry = cache.get(os.path.abspath(msf))
            if entry is None:
                verdict = "FAIL: Thunderbird keeps no summary under this name"
            else:
                total, unread = entry.get("totalMsgs"), entry.get("totalUnreadMsgs")
                verdict = "ok" if total == want and unread == 0 else f"FAIL: {total} messages, {unread} unread"
            failures += verdict != "ok"
            print(f"  {want:4d}  {folder['path']}: {verdict}")
    print(f"thunderbird-check: {failures} folder(s) differ" if failures else "thunderbird-check: every folder agrees")
    return 1 if failures else 0


def books(export):
    """The address books written, each with the paths of its files by form."""
    with open(os.path.join(export, "manifest.json"), encoding="utf-8") as f:
        manifest = json.load(f)
    return [{f["form"]: os.path.join(export, f["path"]) for f in book["files"]}
            for book in manifest["address_books"] if "same_as" not in book]


def imports(export):
    for files in books(export):
        for form, thunderbird in (("vcard", "vcard"), ("ldif", "ldif"), ("csv", "csv")):
            if form in files:
                print(f"{thunderbird}\t{files[form]}")


def read_cards(path):
    if not path:
        return []
    with open(path, encoding="utf-8") as f:
        return list(vobject.readComponents(f.read()))


def check_book(files, imported):
    persons = sorted((c.fn.value, c.email.value if "email" in c.contents else "")
                     for c in read_cards(files.get("vcard")) if "kind" not in c.contents)
    groups = sorted(c.fn.value for c in read_cards(files.get("vcard-groups")))
    emails = {e for _, e in persons}
    problems = []
    for form in ("vcard", "ldif", "csv"):
        book = imported.get(files.get(form))
        if book is None or "error" in book:
            problems.append(f"{form}: {book and book['error'] or 'not imported'}")
            continue
        if sorted(tuple(c) for c in book["cards"]) != persons:
            problems.append(f"{form}: contacts {sorted(book['cards'])}, not {persons}")
        lists = sorted(name for name, _ in book["lists"])
        if lists != (groups if form == "ldif" else []):
            problems.append(f"{form}: mailing lists {lists}")
        if any(m not in emails for _, members in book["lists"] for m in members):
            problems.append(f"{form}: a list member outside the book")
    return problems


def addresses(export, result):
    with open(result, encoding="utf-8") as f:
        imported = {b["path"]: b for b in json.load(f).get("books", [])}
    failures = 0
    for files in books(export):
        problems = check_book(files, imported)
        failures += bool(problems)
        name = os.path.relpath(files.get("vcard", files.get("ldif", "?")), export)
        print(f"  {name}: " + ("; ".join(problems) if problems else "ok (vCard, LDIF and CSV imports agree)"))
        for form, book in sorted((k, imported.get(v)) for k, v in files.items() if k == "csv"):
            if book and book.get("unmapped"):
                print(f"    the CSV import maps no field to: {', '.join(book['unmapped'])}")
    print(f"thunderbird-check: {failures} address book(s) differ" if failures
          else "thunderbird-check: every address book imports as written")
    return 1 if failures else 0


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "place":
        place(sys.argv[2], sys.argv[3])
        return 0
    if len(sys.argv) == 5 and sys.argv[1] == "compare":
        return compare(*sys.argv[2:])
    if len(sys.argv) == 3 and sys.argv[1] == "imports":
        imports(sys.argv[2])
        return 0
    if len(sys.argv) == 4 and sys.argv[1] == "addresses":
        return addresses(*sys.argv[2:])
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main())
