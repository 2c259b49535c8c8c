"""What a scenario does with the television: switch it on, pull cables, serve addresses, follow the log in order.

All seconds are the television's own: how fast this computer is decides nothing.
"""

import pathlib
import re

UNIT = pathlib.Path(__file__).resolve().parents[2] / "cmake/install/recovery_net.service.in"
CAPABILITIES = re.search(r"^CapabilityBoundingSet=(.*)$", UNIT.read_text(), re.M)[1].replace("CAP_", "+").lower().split()
# Starts a program with the capabilities that the daemon has as a service; its commands and daemons have no others.
CONFINED = "setpriv --no-new-privs --bounding-set=-all," + ",".join(CAPABILITIES)

SHELL = "/movo/build/release/tools/movo_net_shell/movo_net_shell --programs /run/commands"

RESET = """
ip route flush table main
for nic in eth0 eth1; do
    ip address flush dev $nic
    ip link set $nic down
done
rm -rf /tmp/dhcp /tmp/dhcpnotify.pipe.* /tmp/NotifyNtpclient /etc/dhcpc/* /var/lib/dhcpcd/* /run/dhcpcd
: > /etc/resolv.conf
find /movo/board -maxdepth 1 -type f -exec cp {} /system/bin/ +
"""

COMMANDS = """
mkdir -p /run/commands
ln -sf /movo/virtualset/guest/commands/* /movo/tests/e2e/commands/* /run/commands/
"""

STOP = """
killed='recovery_net|callback_app|movo_net_shell|dhcpcd|wpa_supplicant'
pkill -KILL -x "$killed"
while pgrep -x "$killed" > /dev/null; do sleep 0.1; done
for number in 0 1; do
    [ ! -e /run/dhcp_server$number.pid ] || /movo/virtualset/guest/dhcp_server $number stop
done
"""


class Television:
    def __init__(self, machine):
        self.machine = machine
        self._begin = self._cursor = 0

    # Setting the scene

    def switch_on_fresh(self):
        """A clean machine without a daemon: eth0's cable is in, eth1's is out, nobody serves addresses."""
        self._begin = self._cursor = len(self.machine.log.lines)
        self.machine.cable("eth0", True)
        self.machine.cable("eth1", False)
        self.machine.check("rm -rf /data/tv/save/*" + RESET)

    def cut_power(self):
        """And switches it on again, without a daemon: what it has on its flash is left, and nobody serves addresses."""
        self.switch_off()
        self.machine.check(RESET)

    def switch_off(self):
        self.machine.check(STOP)

    def start(self, program="recovery_net"):
        """Starts the daemon, or the test application, which also prints the callbacks."""
        folder = {"recovery_net": "recovery", "callback_app": "tests/e2e"}[program]
        self.machine.spawn(f"env KEST_DEBUG=3 {CONFINED} /movo/build/release/{folder}/{program}")

    def play(self, script, status=0, seconds=90, shell=SHELL):
        """Runs a script of movo_net_shell in place of the daemon, until it ends with the status; returns its output."""
        self.machine.check(COMMANDS)
        self.machine.write("/tmp/script", script.encode())
        ended, output = self.machine.run(f"KEST_DEBUG=3 {shell} < /tmp/script 2> /run/log", seconds)
        assert ended == status, output
        return output

    def serve(self, number, lease_seconds=3600):
        self.machine.check(f"/movo/virtualset/guest/dhcp_server {number} start {lease_seconds}")

    def stop_serving(self, number):
        self.machine.check(f"/movo/virtualset/guest/dhcp_server {number} stop")

    def plug(self, nic):
        self.machine.cable(nic, True)

    def unplug(self, nic):
        self.machine.cable(nic, False)

    def wrap_client(self, line):
        """Puts a wrapper before the DHCP client: `line` runs first, $client is the client's path."""
        self.machine.check("mv /system/bin/dhcpcd /system/bin/dhcpcd.board")
        self.machine.check(
            "cat > /system/bin/dhcpcd <<'END'\n#!/bin/sh\nclient=/system/bin/dhcpcd.board\n" + line + "\nEND\n"
            "chmod +x /system/bin/dhcpcd")

    # What the log tells, in order

    def expect(self, pattern, seconds=60):
        """Waits for the next line that matches, after those already expected; returns the match."""
        at = self.machine.wait_for(pattern, seconds, self._cursor)
        self._cursor = at + 1
        return re.search(pattern, self.machine.log.lines[at])

    def expect_at(self, pattern, seconds=60):
        """As expect; returns the machine's time at which the daemon wrote the line."""
        self.expect(pattern, seconds)
        return float(self.machine.log.lines[self._cursor - 1].split()[0])

    def sees(self, question, answer, seconds=20):
        """Asks the kernel until it gives the answer: what the daemon announces it does a moment later."""
        end = self.machine.uptime() + seconds
        while (last := question()) != answer and self.machine.uptime() < end:
            self.machine.check("sleep 0.1")
        assert last == answer

    def log_lines(self):
        return self.machine.log.lines[self._begin:]

    def callbacks(self):
        return [line.removeprefix("callback ") for line in self.log_lines() if line.startswith("callback ")]

    # What the kernel says

    def address(self, nic):
        """Address and length, as in "192.168.10.50/24"; empty without one."""
        match = re.search(r"inet (\S+)", self.machine.check(f"ip -4 address show dev {nic}"))
        return match[1] if match else ""

    def flags(self, nic):
        """The interface's flags, as in ["BROADCAST", "UP"]."""
        return re.search("<(.*)>", self.machine.check(f"ip link show dev {nic}"))[1].split(",")

    def default_routes(self):
        return re.findall(r"^default via (\S+) dev (\S+)", self.machine.check("ip -4 route"), re.M)

    def resolver(self):
        return self.machine.read("/etc/resolv.conf").decode().splitlines()

    def reaches(self, address):
        self.sees(lambda: self.machine.run(f"ping -c 1 -W 2 {address}")[0], 0)

    def runs(self, pid):
        return self.machine.run(f"kill -0 {pid}")[0] == 0

    def exists(self, path):
        return self.machine.run(f"test -e {path}")[0] == 0

    def client_pid(self, nic="eth0"):
        return int(self.machine.read(f"/tmp/dhcp/dhcpcd-{nic}.pid"))
