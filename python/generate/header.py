"""What bsp.h declares, and what its descriptions say of it."""

from __future__ import annotations

import ast
import re
from dataclasses import dataclass, field
from pathlib import Path

from clang.cindex import (  # type: ignore[import]
    Cursor,
    CursorKind,
    Index,
    Token,
    TokenKind,
    TranslationUnit,
    Type,
    TypeKind,
)


class HeaderError(Exception):
    """The header has something that cannot be understood."""


@dataclass
class Description:
    """A description, apart into what is said of what."""

    text: list[str] = field(default_factory=list)
    """Its paragraphs."""
    directions: dict[str, str] = field(default_factory=dict)
    """"in", "out" or "in,out" of parameters."""
    parameters: dict[str, str] = field(default_factory=dict)
    result: str = ""
    copied_from: str = ""
    """The function that has the description."""


@dataclass
class CType:
    """A type: a number ("uint32_t"), "char", "void", a structure, or something made of these."""

    name: str
    pointers: int = 0
    is_const: bool = False
    """Of a pointer: what it points to is only read."""
    count: int = 0
    """Elements of an array; 0: it is none."""
    function: tuple[CType, list[CType]] | None = None
    """Result and parameters of what a pointer to a function points to."""


@dataclass
class Parameter:
    name: str
    type: CType


@dataclass
class Function:
    name: str
    result: CType
    parameters: list[Parameter]
    description: Description


@dataclass
class Constant:
    name: str
    value: int | str
    text: str


@dataclass
class Enumeration:
    name: str
    members: list[Constant]
    description: Description


@dataclass
class Member:
    name: str
    type: CType
    text: str


@dataclass
class Structure:
    name: str
    members: list[Member]
    description: Description


@dataclass
class Variable:
    name: str
    type: CType
    description: Description


@dataclass
class Header:
    constants: list[Constant]
    macros: list[str]
    """Those with parameters, and those that stand for no value."""
    enumerations: list[Enumeration]
    structures: list[Structure]
    functions: list[Function]
    variables: list[Variable]


def _plain(words: str) -> str:
    """Words without the marks of the reference's generator."""
    words = re.sub(r"@ref (\w+)", r"\1", words)
    return re.sub(r"(?<!\w)::(?=\w)", "", words).replace("::", ".")


def _description(comment: str | None) -> Description:
    lines = re.sub(r"^/\*\*<?|\*/$", "", comment or "").splitlines()
    text = "\n".join(re.sub(r"^\s*\*( |$)", "", line.strip()) for line in lines).strip()
    found = Description()
    blocks = re.split(r"^(?=@)", text, flags=re.MULTILINE)
    for block in blocks:
        words = _plain(" ".join(block.split()))
        if parameter := re.match(r"@param\[(in|out|in,out)\] (\w+) (.*)", words):
            found.directions[parameter[2]] = parameter[1]
            found.parameters[parameter[2]] = parameter[3]
        elif words.startswith("@return "):
            found.result = words.removeprefix("@return ")
        elif words.startswith("@copydoc "):
            found.copied_from = words.removeprefix("@copydoc ")
        elif words and not words.startswith("@"):
            found.text = [_plain(" ".join(part.split())) for part in block.strip().split("\n\n")]
    return found


def _words(comment: str | None) -> str:
    return " ".join(_description(comment).text)


def _type(given: Type) -> CType:
    if given.kind == TypeKind.CONSTANTARRAY:
        element = _type(given.element_type)
        return CType(element.name, count=given.element_count)
    if given.kind == TypeKind.POINTER:
        target = given.get_pointee()
        if target.get_canonical().kind == TypeKind.FUNCTIONPROTO:
            parts = (_type(target.get_result()), [_type(part) for part in target.argument_types()])
            return CType("function", function=parts)
        inner = _type(target)
        return CType(inner.name, inner.pointers + 1, target.is_const_qualified())
    return CType(re.sub(r"^(const )?(struct )?", "", given.spelling))


def _comments_of_lines(unit: TranslationUnit) -> tuple[dict[int, str], dict[int, str]]:
    """The comments behind something, by their first lines, and those above something, by their last."""
    behind, above = {}, {}
    for token in unit.cursor.get_tokens():
        if token.kind == TokenKind.COMMENT:
            if token.spelling.startswith("/**<"):
                behind[token.extent.start.line] = token.spelling
            elif token.spelling.startswith("/**"):
                above[token.extent.end.line] = token.spelling
    return behind, above


