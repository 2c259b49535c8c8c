"""What ./run shows: a television that boots, its daemon's log with the story beside it, a summary, a prompt."""

import re
import sys
import threading
import time

from .machine import SetError, VirtualSet
from .story import Story, lease_time

DAEMON = "/movo/build/release/recovery/recovery_net"
LEASE_SECONDS = 90
SESSION_SECONDS = 4 * 3600
ON_TERMINAL = sys.stdin.isatty() and sys.stdout.isatty()

HELP = """\
  cable off     pull the network cable out
  cable on      plug it in again
  interfaces    show the interfaces, routes and resolver as the television's kernel has them
  help          this list
  quit          switch the television off"""


def follow(tv):
    """Prints the log as it comes, each telling line followed by its story."""
    story = Story()
    dim, bold, plain = ("\033[2m", "\033[1m", "\033[0m") if ON_TERMINAL else ("", "", "")
    seen = 0
    while not tv.log.ended:
        for line in tv.log.next_lines(seen, 1):
            seen += 1
            print(f"{dim}  {line}{plain}", flush=True)
            for sentence in story.tell(line):
                print(f"{bold}    >> {sentence}{plain}", flush=True)


def facts(tv, ifname="eth0"):
    """The state of an interface, asked from the kernel and not from the daemon."""
    def first(pattern, text):
        match = re.search(pattern, text, re.M)
        return match[1] if match else ""

    ifconfig = tv.run(f"ifconfig {ifname}")[1]
    gateway = first(rf"^default via (\S+) dev {ifname}", tv.run("ip route")[1])
    reachable = gateway and tv.run(f"ping -c 1 -W 2 {gateway}")[0] == 0
    return {
        "Interface": ifname,
        "MAC address": first(r"ether (\S+)", ifconfig),
        "Address": first(r"inet (\S+)", ifconfig),
        "Mask": first(r"netmask (\S+)", ifconfig),
        "Gateway": gateway,
        "DNS": ", ".join(re.findall(r"^nameserver (\S+)", tv.run("cat /etc/resolv.conf")[1], re.M)),
        "Start to lease": lease_time(tv.log.lines),
        "Gateway reachable": "yes" if reachable else "no",
    }


def wait_for_lease(tv, daemon):
    """Until the daemon has a lease and said which route it sets, or it ended, or the time is over."""
    deadline = time.monotonic() + LEASE_SECONDS
    while time.monotonic() < deadline and tv.run(f"kill -0 {daemon}")[0] == 0:
        try:
            tv.log.wait_for("set gateway to", 5)
            return
        except TimeoutError:
            pass


def summarise(tv, daemon):
    summary = facts(tv)
    if summary["Address"] and not summary["Gateway"]:    # announced, not there yet
        time.sleep(1)
        summary = facts(tv)
    print()
    for name, value in summary.items():
        print(f"  {name:<18} {value or '-'}")

    online = summary["Gateway reachable"] == "yes" and summary["DNS"] != ""
    if online:
        verdict = f"Online: {summary['Interface']} has {summary['Address']} and the gateway answers."
    elif tv.run(f"kill -0 {daemon}")[0] != 0:
        verdict = "Not online: the daemon has ended."
    elif not summary["Address"]:
        verdict = f"Not online: no address within {LEASE_SECONDS} s."
    else:
        verdict = "Not online: the gateway does not answer or there is no resolver."
    print(f"\n{verdict}", flush=True)
    return online


def prompt(tv):
    print(f"\n{HELP}\n")
    while True:
        try:
            words = input("television> ").split()
        except EOFError:
            return
        match words:
            case []:
                pass
            case ["cable", ("on" | "off") as state]:
                tv.cable("eth0", state == "on")
            case ["interfaces"]:
                print(tv.run("ifconfig; ip -4 route; cat /etc/resolv.conf")[1])
            case ["help"]:
                print(HELP)
            case ["quit" | "exit"]:
                return
            case _:
                print("unknown command; help shows the list")


def main():
    with VirtualSet(limit=SESSION_SECONDS if ON_TERMINAL else 300) as tv:
        threading.Thread(target=follow, args=(tv,), daemon=True).start()
        daemon = tv.spawn(f"env KEST_DEBUG=3 {DAEMON}")
        wait_for_lease(tv, daemon)
        online = summarise(tv, daemon)
        if ON_TERMINAL:
            prompt(tv)
            return 0
        return 0 if online else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except SetError as error:
        sys.exit(f"run: {error}")
    except KeyboardInterrupt:
        sys.exit("\nrun: switched off")
