"""Scenarios with a Wi-Fi chip, a real supplicant and real access points: the world is virtualset/worlds/home.

Each folder of wifi/ is a story. movo_net_shell plays its `script`; `callbacks` lists all callbacks, in order for each
interface, unless threads race for it, and `says` lines of the shell's output, in order. A .conf is one more access point.
Between `script` and `script2`, and so on, the power is cut.
commands/ has what the scripts use besides the shell's own commands.
"""

import pathlib
import re

import pytest
from wireless import WirelessTelevision, callbacks

from virtualset import Air, VirtualSet

STORIES = pathlib.Path(__file__).parent / "wifi"
SAVED = "/data/tv/save/saved_esss"
CHIPS = {    # the others have a brcm_43569
    "access_point_vanishes": "brcm_43242",
    "hidden": "atheros",
    "other_securities": "realtek_8188eu",
    "two_of_one_name": "brcm_liteon_43569",
    "wrong_key": "realtek_8812au",
}
SCAN = """
expect IFFOUND mlan0 20
wifi scan
expect WIFISCANDONE mlan0 15
wifi update
"""


def lines_of(story, name):
    path = STORIES / story / name
    return path.read_text().splitlines() if path.exists() else []


@pytest.fixture
def strangers(story, wifi_tv):
    """The access points that only this story has."""
    def tell(word):
        for conf in (STORIES / story).glob("*.conf"):
            wifi_tv.machine.check(f"/movo/virtualset/guest/access_point /movo/tests/e2e/wifi/{story}/{conf.name} {word}")

    tell("start")
    yield
    tell("stop")


@pytest.mark.usefixtures("strangers")
@pytest.mark.parametrize("story", sorted(path.name for path in STORIES.iterdir()))
def test_story(wifi_tv, story):
    if story == "cable_and_wifi":
        wifi_tv.serve(0)
        wifi_tv.plug("eth0")
    output = ""
    for script in sorted((STORIES / story).glob("script*")):
        if output:
            wifi_tv.cut_power()
        output += wifi_tv.play(script.read_text(), CHIPS.get(story, "brcm_43569"))
    said = iter(output.splitlines())
    assert [line for line in lines_of(story, "says") if line not in said] == [], output
    if (STORIES / story / "callbacks").exists():
        called = re.findall(r"^callback [0-9.]+ (\w+ \w+)$", output, re.M)
        assert callbacks(called) == callbacks(lines_of(story, "callbacks"))


def security(flags):
    """Security and cipher that the supplicant's flags tell."""
    group = re.search(r"(WPA2?)-PSK-([^]]*)", flags[flags.find("[WPA2"):])
    if group:
        return [f"{group[1].lower()}-psk", "tkip+ccmp" if "+" in group[2] else group[2].lower()]
    return ["open", "wep" if "[WEP]" in flags else "none"]


def real_name(written):
    """The name that the supplicant's escapes stand for; one with a control character stays as it is written."""
    real = written.encode().decode("unicode_escape")
    return written if re.search("[\0-\x1f\x7f]", real) else real.encode("latin-1").decode()


def expected_networks(table):
    """What the set lists of the supplicant's table: the strongest of each name, and none without a name."""
    networks = {}
    for bssid, frequency, signal, flags, name in (line.split("\t") for line in table):
        name = real_name(name.strip())
        if name and name != "DIRECT-ab-ZENTATV" and (name not in networks or int(signal) > int(networks[name][1])):
            channel = str((int(frequency) - 2412) // 5 + 1)
            networks[name] = [bssid, signal, channel, *security(flags), "yes" if "[WPS]" in flags else "no"]
    return networks


def test_scan_lists_what_the_supplicant_sees(wifi_tv):
    output = wifi_tv.play(SCAN + "scan_results\nwifi list\n")
    _, table, listed = re.split(r"bssid / frequency / .*\n|0 success: \d+\nname .*\n", output)
    assert len(table.splitlines()) >= 11    # all that tell their name; the hidden one's beacon may be missed
    names_and_facts = re.findall(r"^(.*?) +((?:[0-9a-f]{2}:){5}.*)$", listed, re.M)
    assert {name: facts.split()[:6] for name, facts in names_and_facts} == expected_networks(table.splitlines())


def test_running_supplicant_is_adopted_and_the_next_one_started_for_the_chip(wifi_tv):
    adopted = wifi_tv.machine.check("pgrep -x wpa_supplicant").strip()
    output = wifi_tv.play("""
        expect IFFOUND mlan0 20
        supplicant pid
        wifi chip
        disable mlan0
        supplicant ended
        enable mlan0
        supplicant pid
        wifi scan
        expect WIFISCANDONE mlan0 15
    """)
    wifi_tv.expect("Command: lsusb | grep 0627:0001 && lsmod | grep mac80211_hwsim$")
    wifi_tv.expect("Current WPA_Supplicant cmd is: wpa_supplicant -B -imlan0 -c/etc/wpa_supplicant.conf -Dnl80211 "
                   "-P/tmp/wpa_supplicant_mlan0.pid$")
    before, after = re.findall(r"^supplicant (\d+)$", output, re.M)
    assert before == adopted != after
    assert "0 success: broadcom-43569\n" in output


def test_supplicant_that_is_started_late_is_waited_for(wifi_tv):
    wifi_tv.machine.check("pkill -KILL -x wpa_supplicant; while pgrep -x wpa_supplicant > /dev/null; do sleep 0.1; done")
    wifi_tv.start()
    wifi_tv.expect("Wpa_supplicant is not running.wait_count 1$")
    wifi_tv.machine.check("/movo/board/start_supplicant")
    wifi_tv.expect("no saved Esss, need manual connect$")


@pytest.mark.parametrize("times", [10, pytest.param(100, marks=pytest.mark.long)])
def test_off_and_on_again_leaves_nothing_behind(wifi_tv, times):
    again = "disable mlan0\nsupplicant ended\nenable mlan0\n"
    wifi_tv.play("expect IFFOUND mlan0 20\n" + again + "flat note\n" + times * again + "flat check\n",
                 seconds=60 + 6 * times)


def test_after_a_power_cut_the_network_of_last_time_is_joined(wifi_tv):
    wifi_tv.play(SCAN + 'wifi join "My Home Net" "correct horse"\nexpect DHCP_SUCCESS mlan0 20\n')
    with VirtualSet(nics=["cable"], chip=True, clock="own") as machine:
        machine.write(SAVED, wifi_tv.machine.read(SAVED))
        air = Air(machine, "home")
        tv = WirelessTelevision(machine)
        tv.unplug("eth0")
        machine.check("/movo/board/start_supplicant")
        tv.start()
        tv.expect("connect to My Home Net, with netid 0 OK$")
        air.appear("living_room")    # the power was out for all, and the set is the faster one
        tv.expect("connected$")
        tv.expect("set gateway to 192.168.21.1")
        tv.sees(tv.default_routes, [("192.168.21.1", "mlan0")])
        assert tv.address("mlan0") == "192.168.21.50/24"
        assert machine.run("/movo/tests/e2e/commands/fetch 192.168.21.1")[0] == 0
