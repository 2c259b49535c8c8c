"""Scenarios with two wired interfaces: of equal priority, the one that was found first is the better one."""

import pathlib

ADVERTISE = pathlib.Path(__file__).resolve().parents[2] / "build/release/tests/e2e/advertise_prefixes"


def test_better_nic_wins_the_default_route_and_gives_it_back(tv):
    tv.serve(0)
    tv.serve(1)
    tv.unplug("eth0")
    tv.plug("eth1")
    tv.start()
    tv.expect("eth1 got IP")
    tv.sees(tv.default_routes, [("192.168.11.1", "eth1")])

    tv.plug("eth0")
    tv.expect("eth0 got IP")
    tv.expect("set gateway to 192.168.10.1")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    tv.sees(lambda: tv.resolver()[:1], ["nameserver 192.168.10.1"])
    assert tv.address("eth1") == "192.168.11.50/24"

    tv.unplug("eth0")
    tv.expect("link:interface removed eth0")
    tv.expect("set gateway to 192.168.11.1")
    tv.sees(tv.default_routes, [("192.168.11.1", "eth1")])
    tv.sees(tv.resolver, ["nameserver 192.168.11.1", "nameserver 192.168.11.2", "search cable1.test"])
    tv.reaches("192.168.11.1")

    tv.plug("eth0")
    tv.expect("eth0 got IP")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    tv.sees(tv.resolver, ["nameserver 192.168.10.1", "nameserver 192.168.10.2", "search cable0.test"])
    tv.reaches("192.168.10.1")


def test_advertised_prefixes_do_not_take_the_route_away(tv):
    """The kernel lists each prefix that a neighbour advertises as a route: 500 are 58000 bytes of its answer."""
    tv.serve(0)
    tv.start()
    tv.expect("eth0 got IP")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])

    tv.machine.write("/run/advertise_prefixes", ADVERTISE.read_bytes())
    tv.machine.check("chmod +x /run/advertise_prefixes; ip -n cable0 address replace fe80::1/64 dev far nodad")
    tv.machine.check("ip netns exec cable0 /run/advertise_prefixes far 500")
    tv.sees(lambda: tv.machine.check("ip -6 route show dev eth0").count("2001:db8:"), 500)
    tv.serve(1)
    tv.plug("eth1")
    tv.expect("eth1 got IP")
    tv.unplug("eth0")
    tv.expect("link:interface removed eth0")
    tv.expect("set gateway to 192.168.11.1")
    tv.sees(tv.default_routes, [("192.168.11.1", "eth1")])
    tv.sees(lambda: tv.resolver()[:1], ["nameserver 192.168.11.1"])
    assert not [line for line in tv.log_lines() if "Error in recieved packet" in line]
