"""Pictures of chassis, by the command."""

import shutil
import subprocess
from typing import Optional


def draw_chassis(number: int) -> Optional[str]:
    """The picture of a chassis as SVG; None without the command, or where it fails."""
    command = shutil.which("varmex")
    if command is None:
        return None
    try:
        drawn = subprocess.run([command, "draw", str(number), "-o", "-"], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60)
    except (OSError, subprocess.TimeoutExpired):
        return None
    picture = drawn.stdout.decode("utf-8", "replace")
    return picture if "<svg" in picture else None
