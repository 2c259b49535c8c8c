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
        seen = start

        def found():
            nonlocal seen
            while seen < len(self.lines):
                if expression.search(self.lines[seen]):
                    return True
                seen += 1
            return self.ended

        with self._change:
            if not self._change.wait_for(found, seconds) or self.ended:
                raise TimeoutError(f"no line matches {pattern!r} within {seconds} s:\n" + "\n".join(self.lines[start:]))
        return seen

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
