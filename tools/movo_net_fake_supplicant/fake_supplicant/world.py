"""A small world for a program and all that it starts: namespaces of their own, folders, an interface, a chip, a lease.

Nothing of the computer's own network is seen or touched.
"""

import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

MS_BIND = 0x1000
MS_REC = 0x4000
PR_SET_CHILD_SUBREAPER = 36
PATIENCE_SECONDS = 2    # from the request to end to the end by force
PROGRAM = pathlib.Path(sys.argv[0]).resolve()
LIBC = ctypes.CDLL(None, use_errno=True)
SOCKETS = pathlib.Path("/dev/socket")
TABLES = pathlib.Path("/system/net")
DEVICES = ["full", "null", "pts", "ptmx", "random", "shm", "tty", "urandom", "zero"]
OWN = ["data", "dev", "etc", "run", "system", "tmp"]
CHIP = {"BROADCOM_DEVICE_ID_43569": "0000:fa4e", "BRCM_DRIVER_NAME_43569": "fake_radio"}
TOOLS = {    # what the glue asks of the system to know its chip and to have addresses
    "lsusb": "echo Bus 001 Device 002: ID 0000:fa4e",
    "lsmod": "echo fake_radio 1 0",
    "netcfg": "exec ip link set dev \"$1\" \"$2\"",
    # A lease at once, from a network that is for documentation. The last argument is the interface.
    "dhcpcd": """exec > /dev/null 2>&1
for interface; do :; done
mkdir -p /tmp/dhcp
ip address replace 192.0.2.2/24 dev "$interface"
ip route replace default via 192.0.2.1 dev "$interface"
echo nameserver 192.0.2.1 > /etc/resolv.conf
echo $$ > "/tmp/dhcp/dhcpcd-$interface.pid"
printf new > "$DHCP_NOTIFY_PIPE_DIR"
exec sleep infinity""",
    "wpa_supplicant":
        f"exec '{PROGRAM}' --background --script /system/script {SOCKETS}/mlan0 < /dev/null > /dev/null 2>&1",
    # The soft access point and the wake-up are not of this world.
    **{name: "exit 1" for name in ("getprop", "setprop", "wl")},
}
WHEN_MISSING = {    # in the forms that the glue uses
    "ifconfig": "exec ip address flush dev \"$1\"",
    "route": "exec ip route replace default via \"$4\" dev \"$6\"",
}
WITHIN = {    # programs of the computer, but for what the glue asks of them, whose output would be the application's
    "ps": ("''", "[ ! -e /tmp/wpa_supplicant_mlan0.pid ] || echo wpa_supplicant"),
    "grep": ("0000:fa4e | fake_radio | wpa_supplicant", "exec {real} -q \"$@\""),
    "cp": ("'-f Misc/wpa_supplicant.conf /etc/'", ":"),
}


def mount(kind, source, place, flags):
    if LIBC.mount(os.fsencode(source), os.fsencode(place), kind, flags, None) != 0:
        error = ctypes.get_errno()
        raise OSError(error, os.strerror(error), str(place))


def bind(source, place):
    mount(None, source, place, MS_BIND | MS_REC)


def show_folders(source, root, but=()):
    """Shows the folders of `source` below `root` too, but for some; what it has of files stays away."""
    for entry in source.iterdir():
        place = root / entry.relative_to("/")
        if entry in but:
            continue
        if entry.is_symlink():
            place.symlink_to(os.readlink(entry))
        elif entry.is_dir() and os.access(entry, os.X_OK):
            place.mkdir()
            bind(entry, place)


def make_root(root):
    """The computer's own folders with /data, /system and /dev/socket beside them; /tmp and /run without their files."""
    mount(b"tmpfs", "root", root, 0)
    show_folders(pathlib.Path("/"), root, [pathlib.Path("/", name) for name in OWN])
    for folder in ("data/tv/save", "data/misc", "dev/socket", "etc", "run", "system/bin", "tmp"):
        (root / folder).mkdir(parents=True)
    show_folders(pathlib.Path("/tmp"), root, [root, pathlib.Path("/tmp/dhcp")])
    show_folders(pathlib.Path("/run"), root)
    show_folders(pathlib.Path("/etc"), root, [pathlib.Path("/etc/dhcpc")])
    for file in pathlib.Path("/etc").iterdir():    # copies: the glue writes to resolv.conf
        if file.is_file() and not file.is_symlink() and os.access(file, os.R_OK):
            shutil.copyfile(file, root / "etc" / file.name)
    (root / "etc/resolv.conf").unlink(missing_ok=True)
    (root / "etc/resolv.conf").touch()
    for name in DEVICES:
        device, place = pathlib.Path("/dev", name), root / "dev" / name
        if device.is_dir():
            place.mkdir()
        elif device.exists():
            place.touch()
        else:
            continue
        bind(device, place)
    (root / "dev/fd").symlink_to("/proc/self/fd")


def make_interface():
    for kind in (["dummy"], ["veth", "peer", "name", "hidden"]):    # the first that the kernel has
        if subprocess.run(["ip", "link", "add", "mlan0", "type", *kind], stderr=subprocess.DEVNULL).returncode == 0:
            return
    raise SystemExit("the kernel has neither dummy nor veth interfaces")


