"""A virtual board as an object."""

from __future__ import annotations

import ctypes
import json
import os
import shutil
import subprocess
import tempfile
from collections.abc import Iterable, Mapping, Sequence
from ctypes import byref, c_char_p, c_uint32, c_uint64, c_void_p
from dataclasses import dataclass
from pathlib import Path
from types import TracebackType
from typing import Any

from vboard import _library

NS_PER_SECOND = 1_000_000_000

Value = int | float | str
"""What a property holds: numbers are numbers, words and texts are texts."""


def _encoded(text: str | None) -> bytes | None:
    return None if text is None else os.fsencode(text)


def _decoded(text: bytes | None) -> str:
    return (text or b"").decode("utf-8", "replace")


def _is_pattern(name: str) -> bool:
    return any(character in name for character in "*?[")


def _nanoseconds(seconds: float | None) -> int:
    if seconds is None:
        return _library.FOR_EVER
    if seconds < 0:
        raise ValueError(f"{seconds} seconds: time does not go back")
    return round(seconds * NS_PER_SECOND)


def models() -> dict[str, str]:
    """The models that boards can be made of: device ids, and what they are."""
    return dict(
        _library.rows(
            _library.Model, lambda row: (_decoded(row.id), _decoded(row.description)), "vboardModels"
        )
    )


def describe(pattern: str | None = None) -> list[dict[str, Any]]:
    """What is known of properties: name, type, unit, range, words, models and meaning.

    A pattern or a name tells of which; None: of all.
    """
    description: list[dict[str, Any]] = json.loads(_library.text("vboardDescribe", _encoded(pattern)))
    return description


@dataclass(frozen=True)
class Request:
    """A request that reached a board, and its answer."""

    number: int
    """Counted from 0, since the board was made."""
    time: float
    """In seconds of the board's clock."""
    pid: int
    """The process that sent it."""
    kind: str
    """What it is: "i2c-read"."""
    text: str
    """In words, as `vboard trace` prints it."""
    details: dict[str, Any]
    """All that is known of it, as `vboard trace --json` prints it."""

    def __str__(self) -> str:
        return f"{self.time:.9f} {self.pid} {self.text}"


class Fault:
    """A rule of which requests go wrong. As a context manager it ends with the block."""

    def __init__(self, board: Board, number: int) -> None:
        self._board = board
        self.id = number

    def __enter__(self) -> Fault:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        if any(rule["id"] == self.id for rule in self._board.faults()):
            self.clear()

    @property
    def matched(self) -> int:
        """How many requests it has matched."""
        return int(self._rule()["matched"])

    @property
    def fired(self) -> int:
        """How many of these went wrong."""
        return int(self._rule()["fired"])

    def clear(self) -> None:
        """Removes the rule."""
        self._board.clear_faults(self.id)

    def _rule(self) -> dict[str, Any]:
        for rule in self._board.faults():
            if rule["id"] == self.id:
                return rule
        raise LookupError(f"fault rule {self.id} was removed")


