"""The virtual set as a Python object: start it, run commands in it, pull its cables, follow its log, stop it.

    with VirtualSet(nics=["user"]) as tv:
        status, output = tv.run("ip address")
        tv.cable("eth0", False)
        tv.log.wait_for(r"link:interface removed eth0", 5)

The machine keeps nothing: its root is the cached one under a layer in memory, its ports are sockets without a name,
and it dies with the process that started it or when its time limit is over.
"""

import base64
import ctypes
import json
import os
import pathlib
import signal
import socket
import subprocess
import threading
import time

from .log import Log

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
CACHE = pathlib.Path(
    os.environ.get("MOVO_CACHE")
    or pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "movo-net"
)

LIBC = ctypes.CDLL(None)
KERNEL_OPTIONS = "console=ttyS0 quiet panic=-1 mitigations=off random.trust_cpu=on"
CPU = "qemu64,+rdrand"    # the plainest one is the fastest to emulate; random numbers are ready at once with rdrand
OWN_CLOCK = "shift=2,sleep=off"    # 4 ns an instruction
BOOT_SECONDS = 600
USUAL_BOOT_SECONDS = 10
SLOWER_LATER = 10    # other work may come to this computer after the machine has booted
LOOK_SECONDS = 1


class SetError(Exception):
    """The machine could not be started, has ended, or did not answer in time."""


class Port:
    """One end of a socket pair whose other end QEMU holds; read by lines."""

    def __init__(self):
        self.ours, self.theirs = socket.socketpair()
        self.lines = self.ours.makefile("rb")

    def send(self, line: bytes):
        self.ours.sendall(line + b"\n")

    def read(self, seconds: float) -> bytes:
        self.ours.settimeout(seconds)
        try:
            line = self.lines.readline()
        except TimeoutError:
            raise SetError(f"the virtual set did not answer within {seconds:.0f} s") from None
        except ConnectionError:
            line = b""
        if not line:
            raise SetError("the virtual set has ended")
        return line


