"""What a scenario does with a television that has a Wi-Fi chip."""

import re

from television import CONFINED, SHELL, Television

from virtualset import launch

OUTSIDE = r"^\s*(air|button|cable|phone|supplicant) "

# The chip is as after its power was out, and the system has started its supplicant.
RESET = """
ip link set mlan0 down
ip address flush dev mlan0
rm -rf /tmp/wpa_*
/movo/board/start_supplicant
"""


class WirelessTelevision(Television):
    def switch_on_fresh(self):
        """As without a chip, but with its cable out."""
        super().switch_on_fresh()
        self.unplug("eth0")
        self.machine.check(RESET)

    def cut_power(self):
        """As without a chip; the system has started its supplicant."""
        super().cut_power()
        self.machine.check(RESET)

    def start(self, program="/movo/build/release/recovery/recovery_net", chip="brcm_43569"):
        """Starts the daemon as a set with this chip does."""
        self.machine.spawn("env KEST_DEBUG=3 " + launch(f"{CONFINED} {program}", chip))

    def play(self, script, chip="brcm_43569", **options):
        """The shell is confined as the daemon is, unless the script acts on the world around the television."""
        shell = SHELL if re.search(OUTSIDE, script, re.M) else f"{CONFINED} {SHELL}"
        return super().play(script, shell=f"setsid --wait {launch(shell, chip)}", **options)


def callbacks(lines):
    """The reasons of the callbacks of each interface, in order, from lines "REASON IFACE".

    In which order two interfaces report is nobody's promise. A lost connection is seen by the DHCP client, the
    supplicant or the PHY, whichever is first, and each that sees it reports it: the interface's loss counts once. The
    cable's own may come before its removal or not at all.
    """
    reasons = {}
    for line in lines:
        reason, ifname = line.split()
        told = reasons.setdefault(ifname, [])
        if reason != "IFDISCONNECTED" or (ifname != "eth0" and told[-1:] != [reason]):
            told.append(reason)
    return reasons
