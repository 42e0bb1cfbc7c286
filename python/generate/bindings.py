"""Writes the Python module of what bsp.h declares.

usage: bindings.py HEADER MODULE

Inputs of a function are its parameters in Python, outputs are its results. Which are which, and how long
buffers are, is what the header's descriptions say; what they say in no regular way is in the tables here.
"""

from __future__ import annotations

import re
import sys
import textwrap
from collections.abc import Iterable, Iterator
from dataclasses import dataclass
from pathlib import Path

import header
from header import CType, Function, HeaderError, Parameter

NUMBERS = {
    "char": "c_char",
    "int32_t": "c_int32",
    "uint8_t": "c_uint8",
    "uint16_t": "c_uint16",
    "uint32_t": "c_uint32",
    "uint64_t": "c_uint64",
}
CHECKED = {"int32_t": "_library.I32", "uint32_t": "_library.U32"}

SIZES = {
    ("bspBootPwdGet", "pwd"): "BSP_BOOT_PASSWORD_BUFFER",
    ("bspSerialNumGet", "serial"): "BSP_SERIAL_NUMBER_BUFFER",
}
"""Of texts whose description names several sizes."""

KNOWN = {("bspSerialNumGet", "len")}
"""Outputs that tell nothing that another one does not: a text knows its length."""

ANY_ADDRESSES = {("bspPoeOptDriver", "arg")}
"""Parameters that are something else for each use."""

NEVER_NULL = {"bspStatusText"}
"""Functions that answer the address of a record, always."""

WIDTH = 100

_COUNTED = re.compile(r"^(len|count) bytes")


# Types


def ctype(given: CType) -> str:
    """A type of C as ctypes has it."""
    if given.function:
        return f"CFUNCTYPE({', '.join(ctype(part) for part in (given.function[0], *given.function[1]))})"
    if given.count:
        return f"{NUMBERS[given.name]} * {given.count}"
    if given.pointers == 0:
        return NUMBERS.get(given.name, given.name)
    if given.name in ("char", "void"):
        inner = "c_char_p" if given.name == "char" else "c_void_p"
        return f"POINTER({inner})" if given.pointers == 2 else inner
    return f"POINTER({NUMBERS.get(given.name, given.name)})"


def parameter_ctype(given: CType) -> str:
    return ctype(given) if given.pointers else CHECKED[given.name]


def member_annotation(given: CType) -> str:
    """What a member of a structure is in Python."""
    if given.function:
        return "Any"
    if given.name == "char":
        return "bytes"
    return f"Array[{NUMBERS[given.name]}]" if given.count else "int"


# Functions


@dataclass
class Use:
    """What becomes of a parameter."""

    argument: str
    """What is given to the library."""
    inputs: tuple[tuple[str, str], ...] = ()
    """Names and annotations of parameters in Python."""
    before: str = ""
    """What has to be done before the call."""
    output: tuple[str, str, str] | None = None
    """Name, annotation and value of a result."""


