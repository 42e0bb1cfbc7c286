"""The board-support library in Python: each function, constant and structure of bsp.h, by its name there.

    import bsp

    print(bsp.ioTemperGet(0), "degrees")
    try:
        bsp.ioFanSpeedSet(1, bsp.BSP_FAN_LEVEL_MAX + 1)
    except bsp.Error as error:
        print(error.function, error.name, error.meaning)

What a function writes for its caller it returns here: a number, a text, bytes or a record, and a tuple with
names of several. What it leaves untouched although it succeeds is zero or empty. Lengths of buffers that are
handed in are not asked for. Every status but BSP_OK raises Error; a number that C's type cannot hold raises
ctypes.ArgumentError. help(bsp.ioFanSpeedSet) tells the rest, as bsp.h does.

The library is the one that this package was built or installed with, else the system's; the environment
variable BSP_LIBRARY names another one. It works on the board of the process: on a unit its own, on any other
machine the virtual board that the program was started on ('vboard run', vboard.Board.run). Messages of the
library go to standard output, line by line.
"""

from __future__ import annotations

from bsp._interface import *
from bsp._interface import __all__ as _declared
from bsp._library import Error, Record

__all__ = ["BSP_VERSION_NUMBER", "Error", "Record"]
__all__ += _declared


def BSP_VERSION_NUMBER(major: int, minor: int, patch: int) -> int:
    """A version as one number, so that versions can be compared: 0x00010100 is 1.1.0."""
    return major << 16 | minor << 8 | patch
