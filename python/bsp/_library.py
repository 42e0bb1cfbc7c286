"""libbsp.so, and how it is called."""

from __future__ import annotations

import ctypes
import operator
import os
from collections.abc import Sequence
from functools import cache
from pathlib import Path
from typing import Any, ClassVar, TypeVar

from bsp._place import LIBRARY

NAME = "libbsp.so.1"
PLACE = "BSP_LIBRARY"  # a variable that says where the library is

Data = bytes | bytearray | memoryview
FilePath = str | bytes | os.PathLike[str]


def _load() -> ctypes.CDLL:
    """The library as told, as it was built or installed with this package, or as the system finds it."""
    told = os.environ.get(PLACE)
    beside = Path(__file__).parent / LIBRARY
    place = told or (str(beside) if beside.exists() else NAME)
    try:
        return ctypes.CDLL(place)
    except OSError as error:
        raise ImportError(
            f"{NAME} cannot be loaded ({error}); install it, or say where it is with {PLACE}"
        ) from error


library = _load()


def _print_line_by_line() -> None:
    """Has what the library prints leave at once, in order with what Python prints."""
    line_buffered = 1  # _IOLBF
    c_library = ctypes.CDLL(None)
    c_library.setvbuf(ctypes.c_void_p.in_dll(c_library, "stdout"), None, line_buffered, ctypes.c_size_t(0))


_print_line_by_line()


class Error(Exception):
    """A function has answered another status than BSP_OK."""

    def __init__(self, function: str, status: int) -> None:
        self.function = function
        """The function's name: "ioFanSpeedSet"."""
        self.status = status
        """What it answered: a value of BspStatus, or a code of the kernel module."""
        words = _status_in_words(status)
        self.name = words[0]
        """The status's name, "BSP_E_INVALID"; empty for a code of the kernel module."""
        self.meaning = words[1]
        """What the status means, in a line."""
        super().__init__(f"{function}: {self.name or 'status'} ({status}): {self.meaning}")

    def __reduce__(self) -> tuple[type[Error], tuple[str, int]]:
        return type(self), (self.function, self.status)


class Record(ctypes.Structure):
    """A structure of bsp.h. Its members are named as there; texts in it are bytes."""

    def __repr__(self) -> str:
        members = ", ".join(f"{name}={_shown(getattr(self, name))}" for name, *_ in self._fields_)
        return f"{type(self).__name__}({members})"

    def __eq__(self, other: object) -> bool:
        return type(self) is type(other) and bytes(self) == bytes(other)  # type: ignore[call-overload]

    __hash__ = None  # type: ignore[assignment]


def _shown(value: Any) -> str:
    if isinstance(value, ctypes.Array):
        return f"bytes.fromhex('{bytes(value).hex()}')" if value._type_ is ctypes.c_uint8 else str(list(value))
    return repr(value)


# Parameters. ctypes would cut off what does not fit.


class _Whole:
    lowest: ClassVar[int]
    highest: ClassVar[int]

    @classmethod
    def from_param(cls, value: Any) -> Any:
        if not cls.lowest <= operator.index(value) <= cls.highest:
            raise OverflowError(f"{value} is not {cls.lowest} to {cls.highest}")
        return cls(value)  # type: ignore[call-arg]


class U32(_Whole, ctypes.c_uint32):
    lowest = 0
    highest = 2**32 - 1


class I32(_Whole, ctypes.c_int32):
    lowest = -(2**31)
    highest = 2**31 - 1


def data(given: Data, size: int | None = None) -> Any:
    """Bytes for a function that reads them."""
    content = memoryview(given).tobytes()
    if size is not None and len(content) != size:
        raise ValueError(f"{len(content)} bytes, where {size} are needed")
    return (ctypes.c_uint8 * len(content)).from_buffer_copy(content)


def text(given: str | bytes) -> bytes:
    """A text for a function that reads it up to its zero."""
    encoded = given if isinstance(given, bytes) else given.encode("utf-8", "surrogateescape")
    if b"\0" in encoded:
        raise ValueError("a text has a zero in it")
    return encoded


def path(given: FilePath) -> bytes:
    return text(os.fsencode(given))


def words(given: Sequence[str | bytes]) -> Any:
    """Words for a function that takes them as main does."""
    return (ctypes.c_char_p * (len(given) + 1))(*map(text, given))


def number(given: int | None) -> Any:
    """A number for a function that takes its address, or none."""
    return None if given is None else ctypes.byref(U32.from_param(given))


# Results


def text_of(buffer: Any, length: int | None = None) -> str:
    """A text that a function has stored, up to its zero or of a length."""
    stored: bytes = buffer.value if length is None else buffer.raw[:length]
    return stored.decode("utf-8", "surrogateescape")


Pointed = TypeVar("Pointed", bound=ctypes.Structure)


def record_at(pointer: ctypes._Pointer[Pointed]) -> Pointed | None:
    return pointer.contents if pointer else None


# Calls

PROTOTYPES: dict[str, tuple[Any, ...]] = {}
"""Result and parameters of each function."""


@cache
def _function(name: str) -> Any:
    try:
        function = library[name]
    except AttributeError as error:
        raise NotImplementedError(f"the library that is loaded has no {name}: it is too old") from error
    function.restype, *function.argtypes = PROTOTYPES[name]
    return function


def answer(name: str, *arguments: Any) -> Any:
    """Calls a function, and tells what it answers."""
    return _function(name)(*arguments)


def call(name: str, *arguments: Any) -> None:
    """Calls a function whose answer is a status; raises an error for every one but success."""
    status: int = _function(name)(*arguments)
    if status != 0:
        raise Error(name, status)


def _status_in_words(status: int) -> tuple[str, str]:
    found = answer("bspStatusText", status).contents
    return found.name.decode(), found.meaning.decode()


Kind = TypeVar("Kind", bound=ctypes.Structure)


def variable(kind: type[Kind], name: str) -> Kind:
    """A variable of the library."""
    return kind.in_dll(library, name)
