"""What the compiler makes of a header, to be compared with what Python takes it for."""

import ctypes
import os
import subprocess
from pathlib import Path

ROOT = Path(__file__).parents[2]

_PROGRAM = """
#include "{header}"
#include <cstddef>
#include <cstdio>
#include <type_traits>

template <class T> const char *recordName = "?";
{records}
template <class T> void type() {{
    if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {{
        std::printf("function");
    }} else if constexpr (std::is_pointer_v<T>) {{
        type<std::remove_cv_t<std::remove_pointer_t<T>>>();
        std::printf("*");
    }} else if constexpr (std::is_array_v<T>) {{
        type<std::remove_extent_t<T>>();
        std::printf("[%zu]", std::extent_v<T>);
    }} else if constexpr (std::is_void_v<T> || std::is_same_v<T, char>) {{
        std::printf(std::is_void_v<T> ? "void" : "char");
    }} else if constexpr (std::is_integral_v<T>) {{
        std::printf("%s%zu", std::is_signed_v<T> ? "int" : "uint", sizeof(T) * 8);
    }} else {{
        std::printf("%s", recordName<T>);
    }}
}}

template <class Result, class... Parameters> void function(const char *name, Result (*)(Parameters...)) {{
    std::printf("%s ", name);
    type<Result>();
    ((std::printf(" "), type<Parameters>()), ...);
    std::puts("");
}}
template <class Member> void member(const char *name, size_t offset) {{
    std::printf("%s %zu %zu ", name, offset, sizeof(Member));
    type<Member>();
    std::puts("");
}}
template <class Value> void value(const char *name, Value value) {{
    if constexpr (std::is_pointer_v<Value>)
        std::printf("%s %s\\n", name, value);
    else
        std::printf("%s %lld\\n", name, static_cast<long long>(value));
}}

int main() {{
{statements}
}}
"""


def _ask(folder, header, statements, records=()):
    """Lines that a program prints of a header, apart into words."""
    source = folder / "view.cpp"
    names = "\n".join(f'template <> const char *recordName<{one}> = "{one}";' for one in records)
    source.write_text(
        _PROGRAM.format(header=header, records=names, statements="\n".join(statements))
    )
    program = folder / "view"
    compiler = os.environ.get("BSP_TEST_CXX", "c++")
    subprocess.run([compiler, "-std=c++17", str(source), "-o", str(program)], check=True)
    output = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    return [line.split(" ") for line in output.splitlines()]


def constants(folder, header, names):
    """What constants are, as texts."""
    lines = _ask(folder, header, [f'value("{name}", {name});' for name in names])
    return {name: " ".join(value) for name, *value in lines}


def functions(folder, header, names, records):
    """Of functions the types of result and parameters."""
    lines = _ask(folder, header, [f'function("{name}", static_cast<decltype(&{name})>(nullptr));' for name in names], records)
    return {name: types for name, *types in lines}


def structures(folder, header, members):
    """Of structures their sizes, and of each member offset, size and type."""
    statements = []
    for record, names in members.items():
        statements.append(f'member<{record}>("{record}", 0);')
        statements += [
            f'member<decltype({record}::{name})>("{record}.{name}", offsetof({record}, {name}));'
            for name in names
        ]
    lines = _ask(folder, header, statements, members)
    return {name: (int(offset), int(size), kind) for name, offset, size, kind in lines}


_NUMBERS = {
    ctypes.c_char: "char",
    ctypes.c_uint8: "uint8",
    ctypes.c_int32: "int32",
    ctypes.c_uint16: "uint16",
    ctypes.c_uint32: "uint32",
    ctypes.c_uint64: "uint64",
    ctypes.c_char_p: "char*",
    ctypes.c_void_p: "void*",
}


def type_in_words(kind, names):
    """A type of ctypes as the program above prints it; names are those of structures in the header."""
    if kind in _NUMBERS:
        return _NUMBERS[kind]
    if kind in names:
        return names[kind]
    if issubclass(kind, ctypes._CFuncPtr):
        return "function"
    if issubclass(kind, ctypes._Pointer):
        return type_in_words(kind._type_, names) + "*"
    if issubclass(kind, ctypes.Array):
        return f"{type_in_words(kind._type_, names)}[{kind._length_}]"
    [number] = [one for one in kind.__mro__ if one in _NUMBERS]  # one with a check of its range
    return _NUMBERS[number]


def layout(names):
    """Structures of ctypes as structures() tells them."""
    found = {}
    for kind, name in names.items():
        found[name] = (0, ctypes.sizeof(kind), name)
        for member, member_type, *_ in kind._fields_:
            field = getattr(kind, member)
            words = type_in_words(member_type, names)
            found[f"{name}.{member}"] = (field.offset, field.size, words)
    return found