class VirtualSet:
    """One machine.

    nics   What each of eth0, eth1, ... is plugged into: "user" is a home network made by QEMU (DHCP server, gateway
           and resolver at 10.0.2.2 and 10.0.2.3), "cable" is a cable whose far end is the interface "far" in the
           machine's network namespace cable0, cable1, ..., "wakeable" is as "user", with a card that can be told to wake
           the set; the others cannot.
    chip   Whether a USB device stands for a Wi-Fi chip; `Air` gives it its radio.
    limit  Seconds of this computer after which the machine is killed, whatever it does.
    data   Folder of this computer that is the machine's /data, but for /data/wifi, and outlives it; without one /data is
           gone at its end.
    clock  "real", or "own": a second of the machine is then a number of instructions, and time in which it only waits is
           skipped. What happens in the machine does not depend on the speed of this computer; scenarios run like that.
    """

    def __init__(self, nics=("user",), chip=False, limit=1800, data=None, clock="real", folder=CACHE / "set"):
        self.nics = list(nics)
        self.chip = chip
        self.data = data
        self.limit = limit
        self.clock = clock
        self.slowness = 1.0
        self.folder = folder
        self.log = Log()
        self.console = Log()
        self._qemu = None
        self._timer = None
        self._commands, self._monitor, self._requests, self._terminal = Port(), Port(), Port(), Port()
        self._monitor_lock = threading.Lock()
        self.terminal_free = threading.Event()
        self.story_told, self.story_shown = threading.Event(), threading.Event()

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()

    def start(self):
        """Boots the machine and returns when it takes commands."""
        if not (self.folder / "initrd").exists():
            raise SetError(f"the virtual set is not in {self.folder}; ./run and ./test e2e build it")
        log, console = Port(), Port()
        ports = [log, console, self._commands, self._monitor, self._requests, self._terminal]
        try:
            self._qemu = subprocess.Popen(
                self._command_line(*(port.theirs.fileno() for port in ports)),
                pass_fds=[port.theirs.fileno() for port in ports],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.PIPE,
                preexec_fn=_die_with_parent,
            )
        except FileNotFoundError:
            raise SetError("qemu-system-x86_64 is missing; ./run installs it (package qemu-system-x86)") from None
        for port in ports:
            port.theirs.close()
        self._timer = threading.Timer(self.limit, self._qemu.kill)
        self._timer.daemon = True
        self._timer.start()
        self.console.follow(console.lines)
        self.log.follow(log.lines)
        self._monitor_hello()
        threading.Thread(target=self._serve_requests, daemon=True).start()
        begin = time.monotonic()
        try:
            self._commands.read(BOOT_SECONDS)
            self.slowness = max(1.0, (time.monotonic() - begin) / USUAL_BOOT_SECONDS)
        except SetError as error:
            self.stop()
            raise SetError(f"{error}; its last words:\n" + "\n".join(self.console.lines[-15:])) from None

    def stop(self):
        """Ends the machine at once; nothing of it remains."""
        if self._qemu:
            self._timer.cancel()
            self._qemu.kill()
            self._qemu.wait()
            self._qemu.stderr.close()

    def patience(self, seconds):
        """The real time after which what takes so long on a usual computer hangs: measured once, when it booted."""
        return seconds * self.slowness * SLOWER_LATER

    def uptime(self):
        """Seconds of the machine's own clock since it booted."""
        self._commands.send(b"uptime")
        return float(self._commands.read(self.patience(60)).split()[1])

    def wait_for(self, pattern, seconds, start=0):
        """The index of the first line of the log from `start` on that matches; TimeoutError when it does not come
        within so many seconds of the machine."""
        end = self.uptime() + seconds
        while True:
            try:
                return self.log.wait_for(pattern, LOOK_SECONDS, start)
            except TimeoutError:
                if self.log.ended or self.uptime() > end:
                    raise

    def run(self, command, seconds=60):
        """Runs a shell command in the machine; returns its exit status and what it printed on both outputs. The limit
        is in seconds of the machine."""
        status, output = self._ask(command, seconds)
        return status, output.decode(errors="replace")

    def check(self, command, seconds=60):
        """Runs a command that has to succeed; returns what it printed."""
        status, output = self.run(command, seconds)
        if status:
            raise SetError(f"{command!r} ended with status {status}: {output.strip()}")
        return output

    def read(self, path) -> bytes:
        """Brings a file of the machine back."""
        status, content = self._ask(f"cat '{path}'", 60)
        if status:
            raise SetError(content.decode(errors="replace").strip())
        return content

    def spawn(self, command):
        """Starts a command in a session of its own, its output in the log; returns its process id."""
        return int(self.check(f"setsid sh -c {_quoted('exec ' + command)} > /run/log 2>&1 & echo $!"))

    def write(self, path, content: bytes):
        """Puts a file into the machine."""
        self.check(f"base64 -d > '{path}' <<END\n{base64.encodebytes(content).decode()}END")

    def on_terminal(self, command):
        """Starts a command on the machine's terminal, its errors in the log; returns the terminal's socket.

        `terminal_free` is set when the command has ended, `story_told` then or when it says so; it may then wait for
        `story_shown`.
        """
        self.terminal_free.clear()
        self.story_told.clear()
        self.story_shown.clear()
        free = "echo terminal free > /dev/virtio-ports/request"
        self.check(f"setsid --ctty sh -c {_quoted(f'{command}; {free}')} < /dev/hvc0 > /dev/hvc0 2> /run/log &")
        return self._terminal.ours

    def cable(self, nic, plugged):
        """Plugs the NIC's cable in or pulls it out. Any thread."""
        with self._monitor_lock:
            self._monitor.send(json.dumps(
                {"execute": "set_link", "arguments": {"name": nic, "up": plugged}}).encode())
            self._monitor_answer()

    def _serve_requests(self):
        """What programs in the machine ask of its surroundings, a line each: "cable eth0 off"."""
        try:
            for line in self._requests.lines:
                self._requests.send(self._serve(line.decode(errors="replace").split()).encode())
        except (OSError, SetError):
            pass    # the machine has ended

    def _serve(self, words):
        match words:
            case ["cable", nic, ("on" | "off") as state] if nic in [f"eth{n}" for n in range(len(self.nics))]:
                self.cable(nic, state == "on")
                return "done"
            case ["terminal", "free"]:
                self.story_told.set()
                self.terminal_free.set()
                return "done"
            case ["story", "told"]:
                self.story_told.set()
                self.story_shown.wait(60)    # the program on the terminal may end with the answer
                return "done"
        return "there is no such thing"

    def _ask(self, command, seconds):
        self._commands.send(b"%d %s" % (seconds, _escaped(command.encode())))
        status, _, output = self._commands.read(self.patience(seconds)).partition(b" ")
        return int(status), base64.b64decode(output)

    def _monitor_hello(self):
        try:
            self._monitor.read(30)
        except SetError:
            self._qemu.kill()
            message = self._qemu.stderr.read().decode(errors="replace").strip()
            raise SetError(f"QEMU does not start: {message}") from None
        self._monitor.send(b'{"execute": "qmp_capabilities"}')
        self._monitor_answer()

    def _monitor_answer(self):
        while True:
            answer = json.loads(self._monitor.read(30))
            if "error" in answer:
                raise SetError(answer["error"]["desc"])
            if "return" in answer:
                return

    def _command_line(self, log, console, commands, monitor, requests, terminal):
        line = [
            "qemu-system-x86_64", "-nodefaults", "-no-user-config", "-display", "none", "-no-reboot",
            "-machine", "pc", "-accel", "tcg", "-cpu", CPU, "-m", "512",
            "-kernel", f"{self.folder}/vmlinuz", "-initrd", f"{self.folder}/initrd", "-append", KERNEL_OPTIONS,
            "-chardev", f"socket,id=console,fd={console}", "-serial", "chardev:console",
            "-chardev", f"socket,id=monitor,fd={monitor}", "-mon", "chardev=monitor,mode=control",
            "-device", "virtio-serial-pci",
        ]
        if self.clock == "own":
            line += ["-icount", OWN_CLOCK]
        line += ["-chardev", f"socket,id=terminal,fd={terminal}", "-device", "virtconsole,chardev=terminal"]
        for name, descriptor in (("log", log), ("command", commands), ("request", requests)):
            line += ["-chardev", f"socket,id={name},fd={descriptor}",
                     "-device", f"virtserialport,chardev={name},name={name}"]
        line += _folder("movo", REPOSITORY, "on")
        if self.data:
            line += _folder("data", self.data, "off")
        for number, plug in enumerate(self.nics):
            line += _nic(number, plug)
        if self.chip:
            line += ["-usb", "-device", "usb-tablet"]    # 0627:0001 for lsusb
        return line


