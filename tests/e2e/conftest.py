"""One virtual set for all scenarios; each begins with a television that has just been switched on.

Its eth0 and eth1 are plugged into cables whose far ends wait for the scenario to start a DHCP server there.
"""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2]))

pytest.register_assert_rewrite("television")

from television import Television
from virtualset import VirtualSet


@pytest.fixture(scope="session")
def machine():
    with VirtualSet(nics=["cable", "cable"], limit=900) as machine:
        yield machine


@pytest.fixture
def tv(machine, request):
    television = Television(machine)
    television.switch_on_fresh()
    yield television
    if machine.log.ended:
        pytest.exit("the virtual set has ended:\n" + "\n".join(machine.console.lines[-15:]), 1)
    television.switch_off()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """A failed scenario shows the log of the television from its beginning."""
    outcome = yield
    report = outcome.get_result()
    if report.failed and "tv" in getattr(item, "funcargs", {}):
        report.sections.append(("the television's log", "\n".join(item.funcargs["tv"].log_lines())))