class Uses:
    """What becomes of the parameters of a function."""

    def __init__(self, function: Function, records: set[str]) -> None:
        self.function = function
        self.records = records
        self.name = function.description.copied_from or function.name
        self.counted = dict(self._counts())

    def all(self) -> Iterator[Use]:
        for parameter in self.function.parameters:
            yield self._use(parameter)

    def _counts(self) -> Iterator[tuple[str, str]]:
        """Parameters that count elements of what is handed in, and what that is."""
        names = [parameter.name for parameter in self.function.parameters]
        for index, parameter in enumerate(self.function.parameters):
            if parameter.type.pointers == 2:
                yield names[index - 1], parameter.name
            length = re.match(r"(\w+) bytes", self._said_of(parameter))
            if self._direction(parameter) == "in" and length and length[1] in names:
                yield length[1], parameter.name

    def _said_of(self, parameter: Parameter) -> str:
        return self.function.description.parameters[parameter.name]

    def _direction(self, parameter: Parameter) -> str:
        return self.function.description.directions[parameter.name]

    def _use(self, parameter: Parameter) -> Use:
        key = (self.name, parameter.name)
        if key in ANY_ADDRESSES:
            return Use(parameter.name, ((parameter.name, "Any"),))
        if self._said_of(parameter) == "not touched":
            return Use("None")
        if parameter.name in self.counted:
            return Use(f"len({self.counted[parameter.name]})")
        if parameter.type.pointers == 0:
            return Use(parameter.name, ((parameter.name, "int"),))
        if parameter.type.name in self.records:
            return self._record(parameter)
        if self._direction(parameter) == "in":
            return self._input(parameter)
        return self._output(parameter)

    def _record(self, parameter: Parameter) -> Use:
        name, kind = parameter.name, parameter.type.name
        if self._direction(parameter) == "out":
            return Use(f"byref({name})", before=f"{name} = {kind}()", output=(name, kind, name))
        return Use(f"byref({name})", ((name, kind),))

    def _input(self, parameter: Parameter) -> Use:
        name, said = parameter.name, self._said_of(parameter)
        if parameter.type.pointers == 2:
            return Use(f"_library.words({name})", ((name, "Sequence[str | bytes]"),))
        if said.startswith("zero-terminated path"):
            return Use(f"_library.path({name})", ((name, "FilePath"),))
        length = re.match(r"(\w+) bytes", said)
        if parameter.type.name == "char":
            before = f"{name} = _library.text({name})"
            return Use(name, ((name, "str | bytes"),), before=before)
        if parameter.type.name in ("uint8_t", "void"):
            size = f", {length[1]}" if length and length[1].startswith("BSP_") else ""
            return Use(name, ((name, "Data"),), before=f"{name} = _library.data({name}{size})")
        if parameter.type.name == "uint32_t":
            return Use(f"_library.number({name})", ((name, "int | None"),))
        raise self._not_understood(parameter)

    def _output(self, parameter: Parameter) -> Use:
        name, said, kind = parameter.name, self._said_of(parameter), parameter.type.name
        size = SIZES.get((self.name, name))
        if found := re.match(r"receives (?:exactly )?(\w+) bytes", said):
            size = found[1]
        elif found := re.search(r"; (BSP_\w+) bytes$", said):
            size = found[1]
        if size and kind == "char":
            before = f"{name} = create_string_buffer({size})"
            return Use(name, before=before, output=(name, "str", f"_library.text_of({name})"))
        if size:
            before = f"{name} = (c_uint8 * {size})()"
            return Use(name, before=before, output=(name, "bytes", f"bytes({name})"))
        if kind in NUMBERS and kind != "char":
            output = None if (self.name, name) in KNOWN else (name, "int", f"{name}.value")
            return Use(f"byref({name})", before=f"{name} = {NUMBERS[kind]}()", output=output)
        raise self._not_understood(parameter)

    def _not_understood(self, parameter: Parameter) -> HeaderError:
        return HeaderError(
            f"{self.function.name}: nothing here tells what {parameter.name} is in Python: a table has to"
        )


def docstring(text: str, indent: str) -> str:
    """A docstring of paragraphs; those that begin with blanks are parts of the one above."""
    quoted = text.replace("\\", "\\\\")
    wrapped = []
    for line in quoted.split("\n"):
        blanks = indent + " " * (len(line) - len(line.lstrip()))
        hanging = blanks + "    " if line.startswith(" ") else blanks
        wrapped += textwrap.wrap(
            line.strip(), WIDTH, initial_indent=blanks, subsequent_indent=hanging, break_on_hyphens=False
        ) or [""]
    content = "\n".join(wrapped)[len(indent) :]
    end = f'\n{indent}"""' if len(wrapped) > 1 or content.endswith('"') else '"""'
    return f'{indent}"""{content}{end}\n'


def function_docstring(function: Function, inputs: Iterable[str], outputs: Iterable[str]) -> str:
    description = function.description
    parts = ["\n\n".join(description.text)]
    said = description.parameters
    if arguments := [f"    {name}: {_COUNTED.sub('bytes', said[name])}" for name in inputs]:
        parts.append("\n".join(["Args:", *arguments]))
    if results := [f"    {name}: {said[name].removeprefix('receives ')}" for name in outputs]:
        parts.append("\n".join(["Returns:", *results]))
    is_status = function.result == CType("int32_t")
    parts.append(f"Status: {description.result}" if is_status else f"Returns: {description.result}")
    return docstring("\n\n".join(parts), "    ")


def value_function(function: Function) -> str:
    """A function whose answer is no status."""
    uses = list(Uses(function, set()).all())
    inputs = [one for use in uses for one in use.inputs]
    call = ", ".join([f'"{function.name}"', *(use.argument for use in uses)])
    kind = function.result.name
    if function.result.pointers == 0:
        result, value = "int", f"_library.answer({call})"
    elif function.name in NEVER_NULL:
        result, value = kind, f"_library.answer({call}).contents"
    else:
        result, value = f"{kind} | None", f"_library.record_at(_library.answer({call}))"
    return (
        head(function.name, inputs, result)
        + function_docstring(function, [name for name, _ in inputs], [])
        + "".join(f"    {use.before}\n" for use in uses if use.before)
        + f"    found: {result} = {value}\n    return found\n"
    )


def head(name: str, inputs: Iterable[tuple[str, str]], result: str) -> str:
    parameters = ", ".join(f"{one}: {annotation}" for one, annotation in inputs)
    return f"def {name}({parameters}) -> {result}:\n"


def results_class(function: Function, outputs: list[tuple[str, str, str]]) -> str:
    members = "".join(f"    {name}: {annotation}\n" for name, annotation, _ in outputs)
    return f'class {function.name}_results(NamedTuple):\n    """What {function.name} tells."""\n\n{members}\n\n'


