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


def test_nothing_of_the_computer_is_touched(fake, prefix):
    resolver = pathlib.Path("/etc/resolv.conf").read_bytes()
    interfaces = pathlib.Path("/proc/net/dev").read_text().count(":")
    status, output = fake("expect IFFOUND mlan0 20\nwifi scan\nexpect WIFISCANDONE 10\nwifi update\n"
                          "wifi join Cafe\nexpect DHCP_SUCCESS 10\n")
    assert status == 0, output
    assert pathlib.Path("/etc/resolv.conf").read_bytes() == resolver
    assert pathlib.Path("/proc/net/dev").read_text().count(":") == interfaces
    left = subprocess.run(["pgrep", "-f", f"{prefix}/bin/movo_net_fake_supplicant --background"], capture_output=True)
    assert left.stdout == b""


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


def test_an_access_point_vanishes_and_returns(fake, prefix):
    status, output = fake("""
        expect IFFOUND mlan0 20
        wifi scan
        expect WIFISCANDONE mlan0 10
        wifi update
        wifi list
        wifi join Home "correct horse"
        expect DHCP_SUCCESS mlan0 10
        expect IFDISCONNECTED mlan0 20
        wifi scan
        expect WIFISCANDONE mlan0 10
        wifi update
        wifi list
        expect DHCP_SUCCESS mlan0 20
        wifi join Home "wrong horse"
        expect WIFIBADKEY mlan0 10
        wifi join Cafe
        expect DHCP_SUCCESS mlan0 10
    """, "--script", prefix / "share/movo_net/vanishing.script")
    assert status == 0, output
    assert re.findall(r"^(\w+) +02:00:00:00:00:0\d +(-\d+) +(\d+) +(\S+)", output, re.M) \
        == [("Home", "-42", "1", "wpa2-psk"), ("Cafe", "-63", "6", "open"), ("Cafe", "-63", "6", "open")]
    told = callbacks(output)
    assert told[3:told.index("WIFIBADKEY")] == ["IFCONNECTED", "IPCHANGED", "DHCP_SUCCESS", "IFDISCONNECTED",
                                                "WIFISCANDONE", "WIFIESSSUPDATED", "IFCONNECTED", "IPCHANGED",
                                                "DHCP_SUCCESS"]


def test_rules_stand_beside_access_points_and_come_first(fake, tmp_path):
    script = tmp_path / "both.script"
    script.write_text("ap 'Café \"1\"' 12345678 channel 36\nSET_NETWORK 0 psk => FAIL\\n\n")
    status, output = fake("""
        expect IFFOUND mlan0 20
        wifi scan
        expect WIFISCANDONE mlan0 10
        wifi update
        wifi list
        wifi join "Café \\"1\\"" 12345678
    """, "--script", script)
    assert status == 0 and output.endswith("1 failure\n  the supplicant refused; the log names the command\n"), output
    assert re.search(r'^Café "1" +02:00:00:00:00:01 +-50 +36 +wpa2-psk', output, re.M), output


KNOWN = ("known are ap NAME [KEY] [channel NUMBER] [signal DBM], vanish SECONDS, return SECONDS, "
         "COMMAND => REPLY; STEP..., [STATE]")
MISTAKES = {
    "PING = PONG": f'"PING" is not known; {KNOWN}',
    "vansih 5": f'"vansih" is not known; {KNOWN}',
    "vanish 5": '"vanish" is about the access point above it, and there is none',
    "SCAN => OK; wiat 1": '"wiat" is not known after a reply; known are wait, say, use, end',
    "SCAN => OK; wait soon": '"soon" is not possible after "wait"',
    "SCAN => OK; use nothing": "there is no state [nothing]; there is [some]",
    "ap": 'a name of 1 to 32 bytes must follow "ap"',
    "ap Home short": '"short" is no key, which has 8 to 63 characters or 64 hexadecimal digits, and no property; '
                     "known are channel, signal",
    "ap Home 12345678 chanel 3": '"chanel" is not known after an access point; known are channel, signal',
    "ap Home channel 200": "channel 200 is not possible",
    "ap Home channel": '"" is no number',
    "ap Home signal loud": '"loud" is no number',
    'ap "Home': "No closing quotation",
    "ap Home\nap Home": "there is another access point Home",
    "ap Home\nreturn 5": "vanish and return take turns, and vanish is the first of Home",
    "ap Home\nvanish 5\nreturn 5": 'one time in seconds must follow "return", later than the one before',
    "ap Home\nvanish": 'one time in seconds must follow "vanish", later than the one before',
}


@pytest.mark.parametrize("lines", MISTAKES)
def test_a_line_that_means_nothing_is_refused(prefix, tmp_path, lines):
    script = tmp_path / "wrong.script"
    script.write_text(f"# comment\n[some]\n{lines}\n")
    told = subprocess.run([prefix / "bin/movo_net_fake_supplicant", "--script", script, "--run", "true"],
                          capture_output=True, text=True)
    line = 3 + lines.count("\n")
    assert (told.returncode, told.stdout, told.stderr) == (1, "", f"{script}, line {line}: {MISTAKES[lines]}\n")
