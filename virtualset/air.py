"""The air around a television: access points that come and go, from a world described in files.

    with VirtualSet(chip=True) as tv:
        air = Air(tv, "home")
        air.appear()
        tv.spawn(launch(DAEMON))
        air.vanish("street")

worlds/NAME/*.conf has one access point a file, in hostapd's own language; guest/access_point tells about addresses.
"""

import pathlib

WORLDS = pathlib.Path(__file__).parent / "worlds"
SPARE_RADIOS = 4    # for two phones and two strangers
CHIP = "brcm_43569"


def launch(command, chip=CHIP):
    """The command line that starts a program as a set with this chip does."""
    return f"/movo/board/launch {chip} {command}"


class Air:
    """One world of access points, around a VirtualSet with a chip; all of them are off at first."""

    def __init__(self, machine, world="home"):
        self.machine = machine
        self.names = sorted(path.stem for path in (WORLDS / world).glob("*.conf"))
        machine.check(f"/movo/virtualset/guest/radios {len(self.names) + SPARE_RADIOS}")
        machine.write("/run/air/world", f"/movo/virtualset/worlds/{world}\n".encode())

    def appear(self, *names):
        """Switches access points on, all of them unless some are named."""
        self._tell(names, "on", "[ -e /run/air/$name.pid ]")

    def vanish(self, *names):
        """Cuts the power of access points."""
        self._tell(names, "off", "[ ! -e /run/air/$name.pid ]")

    def _tell(self, names, word, done):
        names = " ".join(names or self.names)
        command = f"/movo/virtualset/guest/commands/air {word} $name"
        self.machine.check(f"for name in {names}; do {done} || {command} || exit; done")
