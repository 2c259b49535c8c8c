"""One virtual set for all scenarios; each begins with a television that has just been switched on.

Its eth0 and eth1 are plugged into cables whose far ends wait for the scenario to start a DHCP server there.
"""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2]))

pytest.register_assert_rewrite("television", "wireless")

from television import Television
from wireless import WirelessTelevision
from virtualset import Air, VirtualSet


@pytest.fixture(scope="session")
def machine():
    with VirtualSet(nics=["cable", "cable"], chip=True, limit=2700) as machine:
        yield machine


def run_scenario(television):
    """A television that has just been switched on, until the scenario has ended."""
    television.switch_on_fresh()
    yield television
    machine = television.machine
    if machine.log.ended:
        pytest.exit("the virtual set has ended:\n" + "\n".join(machine.console.lines[-15:]), 1)
    television.switch_off()


@pytest.fixture
def tv(machine):
    yield from run_scenario(Television(machine))


@pytest.fixture(scope="session")
def air(machine):
    return Air(machine, "home")


@pytest.fixture
def wifi_tv(machine, air):
    """A television with a chip; every access point is on."""
    air.appear()
    yield from run_scenario(WirelessTelevision(machine))


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """A failed scenario shows the log of the television from its beginning."""
    outcome = yield
    report = outcome.get_result()
    televisions = [each for each in getattr(item, "funcargs", {}).values() if isinstance(each, Television)]
    if report.failed and televisions:
        report.sections.append(("the television's log", "\n".join(televisions[0].log_lines())))
