"""What the checks share: the files of the tree, what they include, and how a check ends."""

import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]')
# Where an include is looked for, after the folder of the file that includes.
INCLUDE_FOLDERS = ["movoglue/net", "movoglue/net/include", "platform/kest/include", "tests/sim", "tests", ""]


def git(*arguments):
    # The tree may belong to someone else than who checks it, as in a container.
    command = ["git", "-c", "safe.directory=*", "-C", str(ROOT), *arguments]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def files():
    """Every file that is or could be committed, relative to the root."""
    listed = git("ls-files", "-z", "--cached", "--others", "--exclude-standard").split("\0")
    return sorted({Path(name) for name in listed if name and (ROOT / name).is_file()})


def is_cpp(path):
    return path.suffix in {".c", ".cpp", ".h"}


def lines(path):
    return (ROOT / path).read_text(encoding="utf-8", errors="replace").splitlines()


def includes(path):
    """Yields line number, whether quoted, the text, and the file of the tree that is meant (None: not of the tree)."""
    for number, line in enumerate(lines(path), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match[1] == '"', match[2], resolve(path, match[2])


def resolve(path, name):
    for folder in [path.parent, *map(Path, INCLUDE_FOLDERS)]:
        candidate = Path(os.path.normpath(folder / name))
        if (ROOT / candidate).is_file():
            return candidate
    return None


def end(what, findings):
    """Prints one line when all is well, else the list; leaves with the matching status."""
    if not findings:
        print(f"{what}: ok")
        sys.exit(0)
    print("\n".join(findings))
    print(f"{what}: {len(findings)} to mend")
    sys.exit(1)
