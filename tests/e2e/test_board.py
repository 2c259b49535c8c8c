"""The board's adapters that touch nothing but files: run right here, without a television."""

import os
import pathlib
import re
import subprocess

import pytest

BOARD = pathlib.Path(__file__).resolve().parents[2] / "board"


@pytest.fixture
def run(tmp_path):
    """Runs an adapter on files of this test only; returns status and standard output."""
    files = {"BDCONF_FILE": tmp_path / "bdconf", "PROPERTY_DIR": tmp_path / "properties",
             "WL_JOURNAL": tmp_path / "wl.journal"}

    def run(name, *arguments):
        result = subprocess.run([BOARD / name, *arguments], capture_output=True, text=True, check=False,
                                env=os.environ | {key: str(path) for key, path in files.items()})
        return result.returncode, result.stdout

    run.files = files
    return run


def test_bdconf_prints_the_lines_of_the_board(run):
    run.files["BDCONF_FILE"].write_text("serial=7\nmac=00:11:22:aa:bb:cc\n")
    assert run("bdconf", "-p") == (0, "serial=7\nmac=00:11:22:aa:bb:cc\n")


def test_bdconf_fails_without_a_board_file(run):
    status, output = run("bdconf", "-p")
    assert status != 0
    assert output == ""


@pytest.mark.parametrize("arguments", [(), ("-x",), ("-p", "mac")])
def test_bdconf_knows_only_the_print_option(run, arguments):
    run.files["BDCONF_FILE"].write_text("mac=00:11:22:aa:bb:cc\n")
    assert run("bdconf", *arguments) == (2, "")


def test_property_keeps_the_last_value_set(run):
    assert run("setprop", "persist.device_name", "Living room") == (0, "")
    assert run("setprop", "persist.device_name", "Kitchen") == (0, "")
    assert run("getprop", "persist.device_name") == (0, "Kitchen\n")


def test_property_that_was_never_set_is_an_empty_line_or_the_default(run):
    assert run("getprop", "persist.device_name") == (0, "\n")
    assert run("getprop", "persist.device_name", "TV") == (0, "TV\n")


def test_property_value_may_be_empty(run):
    assert run("setprop", "hostapd.enable", "") == (0, "")
    assert run("getprop", "hostapd.enable", "1") == (0, "\n")


@pytest.mark.parametrize("name", ["", "../bdconf", ".hidden", "a/b"])
def test_property_names_stay_in_their_folder(run, name):
    run.files["BDCONF_FILE"].write_text("mac=00:11:22:aa:bb:cc\n")
    assert run("getprop", name) == (2, "")
    assert run("setprop", name, "1") == (2, "")
    assert run.files["BDCONF_FILE"].read_text() == "mac=00:11:22:aa:bb:cc\n"


def test_setprop_leaves_nothing_but_the_property(run):
    run("setprop", "dnsmasq.enable", "1")
    assert os.listdir(run.files["PROPERTY_DIR"]) == ["dnsmasq.enable"]


def test_wl_writes_down_each_call(run):
    assert run("wl", "wowl", "1") == (0, "")
    assert run("wl", "wowl_activate") == (0, "")
    assert run.files["WL_JOURNAL"].read_text() == "wowl 1\nwowl_activate\n"


def chips_of_the_daemon():
    """Driver, USB device and supplicant variables of each chip, from the daemon's own table."""
    table = (BOARD.parent / "movoglue/net/movo_net_fl_wifi/device.cpp").read_text()
    row = r'\{_MOVO_NET_WIFI_\w+,\s+"(\w+)",\s+"(\w+)",\s+"(\w+)"\}'
    return sorted(re.findall(row, table))


def test_each_chip_has_a_file_with_its_variables():
    chips = []
    for path in (BOARD / "chips").iterdir():
        values = dict(re.findall(r"^(\w+)='?(.*?)'?$", path.read_text(), re.M))
        device, driver, supplicant = values
        assert values[supplicant].count("%s") == 3
        assert len(values[supplicant].replace("%s", "mlan0")) + len("/etc/wpa_supplicant.conf") < 148
        chips.append((driver, device, supplicant))
    assert len(chips) == 6
    assert sorted(chips) == chips_of_the_daemon()


def test_launch_fails_without_a_chip_it_knows(run):
    assert run("launch", "nochip", "true")[0] == 2
    assert run("launch", "brcm_43569")[0] == 2
