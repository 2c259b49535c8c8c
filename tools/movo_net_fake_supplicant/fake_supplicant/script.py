"""What a script says."""

import re


class Script:
    """The rules: state -> command -> steps, each a word and its text."""

    def __init__(self, text):
        self.states = {"": {}}
        rules = self.states[""]
        for number, line in enumerate(text.splitlines(), 1):
            if not line.strip() or line.startswith("#"):
                continue
            if state := re.fullmatch(r"\[(.+)\]\s*", line):
                rules = self.states.setdefault(state[1], {})
                continue
            command, arrow, answer = line.partition(" => ")
            if not arrow:
                raise SystemExit(f"line {number} of the script has no \" => \": {line}")
            reply, *steps = [step.lstrip(" ").replace("\\n", "\n").replace("\\t", "\t") for step in answer.split(";")]
            rules[command] = [("reply", reply)] + [step.partition(" ")[::2] for step in steps]

    def steps(self, state, command):
        for rules in (self.states.get(state, {}), self.states[""]):
            fitting = [begin for begin in rules if command.startswith(begin)]
            if fitting:
                return rules[max(fitting, key=len)]
        return [("reply", "OK\n")]
