"""The world of `movo_net_fake_supplicant --run`: who is in it, how it ends, and what the application sees."""

import os
import re
import shutil
import signal
import subprocess
import tempfile

import pytest
from installing import HANG_SECONDS, callbacks

FOUND = "expect IFFOUND mlan0 20\nwifi scan\nexpect WIFISCANDONE mlan0 10\n"
NAME = "movo_net_fake_supplicant"


# --- The whole tree of processes is in the world ---

def test_a_child_of_a_shell_is_in_the_world(inside, shell):
    status, output, errors = inside("sh", "-c", f"{shell(FOUND)}; echo then $?")
    assert (status, callbacks(output)) == (0, ["IFFOUND", "WIFISCANDONE"]), errors
    assert output.endswith("then 0\n")


def test_a_program_of_the_debugger_is_in_the_world(inside, shell):
    if not shutil.which("gdb"):
        pytest.skip("no gdb here")
    program, _, script = shell(FOUND).partition(" < ")
    status, output, errors = inside("gdb", "-batch", "-nx", "-ex", f"run < {script}", program,
                                    env={**os.environ, "DEBUGINFOD_URLS": ""})
    assert (status, callbacks(output)) == (0, ["IFFOUND", "WIFISCANDONE"]), output + errors
    assert "exited normally" in output


def test_a_program_of_make_is_in_the_world(inside, shell, tmp_path):
    (tmp_path / "Makefile").write_text(f"check: found\n\nfound:\n\t@{shell(FOUND)}\n")
    status, output, errors = inside("make", "-C", tmp_path, "check")
    assert (status, callbacks(output)) == (0, ["IFFOUND", "WIFISCANDONE"]), output + errors


TESTS_OF_AN_APPLICATION = """
import subprocess
import pytest

@pytest.mark.parametrize("time", range(2))
def test_a_network_is_found(time, tmp_path):
    played = subprocess.run(["sh", "-c", {line!r}], capture_output=True, text=True)
    assert played.returncode == 0 and "WIFISCANDONE mlan0" in played.stdout
"""


def test_programs_of_pytest_are_in_the_world(inside, shell, tmp_path):
    tests = tmp_path / "test_application.py"
    tests.write_text(TESTS_OF_AN_APPLICATION.format(line=shell(FOUND)))
    status, output, _ = inside("/usr/bin/python3", "-m", "pytest", "-q", "-p", "no:cacheprovider", tests)
    assert status == 0 and "2 passed" in output, output


# --- How it ends ---

@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP], ids=lambda number: number.name)
@pytest.mark.parametrize("trap", ["", "trap '' TERM; "], ids=["polite", "stubborn"])
def test_all_ends_when_somebody_wants_it(world, prefix, shell, tmp_path, trap, number):
    script = FOUND + "wifi update\nwifi join Cafe\nexpect DHCP_SUCCESS mlan0 10\necho on\nexpect IFREMOVED mlan0 600\n"
    other = tmp_path / "other"
    other.write_text(f"{trap}while :; do sleep 1; done\n")
    process = world("sh", "-c", f"{trap}setsid sh {other} & {shell(script)}; exit 0", stderr=subprocess.DEVNULL)
    while (line := process.stdout.readline()) != "on\n":
        assert line, "it ended"
    process.send_signal(number)
    assert process.wait(HANG_SECONDS) == 128 + number
    for left in (str(other), f"{prefix}/bin/{NAME} --background"):
        assert subprocess.run(["pgrep", "-f", left], capture_output=True).stdout == b""


def test_a_crash_is_reported(inside):
    assert inside("sh", "-c", "kill -SEGV $$") == (139, "", f"{NAME}: sh was killed by SIGSEGV\n")


def test_the_status_is_the_programs(inside):
    assert inside("sh", "-c", "exit 7") == (7, "", "")


def test_a_program_that_is_not_there_is_named(inside):
    assert inside("frobnicate", "now") == (127, "", f"{NAME}: cannot run frobnicate: No such file or directory\n")


def test_a_program_that_may_not_run_is_named(inside, tmp_path):
    (tmp_path / "text").write_text("text")
    assert inside(tmp_path / "text") == (126, "", f"{NAME}: cannot run {tmp_path}/text: Permission denied\n")


