"""Writes varmex/constants.py from the C headers, and varmex/_absence.py from the command's.

    python3 make_constants.py HEADER_FOLDER VERSION ABSENCE_HEADER OUTPUT_FOLDER

HEADER_FOLDER holds varmex.h and telmar_ra_varmex.h.
"""

import re
import sys
from pathlib import Path
from typing import Dict, List

HEADERS = ("varmex.h", "telmar_ra_varmex.h")
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
ENUM = re.compile(r"\benum\s*\{(.*?)\}", re.DOTALL)
ENUMERATOR = re.compile(r"\s*(\w+)\s*=\s*(-?(?:0[xX][0-9a-fA-F]+|\d+))\s*$")
DEFINE = re.compile(r"^#define\s+(\w+)\s+UINT32_C\((0[xX][0-9a-fA-F]+|\d+)\)", re.MULTILINE)
ROW = re.compile(r'\{("(?:[^"\\]|\\.)*"), (true|false), ("\w*")\}')


def read_constants(text: str) -> Dict[str, int]:
    """The enumerators and numeric macros of a header by name. ValueError for one that it can't
    read, so that none is lost in silence."""
    text = COMMENT.sub("", text)
    constants: Dict[str, int] = {}
    for body in ENUM.findall(text):
        for entry in filter(str.strip, body.split(",")):
            match = ENUMERATOR.match(entry)
            if not match:
                raise ValueError(f"an enumerator without a number: {entry.strip()!r}")
            constants[match[1]] = int(match[2], 0)
    for name, number in DEFINE.findall(text):
        constants[name] = int(number, 0)
    return constants


def read_absences(text: str) -> List[str]:
    """The rows by which the command tells absences from faults, as tuples of Python."""
    rows = ROW.findall(text)
    if len(rows) != text.count("{\""):
        raise ValueError("a row that can't be read")
    return [f"({words}, {absence.capitalize()}, {otherwise})" for words, absence, otherwise in rows]


def main(arguments: List[str]) -> None:
    folder, version, absences, output = arguments
    lines = ['"""Numbers of the C interface. Made from its headers by make_constants.py."""', "",
             "from typing import Final", "", f'VERSION: Final = "{version}"']
    for header in HEADERS:
        lines += ["", f"# {header}"]
        constants = read_constants(Path(folder, header).read_text(encoding="utf-8"))
        lines += [f"{name}: Final = {number}" for name, number in constants.items()]
    Path(output, "constants.py").write_text("\n".join(lines) + "\n", encoding="utf-8")
    rows = read_absences(Path(absences).read_text(encoding="utf-8"))
    Path(output, "_absence.py").write_text(
        '"""What tells absences from faults. Made from the command\'s table by make_constants.py."""\n\n'
        "# Words, whether they mean an absence, the attribute of which the contrary holds.\n"
        "ROWS = (\n" + "".join(f"    {row},\n" for row in rows) + ")\n", encoding="utf-8")


if __name__ == "__main__":
    main(sys.argv[1:])
