"""What a scenario does with a television that has a Wi-Fi chip."""

import re

from television import Television

from virtualset import launch

SHELL = "/movo/build/release/tools/movo_net_shell/movo_net_shell --programs /run/commands"

# The chip is as after its power was out, and the system has started its supplicant.
RESET = """
ip link set mlan0 down
ip address flush dev mlan0
rm -rf /tmp/wpa_*
mkdir -p /run/commands
ln -sf /movo/virtualset/guest/commands/* /movo/tests/e2e/commands/* /run/commands/
/movo/board/start_supplicant
"""


class WirelessTelevision(Television):
    def switch_on_fresh(self):
        """As without a chip, but with its cable out."""
        super().switch_on_fresh()
        self.unplug("eth0")
        self.machine.check(RESET)

    def cut_power(self):
        """Only what is remembered is left, and the system has started its supplicant."""
        self.machine.run("pkill -KILL -x wpa_supplicant")
        self.machine.check(RESET)

    def start(self, program="/movo/build/release/recovery/recovery_net", chip="brcm_43569"):
        """Starts the daemon as a set with this chip does."""
        self.machine.spawn("env KEST_DEBUG=3 " + launch(program, chip))

    def play(self, script, chip="brcm_43569", **options):
        return super().play(script, shell=f"setsid --wait {launch(SHELL, chip)}", **options)

    def switch_off(self):
        self.machine.run("pkill -KILL -x wpa_supplicant")
        super().switch_off()


def callbacks(output):
    """What the application was told, from the shell's output: "REASON IFACE"."""
    return re.findall(r"^callback [0-9.]+ (\w+ \w+)$", output, re.M)
