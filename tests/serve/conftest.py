"""Servers for tests, and what speaks to them."""

import shlex
import subprocess
from pathlib import Path

import pytest
from client import Server


def pytest_addoption(parser):
    parser.addoption("--vboard", required=True, help="the program vboard")
    parser.addoption("--emulator", default="", help="what it is started with, if anything")
    parser.addoption("--slow-machine", action="store_true", help="measure, but do not judge")


@pytest.fixture(scope="session")
def vboard(pytestconfig):
    """Runs vboard with some words; what it prints."""
    start = shlex.split(pytestconfig.getoption("--emulator")) + [pytestconfig.getoption("--vboard")]

    def run(*words, code=0):
        ended = subprocess.run(
            [*start, *map(str, words)], capture_output=True, text=True, timeout=120
        )
        assert ended.returncode == code, ended.stdout + ended.stderr
        return ended.stdout if code == 0 else ended.stderr

    run.start = start
    return run


@pytest.fixture(scope="session")
def can_start_itself(pytestconfig):
    """Emulated programs cannot execute each other."""
    return not pytestconfig.getoption("--emulator")


@pytest.fixture
def needs_children():
    """Asked for by tests in which the server starts programs; where it cannot they are left out."""


def pytest_collection_modifyitems(config, items):
    if not config.getoption("--emulator"):
        return
    left_out = [item for item in items if "needs_children" in item.fixturenames]
    config.hook.pytest_deselected(items=left_out)
    items[:] = [item for item in items if item not in left_out]


@pytest.fixture
def is_fast(pytestconfig):
    return not pytestconfig.getoption("--slow-machine")


@pytest.fixture
def make_board(vboard, tmp_path):
    def make(name="board", *options):
        folder = tmp_path / name
        folder.parent.mkdir(parents=True, exist_ok=True)
        vboard("create", "--model", "0x0709", *options, folder)
        return folder

    return make


@pytest.fixture
def serve(vboard):
    """Starts servers, which end with the test."""
    servers = []

    def start(folder, *options):
        server = Server([*vboard.start, "serve", str(folder), *map(str, options)])
        servers.append(server)
        return server

    yield start
    for server in servers:
        server.kill()


@pytest.fixture(scope="session")
def quiet(vboard, tmp_path_factory):
    """A server of one board whose clock stands, for tests that change nothing that others see."""
    folder = tmp_path_factory.mktemp("quiet") / "unit-7"
    vboard("create", "--model", "0x0709", "--time", "virtual", folder)
    server = Server([*vboard.start, "serve", str(folder)])
    server.folder = Path(folder)
    yield server
    server.kill()
