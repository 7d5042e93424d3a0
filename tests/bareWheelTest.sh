#!/usr/bin/env bash
# bareWheelTest.sh WHEEL : installs the wheel with pip on a bare Debian, without a compiler or a network,
# and reads samples/ there. Takes root and debootstrap.
set -euo pipefail
system=$(mktemp -d)
trap 'rm -rf "$system"' EXIT
tests/bareSystem.sh "$system"
export PATH=$PATH:/usr/sbin
work=$system/root
cp -r "$1" samples "$work"
cat >"$work/look.py" <<'END'
import shutil
import varmex
from pathlib import Path

package = Path(varmex.__file__).parent
assert package.is_relative_to(Path("venv").resolve()), package
assert varmex.routing._library._name == str(package / "libvarmex.so.19")
assert not any(map(shutil.which, ("cc", "gcc", "varmex")))
with varmex.Session() as session:
    assert len(session.modules()) == 22 and session.chassis[1]._repr_svg_() is None
assert [module.place for module in varmex.find("DMM")] == ["1/9"]
END
chroot $system env -i PATH=/usr/bin:/bin VARMEX_FSROOT="${work#"$system"}/samples" \
  sh -ec 'cd "$1" && python3 -m venv venv && venv/bin/pip install -q --no-index ./*.whl &&
    venv/bin/python look.py' - "${work#"$system"}"
