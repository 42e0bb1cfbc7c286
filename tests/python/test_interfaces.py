"""What the Python packages take the headers for is what the compiler makes of them."""

import re

import bsp
import compiler
import vboard._library as control
from bsp import _library as library
from vboard import errors

_BSP = compiler.ROOT / "include" / "bsp.h"
_VBOARD = compiler.ROOT / "virtual_board" / "include" / "vboard.h"

_RECORDS = {
    kind: name
    for name, kind in vars(bsp).items()
    if isinstance(kind, type) and issubclass(kind, bsp.Record) and kind is not bsp.Record
}


def _exported(part):
    """What the linker's list lets out of a library."""
    text = (compiler.ROOT / "cmake" / f"{part}.map").read_text()
    return set(re.findall(r"^\s+(\w+);$", text, re.MULTILINE))


def _without_comments(header):
    return re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.DOTALL)


def _constants_of(header):
    text = _without_comments(header)
    macros = re.findall(r"^#define (BSP_\w+) +\S", text, re.MULTILINE)
    enumerations = re.findall(r"enum \w+ \{(.*?)\}", text, re.DOTALL)
    return {*macros, *re.findall(r"\bBSP_\w+(?=\s*[=,}]|\s*$)", "\n".join(enumerations), re.MULTILINE)}


def test_every_constant_of_bsp_has_its_value(tmp_path):
    names = _constants_of(_BSP) - {"BSP_API"}
    assert len(names) > 250
    assert names == {name for name in bsp.__all__ if re.fullmatch(r"BSP_[A-Z0-9_]+", name)} - {
        "BSP_VERSION_NUMBER"
    }
    compiled = compiler.constants(tmp_path, _BSP, sorted(names))
    assert {name: str(getattr(bsp, name)) for name in names} == compiled


def test_enumerations_of_bsp_have_their_members():
    text = _without_comments(_BSP)
    for name, members in re.findall(r"enum (\w+) \{(.*?)\}", text, re.DOTALL):
        names = re.findall(r"^\s*(BSP_\w+)", members, re.MULTILINE)
        assert list(getattr(bsp, name).__members__) == names


def test_every_structure_of_bsp_has_its_layout(tmp_path):
    assert set(_RECORDS.values()) == set(re.findall(r"^typedef struct (\w+) \{", _BSP.read_text(), re.M))
    members = {name: [field[0] for field in kind._fields_] for kind, name in _RECORDS.items()}
    assert compiler.layout(_RECORDS) == compiler.structures(tmp_path, _BSP, members)


def test_every_function_of_bsp_has_its_type(tmp_path):
    names = _exported("libbsp") - {"bspPoeRtl8239Driver"}
    assert names == set(library.PROTOTYPES)
    assert names <= set(bsp.__all__)
    python = {
        name: [compiler.type_in_words(kind, _RECORDS) for kind in kinds]
        for name, kinds in library.PROTOTYPES.items()
    }
    compiled = compiler.functions(tmp_path, _BSP, sorted(names), _RECORDS.values())
    assert python == compiled


_BOARDS = {
    control.Error: "VBoardError",
    control.Options: "VBoardOptions",
    control.User: "VBoardUser",
    control.Property: "VBoardProperty",
    control.Change: "VBoardChange",
    control.FaultRule: "VBoardFault",
    control.TracedRequest: "VBoardRequest",
    control.Variable: "VBoardVariable",
    control.Model: "VBoardModel",
}


def test_structures_of_boards_have_their_layout(tmp_path):
    assert len(_BOARDS) == sum(
        isinstance(kind, type) and issubclass(kind, compiler.ctypes.Structure)
        for kind in vars(control).values()
    )
    members = {name: [field[0] for field in kind._fields_] for kind, name in _BOARDS.items()}
    assert compiler.layout(_BOARDS) == compiler.structures(tmp_path, _VBOARD, members)


def _fits(python, compiled):
    """Handles and what vboardFree() takes back are mere addresses in Python."""
    if python.startswith("void*"):
        return compiled.count("*") == python.count("*")
    return python == compiled


def test_functions_of_boards_have_their_types(tmp_path):
    names = [name for name in _exported("libvboard-control") if name in control.__dict__["_CALLS"]]
    names += ["vboardFree", "vboardClose", "vboardFolder", "vboardChanges"]
    assert len(names) == len(control._CALLS) + 4
    records = [*_BOARDS.values(), "VBoard"]
    compiled = compiler.functions(tmp_path, _VBOARD, names, records)
    for name in names:
        function = getattr(control._library, name)
        kinds = [function.restype, *function.argtypes]
        words = ["void" if kind is None else compiler.type_in_words(kind, _BOARDS) for kind in kinds]
        assert len(words) == len(compiled[name]), name
        assert all(map(_fits, words, compiled[name])), (name, words, compiled[name])


def test_statuses_of_boards_have_exceptions(tmp_path):
    names = re.findall(r"\bVBOARD_E_\w+(?= = )", _VBOARD.read_text())
    compiled = compiler.constants(tmp_path, _VBOARD, names)
    kinds = {**errors._KINDS, errors.BoardError.status: errors.BoardError}
    assert sorted(kinds) == sorted(int(value) for value in compiled.values())
    assert kinds[int(compiled["VBOARD_E_REFUSED"])] is errors.Refused
    assert kinds[int(compiled["VBOARD_E_TIMEOUT"])] is errors.BoardTimeout
    assert kinds[int(compiled["VBOARD_E_IN_USE"])] is errors.BoardInUse