def _parse(path: Path, source: str | None = None) -> TranslationUnit:
    unit = Index.create().parse(
        str(path),
        args=["-xc", "-std=c11"],
        unsaved_files=[] if source is None else [(str(path), source)],
        options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD,
    )
    for problem in unit.diagnostics:
        raise HeaderError(str(problem))
    return unit


def _values(header: Path, names: list[str]) -> dict[str, int]:
    """What the compiler makes of macros that stand for numbers."""
    # An enumerator's type need not hold what the next one has, so each is in an enumeration of its own.
    lines = [f'#include "{header}"', *(f"enum {{ value_{name} = {name} }};" for name in names)]
    unit = _parse(header.parent / "values.c", "\n".join(lines))
    found = {}
    for cursor in unit.cursor.get_children():
        if cursor.kind == CursorKind.ENUM_DECL:
            for member in cursor.get_children():
                if member.spelling.startswith("value_"):
                    found[member.spelling.removeprefix("value_")] = member.enum_value
    return found


def _constants(header: Path, unit: TranslationUnit) -> tuple[list[Constant], list[str]]:
    behind, above = _comments_of_lines(unit)
    constants, others = [], []
    for cursor in unit.cursor.get_children():
        if cursor.kind != CursorKind.MACRO_DEFINITION or not _is_in(cursor, header):
            continue
        name, *content = list(cursor.get_tokens())
        comment = behind.get(cursor.extent.end.line) or above.get(cursor.extent.start.line - 1)
        if not content or _is_call(name, content[0]) or content[0].spelling == "__attribute__":
            others.append(name.spelling)
        elif len(content) == 1 and content[0].spelling.startswith('"'):
            text: str = ast.literal_eval(content[0].spelling)
            constants.append(Constant(name.spelling, text, _words(comment)))
        else:
            constants.append(Constant(name.spelling, 0, _words(comment)))
    numbers = _values(header, [constant.name for constant in constants if constant.value == 0])
    for constant in constants:
        constant.value = numbers.get(constant.name, constant.value)
    return constants, others


def _is_call(name: Token, next_one: Token) -> bool:
    """Whether a macro has parameters: they follow its name without a blank."""
    return bool(next_one.spelling == "(" and name.extent.end.offset == next_one.extent.start.offset)


def _is_in(cursor: Cursor, header: Path) -> bool:
    return bool(cursor.location.file and cursor.location.file.name == str(header))


def _enumeration(cursor: Cursor) -> Enumeration:
    members = [
        Constant(member.spelling, member.enum_value, _words(member.raw_comment))
        for member in cursor.get_children()
    ]
    return Enumeration(cursor.spelling, members, _description(cursor.raw_comment))


def _structure(cursor: Cursor) -> Structure:
    members = [
        Member(member.spelling, _type(member.type), _words(member.raw_comment))
        for member in cursor.get_children()
        if member.kind == CursorKind.FIELD_DECL
    ]
    return Structure(cursor.spelling, members, _description(cursor.raw_comment))


def _function(cursor: Cursor) -> Function:
    parameters = [Parameter(one.spelling, _type(one.type)) for one in cursor.get_arguments()]
    return Function(
        cursor.spelling, _type(cursor.result_type), parameters, _description(cursor.raw_comment)
    )


def _copy_descriptions(functions: list[Function]) -> None:
    by_name = {function.name: function for function in functions}
    for function in functions:
        if source := function.description.copied_from:
            function.description = by_name[source].description
            function.description.copied_from = source
        declared = [parameter.name for parameter in function.parameters]
        if list(function.description.parameters) != declared:
            raise HeaderError(f"{function.name}: its description is not of {declared}")


def read(path: Path) -> Header:
    """What is declared in a header."""
    unit = _parse(path)
    own = [cursor for cursor in unit.cursor.get_children() if _is_in(cursor, path)]

    def all_of(kind: CursorKind) -> list[Cursor]:
        return [cursor for cursor in own if cursor.kind == kind]

    constants, macros = _constants(path, unit)
    functions = [_function(cursor) for cursor in all_of(CursorKind.FUNCTION_DECL)]
    _copy_descriptions(functions)
    return Header(
        constants,
        macros,
        [_enumeration(cursor) for cursor in all_of(CursorKind.ENUM_DECL)],
        [_structure(cursor) for cursor in all_of(CursorKind.STRUCT_DECL)],
        functions,
        [
            Variable(cursor.spelling, _type(cursor.type), _description(cursor.raw_comment))
            for cursor in all_of(CursorKind.VAR_DECL)
        ],
    )
