"""Answers at a control socket what the script says."""

import pathlib
import select
import socket
import time


class Supplicant:
    def __init__(self, script, path):
        self.script = script
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
        (_, reply), *steps = self.script.steps(self.state, command)
        self.send(reply, client)
        self.perform(steps)

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
