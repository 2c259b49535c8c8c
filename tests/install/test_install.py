"""The installed library: what an application finds, and that it builds and links against it.

Nothing here starts the glue: it would take charge of this machine's network.
"""

import configparser
import os
import pathlib
import re
import subprocess

import pytest
from installing import BUILD, REPOSITORY, run

EXAMPLES = REPOSITORY / "examples"
KEST_VARIABLES = {"KEST_CAT_DEFAULT", "__kest_debug_min"}


@pytest.fixture(scope="session")
def libraries(prefix):
    return next(prefix.rglob("libmovo_net.so")).parent


@pytest.fixture(scope="session")
def environment(libraries):
    return {**os.environ, "PKG_CONFIG_PATH": str(libraries / "pkgconfig"), "LD_LIBRARY_PATH": str(libraries)}


# --- What is there ---

def test_every_file_is_there(prefix, libraries):
    headers = {path.name for path in (prefix / "include").iterdir()}
    assert headers == {path.name for folder in ("movoglue/net/include", "platform/kest/include",
                                                        "tools/movo_net_tools/include")
                       for path in (REPOSITORY / folder).iterdir()}
    for name in ("libmovo_net.a", "libkest.a", "libmovo_net_tools.a", "libmovo_net.so", "libmovo_net.so.0",
                 "pkgconfig/movo_net.pc", "pkgconfig/movo_net_tools.pc", "cmake/movo_net/movo_net-config.cmake"):
        assert (libraries / name).is_file(), name
    for name in ("bin/recovery_net", "bin/movo_net_shell", "bin/movo_net_fake_supplicant"):
        assert os.access(prefix / name, os.X_OK), name
    for name in ("share/man/man8/recovery_net.8", "share/man/man1/movo_net_shell.1",
                 "share/man/man1/movo_net_fake_supplicant.1", "share/movo_net/home.script", "share/movo_net/vanishing.script",
                 "share/movo_net/fake_supplicant/world.py", "lib/systemd/system/recovery_net.service"):
        assert (prefix / name).is_file(), name


