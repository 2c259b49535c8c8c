"""Joins this terminal with the machine's: every key goes there, everything shown there is shown here."""

import contextlib
import os
import select
import sys
import termios
import tty

LAST_WORDS_SECONDS = 0.5


@contextlib.contextmanager
def _raw(keyboard):
    """Keys are passed on as struck, Ctrl-C too: the machine's terminal makes of them what they mean."""
    before = termios.tcgetattr(keyboard)
    try:
        tty.setraw(keyboard)
        yield
    finally:
        termios.tcsetattr(keyboard, termios.TCSADRAIN, before)


def attach(terminal, free, keyboard=True):
    """Until the program on the machine's terminal has ended; without keyboard it is only shown."""
    sources = [terminal] + ([sys.stdin.fileno()] if keyboard else [])
    with _raw(sys.stdin.fileno()) if keyboard else contextlib.nullcontext():
        while True:
            ended = free.is_set()    # what it said before is still to be shown
            ready = select.select(sources, [], [], LAST_WORDS_SECONDS)[0]
            if terminal in ready:
                shown = terminal.recv(4096)
                if not shown:
                    return
                os.write(sys.stdout.fileno(), shown if keyboard else shown.replace(b"\r", b""))
            elif ended:
                return
            if keyboard and sources[1] in ready:
                terminal.sendall(os.read(sources[1], 1024))
