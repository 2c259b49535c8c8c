"""The steps of ./run that are not a command: on a terminal a line with the seconds, elsewhere a line at each end."""

import contextlib
import os
import threading
import time

LIVE = os.environ.get("setup_live") == "yes"
START = int(os.environ.get("setup_start") or time.time() * 1e6) / 1e6


@contextlib.contextmanager
def step(name):
    """Shows that the body runs, and how long it took; a body that fails leaves no line on the terminal."""
    begin, over = time.time(), threading.Event()
    drawing = threading.Thread(target=_draw, args=(name, begin, over))
    if LIVE:
        drawing.start()
    else:
        _tell(name)
    try:
        yield
    finally:
        if LIVE:
            over.set()
            drawing.join()
    _tell(f"{name}: {time.time() - begin:.1f} s")


def _tell(text):
    print(f"[{time.time() - START:6.1f} s] {text}", flush=True)


def _draw(name, begin, over):
    while True:
        print(f"\r{name}: {time.time() - begin:.0f} s\033[K", end="", flush=True)
        if over.wait(1):
            break
    print("\r\033[K", end="", flush=True)
