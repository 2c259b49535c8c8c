"""The defences that the compiler and the linker put into what is installed, read from the binaries themselves."""

import re

import pytest
from installing import OBJDUMP, run

BINARIES = ["bin/recovery_net", "bin/movo_net_shell", "libmovo_net.so"]
PROGRAMS = [name for name in BINARIES if name.startswith("bin/")]
# What the functions that are called by address begin with, where the processor can check it.
LANDING = {"Advanced Micro Devices X86-64": r"endbr64", "AArch64": r"bti\s|paciasp"}


@pytest.fixture
def binary(prefix, request):
    name = request.param
    return prefix / name if "/" in name else next(prefix.rglob(name))


def headers(binary):
    return run("readelf", "-hldW", binary)


@pytest.mark.parametrize("binary", PROGRAMS, indirect=True)
def test_a_program_has_no_fixed_address(binary):
    assert re.search(r"^\s+Type:\s+DYN ", headers(binary), re.M)
    assert re.search(r"\(FLAGS_1\).*\bPIE\b", headers(binary))


@pytest.mark.parametrize("binary", BINARIES, indirect=True)
def test_tables_of_addresses_are_read_only_from_the_start(binary):
    assert re.search(r"^\s+GNU_RELRO ", headers(binary), re.M)
    assert re.search(r"\(FLAGS_1\).*\bNOW\b", headers(binary))


@pytest.mark.parametrize("binary", BINARIES, indirect=True)
def test_nothing_is_writable_and_executable(binary):
    segments = re.findall(r"^\s+(\w+)(?:\s+0x\w+){5}\s+([RWE ]{3})\s", headers(binary), re.M)
    assert "GNU_STACK" in dict(segments) and "LOAD" in dict(segments)
    assert [segment for segment in segments if "W" in segment[1] and "E" in segment[1]] == []


@pytest.mark.parametrize("binary", BINARIES, indirect=True)
def test_a_function_with_a_buffer_guards_its_frame(binary):
    # Not just anywhere: the supplicant's client code comes guarded from Debian.
    assert "__stack_chk_fail" in run(OBJDUMP, "-d", "--disassemble=SetDNSDhcp", binary)


def test_copies_and_accesses_are_bounded(prefix):
    archives = [next(prefix.rglob(name)) for name in ("libmovo_net.a", "libkest.a")]
    called = {line.split()[-1] for archive in archives
              for line in run("nm", "--undefined-only", archive).splitlines() if " U " in line}
    assert called >= {"__vsnprintf_chk", "__fprintf_chk"}
    assert any("glibcxx_assert_fail" in name for name in called)


@pytest.mark.parametrize("binary", ["libmovo_net.so"], indirect=True)
def test_public_functions_begin_where_jumps_may_land(binary):
    machine = re.search(r"^\s+Machine:\s+(.*)$", headers(binary), re.M)[1]
    if machine not in LANDING:
        pytest.skip(f"{machine} has no such check")
    functions = re.findall(r"^\w+ <(Movo_\w+)>:\n\s+\w+:\s+(.*)$",
                           run(OBJDUMP, "-d", "--no-show-raw-insn", binary), re.M)
    assert len(functions) > 20
    assert [name for name, first in functions if not re.match(LANDING[machine], first)] == []
