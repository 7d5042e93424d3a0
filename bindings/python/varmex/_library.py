"""Finds and loads the shared library."""

import ctypes
import os
import sys
from ctypes.util import find_library
from pathlib import Path
from typing import Iterator, List, Tuple

FILE, REMEDY = (("varmex.dll", "Put the folder of varmex.dll on PATH") if sys.platform == "win32"
                else ("libvarmex.so.19", "Install the package libvarmex19"))


def candidates() -> Iterator[Tuple[str, str]]:
    """What is tried, in order: the library's path or name, and where that comes from. A library
    that VARMEX_LIBRARY names is the only one."""
    chosen = os.environ.get("VARMEX_LIBRARY")
    if chosen:
        yield chosen, "VARMEX_LIBRARY"
        return
    packaged = Path(__file__).resolve().parent / FILE
    if packaged.exists():
        yield str(packaged), "the package"
    # Windows no longer looks along PATH by itself.
    yield find_library(FILE) or FILE if sys.platform == "win32" else FILE, "the system"


def load() -> ctypes.CDLL:
    """Loads the library. ImportError, with all that was tried, when there is none."""
    failures: List[str] = []
    for name, source in candidates():
        try:
            return ctypes.CDLL(name)
        except OSError as error:
            failures.append(f"{name} ({source}): {error}".rstrip("."))
    raise ImportError(
        "the varmex library was not found. Tried: " + "; ".join(failures)
        + f". {REMEDY}, or let VARMEX_LIBRARY name the library's file."
    )
