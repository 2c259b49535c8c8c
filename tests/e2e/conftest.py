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


def pytest_configure(config):
    config.addinivalue_line("markers", "long: takes minutes; ./test long runs it")


@pytest.fixture(scope="session")
def machine():
    with VirtualSet(nics=["cable", "cable"], chip=True, limit=5400, clock="own") as machine:
        yield machine


@pytest.fixture
def switched_on():
    """The televisions of the scenario in their order; when it fails it shows the log of the last one."""
    return []


def run_scenario(television, switched_on):
    """A television that has just been switched on, until the scenario has ended."""
    switched_on.append(television)
    television.switch_on_fresh()
    yield television
    machine = television.machine
    if machine.log.ended:
        pytest.exit("the virtual set has ended:\n" + "\n".join(machine.console.lines[-15:]), 1)
    television.switch_off()


@pytest.fixture
def tv(machine, switched_on):
    yield from run_scenario(Television(machine), switched_on)


@pytest.fixture(scope="session")
def air(machine):
    return Air(machine, "home")


@pytest.fixture
def wifi_tv(machine, air, switched_on):
    """A television with a chip; every access point is on."""
    air.appear()
    yield from run_scenario(WirelessTelevision(machine), switched_on)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """A failed scenario shows the log of the last television from its beginning."""
    outcome = yield
    report = outcome.get_result()
    televisions = item.funcargs.get("switched_on") if report.failed else None
    if televisions:
        report.sections.append(("the television's log", "\n".join(televisions[-1].log_lines())))
