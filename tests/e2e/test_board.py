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
             "WL_JOURNAL": tmp_path / "wl.journal", "SOFTAP_SERVICE": tmp_path / "softap_service",
             "SOFTAP_PIPE": tmp_path / "pipe"}
    files["SOFTAP_SERVICE"].write_text(f'#!/bin/sh\necho "$*" >> {tmp_path}/switched\nexit 7\n')
    files["SOFTAP_SERVICE"].chmod(0o755)

    def run(name, *arguments):
        result = subprocess.run([BOARD / name, *arguments], capture_output=True, text=True, check=False, timeout=600,
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
    assert run("setprop", "persist.device_name", "") == (0, "")
    assert run("getprop", "persist.device_name", "TV") == (0, "\n")


@pytest.mark.parametrize("name", ["", "../bdconf", ".hidden", "a/b"])
def test_property_names_stay_in_their_folder(run, name):
    run.files["BDCONF_FILE"].write_text("mac=00:11:22:aa:bb:cc\n")
    assert run("getprop", name) == (2, "")
    assert run("setprop", name, "1") == (2, "")
    assert run.files["BDCONF_FILE"].read_text() == "mac=00:11:22:aa:bb:cc\n"


def test_setprop_leaves_nothing_but_the_property(run):
    run("setprop", "dnsmasq.enable", "1")
    assert os.listdir(run.files["PROPERTY_DIR"]) == ["dnsmasq.enable"]


def test_setprop_switches_the_services_of_the_soft_access_point(run, tmp_path):
    for name, value in [("hostapd.enable", "1"), ("dnsmasq.enable", "1"), ("dnsmasq.enable", "0")]:
        assert run("setprop", name, value) == (7, "")    # the service's status
        assert run("getprop", name) == (0, f"{value}\n")
    assert (tmp_path / "switched").read_text() == "hostapd 1\ndnsmasq 1\ndnsmasq 0\n"


@pytest.mark.parametrize("name", ["persist.device_name", "hostapd", "enable", "other.enable", "hostapd.enabled"])
def test_setprop_switches_nothing_else(run, tmp_path, name):
    assert run("setprop", name, "1") == (0, "")
    assert not (tmp_path / "switched").exists()


@pytest.mark.parametrize("arguments", [(), ("hostapd",), ("dhcpcd", "1"), ("hostapd", "1", "1")])
def test_softap_service_knows_two_services(arguments):
    result = subprocess.run([BOARD / "softap_service", *arguments], capture_output=True, text=True, check=False)
    assert result.returncode == 2
    assert result.stderr == "usage: softap_service hostapd|dnsmasq 1|0\n"


@pytest.fixture
def services(tmp_path):
    """Runs softap_service with programs in place of its daemons, which write down what they are given."""
    programs = tmp_path / "programs"
    programs.mkdir()
    for name in ("hostapd", "hostapd_cli", "dnsmasq", "iw"):
        (programs / name).write_text(f'#!/bin/sh\necho "$*" >> {tmp_path}/{name}\n')
        (programs / name).chmod(0o755)
    conf = tmp_path / "hostapd.conf"
    conf.write_text("interface=bcm0\nchannel=0\n")

    def run(*arguments):
        subprocess.run([BOARD / "softap_service", *arguments], check=True, timeout=600,
                       env=os.environ | {"PATH": f"{programs}:{os.environ['PATH']}", "HOSTAPD_CONF": str(conf),
                                         "SOFTAP_STATE": str(tmp_path / "state")})
        return (tmp_path / arguments[0]).read_text().split()
    return run


def test_the_servers_of_addresses_and_names_leave_root_and_count_leases(services):
    words = services("dnsmasq", "1")
    assert "--user=dnsmasq" in words
    assert "--dhcp-lease-max=20" in words


def test_the_access_point_takes_a_few_stations(services):
    conf = pathlib.Path(services("hostapd", "1")[-1])
    assert conf.read_text() == "interface=bcm0\nchannel=0\nmax_num_sta=5\n"


def test_the_access_point_takes_the_channel_of_the_station_whatever_its_network_is_called(services, tmp_path):
    (tmp_path / "programs/iw").write_text(
        "#!/bin/sh\nprintf '\tssid channel 7 up\n\tchannel 1 (2412 MHz), width: 20 MHz\n'\n")
    conf = pathlib.Path(services("hostapd", "1")[-1])
    assert conf.read_text() == "interface=bcm0\nchannel=1\nmax_num_sta=5\n"


def test_the_access_point_that_does_not_start_says_why(services, tmp_path, capfd):
    (tmp_path / "state").mkdir()
    (tmp_path / "state/hostapd.log").write_text("of another start\n")
    (tmp_path / "programs/hostapd").write_text('#!/bin/sh\necho "no socket" >> "$5"\nexit 1\n')
    with pytest.raises(subprocess.CalledProcessError):
        services("hostapd", "1")
    assert capfd.readouterr().err == "no socket\n"
    assert not (tmp_path / "hostapd_cli").exists()


def test_the_supplicant_protects_management_frames_where_it_can():
    assert "pmf=1" in (BOARD / "Misc/wpa_supplicant.conf").read_text().splitlines()


@pytest.mark.parametrize("event, word", [("AP-STA-CONNECTED", b"up"), ("AP-STA-DISCONNECTED", b"down"),
                                         ("AP-ENABLED", None), ("AP-STA-CONNECTED-NOT", None)])
def test_stations_are_told_of_in_one_word(run, event, word):
    os.mkfifo(run.files["SOFTAP_PIPE"])
    reader = os.open(run.files["SOFTAP_PIPE"], os.O_RDONLY | os.O_NONBLOCK)
    writer = os.open(run.files["SOFTAP_PIPE"], os.O_WRONLY)    # keeps a read of nothing from being the end
    try:
        assert run("softap_stations", "bcm0", event, "02:00:00:00:02:00") == (0, "")
        assert _read(reader) == word
    finally:
        os.close(reader)
        os.close(writer)


def test_stations_do_not_wait_for_a_reader(run):
    assert run("softap_stations", "bcm0", "AP-STA-CONNECTED", "02:00:00:00:02:00") == (0, "")
    assert not run.files["SOFTAP_PIPE"].exists()
    os.mkfifo(run.files["SOFTAP_PIPE"])
    assert run("softap_stations", "bcm0", "AP-STA-CONNECTED", "02:00:00:00:02:00") == (0, "")


def _read(descriptor):
    try:
        return os.read(descriptor, 100)
    except BlockingIOError:
        return None


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


def own(function, path):
    """Runs a function of the adapters' own library on a path; returns its status."""
    return subprocess.run(["sh", "-euc", f'. "{BOARD}/own"; {function} "{path}"'], check=False, timeout=600).returncode


@pytest.fixture
def victim(tmp_path):
    file = tmp_path / "victim"
    file.write_text("secret")
    return file


@pytest.fixture(params=["link", "dangling link", "fifo", "folder", "another user's"])
def planted(request, tmp_path, victim):
    path = tmp_path / "planted"
    if request.param == "link":
        path.symlink_to(victim)
    elif request.param == "dangling link":
        path.symlink_to(tmp_path / "nothing")
    elif request.param == "fifo":
        os.mkfifo(path)
    elif request.param == "folder":
        path.mkdir()
        (path / "file").touch()
    elif os.geteuid() == 0:
        path.touch()
        os.chown(path, 65534, 65534)
    else:
        pytest.skip("only root has other users' files here")
    return path


def test_what_is_planted_for_a_file_is_removed(planted, victim, tmp_path):
    assert own("own_file", planted) == 0
    assert not os.path.lexists(planted)
    assert victim.read_text() == "secret"
    assert not (tmp_path / "nothing").exists()


def test_a_file_of_our_own_stays(victim, tmp_path):
    assert own("own_file", victim) == 0
    assert victim.read_text() == "secret"
    assert own("own_file", tmp_path / "absent") == 0


@pytest.mark.skipif(os.geteuid() != 0, reason="only root makes other users' files")
def test_a_file_of_a_user_who_may_have_it_stays(victim):
    os.chown(victim, 65534, 65534)
    assert own("own_file", f'{victim}" "nobody') == 0
    assert victim.exists()
    assert own("own_file", f'{victim}" "daemon') == 0
    assert not victim.exists()


def test_what_is_planted_for_a_folder_becomes_one_of_our_own(planted, victim):
    assert own("own_folder", planted) == 0
    assert planted.is_dir() and not planted.is_symlink()
    assert planted.stat().st_uid == os.geteuid()
    assert planted.stat().st_mode & 0o022 == 0
    assert victim.read_text() == "secret"


def test_a_folder_of_our_own_is_closed_to_others(tmp_path):
    folder = tmp_path / "folder"
    folder.mkdir()
    folder.chmod(0o777)
    (folder / "file").touch()
    assert own("own_folder", folder) == 0
    assert folder.stat().st_mode & 0o777 == 0o755
    assert (folder / "file").exists()


def test_a_link_to_a_pipe_is_no_pipe_of_our_own(tmp_path, victim):
    os.mkfifo(tmp_path / "fifo")
    (tmp_path / "link").symlink_to(tmp_path / "fifo")
    assert own("own_pipe", tmp_path / "fifo") == 0
    for other in (tmp_path / "link", victim, tmp_path / "absent"):
        assert own("own_pipe", other) != 0


def test_the_journal_is_not_written_through_a_link(run, victim):
    run.files["WL_JOURNAL"].symlink_to(victim)
    assert run("wl", "up") == (0, "")
    assert victim.read_text() == "secret"
    assert run.files["WL_JOURNAL"].read_text() == "up\n"


def test_a_station_is_not_told_through_a_link(run, tmp_path):
    os.mkfifo(tmp_path / "other")
    run.files["SOFTAP_PIPE"].symlink_to(tmp_path / "other")
    reader = os.open(tmp_path / "other", os.O_RDWR | os.O_NONBLOCK)
    try:
        assert run("softap_stations", "bcm0", "AP-STA-CONNECTED", "02:00:00:00:02:00") == (0, "")
        with pytest.raises(BlockingIOError):
            os.read(reader, 16)
    finally:
        os.close(reader)
