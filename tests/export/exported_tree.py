"""What the export checks share: their record of failures, and what they
read of a finished export."""
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
