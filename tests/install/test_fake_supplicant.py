"""The fake supplicant, as an application developer has it: over the real client library, without a radio."""

import pathlib
import re
import socket
import subprocess
import time

import pytest
from installing import HANG_SECONDS, callbacks


@pytest.fixture
def fake(inside, shell):
    """Plays a script of the shell in a world of its own; returns status and output."""
    def play(script, *options):
        return inside("sh", "-c", f"exec {shell(script)}", options=options)[:2]
    return play


def test_a_network_is_found_and_joined(fake):
    status, output = fake("""
        expect IFFOUND mlan0 20
        wifi scan
        expect WIFISCANDONE mlan0 10
        wifi update
        wifi list
        wifi join Home "wrong horse"
        expect WIFIBADKEY mlan0 10
        wifi join Home "correct horse"
        expect DHCP_SUCCESS mlan0 10
        ip mlan0
    """)
    assert status == 0, output
    assert re.findall(r"^(\w+) +02:", output, re.M) == ["Home", "Cafe"]
    assert callbacks(output) == ["IFFOUND", "WIFISCANDONE", "WIFIESSSUPDATED", "WIFIBADKEY", "IFCONNECTED", "IPCHANGED",
                                 "DHCP_SUCCESS"]
    assert "address  192.0.2.2\n" in output


def test_it_is_ended_and_started_as_the_real_one(fake):
    again = "disable mlan0\nenable mlan0\nwifi scan\nexpect WIFISCANDONE mlan0 10\n"
    status, output = fake("expect IFFOUND mlan0 20\n" + 3 * again)
    assert status == 0, output
    assert callbacks(output).count("WIFISCANDONE") == 3


def test_nothing_of_the_computer_is_touched(fake):
    resolver = pathlib.Path("/etc/resolv.conf").read_bytes()
    interfaces = pathlib.Path("/proc/net/dev").read_text().count(":")
    status, output = fake("expect IFFOUND mlan0 20\nwifi scan\nexpect WIFISCANDONE 10\nwifi update\n"
                          "wifi join Cafe\nexpect DHCP_SUCCESS 10\n")
    assert status == 0, output
    assert pathlib.Path("/etc/resolv.conf").read_bytes() == resolver
    assert pathlib.Path("/proc/net/dev").read_text().count(":") == interfaces
    assert subprocess.run(["pgrep", "-f", "fake_supplicant --background"], capture_output=True).stdout == b""


def test_it_speaks_from_another_script(prefix, tmp_path):
    script = tmp_path / "other.script"
    script.write_text("# odd\nPING => PONG\\n\nPING twice => P\\tP; use odd\nQUIT => BYE; end\n[odd]\nPING => odd; use\n")
    path = tmp_path / "socket"
    program = subprocess.Popen([prefix / "bin/movo_net_fake_supplicant", "--script", script, path])
    client = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    client.bind(str(tmp_path / "client"))
    client.settimeout(HANG_SECONDS)
    while not path.exists():
        assert program.poll() is None
        time.sleep(0.01)

    def ask(command):
        client.sendto(command.encode(), str(path))
        return client.recv(4096).decode()

    assert [ask(command) for command in ("PING", "STATUS", "PING twice", "PING", "PING", "QUIT")] \
        == ["PONG\n", "OK\n", "P\tP", "odd", "PONG\n", "BYE"]
    assert program.wait(HANG_SECONDS) == 0


def test_a_mistake_in_a_script_is_told(prefix, tmp_path):
    script = tmp_path / "wrong.script"
    script.write_text("PING = PONG\n")
    told = subprocess.run([prefix / "bin/movo_net_fake_supplicant", "--script", script, tmp_path / "socket"],
                          capture_output=True, text=True)
    assert (told.returncode, told.stderr) == (1, "line 1 of the script has no \" => \": PING = PONG\n")
