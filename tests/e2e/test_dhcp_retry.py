"""Scenarios in which the DHCP server goes away or is not there yet."""


def test_lease_lost_and_recovered(tv):
    tv.serve(0, lease_seconds=20)
    tv.start("callback_app")
    tv.expect("eth0 got IP")
    tv.expect("set gateway to")

    tv.stop_serving(0)
    tv.expect("message: down")
    assert tv.address("eth0") == ""
    tv.expect("callback IFDISCONNECTED eth0")
    tv.expect("add dhcp down event, count is 0")

    tv.serve(0)
    tv.expect("dhcpcd running, pid=")    # the retry starts a client of its own
    tv.expect("eth0 got IP")
    tv.expect("callback IPCHANGED eth0")
    tv.expect("callback DHCP_SUCCESS eth0")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    assert tv.address("eth0") == "192.168.10.50/24"
    tv.reaches("192.168.10.1")


def test_server_absent_at_boot_then_appearing(tv):
    # The client gives up after 3 s instead of 90, else a test would take minutes; all else is as in the set.
    tv.wrap_client('echo "client asked for: $*" > /run/log\n'
                   'exec "$client" $(echo "$*" | sed "s/-t 90/-t 3/")')
    tv.start("callback_app")
    tv.expect("client asked for: -B --noarp -h [^ ]+ -t 90 eth0$")

    retry_after = []
    for count in (0, 1):
        tv.expect("message: down")
        tv.expect("callback IFDISCONNECTED eth0")
        scheduled = tv.expect_at(f"add dhcp down event, count is {count}")
        retry_after.append(tv.expect_at("Set IP mode to  dhcp") - scheduled)
        tv.expect("client asked for:")
    assert 1 <= retry_after[0] < 15      # 10 idle ticks
    assert 20 <= retry_after[1] < 60    # 200 idle ticks

    tv.expect("add dhcp down event, count is 2")
    tv.serve(0)
    tv.expect("eth0 got IP")
    tv.expect("callback IPCHANGED eth0")
    tv.expect("callback DHCP_SUCCESS eth0")
    tv.sees(tv.default_routes, [("192.168.10.1", "eth0")])
    # Whether the interface is found before the application listens is a race that either may win.
    callbacks = [callback for callback in tv.callbacks() if callback != "IFFOUND eth0"]
    assert callbacks == ["IFDISCONNECTED eth0"] * 3 + ["IPCHANGED eth0", "DHCP_SUCCESS eth0"]
