#!/usr/bin/env bash
# pythonTest.sh BUILD ASAN_BUILD : the Python package: types, tests, the same against the sanitized
# library, and the wheels: in an empty virtual environment, and as root on a bare system where
# debootstrap is. Ends with "N passed, N failed".
source "$(dirname "$0")/steps.sh"
build=$(realpath "$1") asan=$(realpath "$2")
python=/usr/bin/python3
export PYTHONPATH=$build/python PYTHONDONTWRITEBYTECODE=1 PATH=$build/bin:$PATH
unset VARMEX_FSROOT VARMEX_LIBRARY

suite() { (cd "$here/bindings/python/tests" && "$python" -m pytest -q -p no:cacheprovider "$@"); }

wheel() {
  "$python" -m venv "$work/venv" &&
    env -u PYTHONPATH "$work/venv/bin/pip" install -q --no-index "$here"/build/wheels/varmex-*-linux_x86_64.whl &&
    env -u PYTHONPATH -C "$work" VARMEX_FSROOT="$here/samples" "$work/venv/bin/python" -c '
import varmex
from pathlib import Path
assert Path(varmex.__file__).is_relative_to(Path("venv").resolve()), varmex.__file__
with varmex.Session() as session:
    assert [chassis.number for chassis in session.chassis] == [1, 2, 3]
assert varmex.routing._library._name.startswith(str(Path(varmex.__file__).parent))'
}

# The DLL must need nothing that is not on every Windows. There is no Python to load it with.
windows_wheel() {
  local unpacked=$work/windows
  "$python" -m zipfile -e "$here"/build/wheels/varmex-*-py3-none-win_amd64.whl "$unpacked" &&
    [ -s "$unpacked/varmex/constants.py" ] && [ -e "$unpacked/varmex/py.typed" ] &&
    [ -z "$(find "$unpacked" -name '*.so*')" ] &&
    "$here/tests/checkExports.sh" "$unpacked/varmex/varmex.dll"
}

try types "$python" -m mypy --strict --python-version 3.9 --cache-dir "$work/mypy" \
  "$build/python/varmex"
try tests suite
runtime=$(gcc -print-file-name=libasan.so):$(gcc -print-file-name=libstdc++.so)
VARMEX_LIBRARY=$asan/lib/libvarmex.so.19 ASAN_OPTIONS=detect_leaks=0 LD_PRELOAD=$runtime \
  try 'sanitized library' suite test_lifetimes.py test_routing.py test_waits.py
try 'wheels built' "$here/scripts/wheel.sh"
try 'wheel in a bare environment' wheel
try 'wheel for Windows' windows_wheel
if [ "$(id -u)" -eq 0 ] && [ -x /usr/sbin/debootstrap ]; then
  try 'wheel on a bare system' timeout 600 tests/bareWheelTest.sh \
    "$here"/build/wheels/varmex-*-linux_x86_64.whl
fi

finish
