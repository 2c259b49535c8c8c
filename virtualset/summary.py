"""How the television stands, at a glance: asked from the kernel and not from the daemon."""

import re

from .story import lease_time


def addresses(tv):
    """Address and length by interface, of those that have one."""
    lines = tv.run("ip -4 -o address show up")[1]
    return dict(re.findall(r"^\d+: (\w+) +inet (\S+)", lines, re.M))


def gateway(tv):
    """The gateway of the first default route and its interface, or None."""
    match = re.search(r"^default via (\S+) dev (\S+)", tv.run("ip -4 route")[1], re.M)
    return match and match.groups()


def online(tv):
    via = gateway(tv)
    return bool(via) and tv.run(f"ping -c 1 -W 2 {via[0]}")[0] == 0


def show_summary(tv):
    """Prints the interfaces that have an address, what they have in common, and whether the television is online."""
    print(f"\n  {'Interface':<12}{'MAC address':<20}Address")
    for name, address in addresses(tv).items():
        if name != "lo":
            mac = tv.run(f"cat /sys/class/net/{name}/address")[1].strip()
            print(f"  {name:<12}{mac:<20}{address}")
    via = gateway(tv)
    servers = re.findall(r"^nameserver (\S+)", tv.run("cat /etc/resolv.conf")[1], re.M)
    reachable = online(tv)
    for label, value in [
        ("Gateway", f"{via[0]} on {via[1]}" if via else "-"),
        ("DNS", ", ".join(servers) or "-"),
        ("Start to lease", lease_time(tv.log.lines) or "-"),
        ("Gateway reachable", "yes" if reachable else "no"),
    ]:
        print(f"  {label:<20}{value}")
    print(f"\n{'Online' if reachable else 'Not online'}.", flush=True)