def test_a_program_that_is_not_in_the_world_is_named(inside):
    with tempfile.TemporaryDirectory() as folder:
        link = f"{folder}/program"
        os.symlink("/tmp/nothing", link)
        assert inside(link)[:2] == (127, "")
    with tempfile.NamedTemporaryFile(dir="/tmp", prefix="movo_net_program") as program:
        os.chmod(program.name, 0o755)
        assert inside(program.name) == (
            127, "", f"{NAME}: cannot run {program.name}: No such file or directory; of / and /tmp only folders are in "
                     "this world\n")


def test_no_folder_is_left_behind(inside, tmp_path):
    left = tmp_path / "left"
    left.mkdir()
    assert inside("ls", "/tmp", env={**os.environ, "TMPDIR": str(left)})[0] == 0
    assert list(left.iterdir()) == []


# --- What the application sees ---

EVERYTHING = FOUND + """
    wifi update
    wifi join Home "correct horse"
    expect DHCP_SUCCESS mlan0 10
    wifi join Home "correct horse"
    expect DHCP_SUCCESS mlan0 10
    wifi leave
    disable mlan0
    enable mlan0
    wifi scan
    expect WIFISCANDONE mlan0 10
"""


@pytest.mark.parametrize("path", [os.environ["PATH"], "/usr/bin:/bin"], ids=["own", "of-a-user"])
def test_the_streams_are_the_applications_alone(inside, shell, path):
    status, output, errors = inside("sh", "-c", shell(EVERYTHING), env={**os.environ, "KEST_DEBUG": "0", "PATH": path})
    assert (status, errors) == (0, ""), output
    assert [line for line in output.splitlines() if not re.match("callback|0 success", line)] == []


def test_what_goes_on_holds_no_stream_of_the_application(inside, shell):
    # The supplicant and the DHCP client outlive the application, and its reader waits for the end of its output.
    script = FOUND + """
        disable mlan0
        enable mlan0
        wifi scan
        expect WIFISCANDONE mlan0 10
        wifi update
        wifi join Cafe
        expect DHCP_SUCCESS mlan0 10
    """
    status, output, errors = inside("sh", "-c", f"lines=$({shell(script)} 2>&1 | grep -c callback); echo $lines; "
                                                "kill -0 $(cat /tmp/dhcp/dhcpcd-mlan0.pid /tmp/wpa_supplicant_mlan0.pid)")
    assert (status, output) == (0, "7\n"), output + errors


def test_a_join_again_needs_no_force(inside, shell):
    script, _, _ = EVERYTHING.partition("wifi leave")
    status, output, log = inside("sh", "-c", shell(script), env={**os.environ, "KEST_DEBUG": "3"})
    assert (status, callbacks(output).count("DHCP_SUCCESS")) == (0, 2), log
    assert "ShutdownDhcpcd, checking file" in log
    assert "ShutdownDhcpcd, kill dhcp process, time out" not in log    # after 2 s in which the client did not go


def test_other_uses_of_the_same_commands_are_the_computers(inside, tmp_path):
    (tmp_path / "words").write_text("wpa_supplicant\nother\n")
    status, output, _ = inside("sh", "-c", f"cd {tmp_path}; grep -c other words; ps -o pid= -p $$ | tr -d ' '; echo $$; "
                                           "cp words copy && cat copy")
    count, listed, own, *copied = output.splitlines()
    assert (status, count, listed, copied) == (0, "1", own, ["wpa_supplicant", "other"])


# --- One host at a time ---

def test_the_shell_and_the_daemon_are_not_hosts_at_a_time(inside, prefix, shell):
    status, output, errors = inside("sh", "-c", f"""
        {prefix}/bin/recovery_net & until [ -s /run/movo_net.lock ]; do sleep 0.01; done
        echo echo never | {prefix}/bin/movo_net_shell; echo $?
        echo start | {prefix}/bin/movo_net_shell --no-start
        kill -9 $!; wait $!
        {shell(FOUND)}""", env={**os.environ, "KEST_DEBUG": "0"})
    assert status == 0 and output.startswith("1\n1 failure\n"), output + errors
    assert callbacks(output) == ["IFFOUND", "WIFISCANDONE"]
    other = r"movo_net_shell: the network glue runs already: recovery_net, pid \d+\n"
    assert re.match(f"{other}{other}", errors), errors
