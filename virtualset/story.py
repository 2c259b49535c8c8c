"""Reads the daemon's log: which lines tell what happens to the television, and when."""

import re

# Pattern of the message, and what it means to a person.
CHAPTERS = [
    (r"new interface (\S+)", "found the interface {0}"),
    (r"get eth0 mac (\S+) from board config", "eth0 takes its MAC address {0} from the board"),
    (r"link:interface available, start to active iface (\S+)", "{0} has a cable: activated"),
    (r"link:interface removed (\S+)", "{0} has lost its cable: removed"),
    (r"Set IP mode to  dhcp", "asks for an address by DHCP"),
    (r"(\S+) got IP\.\s+IP: (\S+)\s+MASK: (\S+)", "lease: {0} has {1}, mask {2}"),
    (r"got IP\..*DNS1: (\S+)", "resolver: {0}"),
    (r"message: down", "the address is lost"),
    (r"add dhcp down event, count is (\d+)", "will try again (attempt {0} before this one)"),
    (r"set gateway to (\S+)", "default route through {0}"),
    (r"set DNS to ([^,]+),", "resolver: {0}"),
]


def moment(line):
    """The machine's monotonic time at which a log line was written, None for other output."""
    match = re.match(r"(\d+\.\d+) [A-Z]+ ", line)
    return float(match[1]) if match else None


def lease_time(lines):
    """From the daemon's first line to its first lease, in words; empty without a lease."""
    start = next((moment(line) for line in lines if moment(line) is not None), None)
    lease = next((moment(line) for line in lines if "got IP" in line), None)
    return "" if start is None or lease is None else f"{lease - start:.1f} s"


class Story:
    """Turns log lines into sentences with the time since the first line."""

    def __init__(self):
        self._start = None

    def tell(self, line):
        now = moment(line)
        if now is None:
            return
        if self._start is None:
            self._start = now
            yield "0.0 s  the daemon starts"
        for pattern, sentence in CHAPTERS:
            match = re.search(pattern, line)
            if match:
                yield f"{now - self._start:.1f} s  {sentence.format(*match.groups())}"
