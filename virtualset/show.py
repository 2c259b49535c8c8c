"""What ./run shows: a television that boots, its log with the story beside it, and how it ends or goes on."""

import argparse
import contextlib
import os
import pathlib
import shutil
import sys
import threading
import time

from .air import Air, launch
from .machine import REPOSITORY, SetError, VirtualSet
from .progress import step
from .story import Story
from .summary import online, show_summary
from .terminal import attach

RELEASE = "/movo/build/release"
SHELL = f"{RELEASE}/tools/movo_net_shell/movo_net_shell --programs /movo/virtualset/guest/commands"
STORIES = pathlib.Path(__file__).parent / "stories"
WHOLE = ["ethernet", "wifi"]
KEPT = REPOSITORY / "build" / "television"
LOG = REPOSITORY / "build" / "run.log"
LEASE_SECONDS = 90
SESSION_SECONDS = 4 * 3600
ON_TERMINAL = sys.stdin.isatty() and sys.stdout.isatty()


class Follower(threading.Thread):
    """Writes the log to a file; while it is `shown` it also prints it, each telling line followed by its story."""

    def __init__(self, tv):
        super().__init__(daemon=True)
        self.tv = tv
        self.shown = False

    def run(self):
        story = Story()
        dim, bold, plain = ("\033[2m", "\033[1m", "\033[0m") if ON_TERMINAL else ("", "", "")
        seen = 0
        with LOG.open("w") as file:
            while not self.tv.log.ended:
                for line in self.tv.log.next_lines(seen, 1):
                    seen += 1
                    print(line, file=file, flush=True)
                    if self.shown:
                        print(f"{dim}  {line}{plain}", flush=True)
                        for sentence in story.tell(line):
                            print(f"{bold}    >> {sentence}{plain}", flush=True)


def watch(tv, follower):
    """The daemon, from its start until the television is online; returns whether it is."""
    follower.shown = True
    daemon = tv.spawn(f"env KEST_DEBUG=3 {RELEASE}/recovery/recovery_net")
    tv.run(f"/movo/virtualset/guest/commands/address eth0 & while kill -0 {daemon} && kill -0 $!; do sleep 0.2; done", 90)
    with contextlib.suppress(TimeoutError):    # the client's route was there first, and makes way for the daemon's
        tv.wait_for("set gateway to", 10)
    show_summary(tv)
    return online(tv)


def play(tv, script):
    """A script for the shell instead of the daemon; at a terminal the person goes on. Returns the shell's status."""
    tv.write("/tmp/script", script)
    command = f"env KEST_DEBUG=3 TERM={terminal_type(tv)} {SHELL} --play /tmp/script"
    keyboard = "" if ON_TERMINAL else "< /dev/null"
    if tv.chip:
        command = launch(command)
    columns, rows = shutil.get_terminal_size()
    tv.check(f"stty rows {rows} cols {columns} < /dev/hvc0")
    terminal = tv.on_terminal(f"{command} {keyboard}; echo $? > /tmp/status")
    attach(terminal, tv.story_told, keyboard=False)
    show_summary(tv)
    tv.story_shown.set()
    if ON_TERMINAL:
        print(f"""
Everything the network layer offers is a command now (help, the tab key), and so is the television's surroundings: cable
off, cable on. quit, or the end of input (Ctrl-D), switches the television off. The log goes on in {LOG}.
""")
        attach(terminal, tv.terminal_free)
        print("\nThe television is off.")
    elif not tv.terminal_free.wait(30):
        raise SetError("the shell does not end")
    return int(tv.check("cat /tmp/status"))


def terminal_type(tv):
    """This terminal's type where the machine knows it."""
    name = os.environ.get("TERM", "")
    known = name.isascii() and name.replace("-", "").isalnum() and tv.run(f"ls /lib/terminfo/*/{name}")[0] == 0
    return name if known else "vt100"


def parse_arguments():
    parser = argparse.ArgumentParser(add_help=False)
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("story", nargs="?")
    return parser.parse_args()


def script_of(story):
    """The lines to play: those of a story of ours, or a file."""
    names = WHOLE if story is None else [story]
    known = all((STORIES / name).exists() for name in names)
    lines = [path.read_bytes() for path in ([STORIES / name for name in names] if known else [pathlib.Path(story)])]
    return b"\n".join(lines) + b"\ntold\n"


def surround(tv, new):
    """Gives the television its name, its supplicant, and unless it is new the access points that it may know."""
    air = Air(tv)
    if not new:
        air.appear()
    tv.check("/movo/board/start_supplicant; setprop persist.device_name MyTV")


def main():
    arguments = parse_arguments()
    script = script_of(arguments.story)
    if arguments.fresh:
        shutil.rmtree(KEPT, ignore_errors=True)
    KEPT.mkdir(parents=True, exist_ok=True)
    wired, new = arguments.story == "ethernet", arguments.story == "softap"
    if not new:
        print(f"  The television keeps its settings in {KEPT}; ./run --fresh forgets them.", flush=True)
    tv = VirtualSet(limit=SESSION_SECONDS if ON_TERMINAL else 300, data=None if new else KEPT, chip=not wired)
    try:
        with step("Booting the television"):
            tv.start()
        follower = Follower(tv)
        follower.start()
        if wired and not ON_TERMINAL:
            return 0 if watch(tv, follower) else 1
        if tv.chip:
            with step("Starting Wi-Fi and the access points around it" if not new else "Starting Wi-Fi"):
                surround(tv, new)
        return play(tv, script)
    finally:
        tv.stop()


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (SetError, OSError) as error:
        sys.exit(f"run: {error}")
    except KeyboardInterrupt:
        sys.exit("\nrun: switched off")
