"""What ./test and ./run do with build folders that no longer fit the tree."""

import os
import pathlib
import shutil
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture
def tree(tmp_path):
    """A tree with the script that both commands begin with."""
    shutil.copytree(ROOT / "scripts", tmp_path / "scripts")
    (tmp_path / "CMakePresets.json").write_text("{}")
    return tmp_path


def build_folder(tree, home, age):
    """A folder that was configured for the tree at `home`, `age` seconds after the presets were written."""
    cache = tree / "build/dev/CMakeCache.txt"
    cache.parent.mkdir(parents=True)
    cache.write_text(f"CMAKE_HOME_DIRECTORY:INTERNAL={home}\n")
    presets = (tree / "CMakePresets.json").stat().st_mtime
    os.utime(cache, (presets + age, presets + age))
    return cache.parent


def begin(tree):
    return subprocess.run(["bash", "-c", ". scripts/setup.sh"], cwd=tree, capture_output=True, text=True, check=True).stdout


def test_one_that_fits_stays(tree):
    folder = build_folder(tree, tree, 1)
    assert begin(tree) == ""
    assert folder.is_dir()


def test_one_of_a_tree_elsewhere_goes(tree):
    folder = build_folder(tree, "/somewhere/else", 1)
    assert begin(tree) == f"Removing {folder}: it was made for a tree in /somewhere/else\n"
    assert not folder.exists()


def test_one_older_than_the_presets_goes(tree):
    folder = build_folder(tree, tree, -1)
    assert begin(tree) == f"Removing {folder}: the presets have changed\n"
    assert not folder.exists()
