"""A hostile local user, who plants names in /tmp before the television is used."""

from pathlib import Path

import pytest

STORY = Path(__file__).parent / "wifi" / "cable_and_wifi" / "script"
PHONE = """
    expect IFFOUND mlan0 20
    ap start
    phone 1 join MyTV
    expect SOFTAPSCAN bcm0 20
    expect SOFTAPCONNECTED bcm0 20
    phone 1 leave
    expect SOFTAPDISCONNECTED bcm0 20
    ap stop
"""
GONE = """
rm -rf /tmp/wpa_* /tmp/dnsmasq.leases /tmp/softapnotify.pipe.bcm0 /tmp/wl.journal /etc/victim
rm -rf /run/phone*.pid /run/properties
"""


@pytest.fixture
def hostile_tv(wifi_tv):
    """Twenty names are planted before the supplicant starts."""
    wifi_tv.switch_off()
    wifi_tv.machine.check("/movo/tests/e2e/commands/plants put && /movo/board/start_supplicant")
    yield wifi_tv
    wifi_tv.machine.check(GONE)


def outcomes(machine):
    """What has each name now; the user reached nothing."""
    status, table = machine.run("/movo/tests/e2e/commands/plants table")
    print(table)
    assert status == 0, table
    found = {line.split()[1]: line.split(maxsplit=2)[2] for line in table.splitlines()[:-1]}
    assert len(found) == 20
    return found


def test_a_local_user_reaches_nothing_and_stops_nothing(hostile_tv):
    hostile_tv.serve(0)
    hostile_tv.plug("eth0")
    output = hostile_tv.play(STORY.read_text())
    assert "DHCP_SUCCESS eth0" in output and "DHCP_SUCCESS mlan0" in output
    found = outcomes(hostile_tv.machine)
    assert found["/tmp/wpa_scan_result"] == "root's own regular file"
    assert found["/tmp/NotifyNtpclient"] == "root's own regular empty file"
    assert found["/tmp/dhcp"] == "root's own directory"
    assert found["/tmp/wpa_ctrl_PID-1"] == "removed for our own"


def test_a_local_user_stops_no_soft_access_point(hostile_tv):
    hostile_tv.machine.check("setprop persist.device_name MyTV")
    output = hostile_tv.play(PHONE, seconds=150)
    assert "phone1 has 192.168.255." in output
    found = outcomes(hostile_tv.machine)
    assert found["/tmp/softapnotify.pipe.bcm0"] == "root's own fifo"
    assert found["/tmp/dnsmasq.leases"] == "root's own regular file"
