"""The access points around, and what a supplicant reports of them."""

JOIN_SECONDS = 0.5
SCAN_SECONDS = 1
REFUSAL_SECONDS = 2


def printable(name):
    """A name as a supplicant lists it: what is not plain text as \\xNN."""
    return "".join(chr(byte) if 0x20 <= byte < 0x7F and byte not in b"\"\\" else
                   "\\" + chr(byte) if byte in b"\"\\" else f"\\x{byte:02x}" for byte in name.encode())


def frequency(channel):
    return 2407 + 5 * channel if channel < 36 else 5000 + 5 * channel


class Air:
    """Answers what is about access points, on a supplicant with one network."""

    def __init__(self, points, after, say):
        self.after = after    # after(SECONDS, FUNCTION)
        self.say = say
        self.points = points
        self.gone = set()     # names
        self.begun = set()    # names of those whose times count already
        self.network = {}     # what SET_NETWORK has set
        self.wanted = False
        self.joined = None
        self.attempt = 0      # a later one makes what is due of this one void
        self.answers = {"SCAN": self.scan, "SCAN_RESULTS": self.list, "ADD_NETWORK": self.add, "SET_NETWORK": self.set,
                        "ENABLE_NETWORK": self.enable, "SELECT_NETWORK": self.enable, "DISABLE_NETWORK": self.leave,
                        "REMOVE_NETWORK": self.leave, "DISCONNECT": self.leave}

    def answer(self, command):
        """The reply, None to what is not about access points."""
        word, _, rest = command.partition(" ")
        return self.answers[word](rest) if word in self.answers else None

    def there(self):
        return [point for point in self.points if point.name not in self.gone]

    def bssid(self, point):
        return f"02:00:00:00:00:{self.points.index(point) + 1:02x}"

    def scan(self, _):
        self.after(SCAN_SECONDS, lambda: self.say("<3>CTRL-EVENT-SCAN-RESULTS "))
        return "OK\n"

    def list(self, _):
        lines = [f"{self.bssid(point)}\t{frequency(point.channel)}\t{point.signal}\t"
                 f"{'[WPA2-PSK-CCMP]' if point.key else ''}[ESS]\t{printable(point.name)}\n" for point in self.there()]
        return "bssid / frequency / signal level / flags / ssid\n" + "".join(lines)

    def add(self, _):
        self.network = {}
        return "0\n"

    def set(self, rest):
        _, field, value = (rest.split(" ", 2) + ["", ""])[:3]
        if field == "psk" and not (value.startswith('"') and 10 <= len(value) <= 65 or len(value) == 64):
            return "FAIL\n"
        self.network[field] = value[1:-1] if value.startswith('"') else value
        return "OK\n"

    def enable(self, _):
        self.wanted = True
        self.look()
        return "OK\n"

    def look(self):
        """Begins to join the network that is wanted, when its access point is there."""
        self.attempt += 1
        point = next((point for point in self.there() if point.name == self.network.get("ssid")), None)
        if point is None:
            self.say("<3>CTRL-EVENT-NETWORK-NOT-FOUND ")
        elif self.network.get("psk", "") == point.key:
            self.later(JOIN_SECONDS, lambda: self.join(point))
        else:
            self.later(REFUSAL_SECONDS, lambda: self.refuse(point))

    def later(self, seconds, function):
        """Calls it unless another attempt begins, or this one ends, before that."""
        attempt = self.attempt
        self.after(seconds, lambda: function() if attempt == self.attempt else None)

    def join(self, point):
        self.joined = point
        self.say(f"<3>CTRL-EVENT-CONNECTED - Connection to {self.bssid(point)} completed [id=0 id_str=]")
        if point.name not in self.begun:
            self.begun.add(point.name)
            for index, seconds in enumerate(point.times):
                self.after(seconds, lambda change=self.come if index % 2 else self.vanish: change(point))

    def refuse(self, point):
        self.say(f"<3>CTRL-EVENT-DISCONNECTED bssid={self.bssid(point)} reason=15")
        self.say("<3>WPA: 4-Way Handshake failed - pre-shared key may be incorrect")

    def lose(self, reason):
        """Ends an attempt or a connection."""
        self.attempt += 1
        if self.joined:
            self.say(f"<3>CTRL-EVENT-DISCONNECTED bssid={self.bssid(self.joined)} reason={reason} locally_generated=1")
            self.joined = None

    def leave(self, _):
        self.wanted = False
        self.lose(3)
        return "OK\n"

    def vanish(self, point):
        self.gone.add(point.name)
        if self.network.get("ssid") == point.name:
            self.lose(4)

    def come(self, point):
        self.gone.discard(point.name)
        if self.wanted and not self.joined:
            self.look()
