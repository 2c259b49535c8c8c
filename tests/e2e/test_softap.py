"""Scenarios of the soft access point: real hostapd and dnsmasq, and phones on radios and in namespaces of their own."""

import re

import pytest
from wireless import WirelessTelevision

from virtualset import Air, VirtualSet

BEGIN = "expect IFFOUND mlan0 20\nap start\n"
GONE = """
setprop dnsmasq.enable 0
setprop hostapd.enable 0
iw dev bcm0 del
rm -rf /run/phone*.pid /tmp/dnsmasq.leases /tmp/softapnotify.pipe.bcm0 /run/properties
true
"""


@pytest.fixture
def ap_tv(machine, air, switched_on):
    """A television called MyTV with a web server; the air is quiet."""
    air.vanish()
    tv = WirelessTelevision(machine)
    switched_on.append(tv)
    tv.switch_on_fresh()
    machine.check("setprop persist.device_name MyTV; mkdir -p /run/www; echo hello from MyTV > /run/www/index.html")
    server = machine.check("busybox httpd -f -p 80 -h /run/www > /dev/null 2>&1 & echo $!").strip()
    yield tv
    machine.run(f"kill {server}")
    tv.switch_off()
    machine.run(GONE)


def leases(tv):
    """The list of leases as words."""
    return [line.split() for line in tv.machine.read("/tmp/dnsmasq.leases").decode().splitlines()]


def told(output):
    """The reasons for which the application was called back about bcm0; the glue's own words may stand before them."""
    return re.findall(r"callback [0-9.]+ (\w+) bcm0$", output, re.M)


def address_of(output, number):
    return re.search(rf"^phone{number} has (192\.168\.255\.\d+)$", output, re.M)[1]


def services(tv):
    return tv.machine.run("ps -e -o args= | grep -E '^(hostapd|hostapd_cli|dnsmasq .*bcm0)'")[1]


def test_phones_join_and_leave(ap_tv):
    output = ap_tv.play(BEGIN + """
        phone 1 join MyTV
        expect SOFTAPSCAN bcm0 10
        expect SOFTAPCONNECTED bcm0 10
        ap status
        ap clients
        phone 1 get 192.168.255.249
        server
        phone 2 join MyTV
        expect SOFTAPSCAN bcm0 10
        expect SOFTAPCONNECTED bcm0 10
        phone 2 get 192.168.255.249
        phone 1 leave
        expect SOFTAPDISCONNECTED bcm0 10
        ap stop
        ap status
    """, seconds=150)
    first = address_of(output, 1)
    assert first != address_of(output, 2)
    assert "1 yes\n  network  MyTV\\x0a\n  address  06:00:00:00:00:00\n  hidden   no\n" in output
    assert re.search(rf"^  mac      02:.*\n  address  {first}\n  name     phone1\n", output, re.M)
    assert output.count("hello from MyTV\n") == 2
    assert sorted(lease[3] for lease in leases(ap_tv)) == ["phone1", "phone2"]
    assert "server of addresses runs as dnsmasq\n" in output
    assert [reason for reason in told(output) if reason != "SOFTAPCONNECTED"] \
        == ["SOFTAPSCAN", "SOFTAPSCAN", "SOFTAPDISCONNECTED"]
    assert output.endswith("0 success\n0 no\n  network  Lumenpoint\n  address  00:00:00:00:00:00\n  hidden   no\n")
    assert ap_tv.machine.run("ip link show dev bcm0")[0] != 0
    assert services(ap_tv) == ""


def test_ten_starts_leave_what_is_told_and_no_more(ap_tv):
    """Up to the eighth each start keeps its watch: a thread, its descriptor, and the pipe; the ninth and the tenth keep
    none. The first stop keeps its socket, too."""
    ap_tv.play(BEGIN + "watches 1\nlate add\nwatch 2\nap stop\nwatch 2\nlate delete\nflat note 14 7\n"
               + "".join(f"ap start\nwatches {number}\nap stop\n" for number in range(2, 9))
               + 2 * "ap start\nwatch 5\nap stop\n" + "flat check\n",
               seconds=200)
    # While its interface is there, nothing is found that the kernel lists behind it.
    ap_tv.expect("HOSTAP: hotspot stop$")
    ap_tv.expect("new interface late0$")
    assert not [line for line in ap_tv.log_lines() if "new interface bcm0" in line]


def test_the_station_stays_joined_beside_the_phone(ap_tv, air):
    air.appear("living_room")
    output = ap_tv.play("""
        expect IFFOUND mlan0 20
        wifi scan
        expect WIFISCANDONE mlan0 15
        wifi update
        wifi join "My Home Net" "correct horse"
        expect DHCP_SUCCESS mlan0 20
        ap start
        phone 1 join MyTV
        expect SOFTAPCONNECTED bcm0 10
        phone 1 get 192.168.255.249
        fetch 192.168.21.1
        channels
        ap stop
        fetch 192.168.21.1
    """, seconds=150)
    assert "hello from MyTV\n" in output
    assert re.findall(r"^channel \d+$", output, re.M) == ["channel 1"]


def test_beside_networks_on_many_channels_before_and_after_the_station_leaves(switched_on, tmp_path):
    """On a television whose /data is a folder of the host, as for ./run. Its clock does not know how long that takes to
    write: the limits are there for what hangs."""
    with VirtualSet(nics=["cable"], chip=True, data=tmp_path, clock="own") as machine:
        tv = WirelessTelevision(machine)
        switched_on.append(tv)
        air = Air(machine, "home")
        air.appear()
        tv.unplug("eth0")
        machine.check("/movo/board/start_supplicant; setprop persist.device_name MyTV")
        output = tv.play("""
            expect IFFOUND mlan0 300
            wifi scan
            expect WIFISCANDONE mlan0 300
            wifi update
            wifi join "My Home Net" "correct horse"
            expect DHCP_SUCCESS mlan0 300
            ap start
            phone 1 join MyTV
            expect SOFTAPCONNECTED bcm0 300
            ap status
            fetch 192.168.21.1
            channels
            ap stop
            wifi leave
            expect IFDISCONNECTED mlan0 300
            ap start
            phone 2 join MyTV
            expect SOFTAPCONNECTED bcm0 300
            ap status
        """, seconds=900)
    assert re.findall(r"^channel \d+$", output, re.M) == ["channel 1"]
    assert address_of(output, 1) != address_of(output, 2)
    assert output.count("1 yes\n  network  MyTV\\x0a\n") == 2


def test_wake_up_is_armed_as_the_marker_says(tv):
    tv.machine.check("rm -f /data/wakeoncast /tmp/wl.journal")
    tv.play("wake\n")
    tv.machine.check("touch /data/wakeoncast")
    tv.play("wake\n")
    assert tv.machine.read("/tmp/wl.journal") == b"wowl 1\nwowl_activate\nwowl 0x80001\nwowl_activate\n"
