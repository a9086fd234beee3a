"""What the export checks share: their record of failures, and what they
read of a finished export."""
import json
import os

failures = []


def check(condition, what):
    if not condition:
        failures.append(what)
        print("FAIL:", what)


def tree_files(root):
    """Every file below root, relative path -> bytes."""
    out = {}
    for folder, _, files in os.walk(root):
        for name in files:
            path = os.path.join(folder, name)
            with open(path, "rb") as f:
                out[os.path.relpath(path, root)] = f.read()
    return out


def read_manifest(out):
    """The manifest.json that an export wrote into out."""
    with open(os.path.join(out, "manifest.json"), encoding="utf-8") as f:
        return json.load(f)
