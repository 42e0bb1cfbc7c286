"""Virtual boards for tests with pytest.

    import pytest

    @pytest.mark.board(model="0x0809", time="virtual", poe=True)
    def test_a_stuck_fan_is_told(board, iodbg):
        board["fan.1.state"] = "stuck"
        board.advance(20)
        assert iodbg("fan", "get")["fans"][0]["speed_rpm"] == 0

Each test has a board of its own. The marker takes what Board.create() takes; poe=True gives one whose PoE
controller is initialised. Without a marker it is what --board-model and --board-time say. When a test
fails its report ends with the board's front panel and the end of its trace.
"""

from __future__ import annotations

import json
import shutil
import subprocess
from collections.abc import Callable, Generator
from pathlib import Path
from typing import Any

import pytest

from vboard.board import Board

_BOARD = pytest.StashKey[Board]()
_LINES_OF_TRACE = 30


class IodbgFailed(AssertionError):
    """iodbg has ended with another exit code than 0."""

    def __init__(self, words: tuple[str, ...], ended: subprocess.CompletedProcess[str]) -> None:
        super().__init__(
            f"iodbg {' '.join(words)} ended with {ended.returncode}\n{ended.stdout}{ended.stderr}"
        )
        self.exit_code = ended.returncode
        self.answer = _parsed(ended.stdout)


def _parsed(text: str) -> Any:
    try:
        return json.loads(text)
    except ValueError:
        return text


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("vboard", "virtual boards")
    group.addoption("--board-model", default="0x0709", help="model of boards (usually 0x0709)")
    group.addoption("--board-time", default="virtual", help="time of boards (usually virtual)")
    group.addoption("--iodbg", default="iodbg", help="the program iodbg (usually that of PATH)")


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line(
        "markers",
        "board(model, time, poe=False, ...): what the test's virtual board is made with",
    )


class _Templates:
    """Boards that take long to make, once per run; tests have copies."""

    def __init__(self, folder: Path, iodbg: str) -> None:
        self._folder = folder
        self._iodbg = iodbg
        self._boards: dict[str, Board] = {}

    def copy(self, place: Path, options: dict[str, Any]) -> Board:
        key = json.dumps(options, sort_keys=True)
        if key not in self._boards:
            self._boards[key] = self._made(self._folder / str(len(self._boards)), options)
        return self._boards[key].copy(place)

    def _made(self, place: Path, options: dict[str, Any]) -> Board:
        time = options.pop("time")
        board = Board.create(folder=place, time="virtual", **options)
        board.run([self._iodbg, "poe", "init"], check=True, stdout=subprocess.DEVNULL)
        board["time"] = time
        board.clear_trace()
        return board


@pytest.fixture(scope="session")
def _board_templates(
    tmp_path_factory: pytest.TempPathFactory, pytestconfig: pytest.Config
) -> _Templates:
    return _Templates(tmp_path_factory.mktemp("boards"), pytestconfig.getoption("--iodbg"))


@pytest.fixture
def board(
    request: pytest.FixtureRequest, tmp_path_factory: pytest.TempPathFactory
) -> Generator[Board, None, None]:
    """A virtual board of the test's own."""
    options: dict[str, Any] = {
        "model": request.config.getoption("--board-model"),
        "time": request.config.getoption("--board-time"),
    }
    for marker in reversed(list(request.node.iter_markers("board"))):
        options.update(marker.kwargs)
    place = tmp_path_factory.mktemp("board") / "board"
    if options.pop("poe", False):
        made = request.getfixturevalue("_board_templates").copy(place, options)
    else:
        made = Board.create(folder=place, **options)
    request.node.stash[_BOARD] = made
    yield made
    made.close()
    shutil.rmtree(place.parent, ignore_errors=True)


@pytest.fixture
def iodbg(board: Board, pytestconfig: pytest.Config) -> Callable[..., Any]:
    """iodbg on the test's board: iodbg("fan", "get") is what it answers, parsed from its JSON.

    With another exit code than 0 IodbgFailed is raised, which has both.
    """

    def answer(*words: str) -> Any:
        program = pytestconfig.getoption("--iodbg")
        ended = board.run([program, *words, "--json"], capture_output=True, text=True)
        if ended.returncode != 0:
            raise IodbgFailed(words, ended)
        return _parsed(ended.stdout)

    return answer


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc] # which has no types
def pytest_runtest_makereport(
    item: pytest.Item, call: pytest.CallInfo[None]
) -> Generator[None, Any, None]:
    outcome = yield
    report = outcome.get_result()
    board = item.stash.get(_BOARD, None)
    if board is None or report.when != "call" or not report.failed:
        return
    try:
        trace = board.trace()[-_LINES_OF_TRACE:]
        report.sections.append(("virtual board", board.panel()))
        report.sections.append(("end of its trace", "\n".join(map(str, trace))))
    except Exception as error:  # a board that is gone must not hide why the test has failed
        report.sections.append(("virtual board", str(error)))
