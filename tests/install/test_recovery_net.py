"""The daemon itself, in a world of its own: who starts it may leave it with closed descriptors and a log that ends."""

import os
import pathlib
import re
import signal
import subprocess
import time

import pytest
from installing import NAMESPACES

TOOL = """#!/bin/sh
grep SigIgn: /proc/self/status > '{folder}/{name}.ignores'
until [ -e '{folder}/go' ]; do sleep 0.01; done
exec /system/bin/{name}
"""


@pytest.fixture
def daemon(prefix, tmp_path):
    """Starts the daemon by a line of the shell, in which $daemon stands for it; returns the process around it."""
    if subprocess.run([*NAMESPACES, "true"], capture_output=True).returncode:
        pytest.skip("no namespaces for users here")
    for name in ("lsusb", "ps"):
        (tmp_path / name).write_text(TOOL.format(folder=tmp_path, name=name))
        (tmp_path / name).chmod(0o755)
    worlds = []

    def start(line, **options):
        script = f"echo $$ > '{tmp_path}/pid'; PATH='{tmp_path}':$PATH; daemon='{prefix}/bin/recovery_net'; {line}"
        worlds.append(subprocess.Popen([prefix / "bin/movo_net_fake_supplicant", "--run", "sh", "-c", script],
                                       stdin=subprocess.DEVNULL, **options))
        return worlds[-1]

    yield start
    for world in worlds:
        if world.poll() is None:
            os.kill(pid_of(tmp_path), signal.SIGKILL)
            world.wait(20)


def await_command(world, folder, name):
    """Waits until the daemon has run a command; returns the signals that the command ignored."""
    until = time.monotonic() + 20
    told = folder / f"{name}.ignores"
    while not (told.exists() and told.read_text().endswith("\n")):
        assert world.poll() is None, f"the daemon ended with {world.returncode}"
        assert time.monotonic() < until, f"{name} was not run"
        time.sleep(0.01)
    return int(told.read_text().split()[1], 16)


def pid_of(folder):
    return int((folder / "pid").read_text())


def signals(pid, kind):
    return int(re.search(rf"^{kind}:\s*(\w+)", pathlib.Path(f"/proc/{pid}/status").read_text(), re.M)[1], 16)


def test_it_outlives_the_reader_of_its_log(daemon, tmp_path):
    world = daemon("exec env --default-signal=PIPE KEST_DEBUG=5 $daemon", stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    await_command(world, tmp_path, "lsusb")
    world.stderr.close()
    (tmp_path / "go").touch()
    await_command(world, tmp_path, "ps")    # which is logged before it runs
    assert pathlib.Path(f"/proc/{pid_of(tmp_path)}/comm").read_text() == "recovery_net\n"


def test_no_command_inherits_an_ignored_pipe_signal(daemon, tmp_path):
    world = daemon("trap '' PIPE; exec $daemon", stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    ignored = await_command(world, tmp_path, "lsusb")
    bit = 1 << (signal.SIGPIPE - 1)
    assert ignored & bit == 0
    assert signals(pid_of(tmp_path), "SigIgn") & bit == 0
    assert signals(pid_of(tmp_path), "SigCgt") & bit == bit


def test_closed_descriptors_are_the_null_device(daemon, tmp_path):
    world = daemon("exec $daemon <&- >&- 2>&-")
    await_command(world, tmp_path, "lsusb")
    null = os.stat("/dev/null").st_rdev
    assert [os.stat(f"/proc/{pid_of(tmp_path)}/fd/{fd}").st_rdev for fd in range(3)] == 3 * [null]
