"""How the television stands, at a glance: asked from the kernel and not from the daemon."""

import re
import time

from .story import lease_time


def facts(tv, ifname="eth0"):
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


def summarise(tv, daemon, waited_seconds):
    """Prints the facts and what they mean; returns whether the television is online."""
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
        verdict = f"Not online: no address within {waited_seconds} s."
    else:
        verdict = "Not online: the gateway does not answer or there is no resolver."
    print(f"\n{verdict}", flush=True)
    return online
