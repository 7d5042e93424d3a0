"""A root with the sample installation for each test, and programs of their own."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

PROJECT = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(PROJECT / "tests/support"))


@pytest.fixture
def root(tmp_path, monkeypatch):
    """A copy of the sample that the library reads."""
    folder = tmp_path / "root"
    shutil.copytree(PROJECT / "samples", folder)
    monkeypatch.setenv("VARMEX_FSROOT", str(folder))
    return folder


def edit(root, pattern, text, *names):
    """Replaces it wherever it stands in these files of the installation, which must hold it."""
    for name in names or ("pxisys.ini",):
        file = root / "etc/pxi" / name
        edited = re.sub(pattern, text, file.read_bytes())
        assert edited != file.read_bytes()
        file.write_bytes(edited)


def run_python(program, *arguments, **environment):
    """Runs a program in an interpreter of its own; its output. Fails when that ends badly."""
    done = subprocess.run([sys.executable, "-c", program, *map(str, arguments)], text=True,
                          env={**os.environ, **environment}, capture_output=True, timeout=120)
    assert done.returncode == 0, f"{done.returncode}\n{done.stdout}\n{done.stderr}"
    return done.stdout