def _folder(tag, path, readonly):
    return ["-fsdev", f"local,id={tag},path={path},security_model=none,readonly={readonly},multidevs=remap",
            "-device", f"virtio-9p-pci,fsdev={tag},mount_tag={tag}"]


def _nic(number, plug):
    network = f"hubport,hubid={number}" if plug == "cable" else "user,ipv6=off"
    card = "i82558b" if plug == "wakeable" else "e1000"
    line = ["-netdev", f"{network},id=net{number}",
            "-device", f"{card},id=eth{number},netdev=net{number},romfile="]
    if plug == "cable":
        line += ["-netdev", f"hubport,hubid={number},id=far{number}",
                 "-device", f"virtio-net-pci,netdev=far{number},romfile=,mac=52:54:00:ff:00:{number:02x}"]
    return line


def _die_with_parent():
    LIBC.prctl(1, signal.SIGKILL)    # PR_SET_PDEATHSIG


def _quoted(text):
    return "'" + text.replace("'", "'\\''") + "'"


def _escaped(text: bytes):
    """A line that printf's %b turns back into the text."""
    escapes = {ord("\\"): rb"\\", ord("\n"): rb"\n"}
    plain = range(ord(" "), 127)
    return b"".join(escapes.get(byte) or (b"%c" if byte in plain else rb"\0%03o") % byte for byte in text)
