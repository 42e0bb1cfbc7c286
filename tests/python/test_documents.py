"""What documents and docstrings show of Python does what they say."""

import os
import re
import subprocess
import sys
import textwrap
from pathlib import Path

import bsp
import pytest
import vboard
import vboard.pytest_plugin

_ROOT = Path(__file__).parents[2]


def _blocks_of(page):
    text = (_ROOT / page).read_text()
    return re.findall(r"^```python\n(.*?)^```", text, re.DOTALL | re.MULTILINE)


def _block_of(module):
    """The indented part of a module's docstring."""
    indented = re.search(r"^    .*?(?=^\S)", module.__doc__, re.DOTALL | re.MULTILINE)
    return textwrap.dedent(indented.group())


_BLOCKS = [*_blocks_of("docs/virtual-board.md"), _block_of(vboard), _block_of(vboard.pytest_plugin)]
_TESTS = [block for block in _BLOCKS if "import pytest" in block]
_PROGRAMS = [block for block in _BLOCKS if "import pytest" not in block]


def test_all_are_found():
    assert (len(_TESTS), len(_PROGRAMS)) == (2, 2)


@pytest.mark.parametrize("program", _PROGRAMS)
def test_programs_end_well(program, pytestconfig):
    iodbg = Path(pytestconfig.getoption("--iodbg")).resolve()
    path = f"{iodbg.parent}:{os.environ['PATH']}"
    ended = subprocess.run(
        [sys.executable, "-c", program],
        env={**os.environ, "PATH": path},
        capture_output=True,
        text=True,
    )
    assert ended.returncode == 0, ended.stderr
    assert "temperature" in ended.stderr  # which cannot be read


@pytest.mark.parametrize("test", _TESTS)
def test_tests_pass(pytester, pytestconfig, test):
    pytester.makepyfile(test)
    iodbg = pytestconfig.getoption("--iodbg")
    ended = pytester.runpytest_subprocess("-pvboard.pytest_plugin", f"--iodbg={iodbg}")
    ended.assert_outcomes(passed=1)


def test_programs_that_call_the_library_tell_of_the_board(board):
    [of_readme] = _blocks_of("README.md")
    for program in [of_readme, _block_of(bsp)]:
        ended = board.run([sys.executable, "-c", program], capture_output=True, text=True)
        assert (ended.returncode, ended.stderr) == (0, "")
        degrees, refused = ended.stdout.splitlines()
        assert degrees.endswith(f"{board['temperature.sensor']} degrees")
        assert "BSP_E_INVALID" in refused and refused.startswith("ioFanSpeedSet")