def test_the_service_starts_the_installed_daemon(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", tmp_path)
    unit = configparser.ConfigParser(strict=True)
    unit.optionxform = str
    unit.read(tmp_path / "lib/systemd/system/recovery_net.service")
    assert unit["Service"]["ExecStart"] == f"{tmp_path}/bin/recovery_net"
    assert os.access(unit["Service"]["ExecStart"], os.X_OK)


def test_a_staging_folder_is_respected(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", "/opt/movo", env={**os.environ, "DESTDIR": str(tmp_path)})
    assert (tmp_path / "opt/movo/bin/recovery_net").is_file()
    unit = (tmp_path / "opt/movo/lib/systemd/system/recovery_net.service").read_text()
    assert "ExecStart=/opt/movo/bin/recovery_net" in unit


COMPONENTS = {
    "runtime": r"bin/recovery_net|lib\S*/libmovo_net\.so\.\S+|lib/systemd/\S+\.service|share/man/man8/\S+",
    "development": r"include/\S+\.h|lib\S*/(lib\S+\.a|libmovo_net\.so|cmake/\S+|pkgconfig/\S+)",
    "tools": r"bin/movo_net_\w+|share/movo_net/\S+|share/man/man1/\S+"}


def files_below(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_symlink() or path.is_file()}


def test_each_file_belongs_to_one_component(prefix, tmp_path):
    installed = []
    for component, files in COMPONENTS.items():
        folder = tmp_path / component
        run("cmake", "--install", BUILD, "--component", component, "--prefix", folder)
        installed += files_below(folder)
        assert [name for name in files_below(folder) if not re.fullmatch(files, name)] == []
    assert sorted(installed) == sorted(files_below(prefix))


def test_the_runtime_component_runs_alone(tmp_path):
    run("cmake", "--install", BUILD, "--component", "runtime", "--prefix", tmp_path)
    library = next(tmp_path.rglob("libmovo_net.so.0"))
    assert "not found" not in run("ldd", library) + run("ldd", tmp_path / "bin/recovery_net")
    assert f"ExecStart={tmp_path}/bin/recovery_net" in next(tmp_path.rglob("*.service")).read_text()


@pytest.mark.parametrize("page", sorted((REPOSITORY / "man").iterdir()), ids=lambda page: page.name)
def test_manual_pages_render(page):
    result = subprocess.run(["groff", "-man", "-Tutf8", "-wall", str(page)], capture_output=True, text=True)
    assert (result.returncode, result.stderr) == (0, "")
    assert "EXIT STATUS" in re.sub(r"\x1b\[\d*m|.\x08", "", result.stdout)


# --- The public interface ---

def declared(headers):
    """Functions and variables that the headers declare: two sets of names."""
    functions, variables = set(), set()
    for header in headers:
        text = re.sub(r"/\*.*?\*/|//[^\n]*|^\s*#.*?(?<!\\)$", "", header.read_text(), flags=re.S | re.M)
        functions |= set(re.findall(r"\b(\w+)\s*\([^();{}]*\)\s*(?:__attribute__\s*\(\(.*?\)\)\))?\s*;", text))
        variables |= set(re.findall(r"\bextern\s+[\w\s*]+?(\w+)\s*;", text))
    return functions, variables


def headers_of_the_glue(prefix, pattern="*.h"):
    return [header for header in (prefix / "include").glob(pattern) if header.name != "movo_net_tools.h"]


def glue_functions(prefix):
    return declared(headers_of_the_glue(prefix, "movo_net*.h"))[0]


def test_the_shared_library_shows_what_the_headers_declare_and_nothing_else(prefix, libraries):
    functions, variables = declared(headers_of_the_glue(prefix))
    assert "Movo_NET_Glue_Init" in functions and "kest_debug_log" in functions
    assert variables >= KEST_VARIABLES | {"movoglue_net_debug", "g_NetworkLinkType"}

    shown = run("nm", "-D", "--defined-only", libraries / "libmovo_net.so")
    shown = {name.split("@")[0] for _, kind, name in map(str.split, shown.splitlines()) if kind != "A"}
    assert shown == functions | variables


def test_the_static_library_has_every_fixed_name(prefix, libraries):
    fixed = glue_functions(prefix)
    for header in sorted((REPOSITORY / "movoglue/net").rglob("*.h")):
        for text in re.findall(r'extern "C" \{(.*?)^\} // extern "C"', header.read_text(), re.S | re.M):
            fixed |= set(re.findall(r"^[\w: *]*?\b(\w+)\([^;{}]*\);$", text, re.M))
    assert fixed >= {"Movo_NET_Glue_Init", "GetDefaultGateway", "readNlSock", "int_Movo_Net_SaveEss"}
    shown = set(re.findall(r" T (\w+)$", run("nm", "--defined-only", "--extern-only", libraries / "libmovo_net.a"), re.M))
    assert sorted(fixed - shown - {"static_assert"}) == []


def test_the_shared_library_has_a_soname_and_no_paths(libraries):
    dynamic = run("readelf", "-d", libraries / "libmovo_net.so")
    assert "Library soname: [libmovo_net.so.0]" in dynamic
    assert "RPATH" not in dynamic and "RUNPATH" not in dynamic and "TEXTREL" not in dynamic


def test_the_tools_library_shows_what_its_header_declares_and_nothing_else(prefix, libraries):
    functions, variables = declared([prefix / "include/movo_net_tools.h"])
    assert "Movo_NET_TakeHostLock" in functions and not variables
    shown = run("nm", "--defined-only", "--extern-only", libraries / "libmovo_net_tools.a")
    assert set(re.findall(r" \w (\w+)$", shown, re.M)) == functions


@pytest.mark.parametrize("compiler", [["gcc", "-std=c11", "-xc"], ["g++", "-std=c++17", "-xc++"]], ids=["C", "C++"])
def test_each_header_compiles_alone(prefix, compiler):
    for header in sorted((prefix / "include").glob("*.h")):
        run(*compiler, "-Wall", "-Wextra", "-Werror", "-fsyntax-only", f"-I{prefix}/include", header)


def shell(prefix, script):
    command = [prefix / "bin/movo_net_shell", "--no-start"]
    return subprocess.run(command, input=script, capture_output=True, text=True, check=True).stdout


def usages(prefix):
    """Each command with its arguments: in the help after two blanks, with two or more blanks or the line's end after."""
    return re.findall(r"^  (\S.*?)(?:  .*)?$", shell(prefix, "help\n"), re.M)


def test_every_public_function_has_a_command(prefix):
    names = [" ".join(word for word in usage.split() if re.fullmatch(r"[a-z][a-z-]*", word))
             for usage in usages(prefix)]
    details = shell(prefix, "".join(f"help {name}\n" for name in names))
    called = {name for line in re.findall(r"^  calls (.*)$", details, re.M) for name in line.split()}
    assert called == glue_functions(prefix)


def test_the_manual_page_of_the_shell_has_every_command(prefix):
    page = (prefix / "share/man/man1/movo_net_shell.1").read_text().replace("\\-", "-")
    documented = re.findall(r"^\.TP\n\.B (\S.*)$", page.partition(".SH COMMANDS")[2].partition(".SH RESULTS")[0], re.M)
    assert documented == usages(prefix)


# --- Applications ---

def needed(program):
    return re.findall(r"NEEDED.*\[(.*)\]", run("readelf", "-d", program))


def test_examples_build_through_pkg_config(environment, tmp_path):
    run("make", "-C", EXAMPLES, f"BUILD={tmp_path}", env=environment)
    for name in ("join_c", "listen_c", "listen_cpp"):
        assert "libmovo_net.so.0" in needed(tmp_path / name)
        assert "undefined symbol" not in run("ldd", "-r", tmp_path / name, env=environment)


def test_an_example_leaves_the_network_to_another_host(inside, prefix, environment, tmp_path):
    run("make", "-C", EXAMPLES, f"BUILD={tmp_path}", env=environment)
    status, output, errors = inside("sh", "-c", f"""
        {prefix}/bin/recovery_net & until [ -s /run/movo_net.lock ]; do sleep 0.01; done
        {tmp_path}/listen_cpp""", env={**environment, "KEST_DEBUG": "0"})
    assert (status, output) == (1, "")
    assert re.fullmatch(r"the network has a host: recovery_net, pid \d+\n", errors)


def test_examples_build_through_pkg_config_static(environment, tmp_path):
    run("make", "-C", EXAMPLES, f"BUILD={tmp_path}", "LINK=--static", env=environment)
    for name in ("listen_c", "listen_cpp"):
        assert needed(tmp_path / name) == []


def test_examples_build_through_find_package(prefix, environment, tmp_path):
    run("cmake", "-S", EXAMPLES, "-B", tmp_path, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}")
    run("cmake", "--build", tmp_path)
    for name in ("listen_c", "listen_cpp"):
        assert "libmovo_net.so.0" in needed(tmp_path / name)
        assert "undefined symbol" not in run("ldd", "-r", tmp_path / name, env=environment)
    assert "libmovo_net.so.0" not in needed(tmp_path / "listen_static")


WORDS = """
#include <movo_net_tools.h>
#include <stdio.h>

int main(void)
{
    MovoNetHost_t other = {"", 0};
    printf("%s, %s\\n", Movo_NET_ResultText(0), Movo_NET_ReasonText(_MOVO_NET_CALLBACK_DHCP_SUCCESS_));
    return Movo_NET_TakeHostLock("/nowhere/lock", "words", &other);
}
"""


def test_an_application_in_c_needs_nothing_else_for_words(environment, tmp_path):
    (tmp_path / "words.c").write_text(WORDS)
    flags = run("pkg-config", "--cflags", "--libs", "movo_net_tools", env=environment).split()
    run("gcc", "-std=c11", "-Wall", "-Wextra", "-Werror", "-o", tmp_path / "words", tmp_path / "words.c", *flags)
    assert needed(tmp_path / "words") == ["libc.so.6"]
    result = subprocess.run([tmp_path / "words"], capture_output=True, text=True)
    assert (result.returncode, result.stdout) == (6, "success, DHCP_SUCCESS\n")


def test_the_tools_library_is_found_by_find_package(prefix, tmp_path):
    (tmp_path / "words.c").write_text(WORDS)
    (tmp_path / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(words LANGUAGES C CXX)\n"
                                             "find_package(movo_net 0.1 REQUIRED)\nadd_executable(words words.c)\n"
                                             "target_link_libraries(words PRIVATE movo_net::movo_net_tools)\n")
    run("cmake", "-S", tmp_path, "-B", tmp_path / "build", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}")
    run("cmake", "--build", tmp_path / "build")
    assert needed(tmp_path / "build/words") == ["libc.so.6"]


def test_another_minor_version_is_not_found(prefix, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(other LANGUAGES C CXX)\n"
                                             "find_package(movo_net 0.2 REQUIRED)\n")
    result = subprocess.run(["cmake", "-S", tmp_path, "-B", tmp_path / "build", f"-DCMAKE_PREFIX_PATH={prefix}"],
                            capture_output=True, text=True)
    assert result.returncode != 0 and "0.1.0" in result.stderr


def test_the_readme_shows_the_example():
    shown = re.search(r"```c\n(.*?)```", (REPOSITORY / "README.md").read_text(), re.S)
    assert shown and shown[1] == (EXAMPLES / "listen.c").read_text()
