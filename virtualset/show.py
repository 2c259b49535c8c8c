"""What ./run shows: a television that boots, its log with the story beside it, and how it ends or goes on."""

import argparse
import os
import pathlib
import shutil
import sys
import threading
import time

from .machine import REPOSITORY, SetError, VirtualSet
from .story import Story, lease_time
from .summary import summarise
from .terminal import attach

RELEASE = "/movo/build/release"
SHELL = f"{RELEASE}/tools/movo_net_shell/movo_net_shell --programs /movo/virtualset/guest/commands"
KEPT = REPOSITORY / "build" / "television"
LOG = REPOSITORY / "build" / "run.log"
LEASE_SECONDS = 90
SESSION_SECONDS = 4 * 3600
ON_TERMINAL = sys.stdin.isatty() and sys.stdout.isatty()


class Follower(threading.Thread):
    """Writes the log to a file; until told to be quiet it also prints it, each telling line followed by its story."""

    def __init__(self, tv):
        super().__init__(daemon=True)
        self.tv = tv
        self.quiet = False

    def run(self):
        story = Story()
        dim, bold, plain = ("\033[2m", "\033[1m", "\033[0m") if ON_TERMINAL else ("", "", "")
        seen = 0
        with LOG.open("w") as file:
            while not self.tv.log.ended:
                for line in self.tv.log.next_lines(seen, 1):
                    seen += 1
                    print(line, file=file, flush=True)
                    if not self.quiet:
                        print(f"{dim}  {line}{plain}", flush=True)
                        for sentence in story.tell(line):
                            print(f"{bold}    >> {sentence}{plain}", flush=True)


def wait_for_lease(tv, runs):
    """Until there is a lease and the log says which route is set, or the program ended, or the time is over."""
    deadline = time.monotonic() + LEASE_SECONDS
    while time.monotonic() < deadline and runs():
        try:
            tv.log.wait_for("set gateway to", 5)
            return
        except TimeoutError:
            pass


def watch(tv):
    """The daemon, from its start until the television is online; returns whether it is."""
    daemon = tv.spawn(f"env KEST_DEBUG=3 {RELEASE}/recovery/recovery_net")
    wait_for_lease(tv, lambda: tv.run(f"kill -0 {daemon}")[0] == 0)
    return summarise(tv, daemon, LEASE_SECONDS)


def talk(tv, follower):
    """The shell instead of the daemon: when it is online the person has it."""
    columns, rows = shutil.get_terminal_size()
    tv.check(f"stty rows {rows} cols {columns} < /dev/hvc0")
    terminal = tv.on_terminal(f"env KEST_DEBUG=3 TERM={terminal_type(tv)} {SHELL}")
    wait_for_lease(tv, lambda: not tv.terminal_free.is_set())
    time.sleep(1)    # the route that was announced is there a moment later
    follower.quiet = True
    print(f"""
From start to lease: {lease_time(tv.log.lines) or 'none yet'}. The log goes on in {LOG}.
Everything the network layer offers is a command now (help, the tab key), and so is the cable: cable off, cable on.
quit, or the end of input (Ctrl-D), switches the television off.
""")
    terminal.sendall(b"status\n")
    attach(terminal, tv.terminal_free)
    print("\nThe television is off.")


def terminal_type(tv):
    """This terminal's type where the machine knows it."""
    name = os.environ.get("TERM", "")
    known = name.isascii() and name.replace("-", "").isalnum() and tv.run(f"ls /lib/terminfo/*/{name}")[0] == 0
    return name if known else "vt100"


def play(tv, script, follower):
    """A script of the shell, whose output is shown instead of the log; returns the shell's status."""
    follower.quiet = True
    tv.write("/tmp/script", script)
    terminal = tv.on_terminal(f"env KEST_DEBUG=3 {SHELL} < /tmp/script; echo $? > /tmp/status")
    attach(terminal, tv.terminal_free, keyboard=False)
    status = int(tv.check("cat /tmp/status"))
    print(f"\nThe script ended with status {status}; the log is in {LOG}.")
    return status


def parse_arguments():
    parser = argparse.ArgumentParser(add_help=False)
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("script", nargs="?", type=pathlib.Path)
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    script = arguments.script.read_bytes() if arguments.script else None
    if arguments.fresh:
        shutil.rmtree(KEPT, ignore_errors=True)
    KEPT.mkdir(parents=True, exist_ok=True)
    print(f"  The television keeps its settings in {KEPT}; ./run --fresh forgets them.", flush=True)
    with VirtualSet(limit=SESSION_SECONDS if ON_TERMINAL else 300, data=KEPT) as tv:
        follower = Follower(tv)
        follower.start()
        if script is not None:
            return play(tv, script, follower)
        if ON_TERMINAL:
            talk(tv, follower)
            return 0
        return 0 if watch(tv) else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (SetError, OSError) as error:
        sys.exit(f"run: {error}")
    except KeyboardInterrupt:
        sys.exit("\nrun: switched off")
