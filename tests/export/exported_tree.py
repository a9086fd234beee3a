"""What the export checks read of a finished export, shared by its scripts."""
import os


def tree_files(root):
    """Every file below root, relative path -> bytes."""
    out = {}
    for folder, _, files in os.walk(root):
        for name in files:
            path = os.path.join(folder, name)
            with open(path, "rb") as f:
                out[os.path.relpath(path, root)] = f.read()
    return out
