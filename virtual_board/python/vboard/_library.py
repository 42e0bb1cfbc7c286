"""libvboard-control as vboard.h has it."""

from __future__ import annotations

import ctypes
import os
from collections.abc import Callable
from ctypes import POINTER, byref, c_char_p, c_int32, c_uint32, c_uint64, c_void_p
from pathlib import Path
from typing import Any, TypeVar

from vboard.errors import error_of

NAME = "libvboard-control.so.1"
PLACE = "VBOARD_CONTROL_LIBRARY"  # a variable that says where the library is

FOR_EVER = 2**64 - 1


class Error(ctypes.Structure):
    _fields_ = [("status", c_int32), ("osError", c_int32), ("text", ctypes.c_char * 1016)]


class Options(ctypes.Structure):
    _fields_ = [
        ("size", c_uint32),
        ("mtdCount", c_uint32),
        ("model", c_char_p),
        ("time", c_char_p),
        ("serial", c_char_p),
        ("mac", c_char_p),
        ("commandLine", c_char_p),
        ("mtd", POINTER(c_char_p)),
        ("flashTiming", c_char_p),
    ]


class User(ctypes.Structure):
    _fields_ = [("program", c_char_p), ("pid", c_int32)]


class Property(ctypes.Structure):
    _fields_ = [
        ("name", c_char_p),
        ("value", c_char_p),
        ("json", c_char_p),
        ("note", c_char_p),
        ("isIdle", c_int32),
    ]


class Change(ctypes.Structure):
    _fields_ = [("name", c_char_p), ("value", c_char_p)]


class FaultRule(ctypes.Structure):
    _fields_ = [
        ("size", c_uint32),
        ("id", c_uint32),
        ("device", c_char_p),
        ("op", c_char_p),
        ("offset", c_char_p),
        ("nth", c_char_p),
        ("when", c_char_p),
        ("effect", c_char_p),
        ("matched", c_uint32),
        ("fired", c_uint32),
        ("text", c_char_p),
        ("json", c_char_p),
    ]


class TracedRequest(ctypes.Structure):
    _fields_ = [
        ("number", c_uint64),
        ("time", c_uint64),
        ("pid", c_int32),
        ("error", c_int32),
        ("result", c_int32),
        ("kind", c_char_p),
        ("text", c_char_p),
        ("json", c_char_p),
    ]


class Variable(ctypes.Structure):
    _fields_ = [("name", c_char_p), ("value", c_char_p)]


class Model(ctypes.Structure):
    _fields_ = [
        ("id", c_char_p),
        ("description", c_char_p),
        ("poePorts", c_uint32),
        ("hasSupplyEeproms", c_int32),
    ]


# The parameters of each function before the last one, where it tells why it fails.
_CALLS: dict[str, list[Any]] = {
    "vboardCreate": [c_char_p, POINTER(Options)],
    "vboardCreateFrom": [c_char_p, c_char_p, c_char_p, POINTER(c_void_p)],
    "vboardCopy": [c_char_p, c_char_p],
    "vboardDelete": [c_char_p],
    "vboardUpgrade": [c_char_p],
    "vboardOpen": [c_char_p, POINTER(c_void_p)],
    "vboardUsers": [c_void_p, POINTER(POINTER(User)), POINTER(c_uint32)],
    "vboardExpectProgram": [c_void_p, c_int32],
    "vboardGet": [
        c_void_p,
        POINTER(c_char_p),
        c_uint32,
        POINTER(POINTER(Property)),
        POINTER(c_uint32),
    ],
    "vboardSet": [c_void_p, POINTER(Change), c_uint32],
    "vboardAwaitChange": [c_void_p, c_uint32, c_uint64],
    "vboardWait": [c_void_p, c_char_p, c_uint64],
    "vboardTime": [c_void_p, POINTER(c_uint64)],
    "vboardAdvance": [c_void_p, c_uint64, c_uint64],
    "vboardAddFault": [c_void_p, POINTER(FaultRule), POINTER(c_uint32)],
    "vboardFaults": [c_void_p, POINTER(POINTER(FaultRule)), POINTER(c_uint32)],
    "vboardClearFaults": [c_void_p, POINTER(c_uint32), c_uint32],
    "vboardTrace": [
        c_void_p,
        POINTER(c_uint64),
        c_uint32,
        POINTER(POINTER(TracedRequest)),
        POINTER(c_uint32),
        POINTER(c_uint64),
    ],
    "vboardClearTrace": [c_void_p, c_uint64],
    "vboardSend": [c_void_p, c_char_p, POINTER(c_void_p)],
    "vboardPanel": [c_void_p, c_int32, POINTER(c_void_p)],
    "vboardEnvironment": [c_void_p, c_char_p, POINTER(POINTER(Variable)), POINTER(c_uint32)],
    "vboardModels": [POINTER(POINTER(Model)), POINTER(c_uint32)],
    "vboardDescribe": [c_char_p, POINTER(c_void_p)],
}


