"""The Python module is made of what the header says, and of nothing that it does not say."""

import sys

import compiler
import pytest

sys.path.insert(0, str(compiler.ROOT / "python" / "generate"))
import bindings  # noqa: E402
import header  # noqa: E402

_HEADER = """
#include <stdint.h>
#define BSP_SIZE 5 /**< bytes */

/**
 * Reads something, see ::BspKind.
 *
 * @param[in] index  which
 * @param[out] {parameter}  {description}
 * @return BSP_OK
 */
int32_t bspSomethingGet(uint32_t index, {type}{name});
"""


def _module(folder, **words):
    path = folder / "bsp.h"
    path.write_text(_HEADER.format(**{"parameter": "out", "name": "out", **words}))
    return bindings.module(header.read(path))


@pytest.mark.parametrize(
    "kind, description, result, value",
    [
        ("uint16_t *", "receives the number", "int", "out.value"),
        ("char *", "receives the text; BSP_SIZE bytes", "str", "_library.text_of(out)"),
        ("uint8_t *", "receives BSP_SIZE bytes", "bytes", "bytes(out)"),
        ("void *", "receives index bytes", "bytes", "bytes(out)"),
    ],
)
def test_outputs_are_results(tmp_path, kind, description, result, value):
    module = _module(tmp_path, type=kind, description=description)
    assert f"def bspSomethingGet(index: int) -> {result}:" in module
    assert f"    return {value}\n" in module
    assert "BSP_SIZE: Final = 5\n" in module
    assert '    """Reads something, see BspKind.\n' in module


@pytest.mark.parametrize("kind", ["char *", "void *"])
def test_an_output_of_unknown_size_is_refused(tmp_path, kind):
    with pytest.raises(header.HeaderError, match="bspSomethingGet: nothing here tells what out is"):
        _module(tmp_path, type=kind, description="receives the text")


def test_a_description_of_something_else_is_refused(tmp_path):
    with pytest.raises(header.HeaderError, match="bspSomethingGet: its description is not of"):
        _module(tmp_path, type="uint32_t *", description="a number", parameter="value")


def test_a_header_that_does_not_compile_is_refused(tmp_path, capsys):
    path = tmp_path / "bsp.h"
    path.write_text("int32_t bspSomethingGet(void);\n")
    assert bindings.main([str(path), str(tmp_path / "module.py")]) == 1
    assert "unknown type name 'int32_t'" in capsys.readouterr().err
    assert not (tmp_path / "module.py").exists()


def test_without_its_arguments_it_tells_which(capsys):
    assert bindings.main([]) == 2
    assert "usage: bindings.py HEADER MODULE" in capsys.readouterr().err
