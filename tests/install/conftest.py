"""One installed tree for all tests."""

import shutil

import pytest
from installing import BUILD, run


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    """An installed tree, moved after it was installed."""
    installed = tmp_path_factory.mktemp("install") / "first"
    run("cmake", "--install", BUILD, "--prefix", installed)
    moved = installed.with_name("moved")
    shutil.move(installed, moved)
    return moved