def _places() -> list[str]:
    """Where the library may be: as told, as installed with this package, as the system finds it."""
    told = os.environ.get(PLACE)
    if told:
        return [told]
    installed = [
        str(path)
        for above in Path(__file__).resolve().parents[1:5]
        for pattern in (NAME, f"lib/{NAME}", f"lib/*/{NAME}", f"*/{NAME}")
        for path in sorted(above.glob(pattern))
    ]
    return [*installed, NAME]


def _load() -> ctypes.CDLL:
    failure: OSError | None = None
    for place in _places():
        try:
            return ctypes.CDLL(place)
        except OSError as error:
            failure = error
    raise ImportError(f"{NAME} cannot be loaded ({failure}); install it, or say where it is with {PLACE}")


_library = _load()
for _name, _parameters in _CALLS.items():
    getattr(_library, _name).argtypes = [*_parameters, POINTER(Error)]
    getattr(_library, _name).restype = c_int32
_library.vboardFree.argtypes = [c_void_p]
_library.vboardFree.restype = None
_library.vboardClose.argtypes = [c_void_p]
_library.vboardClose.restype = None
_library.vboardFolder.argtypes = [c_void_p]
_library.vboardFolder.restype = c_char_p
_library.vboardChanges.argtypes = [c_void_p]
_library.vboardChanges.restype = c_uint32



class Handle:
    """An open board. It is closed when nobody has it any more, calls of other threads included."""

    def __init__(self, address: c_void_p) -> None:
        self._as_parameter_ = address

    def __del__(self, close: Callable[[c_void_p], None] = _library.vboardClose) -> None:
        close(self._as_parameter_)


folder: Callable[[Handle], bytes] = _library.vboardFolder
changes: Callable[[Handle], int] = _library.vboardChanges


def call(function: str, *arguments: Any) -> None:
    """Calls a function; raises what it fails with."""
    error = Error()
    status = getattr(_library, function)(*arguments, byref(error))
    if status != 0:
        raise error_of(status, error.text.decode("utf-8", "replace"), error.osError)


Row = TypeVar("Row", bound=ctypes.Structure)
Made = TypeVar("Made")


def rows(kind: type[Row], make: Callable[[Row], Made], function: str, *arguments: Any) -> list[Made]:
    """What is made of each row of a list that a function gives away.

    The list and its length are the arguments behind those that are given.
    """
    return rows_before(kind, make, function, arguments, ())


def rows_before(
    kind: type[Row],
    make: Callable[[Row], Made],
    function: str,
    arguments: tuple[Any, ...],
    further: tuple[Any, ...],
) -> list[Made]:
    """The same of a function with arguments behind the list."""
    given = POINTER(kind)()
    count = c_uint32()
    call(function, *arguments, byref(given), byref(count), *further)
    try:
        return [make(given[index]) for index in range(count.value)]
    finally:
        _library.vboardFree(given)


def text(function: str, *arguments: Any) -> str:
    """The text that a function gives away."""
    given = c_void_p()
    call(function, *arguments, byref(given))
    try:
        return ctypes.string_at(given.value or 0).decode("utf-8", "replace")
    finally:
        _library.vboardFree(given)
