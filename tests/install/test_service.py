"""The service file of the daemon, judged by systemd's own checks; nothing is started."""

import configparser
import json
import subprocess

import pytest
from installing import BUILD, run

# What is left open is what the daemon and the programs that it starts live from.
NEEDED = {"CAP_NET_ADMIN", "CAP_NET_RAW", "CAP_NET_BIND_SERVICE", "CAP_KILL", "CAP_CHOWN", "CAP_SETUID", "CAP_SETGID",
          "CAP_SYS_CHROOT"}
FAMILIES = {"AF_UNIX", "AF_INET", "AF_INET6", "AF_NETLINK", "AF_PACKET"}
EXPOSURE = 62    # tenths, as systemd-analyze takes them; 96 without any protection


@pytest.fixture(scope="module")
def unit(tmp_path_factory):
    """The unit file in a tree that stays where it was installed, for its ExecStart= names the daemon there."""
    prefix = tmp_path_factory.mktemp("service")
    run("cmake", "--install", BUILD, "--prefix", prefix)
    return prefix / "lib/systemd/system/recovery_net.service"


@pytest.fixture(scope="module")
def service(unit):
    parsed = configparser.ConfigParser(strict=True)
    parsed.optionxform = str
    parsed.read(unit)
    return dict(parsed["Service"])


def test_systemd_finds_nothing_wrong(unit):
    verified = subprocess.run(["systemd-analyze", "verify", "--man=no", unit], capture_output=True, text=True)
    assert (verified.returncode, verified.stdout + verified.stderr) == (0, "")


def test_it_always_comes_back(unit, service):
    assert service["Restart"] == "always"
    assert "StartLimitIntervalSec=0" in unit.read_text().splitlines()


def test_it_finds_the_chip_its_folder_and_its_commands(service):
    assert service["EnvironmentFile"] == "-/etc/movo_net/chip.env"
    assert service["WorkingDirectory"] == "-/system"
    assert service["Environment"] == "PATH=/system/bin:/usr/sbin:/usr/bin:/sbin:/bin"


def test_it_may_do_what_the_set_needs_and_nothing_else(service):
    assert set(service["CapabilityBoundingSet"].split()) == NEEDED
    assert set(service["RestrictAddressFamilies"].split()) == FAMILIES
    assert set(service["ReadWritePaths"].split()) == {"-/data", "/etc", "/run", "/tmp", "/var"}
    assert "PrivateTmp" not in service    # what it shares with the supplicant and the DHCP client lies in /tmp
    assert (service["UMask"], service["LimitCORE"]) == ("0022", "0")


def test_its_protections_hold(unit):
    judged = json.loads(run("systemd-analyze", "security", "--offline=true", "--json=short", unit))
    held = {check["json_field"] for check in judged if check["set"]}
    assert held >= {"NoNewPrivileges", "ProtectSystem", "ProtectHome", "ProtectKernelModules", "LockPersonality",
                    "RestrictNamespaces_user", "RestrictNamespaces_mnt", "RestrictNamespaces_net",
                    "CapabilityBoundingSet_CAP_SYS_ADMIN", "CapabilityBoundingSet_CAP_SYS_MODULE",
                    "CapabilityBoundingSet_CAP_SYS_PTRACE", "RestrictAddressFamilies_OTHER"}


def test_its_exposure_stays_low(unit):
    run("systemd-analyze", "security", "--offline=true", f"--threshold={EXPOSURE}", unit)