class Board:
    """A virtual board that is held open.

    A board can be shared by threads; each use of it is whole. As a context manager it is closed with the
    block, and removed if create() has chosen its folder.
    """

    def __init__(self, folder: str | os.PathLike[str]) -> None:
        """Opens the board in a folder."""
        handle = c_void_p()
        _library.call("vboardOpen", os.fsencode(folder), byref(handle))
        self._handle: _library.Handle | None = _library.Handle(handle)
        self._own_folder: Path | None = None
        self.gaps: list[str] = []
        """What a board that was made of a captured unit cannot have of it, a line for each."""

    @classmethod
    def create(
        cls,
        model: str | None = None,
        folder: str | os.PathLike[str] | None = None,
        *,
        from_file: str | os.PathLike[str] | None = None,
        time: str | None = None,
        serial: str | None = None,
        mac: str | None = None,
        cmdline: str | None = None,
        mtd: Sequence[str] = (),
        flash_timing: str | None = None,
    ) -> Board:
        """Makes a board of a model ("0x0709"), or of a captured unit, and opens it.

        A captured unit, from_file, tells all but how time passes: nothing else can be given with it.

        Without a folder it is made in one of its own, which goes when the board is closed. The others are
        what `vboard create` takes.
        """
        if (model is None) == (from_file is None):
            raise TypeError("a board is made of either a model or a captured unit")
        others = (serial, mac, cmdline, flash_timing)
        if from_file is not None and (mtd or any(other is not None for other in others)):
            raise TypeError("a captured unit tells all but how time passes")
        own = Path(tempfile.mkdtemp(prefix="vboard-")) if folder is None else None
        place = Path(folder) if folder is not None else Path(str(own)) / "board"
        geometries = (c_char_p * len(mtd))(*map(os.fsencode, mtd))
        options = _library.Options(
            size=ctypes.sizeof(_library.Options),
            mtdCount=len(mtd),
            model=_encoded(model),
            time=_encoded(time),
            serial=_encoded(serial),
            mac=_encoded(mac),
            commandLine=_encoded(cmdline),
            mtd=geometries,
            flashTiming=_encoded(flash_timing),
        )
        try:
            gaps = ""
            if from_file is not None:
                names = (os.fsencode(place), os.fsencode(from_file))
                gaps = _library.text("vboardCreateFrom", *names, _encoded(time))
            else:
                _library.call("vboardCreate", os.fsencode(place), byref(options))
            board = cls(place)
            board.gaps = gaps.splitlines()
        except BaseException:
            if own is not None:
                shutil.rmtree(own)
            raise
        board._own_folder = own
        return board

    @classmethod
    def upgrade(cls, folder: str | os.PathLike[str]) -> Board:
        """Makes a board of an earlier released version one of this version, and opens it.

        It keeps all that it has, or stays as it was. A board of this version is opened as it is.
        """
        _library.call("vboardUpgrade", os.fsencode(folder))
        return cls(folder)

    def copy(self, folder: str | os.PathLike[str]) -> Board:
        """Makes a copy of the board as it is now, and opens it."""
        _library.call("vboardCopy", os.fsencode(self.folder), os.fsencode(folder))
        return Board(folder)

    def close(self) -> None:
        """Gives the board back; it stays in its folder, unless create() has chosen that."""
        self._handle = None
        if self._own_folder is not None:
            shutil.rmtree(self._own_folder, ignore_errors=True)
        self._own_folder = None

    def delete(self) -> None:
        """Removes the board with its folder. Programs that have it in use are in the way."""
        _library.call("vboardDelete", os.fsencode(self.folder))
        self.close()

    def __enter__(self) -> Board:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None) is not None:
            self.close()

    def __repr__(self) -> str:
        return "<closed board>" if self._handle is None else f"<board in {self.folder}>"

    @property
    def _board(self) -> _library.Handle:
        if self._handle is None:
            raise ValueError("the board is closed")
        return self._handle

    @property
    def folder(self) -> Path:
        """The board's folder."""
        return Path(os.fsdecode(_library.folder(self._board)))

    @property
    def users(self) -> dict[int, str]:
        """Who has the board in use, but for this process: process ids and programs."""
        return dict(
            _library.rows(
                _library.User, lambda row: (row.pid, _decoded(row.program)), "vboardUsers", self._board
            )
        )

    # What it holds

    def get(self, *names: str) -> dict[str, Value]:
        """What properties hold, all at one moment; patterns ("fan.*") stand for all that fit.

        Without a name: all but those that are too long for that.
        """
        words = (c_char_p * len(names))(*map(os.fsencode, names))
        return dict(
            _library.rows(
                _library.Property,
                lambda row: (_decoded(row.name), json.loads(row.json)),
                "vboardGet",
                self._board,
                words,
                len(names),
            )
        )

    def set(self, changes: Mapping[str, Value]) -> None:
        """Changes properties, all at one moment; where one is refused, none."""
        rows = [
            _library.Change(os.fsencode(name), os.fsencode(str(value)))
            for name, value in changes.items()
        ]
        _library.call("vboardSet", self._board, (_library.Change * len(rows))(*rows), len(rows))

    def __getitem__(self, name: str) -> Any:
        """What a property holds; for a pattern a dictionary."""
        found = self.get(name)
        if _is_pattern(name):
            return found
        [value] = found.values()
        return value

    def __setitem__(self, name: str, value: Value) -> None:
        self.set({name: value})

    # Time

    @property
    def time(self) -> float:
        """The board's time, in seconds since it was made."""
        time = c_uint64()
        _library.call("vboardTime", self._board, byref(time))
        return time.value / NS_PER_SECOND

    def advance(self, seconds: float, patience: float = 2) -> None:
        """Moves a clock that does not move by itself.

        A stepped one goes from deadline to deadline of the board's programs, and it is over when
        all of them wait again. ProgramBusy names a thread that runs for longer than patience, in
        seconds of the host.
        """
        _library.call(
            "vboardAdvance", self._board, _nanoseconds(seconds), _nanoseconds(patience)
        )

    def wait(self, condition: str, timeout: float | None = None) -> None:
        """Waits until a condition holds: "fan.1.speed == 0 and supply.2.input == good".

        The time-out is in seconds of the board's clock; None: for ever. BoardTimeout tells what is so
        instead. A virtual or stepped clock is moved by it, as by advance().
        """
        _library.call("vboardWait", self._board, os.fsencode(condition), _nanoseconds(timeout))

    @property
    def changes(self) -> int:
        """A number that grows with whatever programs and hands do to the board."""
        return _library.changes(self._board)

    def await_change(self, since: int, timeout: float | None = None) -> bool:
        """Waits until changes is another number than since; False when the host's seconds are over."""
        from vboard.errors import BoardTimeout

        try:
            _library.call("vboardAwaitChange", self._board, since, _nanoseconds(timeout))
        except BoardTimeout:
            return False
        return True

    # What goes wrong

    def fault(
        self,
        device: str,
        effect: str,
        *,
        op: str = "any",
        offset: int | str | None = None,
        nth: int = 1,
        when: str = "once",
    ) -> Fault:
        """Adds a rule of which requests go wrong, in the words of `vboard fault add`."""
        rule = _library.FaultRule(
            size=ctypes.sizeof(_library.FaultRule),
            device=_encoded(device),
            op=_encoded(op),
            offset=None if offset is None else _encoded(str(offset)),
            nth=_encoded(str(nth)),
            when=_encoded(when),
            effect=_encoded(effect),
        )
        number = c_uint32()
        _library.call("vboardAddFault", self._board, byref(rule), byref(number))
        return Fault(self, number.value)

    def faults(self) -> list[dict[str, Any]]:
        """The rules that there are, as `vboard fault list --json` prints them."""
        return _library.rows(
            _library.FaultRule, lambda row: dict(json.loads(row.json)), "vboardFaults", self._board
        )

    def clear_faults(self, *ids: int) -> None:
        """Removes rules by their numbers; without a number, all."""
        _library.call("vboardClearFaults", self._board, (c_uint32 * len(ids))(*ids), len(ids))

    # What has happened

    def trace(self, since: int = 0) -> list[Request]:
        """The requests that reached the board, from a number on, as far as they are kept."""
        return _library.rows_before(
            _library.TracedRequest,
            lambda row: Request(
                row.number,
                row.time / NS_PER_SECOND,
                row.pid,
                _decoded(row.kind),
                _decoded(row.text),
                json.loads(row.json),
            ),
            "vboardTrace",
            (self._board, byref(c_uint64(since)), 0),
            (None,),
        )

    def clear_trace(self) -> None:
        """Forgets the trace; the numbers of requests go on."""
        _library.call("vboardClearTrace", self._board, _library.FOR_EVER)

    def send(self, request: Mapping[str, Any]) -> dict[str, Any]:
        """Sends a request without a program, as the details of one in the trace tell of it; the
        same with this board's answer."""
        answer: dict[str, Any] = json.loads(
            _library.text("vboardSend", self._board, json.dumps(dict(request)).encode())
        )
        return answer

    def panel(self, colours: bool = False) -> str:
        """The front panel, drawn in text."""
        return _library.text("vboardPanel", self._board, 1 if colours else 0)

    # Programs

    def environment(self, program: str | os.PathLike[str] | None = None) -> dict[str, str]:
        """This process's environment with what puts a program on the board."""
        name = None if program is None else os.fsencode(program)
        board = _library.rows(
            _library.Variable,
            lambda row: (_decoded(row.name), os.fsdecode(row.value)),
            "vboardEnvironment",
            self._board,
            name,
        )
        return {**os.environ, **dict(board)}

    def run(
        self, program: Sequence[str | os.PathLike[str]], **arguments: Any
    ) -> subprocess.CompletedProcess[Any]:
        """Runs a program on the board as subprocess.run does, whose arguments it takes."""
        return subprocess.run(program, **self._started(program, arguments))

    def start(
        self, program: Sequence[str | os.PathLike[str]], **arguments: Any
    ) -> subprocess.Popen[Any]:
        """Starts a program on the board as subprocess.Popen does, whose arguments it takes.

        A stepped clock stands from now on until it waits.
        """
        process = subprocess.Popen(program, **self._started(program, arguments))
        _library.call("vboardExpectProgram", self._board, process.pid)
        return process

    def _started(
        self, program: Sequence[str | os.PathLike[str]], arguments: dict[str, Any]
    ) -> dict[str, Any]:
        board = self.environment(program[0])
        own: Iterable[tuple[str, str]] = (arguments.pop("env", None) or {}).items()
        kept = {name: board[name] for name in ("VBOARD_DIR", "LD_PRELOAD")}
        return {**arguments, "env": {**(dict(own) or board), **kept}}
