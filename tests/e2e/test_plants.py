"""A hostile local user, who plants names in /tmp before the television is used."""

from pathlib import Path

STORY = Path(__file__).parent / "wifi" / "cable_and_wifi" / "script"


def test_a_local_user_reaches_nothing_and_stops_nothing(wifi_tv):
    machine = wifi_tv.machine
    wifi_tv.switch_off()
    machine.check("/movo/tests/e2e/commands/plants put && /movo/board/start_supplicant")
    wifi_tv.serve(0)
    wifi_tv.plug("eth0")
    output = wifi_tv.play(STORY.read_text())
    assert "DHCP_SUCCESS eth0" in output and "DHCP_SUCCESS mlan0" in output
    status, table = machine.run("/movo/tests/e2e/commands/plants table")
    print(table)
    assert status == 0, table
    outcomes = {line.split()[1]: line.split(maxsplit=2)[2] for line in table.splitlines()[:-1]}
    assert len(outcomes) == 20
    assert outcomes["/tmp/wpa_scan_result"] == "root's own regular file"
    assert outcomes["/tmp/NotifyNtpclient"] == "root's own regular empty file"
    assert outcomes["/tmp/dhcp"] == "root's own directory"
    assert outcomes["/tmp/wpa_ctrl_PID-1"] == "removed for our own"
    machine.check("rm -rf /tmp/wpa_* /tmp/dnsmasq.leases /tmp/softapnotify.pipe.bcm0 /tmp/wl.journal /etc/victim")
