"""The board's adapters that need a kernel and a network: netcfg and the DHCP client, without the daemon."""

import pytest

# Stands for the daemon: makes the pipe, starts the client, and puts each message into the log with the time.
LISTEN = """
netcfg eth0 up
mkfifo /tmp/dhcpnotify.pipe.eth0
exec 5<> /tmp/dhcpnotify.pipe.eth0
export DHCP_NOTIFY_PIPE_DIR=/tmp/dhcpnotify.pipe.eth0
echo "$(cut -d ' ' -f 1 /proc/uptime) client starts" > /run/log
setsid /system/bin/dhcpcd  -B --noarp -h television  -t {patience} eth0 5<&- > /run/log 2>&1 &
setsid sh -c 'while message=$(dd bs=15 count=1 <&5 2> /dev/null); do
    echo "$(cut -d " " -f 1 /proc/uptime) message $message"
done' > /run/log &
"""


@pytest.fixture
def client(tv):
    """Starts a client; stops its listener afterwards."""
    yield lambda patience=90: tv.machine.check(LISTEN.format(patience=patience))
    tv.machine.run("pkill -f 'message='")


def test_netcfg_brings_up_and_down(tv):
    tv.machine.check("netcfg eth0 up")
    assert "UP" in tv.flags("eth0")
    tv.machine.check("netcfg eth0 down")
    assert "UP" not in tv.flags("eth0")


def test_netcfg_sets_the_hardware_address(tv):
    tv.machine.check("netcfg eth1 hwprefix 02:00:00:AA:BB:CC")
    assert tv.machine.read("/sys/class/net/eth1/address") == b"02:00:00:aa:bb:cc\n"


def test_netcfg_fails_on_what_it_cannot_do(tv):
    for arguments in ("", "eth0", "eth0 sideways", "eth9 up", "eth0 hwprefix 02:00", "eth0 up now"):
        assert tv.machine.run(f"netcfg {arguments}")[0] != 0, arguments


def test_client_has_its_files_in_place_before_new(tv, client):
    tv.serve(0)
    client()
    tv.expect("message new$")
    info = tv.machine.read("/etc/dhcpc/dhcpcd-eth0.info").decode().splitlines()
    assert info[:3] == ["DOMAIN='cable0.test'", "DNS=192.168.10.1,192.168.10.2", "GATEWAY=192.168.10.1"]
    assert tv.resolver() == ["nameserver 192.168.10.1", "nameserver 192.168.10.2", "search cable0.test"]
    assert tv.address("eth0") == "192.168.10.50/24"
    assert tv.runs(tv.client_pid())


def test_client_gives_the_lease_back_on_hang_up(tv, client):
    tv.serve(0)
    client()
    tv.expect("message new$")
    pid = tv.client_pid()
    tv.machine.check(f"kill -HUP {pid}")
    tv.sees(lambda: tv.runs(pid), False)
    assert tv.address("eth0") == ""
    assert not tv.exists("/tmp/dhcp/dhcpcd-eth0.pid")


def test_client_leaves_the_address_on_user_signal(tv, client):
    tv.serve(0)
    client()
    tv.expect("message new$")
    pid = tv.client_pid()
    tv.machine.check(f"kill -USR1 {pid}")
    tv.sees(lambda: tv.runs(pid), False)
    assert tv.address("eth0") == "192.168.10.50/24"


def test_client_without_a_server_reports_down_once_and_goes_on(tv, client):
    client(patience=2)
    started = tv.expect_at("client starts")
    down = tv.expect_at("message down$")
    assert 2 <= down - started < 15
    tv.serve(0)
    tv.expect("message new$")
    assert [line.split()[1:] for line in tv.log_lines() if " message " in line] == [["message", "down"], ["message", "new"]]


def test_client_reports_the_cable_once_each_way(tv, client):
    tv.serve(0)
    client()
    tv.expect("message new$")
    tv.unplug("eth0")
    tv.expect("message down$")
    tv.plug("eth0")
    tv.expect("message new$")
    assert [line.split()[2] for line in tv.log_lines() if " message " in line] == ["new", "down", "new"]
