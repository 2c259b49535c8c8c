"""Scenarios with one wired interface."""


def test_lease_at_boot(tv):
    tv.serve(0)
    tv.start()
    tv.expect("Enter recovery network")
    tv.expect("new interface lo")
    tv.expect("get eth0 mac 02:4D:4F:56:4F:01 from board config")
    tv.expect("new interface eth0")
    tv.expect("link:interface available, start to active iface eth0")
    tv.expect("Set IP mode to  dhcp")
    tv.expect("message: new")
    lease = tv.expect(r"eth0 got IP\.\s+IP: (\S+)\s+MASK: (\S+)\s+GW: (\S+)\s+DNS1: (\S+)\s+DNS2: (\S+)")
    assert lease.groups() == ("192.168.10.50", "255.255.255.0", "192.168.10.1", "192.168.10.1", "192.168.10.2")
    tv.expect("set gateway to 192.168.10.1")

    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    assert tv.address("eth0") == "192.168.10.50/24"
    tv.sees(tv.resolver, ["nameserver 192.168.10.1", "nameserver 192.168.10.2", "search cable0.test"])
    assert "ether 02:4d:4f:56:4f:01" in tv.machine.check("ifconfig eth0")
    tv.sees(lambda: tv.exists("/tmp/NotifyNtpclient"), True)
    tv.reaches("192.168.10.1")


def test_cable_pulled_and_returned(tv):
    tv.serve(0)
    tv.unplug("eth0")
    tv.start("callback_app")
    tv.expect("callback_app: listening")
    tv.plug("eth0")
    tv.expect("callback DHCP_SUCCESS eth0")
    client = tv.client_pid()

    tv.unplug("eth0")
    tv.expect("link:interface removed eth0")
    tv.expect(f"dhcpcd running, pid={client}")
    tv.sees(lambda: tv.runs(client), False)
    assert tv.address("eth0") == ""

    tv.plug("eth0")
    tv.expect("link:interface available, start to active iface eth0")
    tv.expect("callback DHCP_SUCCESS eth0")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    assert tv.client_pid() != client
    tv.reaches("192.168.10.1")

    # Whether the client's "down" comes before the link pass sees the PHY is a race that either may win.
    callbacks = [callback for callback in tv.callbacks() if callback != "IFDISCONNECTED eth0"]
    found = ["IFFOUND eth0", "IPCHANGED eth0", "DHCP_SUCCESS eth0"]
    assert callbacks == found + ["IFREMOVED eth0"] + found


def test_client_that_ignores_the_hang_up_signal_is_killed(tv):
    tv.serve(0)
    tv.wrap_client("trap '' HUP; exec $client \"$@\"")
    tv.start()
    tv.expect("eth0 got IP")
    client = tv.client_pid()

    tv.unplug("eth0")
    asked = tv.expect_at(f"dhcpcd running, pid={client}")
    killed = tv.expect_at("ShutdownDhcpcd, kill dhcp process, time out count = 201")
    assert 2 <= killed - asked < 15
    tv.sees(lambda: tv.runs(client), False)
    tv.sees(lambda: tv.machine.run("pgrep -x dhcpcd"), (1, ""))  # the adapter takes its client down after itself
    tv.sees(lambda: tv.machine.check("ls /tmp/dhcp").split(), ["dhcpcd-eth0.log"])

    tv.plug("eth0")
    tv.expect("eth0 got IP")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    tv.reaches("192.168.10.1")
