"""Scenarios with two wired interfaces: of equal priority, the one that was found first is the better one."""


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
