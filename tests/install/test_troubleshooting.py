"""What docs/troubleshooting.md says of a healthy first start, compared with one."""

import os
import re
import subprocess

import pytest
from installing import NAMESPACES, REPOSITORY

HANG_SECONDS = 600    # only ends a test that hangs
LINE = re.compile(r"^[\d.]+ ERROR   \S+ \S+ \S+:\d+ (.*?)(?: \(No such file or directory\))? *$", re.M)
ETHERNET = {"link:activate eth0 failed"}    # the world of this test has Wi-Fi alone


def tables():
    """The quoted lines of the section's two tables: those that always come, and those that may."""
    page = (REPOSITORY / "docs/troubleshooting.md").read_text()
    section = page.split("\n## What a healthy first start logs\n")[1].split("\n## ")[0]
    always, maybe = re.findall(r"\| log line \|.*\n\|-.*\n((?:\|.*\n)+)", section)
    return [{line for row in table.splitlines() for line in re.findall(r"`([^`]+)`", row.split("|")[1])}
            for table in (always, maybe)]


def test_a_first_start_logs_the_errors_of_the_page_and_no_others(prefix):
    if subprocess.run([*NAMESPACES, "true"], capture_output=True).returncode:
        pytest.skip("no namespaces for users here")
    environment = {name: value for name, value in os.environ.items() if not name.startswith("KEST_")}
    played = subprocess.run(
        [prefix / "bin/movo_net_fake_supplicant", "--run", prefix / "bin/movo_net_shell"],
        input="expect IFFOUND mlan0 20\n", capture_output=True, text=True, timeout=HANG_SECONDS, env=environment)
    assert played.returncode == 0, played.stdout + played.stderr

    always, maybe = tables()
    logged = set(LINE.findall(played.stderr))
    assert len(always) >= 6 and len(maybe) >= 6
    assert always <= logged
    assert logged <= always | maybe | {line.replace("eth0", "mlan0") for line in ETHERNET}
