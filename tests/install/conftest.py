"""One installed tree for all tests, and programs in worlds of their own."""

import shutil
import subprocess

import pytest
from installing import BUILD, HANG_SECONDS, NAMESPACES, run


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    """An installed tree, moved after it was installed."""
    installed = tmp_path_factory.mktemp("install") / "first"
    run("cmake", "--install", BUILD, "--prefix", installed)
    moved = installed.with_name("moved")
    shutil.move(installed, moved)
    return moved


@pytest.fixture
def world(prefix):
    """Starts a program in a world of its own, with pipes for what it prints."""
    if subprocess.run([*NAMESPACES, "true"], capture_output=True).returncode:
        pytest.skip("no namespaces for users here")

    def start(*program, options=(), **popen):
        popen = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **popen}
        return subprocess.Popen([prefix / "bin/movo_net_fake_supplicant", *options, "--run", *program], text=True, **popen)
    return start


@pytest.fixture
def inside(world):
    """Runs a program in a world of its own to its end; returns status, output and errors."""
    def run_inside(*program, **options):
        process = world(*program, **options)
        output, errors = process.communicate(timeout=HANG_SECONDS)
        return process.returncode, output, errors
    return run_inside


@pytest.fixture
def shell(prefix, tmp_path):
    """The line of a shell that plays a script of movo_net_shell."""
    def line(script):
        path = tmp_path / "script"
        path.write_text(script)
        return f"{prefix}/bin/movo_net_shell < {path}"
    return line