def make_tables():
    """What the kernel lists, for every process of the world: one wireless interface beside lo.

    Each process has its own /proc/PID/net, so a link of ours is mounted on the kernel's link /proc/net.
    """
    TABLES.mkdir()
    for name in os.listdir("/proc/self/net"):
        if name not in ("dev", "wireless"):
            (TABLES / name).symlink_to(f"/proc/self/net/{name}")
    lines = pathlib.Path("/proc/net/dev").read_text().splitlines(keepends=True)
    (TABLES / "dev").write_text("".join(line for line in lines if "hidden:" not in line))
    (TABLES / "wireless").write_text("Inter-| sta-|\n face | tus |\n mlan0: 0000    0     0     0\n")
    (TABLES / "link").symlink_to(TABLES)
    link, place = (os.open(path, os.O_PATH | os.O_NOFOLLOW) for path in (TABLES / "link", "/proc/net"))
    bind(f"/proc/self/fd/{link}", f"/proc/self/fd/{place}")


def make_tools():
    tools = dict(TOOLS)
    tools.update((name, body) for name, body in WHEN_MISSING.items() if not shutil.which(name))
    for name, (arguments, body) in WITHIN.items():
        real = shutil.which(name) or "false"
        tools[name] = f"case \"$*\" in\n{arguments}) {body.format(real=real)} ;;\n*) exec {real} \"$@\" ;;\nesac"
    for name, body in tools.items():
        tool = pathlib.Path("/system/bin", name)
        tool.write_text(f"#!/bin/sh\n{body}\n")
        tool.chmod(0o755)
    os.environ["PATH"] = "/system/bin:" + os.environ["PATH"]


def start_supplicant():
    """As the glue starts the next one: by a short command, since it cuts long ones."""
    (SOCKETS / "wpa_mlan0").symlink_to("mlan0")
    os.environ.update(CHIP, BROADCOM_SUPPLICANT_STR_43569="wpa_supplicant")
    subprocess.run(["wpa_supplicant"], check=True)


def enter_world(root, script, program):
    """Inside of the new namespaces: makes the world, and becomes the program."""
    make_root(root)
    shutil.copy(script, root / "system/script")
    found = shutil.which(program[0])
    working = os.getcwd()
    os.chroot(root)
    os.chdir(working if os.path.isdir(working) else "/")
    make_interface()
    make_tables()
    make_tools()
    start_supplicant()
    try:
        os.execvp(program[0], program)
    except OSError as error:
        away = found and not os.path.exists(found)
        print(f"movo_net_fake_supplicant: cannot run {program[0]}: {error.strerror}"
              f"{'; of / and /tmp only folders are in this world' if away else ''}", file=sys.stderr)
        sys.exit(127 if isinstance(error, FileNotFoundError) else 126)


def children(process):
    """What the threads of a process have started and what is left of that."""
    for listed in pathlib.Path(f"/proc/{process}/task").glob("*/children"):
        try:
            yield from map(int, listed.read_text().split())
        except OSError:
            pass    # it has ended


def descendants(process):
    for child in children(process):
        yield child
        yield from descendants(child)


def send_all(number):
    for process in list(descendants(os.getpid())):
        try:
            os.kill(process, number)
        except ProcessLookupError:
            pass


def end_all():
    """Asks all processes to end, and makes them. Whose parent has ended is our child."""
    send_all(signal.SIGTERM)
    end = time.monotonic() + PATIENCE_SECONDS
    while any(children(os.getpid())):
        if time.monotonic() > end:
            send_all(signal.SIGKILL)
        while any(children(os.getpid())) and os.waitpid(-1, os.WNOHANG)[0]:
            pass
        time.sleep(0.01)


def await_end(program):
    """Waits for the program, and lets go of everything else that ends: the glue waits until its DHCP client is gone."""
    while True:
        process, status = os.wait()
        if process == program:
            return os.waitstatus_to_exitcode(status)


def run_in_world(script, program):
    """Runs the program in namespaces of its own to its end, and ends what it left behind; returns its status."""
    asked = []    # signals by which somebody wants the end of all

    def ask(number, _):
        asked.append(number)
        send_all(signal.SIGTERM)
        signal.alarm(PATIENCE_SECONDS)

    LIBC.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    signal.signal(signal.SIGINT, lambda *_: None)    # an interrupt is for the program
    signal.signal(signal.SIGALRM, lambda *_: send_all(signal.SIGKILL))
    signal.signal(signal.SIGTERM, ask)
    signal.signal(signal.SIGHUP, ask)
    root = tempfile.mkdtemp()
    started = subprocess.Popen(["unshare", "--user", "--map-root-user", "--mount", "--net", sys.executable, str(PROGRAM),
                                "--inside", root, "--script", str(script), *program])
    status = await_end(started.pid)
    end_all()
    os.rmdir(root)
    if asked:
        return 128 + asked[0]
    if status < 0:
        print(f"movo_net_fake_supplicant: {program[0]} was killed by {signal.Signals(-status).name}", file=sys.stderr)
    return 128 - status if status < 0 else status