def status_function(function: Function, records: set[str]) -> str:
    uses = list(Uses(function, records).all())
    inputs = [one for use in uses for one in use.inputs]
    outputs = [use.output for use in uses if use.output]
    lines = [use.before for use in uses if use.before]
    lines.append(f"_library.call({', '.join([repr_of(function.name), *(use.argument for use in uses)])})")
    before, result = "", "None"
    if len(outputs) == 1:
        result = outputs[0][1]
        lines.append(f"return {outputs[0][2]}")
    elif outputs:
        before = results_class(function, outputs)
        result = f"{function.name}_results"
        lines.append(f"return {result}({', '.join(value for _, _, value in outputs)})")
    return (
        before
        + head(function.name, inputs, result)
        + function_docstring(
            function, [name for name, _ in inputs], [name for name, _, _ in outputs]
        )
        + "".join(f"    {line}\n" for line in lines)
    )


def repr_of(text: str | int) -> str:
    return f'"{text}"' if isinstance(text, str) else repr(text)


# The module


def constants(given: header.Header) -> Iterator[str]:
    for constant in given.constants:
        yield f"{constant.name}: Final = {repr_of(constant.value)}\n" + docstring(constant.text, "")


def enumerations(given: header.Header) -> Iterator[str]:
    for enumeration in given.enumerations:
        members = "".join(
            f"    {member.name} = {member.value}\n" + docstring(member.text, "    ")
            for member in enumeration.members
        )
        names = "".join(
            f"{member.name}: Final = {enumeration.name}.{member.name}\n"
            for member in enumeration.members
        )
        about = docstring("\n\n".join(enumeration.description.text), "    ")
        yield f"class {enumeration.name}(IntEnum):\n{about}\n{members}\n\n{names}"


def structures(given: header.Header) -> Iterator[str]:
    for structure in given.structures:
        annotations = "".join(
            f"    {member.name}: {member_annotation(member.type)}\n" + docstring(member.text, "    ")
            for member in structure.members
        )
        fields = "".join(
            f'        ("{member.name}", {ctype(member.type)}),\n' for member in structure.members
        )
        about = docstring("\n\n".join(structure.description.text), "    ")
        yield f"class {structure.name}(Record):\n{about}\n{annotations}\n    _fields_ = [\n{fields}    ]\n"


def prototypes(given: header.Header) -> str:
    rows = [
        f'        "{function.name}": ('
        + "".join(
            f"{one}, "
            for one in [
                ctype(function.result),
                *(parameter_ctype(parameter.type) for parameter in function.parameters),
            ]
        ).rstrip()
        + "),\n"
        for function in given.functions
    ]
    return "_library.PROTOTYPES.update(\n    {\n" + "".join(rows) + "    }\n)\n"


def functions(given: header.Header) -> Iterator[str]:
    records = {structure.name for structure in given.structures}
    for function in given.functions:
        is_status = function.result == CType("int32_t")
        yield status_function(function, records) if is_status else value_function(function)


def variables(given: header.Header) -> Iterator[str]:
    for variable in given.variables:
        about = docstring(" ".join(variable.description.text), "")
        yield f'{variable.name} = _library.variable({variable.type.name}, "{variable.name}")\n{about}'


HEAD = '''"""What bsp.h declares. Made of it when the library is built."""

from __future__ import annotations

from collections.abc import Sequence
from ctypes import (
    CFUNCTYPE,
    POINTER,
    Array,
    byref,
    c_char,
    c_char_p,
    c_int32,
    c_uint8,
    c_uint16,
    c_uint32,
    c_uint64,
    c_void_p,
    create_string_buffer,
)
from enum import IntEnum
from typing import Any, Final, NamedTuple

from bsp import _library
from bsp._library import Data, FilePath, Record
'''


def names(given: header.Header) -> str:
    """What the module exports."""
    exported = [
        *(constant.name for constant in given.constants),
        *(enumeration.name for enumeration in given.enumerations),
        *(member.name for enumeration in given.enumerations for member in enumeration.members),
        *(structure.name for structure in given.structures),
        *(function.name for function in given.functions),
        *(variable.name for variable in given.variables),
    ]
    return "__all__ = [\n" + "".join(f'    "{name}",\n' for name in exported) + "]\n"


def module(given: header.Header) -> str:
    return "\n\n".join(
        [
            HEAD,
            names(given),
            *constants(given),
            *enumerations(given),
            *structures(given),
            prototypes(given),
            *functions(given),
            *variables(given),
        ]
    )


def main(arguments: list[str]) -> int:
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    source, target = map(Path, arguments)
    try:
        target.write_text(module(header.read(source.absolute())))
    except HeaderError as error:
        print(f"bindings.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
