"""Why a call to a board fails."""

from __future__ import annotations


class BoardError(Exception):
    """A call that has failed: what is wrong, and what to do, is its text.

    status is the number of vboard.h, os_error the errno of what failed, or 0.
    """

    status = 12

    def __init__(self, text: str, os_error: int = 0) -> None:
        super().__init__(text)
        self.os_error = os_error


class WrongArgument(BoardError, TypeError):
    """The library was called wrongly."""

    status = 1


class Refused(BoardError, ValueError):
    """A name, value, condition or rule that this board cannot have."""

    status = 2


class NoBoard(BoardError, FileNotFoundError):
    """There is no such folder, or no board in it."""

    status = 3


class BoardDamaged(BoardError):
    """The folder holds a board that is not whole."""

    status = 4


class BoardVersion(BoardError):
    """The board was made by another version, or on another kind of machine."""

    status = 5


class NotPermitted(BoardError, PermissionError):
    """The operating system does not let this user."""

    status = 6


class BoardExists(BoardError, FileExistsError):
    """Something is in the place where a board shall be made."""

    status = 7


class BoardGone(BoardError):
    """The board was removed since it was opened."""

    status = 8


class BoardTimeout(BoardError, TimeoutError):
    """The time is over."""

    status = 9


class BoardInUse(BoardError):
    """Programs have the board in use."""

    status = 10


class BoardFull(BoardError):
    """The board has no room for another rule."""

    status = 11


class OutOfMemory(BoardError, MemoryError):
    """There is not enough memory."""

    status = 13


class ProgramBusy(BoardError):
    """A program does not wait, so that a stepped clock stands."""

    status = 14


_KINDS = {
    kind.status: kind
    for kind in (
        WrongArgument,
        Refused,
        NoBoard,
        BoardDamaged,
        BoardVersion,
        NotPermitted,
        BoardExists,
        BoardGone,
        BoardTimeout,
        BoardInUse,
        BoardFull,
        ProgramBusy,
        OutOfMemory,
    )
}


def error_of(status: int, text: str, os_error: int) -> BoardError:
    """The exception for what a call answered."""
    return _KINDS.get(status, BoardError)(text, os_error)
