"""Virtual boards in the hands of Python programs.

    from vboard import Board

    with Board.create("0x0709", time="virtual") as board:
        board["fan.1.state"] = "stuck"
        board.wait("fan.1.speed == 0", timeout=10)
        with board.fault(device="i2c:0.1.0x4F", effect="no-answer"):
            board.run(["iodbg", "temperature"])

What a board holds has names: docs/virtual-board.md lists them, and describe() tells of each.
"""

from vboard.board import Board, Fault, Request, Value, describe, models
from vboard.errors import (
    BoardDamaged,
    BoardError,
    BoardExists,
    BoardFull,
    BoardGone,
    BoardInUse,
    BoardTimeout,
    BoardVersion,
    NoBoard,
    NotPermitted,
    ProgramBusy,
    Refused,
)

__all__ = [
    "Board",
    "BoardDamaged",
    "BoardError",
    "BoardExists",
    "BoardFull",
    "BoardGone",
    "BoardInUse",
    "BoardTimeout",
    "BoardVersion",
    "Fault",
    "NoBoard",
    "NotPermitted",
    "ProgramBusy",
    "Refused",
    "Request",
    "Value",
    "describe",
    "models",
]
