"""The daemon itself, in a world of its own: who starts it may leave it with closed descriptors and a log that ends."""

import os
import pathlib
import re
import signal
import subprocess
import time

import pytest
from installing import HANG_SECONDS, NAMESPACES, run

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
            world.terminate()
            world.wait(HANG_SECONDS)


def await_command(world, folder, name):
    """Waits until the daemon has run a command; returns the signals that the command ignored."""
    until = time.monotonic() + HANG_SECONDS
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


def test_it_prints_its_help_and_its_version(prefix):
    program = prefix / "bin/recovery_net"
    assert run(program, "--help").startswith("usage: recovery_net ")
    assert re.fullmatch(r"recovery_net \d+\.\d+\.\d+\n", run(program, "--version"))


def test_an_unknown_option_ends_it_before_it_touches_anything(prefix, inside):
    status, output, errors = inside("sh", "-c", f"{prefix}/bin/recovery_net --frobnicate; echo $?; find /run /data/tv -maxdepth 1 -type f; ls /data/tv/save")
    assert (status, output) == (0, "2\n")
    assert errors.startswith("recovery_net: unknown option --frobnicate\nusage: recovery_net ")


def test_a_second_host_names_the_first_and_leaves(daemon, tmp_path):
    (tmp_path / "go").touch()
    world = daemon("$daemon & until read pid name < /run/movo_net.lock; do sleep 0.01; done 2> /dev/null; echo $pid $!; "
                   "$daemon; echo $?; kill -9 $!; wait $!; rm /run/movo_net.lock; mkdir /run/movo_net.lock; "
                   "exec timeout 1 $daemon", stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                   env={**os.environ, "KEST_DEBUG": "0"})
    output, errors = world.communicate(timeout=HANG_SECONDS)
    pids, status = output.splitlines()
    pid, started = pids.split()
    assert (pid, status) == (started, "1")
    first, warning = [line for line in errors.splitlines() if line.startswith("recovery_net: ")]
    assert first == f"recovery_net: the network glue runs already: recovery_net, pid {pid}"
    assert warning == ("recovery_net: another host of the network glue would not be noticed: /run/movo_net.lock: "
                       "Is a directory")
    assert world.returncode == 124    # it went on
