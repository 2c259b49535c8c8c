"""Lines that arrive while somebody waits for some of them."""

import re
import threading


class Log:
    """Collects the lines of one port; any thread may read `lines` or wait."""

    def __init__(self):
        self.lines = []
        self.ended = False
        self._change = threading.Condition()

    def follow(self, source):
        threading.Thread(target=self._collect, args=(source,), daemon=True).start()

    def wait_for(self, pattern, seconds, start=0):
        """The index of the first line from `start` on that matches; TimeoutError shows the lines that came instead."""
        expression = re.compile(pattern)
        position = start

        def found():
            nonlocal position
            while position < len(self.lines) and not expression.search(self.lines[position]):
                position += 1
            return position < len(self.lines)

        with self._change:
            self._change.wait_for(lambda: found() or self.ended, seconds)
            if not found():
                raise TimeoutError(f"no line matches {pattern!r} within {seconds} s:\n" + "\n".join(self.lines[start:]))
            return position

    def next_lines(self, start, seconds):
        """The lines from `start` on, after at most this long for one to come."""
        with self._change:
            self._change.wait_for(lambda: len(self.lines) > start or self.ended, seconds)
            return self.lines[start:]

    def _collect(self, source):
        try:
            for line in source:
                with self._change:
                    self.lines.append(line.decode(errors="replace").rstrip("\r\n"))
                    self._change.notify_all()
        except OSError:
            pass
        with self._change:
            self.ended = True
            self._change.notify_all()
