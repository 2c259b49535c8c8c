"""The shell at the television's own terminal, as ./run hands it to a person."""

from television import SHELL


class Person:
    """Types at the terminal and reads what it shows."""

    def __init__(self, tv, command):
        self.shown = ""
        self.terminal = tv.machine.on_terminal(command)
        self.terminal.settimeout(tv.machine.patience(20))

    def sees(self, text):
        while text not in self.shown:
            self.shown += self.terminal.recv(4096).decode(errors="replace")
        self.shown = self.shown.partition(text)[2]

    def types(self, keys):
        self.terminal.sendall(keys.encode())


def test_the_prompt_edits_completes_and_reaches_the_cable(tv):
    tv.serve(0)
    person = Person(tv, f"env TERM=vt100 {SHELL}")
    person.sees("callback")
    person.sees("DHCP_SUCCESS eth0")
    person.types("cab\toff\r")
    person.sees("IFREMOVED eth0")
    person.types("cable on eth7\r")
    person.sees("there is no such thing: eth7\r\ncable ended with status 1\r\n")
    person.types("echo café 我家 🏠\r")    # the television has no locale
    person.sees("\ncafé 我家 🏠\r\n")
    person.types("watch\r")
    tv.plug("eth0")
    person.sees("DHCP_SUCCESS eth0")
    person.types("\x03nonsense\r")
    person.sees("unknown command: nonsense; help lists them\r\n")
    person.types("cable off\r")
    person.sees("IFREMOVED eth0")
    assert not tv.machine.terminal_free.is_set()
    person.types("\x04")    # the end of the input
    assert tv.machine.terminal_free.wait(tv.machine.patience(20))
    assert not [line for line in tv.log_lines() if "unknown command" in line]
