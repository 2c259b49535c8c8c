"""What the tests of the installed tree have in common."""

import os
import pathlib
import re
import subprocess

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
NAMESPACES = ["unshare", "--user", "--map-root-user", "--mount", "--net"]
BUILD = pathlib.Path(os.environ.get("MOVO_BUILD", REPOSITORY / "build/release"))
HANG_SECONDS = 600    # only ends a test that hangs
OBJDUMP = os.environ.get("MOVO_OBJDUMP", "objdump")    # the one that knows the processor of the build


def run(*command, **options):
    """The output of a command that succeeds."""
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                            **options)
    assert result.returncode == 0, f"{command}\n{result.stdout}{result.stderr}"
    return result.stdout


def callbacks(output):
    """The reasons of the callbacks for mlan0 that movo_net_shell shows."""
    return re.findall(r"^callback [0-9.]+ (\w+) mlan0$", output, re.M)
