"""What a script says: rules for commands, access points that come and go, and mistakes by their line."""

import dataclasses
import re
import shlex


class Mistake(Exception):
    """A line that means nothing; the text names it and says what is known."""


def number(text):
    if not re.fullmatch(r"-?[0-9]+(\.[0-9]+)?", text):
        raise Mistake(f"\"{text}\" is no number")
    return float(text)


@dataclasses.dataclass
class AccessPoint:
    name: str
    key: str = ""    # empty: open
    channel: int = 1
    signal: int = -50
    times: list = dataclasses.field(default_factory=list)    # seconds from the first join on: it vanishes, is back, ...

    @staticmethod
    def of(words):
        """From the words after "ap"."""
        if not words or not 1 <= len(words[0].encode()) <= 32:
            raise Mistake("a name of 1 to 32 bytes must follow \"ap\"")
        point = AccessPoint(words.pop(0))
        if words and words[0] not in PROPERTIES:
            point.key = words.pop(0)
            if not re.fullmatch(r"[ -~]{8,63}|[0-9A-Fa-f]{64}", point.key):
                raise Mistake(f"\"{point.key}\" is no key, which has 8 to 63 characters or 64 hexadecimal digits, "
                              f"and no property; known are {', '.join(PROPERTIES)}")
        for name, value in zip(words[::2], words[1::2] + [""]):
            if name not in PROPERTIES:
                raise Mistake(f"\"{name}\" is not known after an access point; known are {', '.join(PROPERTIES)}")
            if number(value) not in PROPERTIES[name]:
                raise Mistake(f"{name} {value} is not possible")
            setattr(point, name, int(number(value)))
        return point

    def change(self, word, words):
        """A line "vanish SECONDS" or "return SECONDS"; they take turns, and time goes on."""
        if word != ("return" if len(self.times) % 2 else "vanish"):
            raise Mistake(f"vanish and return take turns, and vanish is the first of {self.name}")
        if len(words) != 1 or number(words[0]) <= max(self.times, default=0):
            raise Mistake(f"one time in seconds must follow \"{word}\", later than the one before")
        self.times.append(number(words[0]))


PROPERTIES = {"channel": [*range(1, 14), *range(36, 166)], "signal": range(-100, 0)}
STEPS = {"wait": r"[0-9]+(\.[0-9]+)?", "say": r".+", "use": r".*", "end": r""}    # each with what follows the word
WORDS = "ap NAME [KEY] [channel NUMBER] [signal DBM], vanish SECONDS, return SECONDS, COMMAND => REPLY; STEP..., [STATE]"


class Script:
    """The rules: state -> command -> steps, each a word and its text. And the access points, in order."""

    def __init__(self, text, name):
        self.states = {"": {}}
        self.points = []
        self.rules = self.states[""]
        used = []    # (line, state)
        for line_number, line in enumerate(text.splitlines(), 1):
            try:
                used += [(line_number, state) for state in self.take(line)]
            except (Mistake, ValueError) as mistake:
                raise SystemExit(f"{name}, line {line_number}: {mistake}") from None
        for line_number, state in used:
            if state not in self.states:
                raise SystemExit(f"{name}, line {line_number}: there is no state [{state}]; there is "
                                 f"{', '.join(f'[{known}]' for known in self.states if known) or 'none'}")

    def take(self, line):
        """Takes one line in; returns the states that it uses."""
        if not line.strip() or line.lstrip().startswith("#"):
            return []
        if state := re.fullmatch(r"\[(.+)\]\s*", line):
            self.rules = self.states.setdefault(state[1], {})
            return []
        command, arrow, answer = line.partition(" => ")
        if not arrow:
            self.take_point(*shlex.split(line))
            return []
        reply, *steps = [step.lstrip(" ").replace("\\n", "\n").replace("\\t", "\t") for step in answer.split(";")]
        steps = [step.partition(" ")[::2] for step in steps if step.strip()]
        for word, text in steps:
            if word not in STEPS:
                raise Mistake(f"\"{word}\" is not known after a reply; known are {', '.join(STEPS)}")
            if not re.fullmatch(STEPS[word], text, re.S):
                raise Mistake(f"\"{text}\" is not possible after \"{word}\"")
        self.rules[command] = [("reply", reply)] + steps
        return [text for word, text in steps if word == "use"]

    def take_point(self, word, *words):
        if word == "ap":
            point = AccessPoint.of(list(words))
            if any(point.name == other.name for other in self.points):
                raise Mistake(f"there is another access point {point.name}")
            self.points.append(point)
        elif word not in ("vanish", "return"):
            raise Mistake(f"\"{word}\" is not known; known are {WORDS}")
        elif not self.points:
            raise Mistake(f"\"{word}\" is about the access point above it, and there is none")
        else:
            self.points[-1].change(word, words)

    def steps(self, state, command):
        """What a rule wants done; None when there is no rule."""
        for rules in (self.states.get(state, {}), self.states[""]):
            fitting = [begin for begin in rules if command.startswith(begin)]
            if fitting:
                return rules[max(fitting, key=len)]
        return None
