"""Scenarios about settings: what an application decides takes effect, is kept, and is there after a power cut."""

import re

import pytest
from television import Television
from virtualset import VirtualSet

STATIC = "192.168.10.77 255.255.255.0 192.168.10.1 192.168.10.1"
NETCONFIG = "/data/tv/save/netconfig"


def test_settings_survive_a_power_cut(tv):
    tv.serve(0)
    tv.play(f"""
        expect DHCP_SUCCESS eth0
        static eth0 {STATIC} 192.168.10.2
        mode eth0 static
        expect STATICIP_SUCCESS eth0
    """)

    tv.cut_power()
    shown = tv.play("""
        expect IFFOUND eth0
        mode eth0
        static eth0
    """)
    assert "0 success: static" in shown
    assert "\n".join(shown.splitlines()[-4:]) == """\
  address  192.168.10.77
  mask     255.255.255.0
  gateway  192.168.10.1
  dns      192.168.10.1 192.168.10.2"""

    tv.serve(0)
    tv.start()
    tv.expect("set gateway to 192.168.10.1")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    assert tv.address("eth0") == "192.168.10.77/24"
    tv.sees(tv.resolver, ["nameserver 192.168.10.1", "nameserver 192.168.10.2"])
    tv.reaches("192.168.10.1")


def wake_setting(tv, nic):
    """What ethtool says: "g" wakes by magic packet, "d" never."""
    return re.search(r"^\s+Wake-on: (\w+)", tv.machine.check(f"ethtool {nic}"), re.M)[1]


@pytest.fixture
def wakeable_tv(switched_on):
    """One more television, whose second card can wake it."""
    with VirtualSet(nics=["user", "wakeable"], clock="own") as machine:
        switched_on.append(Television(machine))
        yield switched_on[-1]


def test_a_magic_packet_may_wake_the_set(wakeable_tv):
    tv = wakeable_tv
    tv.machine.check("ethtool -s eth1 wol d")
    assert tv.play("wol eth1 on").splitlines()[-1] == "0 success"
    assert wake_setting(tv, "eth1") == "g"
    assert tv.play("wol eth1 off").splitlines()[-1] == "0 success"
    assert wake_setting(tv, "eth1") == "d"

    # The card of eth0 cannot wake.
    assert tv.play("wol eth0 on").splitlines()[-2] == "1 failure"    # its cause stands below
    tv.expect("ioctl failed, Cannot set new wake-on-lan settings")


def test_from_dhcp_to_static_and_back(tv):
    tv.serve(0)
    shown = tv.play(f"""
        expect DHCP_SUCCESS eth0
        static eth0 {STATIC}
        mode eth0 static
        expect STATICIP_SUCCESS eth0
        ip eth0
        mode eth0 dhcp
        expect DHCP_SUCCESS eth0
        ip eth0
    """)
    addresses = re.findall(r"address +(\S+)", shown)
    assert addresses == ["192.168.10.77", "192.168.10.50"]
    tv.expect("set gateway to 192.168.10.1")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    tv.reaches("192.168.10.1")


def test_the_best_interface_changes_under_traffic(tv):
    tv.serve(0)
    tv.serve(1)
    shown = tv.play("""
        expect DHCP_SUCCESS eth0
        route 192.168.10.1 eth0
        traffic begin 192.168.10.1
        cable on eth1
        expect DHCP_SUCCESS eth1
        priority eth1 9
        route 192.168.11.1 eth1
        best
        priority eth0 10
        route 192.168.10.1 eth0
        best
        priority eth0 1
        route 192.168.11.1 eth1
        traffic end
    """)
    assert len(set(re.findall(r"^0 success: (\d)", shown, re.M))) == 2    # the best one was another each time
    tv.expect("set gateway to 192.168.11.1")
    tv.expect("set gateway to 192.168.10.1")
    tv.expect("set gateway to 192.168.11.1")
    tv.sees(tv.default_routes, [("192.168.11.1", "eth1")])
    answers = [int(number) for number in re.findall(r"seq=(\d+)", shown)]
    assert answers and answers == list(range(len(answers)))    # none is missing


@pytest.fixture
def small_data(tv):
    """A /data of 64 kB, to be filled or closed by the scenario."""
    tv.machine.check("mount -t tmpfs -o size=64k data /data && mkdir -p /data/tv/save")
    yield tv
    tv.machine.check("umount -l /data")


@pytest.mark.parametrize("close", [
    "dd if=/dev/zero of=/data/rest bs=1k",
    "mount -o remount,ro /data",
])
def test_a_flash_that_takes_nothing_keeps_what_was_there(small_data, close):
    tv = small_data
    tv.serve(0)
    tv.play("expect IFFOUND eth0")
    before = tv.machine.read(NETCONFIG)

    tv.machine.run(close)
    shown = tv.play(f"""
        expect IFFOUND eth0
        static eth0 {STATIC}
        mode eth0 static
        expect STATICIP_SUCCESS eth0
        ip eth0
    """)
    assert "192.168.10.77" in shown    # the set works on
    tv.reaches("192.168.10.1")
    assert tv.machine.read(NETCONFIG) == before
