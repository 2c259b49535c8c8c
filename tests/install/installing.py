"""What the tests of the installed tree have in common."""

import os
import pathlib
import subprocess

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
NAMESPACES = ["unshare", "--user", "--map-root-user", "--mount", "--net"]
BUILD = pathlib.Path(os.environ.get("MOVO_BUILD", REPOSITORY / "build/release"))
OBJDUMP = os.environ.get("MOVO_OBJDUMP", "objdump")    # the one that knows the processor of the build


def run(*command, **options):
    """The output of a command that succeeds."""
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                            **options)
    assert result.returncode == 0, f"{command}\n{result.stdout}{result.stderr}"
    return result.stdout
