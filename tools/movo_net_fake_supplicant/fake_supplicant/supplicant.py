"""Answers at a control socket what the script says."""

import pathlib
import select
import socket
import time

from fake_supplicant.air import Air


class Supplicant:
    def __init__(self, script, path):
        self.script = script
        self.air = Air(script.points, self.after, self.say) if script.points else None
        self.state = ""
        self.attached = []
        self.due = []    # (when, function)
        self.ended = False
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        pathlib.Path(path).unlink(missing_ok=True)
        self.socket.bind(str(path))

    def serve(self):
        while not self.ended:
            wait = max(0, min(when for when, _ in self.due) - time.monotonic()) if self.due else None
            if select.select([self.socket], [], [], wait)[0]:
                command, client = self.socket.recvfrom(4096)
                self.answer(command.decode(errors="replace"), client)
            now = time.monotonic()
            ripe = sorted((entry for entry in self.due if entry[0] <= now), key=lambda entry: entry[0])
            self.due = [entry for entry in self.due if entry[0] > now]
            for _, function in ripe:
                function()

    def after(self, seconds, function):
        self.due.append((time.monotonic() + seconds, function))

    def answer(self, command, client):
        if command == "ATTACH":
            self.attached.append(client)
        elif command == "DETACH":
            self.attached = [other for other in self.attached if other != client]
        steps = self.script.steps(self.state, command)
        if steps is None:
            self.send(self.answer_without_rule(command), client)
        else:
            self.send(steps[0][1], client)
            self.perform(steps[1:])

    def answer_without_rule(self, command):
        """What the access points have to do with, when there are any; OK to everything else."""
        if self.air and command == "TERMINATE":
            self.ended = True
        reply = self.air.answer(command) if self.air else None
        return "OK\n" if reply is None else reply

    def perform(self, steps):
        for number, (word, text) in enumerate(steps):
            if word == "wait":
                self.after(float(text), lambda rest=steps[number + 1:]: self.perform(rest))
                return
            if word == "say":
                self.say(text)
            elif word == "use":
                self.state = text
            elif word == "end":
                self.ended = True

    def say(self, text):
        for client in self.attached:
            self.send(text, client)

    def send(self, text, client):
        try:
            self.socket.sendto(text.encode(), socket.MSG_DONTWAIT, client)
        except OSError:
            self.attached = [other for other in self.attached if other != client]    # it has gone
