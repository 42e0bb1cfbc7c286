"""Pages of docs/, each carried out from its beginning to its end in a folder and a shell.

usage: pytest test_tutorial.py, with the build's folder in BSP_TEST_BUILD and cmake's path in BSP_TEST_CMAKE

Blocks that are marked `console` are commands and what they print, where "..." stands for anything. What a
block of a program has before it names its file: "In `FILE`:" makes it, "end of `FILE`" adds to it.
"""

import os
import re
import shlex
import subprocess
from pathlib import Path

import pytest

_DOCUMENTS = Path(__file__).parents[2] / "docs"
_INSTALL = "cmake --install build/release --prefix ~/bsp --strip > install.log"
_MARK = "-- end of a command: "
_FILE_END = "END OF A FILE"


def _blocks(page):
    """Each block: its kind, its text, and the paragraph before it."""
    before, paragraph, kind, block = "", "", None, []
    for line in (_DOCUMENTS / page).read_text().splitlines():
        if kind is not None and line == "```":
            yield kind, "".join(block), before
            kind, block = None, []
        elif kind is not None:
            block.append(line + "\n")
        elif line.startswith("```"):
            kind = line.removeprefix("```")
        elif line:
            paragraph = before = f"{paragraph} {line}"
        else:
            paragraph = ""


def _commands_of(text):
    """Commands of a transcript, and what is shown of each."""
    for part in re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]:
        command, _, shown = part.partition("\n")
        yield command, shown


def _steps(page):
    """All that is to be done: commands, and what they print, or None where nobody says."""
    for kind, text, before in _blocks(page):
        if kind == "console":
            yield from _commands_of(text)
        elif kind == "diff":
            yield f"git apply -p0 - <<'{_FILE_END}'\n{text}{_FILE_END}", ""
        elif added := re.search(r"[Ee]nd of `([\w.]+)`:$", before):
            yield f"cat >> {added[1]} <<'{_FILE_END}'\n\n\n{text}{_FILE_END}", ""
        else:
            made = re.search(r"In `([\w.]+)`:$", before)
            assert made, f"this block has no file:\n{text}"
            yield f"cat > {made[1]} <<'{_FILE_END}'\n{text}{_FILE_END}", ""


def _pattern_of(shown):
    """What is shown as a pattern; process ids, and how wide pytest draws its lines, differ."""
    lines = []
    for line in shown.splitlines():
        if line == "...":
            lines.append("(?:.*\n)*?")
            continue
        quoted = re.escape(re.sub(r"^(\d+\.\d{9}) \d+ ", r"\1 PID ", line))
        quoted = re.sub(r"(?:_|=|\\-){5,}", "[-_=]+", quoted).replace(r"\.\.\.", ".*")
        lines.append(quoted + "\n")
    return "".join(lines)


def _steady(printed):
    return re.sub(r"^(\d+\.\d{9}) \d+ ", r"\1 PID ", printed, flags=re.MULTILINE)


@pytest.mark.parametrize(
    ("page", "first", "least"),
    [("testing-without-a-board.md", [], 25), ("field-to-desk.md", [(_INSTALL, "")], 20)],
)
def test_a_page_can_be_followed(page, first, least, tmp_path):
    (tmp_path / "build").mkdir()
    (tmp_path / "build" / "release").symlink_to(os.environ["BSP_TEST_BUILD"])
    steps = [*first, *_steps(page)]
    assert len(steps) > least
    script = ["exec 2>&1"]
    for command, _ in steps:
        script += [command, f"echo {shlex.quote(_MARK)}$?"]
    path = f"{Path(os.environ['BSP_TEST_CMAKE']).parent}:/usr/local/bin:/usr/bin:/bin"
    ended = subprocess.run(
        ["bash", "-c", "\n".join(script)],
        cwd=tmp_path,
        env={"HOME": str(tmp_path), "PATH": path, "PYTHONDONTWRITEBYTECODE": "1", "LC_ALL": "C.UTF-8"},
        stdout=subprocess.PIPE,
        text=True,
    )
    printed = re.split(f"^{_MARK}\\d+\n", ended.stdout, flags=re.MULTILINE)[:-1]
    assert len(printed) == len(steps), ended.stdout
    others = [
        f"$ {command}\n{output}"
        for (command, shown), output in zip(steps, printed)
        if not re.fullmatch(_pattern_of(shown), _steady(output))
    ]
    assert not others, "\n".join(others)
