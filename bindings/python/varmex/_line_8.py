"""Which line mappings name a destination line 8.

The library answers such a query with a C++ exception, which ends a process that has no C++ to catch
it. So the files are looked at ahead of the first query of a session, and what may name a line 8 is
not asked. The look is coarser than the library's reader and errs on the side of refusing.
"""

import re
from ctypes import c_void_p
from typing import FrozenSet, Optional, Type

from . import _raw
from . import constants as c
from ._errors import ConflictError, Error
from ._handles import Owner

# The reader may take a long line and the next for one.
_LONG_LINE = re.compile(rb"([^\r\n\0]{200})[\r\n\0]+")
_NAMES_AN_8 = re.compile(rb"PXI_TRIG([0-7])[^=\r\n\0]*=[^\r\n\0]*8")


class LineEightError(ConflictError):
    """What is raised in the place of the library's exception."""


def source_lines_in(text: bytes) -> FrozenSet[int]:
    """The source lines of the mappings of a description file that may name a line 8."""
    return frozenset(map(int, _NAMES_AN_8.findall(_LONG_LINE.sub(rb"\1", text))))


def refusal_for(session: Owner, source_line: int) -> Optional[Error]:
    """What a query for the mapping of a source line must raise instead of asking the library."""
    if session.source_lines_to_8 is None:
        session.source_lines_to_8 = _look(session.pointer)
    if session.source_lines_to_8 is None:
        return _refusal(ConflictError, "the files have changed since the session was opened, so it "
                        "can't be seen whether a line mapping names the destination line 8")
    if source_line in session.source_lines_to_8:
        return _refusal(LineEightError,
                        "a line mapping of the description names the destination line 8")
    return None


def _look(session: c_void_p) -> Optional[FrozenSet[int]]:
    """None where the files are not those of the session any more."""
    found: FrozenSet[int] = frozenset()
    for attribute in (c.varmex_str_PxiSysPath, c.varmex_str_PxieSysPath):
        path: bytes = _raw.call(_raw.library.varmex_getStringAttribute, session, attribute)
        try:
            with open(path, "rb") as file:
                found |= source_lines_in(file.read())
        except FileNotFoundError:
            pass
        except OSError:
            return None
    is_current = _raw.call(_raw.library.varmex_getU32Attribute, session,
                           c.varmex_u32_SessionIsCurrent)
    return found if is_current else None


def _refusal(kind: Type[ConflictError], message: str) -> Error:
    return kind(c.varmex_errorInformationConflict,
                '{"error_constant":"varmex_errorInformationConflict","varmex_debug":'
                f'{{"message":"{message}"}}}}')
