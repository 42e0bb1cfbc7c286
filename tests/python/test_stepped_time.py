"""Programs of different kinds on one stepped board."""

import select
import subprocess
import sys
import time
from pathlib import Path

import pytest
from vboard import Board

_SECONDS = 1000
_HOST_SECONDS = 40  # that this may take: where nothing else runs it takes less than two

_SLEEPS = """
import sys, time
print("ready", file=sys.stderr, flush=True)
start, system = time.monotonic_ns(), time.time_ns()
while True:
    time.sleep(1)
    for passed in time.monotonic_ns() - start, time.time_ns() - system:
        print(f"{passed // 10**9}.{passed % 10**9:09}", end=" ")
    print(flush=True)
"""


@pytest.fixture
def tick(pytestconfig):
    program = Path(pytestconfig.getoption("--iodbg")).with_name("tick")
    assert program.exists()
    return program


def test_a_program_is_waited_for_from_its_start(tick):
    with Board.create("0x0709", time="stepped") as board:
        started = board.start([tick, "sleep", "3"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        board.advance(3)
        output, _ = started.communicate(timeout=60)
        assert output.split() == [b"1.000000000"] * 2 + [b"2.000000000"] * 2 + [b"3.000000000"] * 2


def _seconds_seen(board, programs, folder):
    """What each sees of the seconds that pass at once, the steps, and how long the host took."""
    folder.mkdir()
    running = []
    files = [folder / str(number) for number in range(len(programs))]
    try:
        for program, file in zip(programs, files):
            with file.open("wb") as output:
                started = board.start(program, stdout=output, stderr=subprocess.PIPE)
            running.append(started)
            assert select.select([started.stderr], [], [], 60)[0]
            assert started.stderr.readline() == b"ready\n"
            board.advance(0)  # until it waits: they begin one behind the other
        began = time.monotonic()
        board.advance(_SECONDS)
        took = time.monotonic() - began
        assert all(one.poll() is None for one in running)
        numbers = {one.pid: number for number, one in enumerate(running)}
        steps = [(one.time, numbers.get(one.pid), one.text) for one in board.trace()]
    finally:
        for one in running:
            one.kill()
            one.communicate()
    return [file.read_text().split() for file in files], steps, took


def test_all_kinds_of_programs_see_the_same_seconds_in_every_run(tick, tmp_path):
    programs = [
        [tick, "timerfd", str(2 * _SECONDS)],
        [tick, "poll", str(2 * _SECONDS)],
        [sys.executable, "-c", _SLEEPS],
    ]
    expected = [f"{second}.000000000" for second in range(1, _SECONDS + 1) for _ in range(2)]
    runs = []
    for name in "first", "second":
        with Board.create("0x0709", time="stepped") as board:
            seconds, steps, took = _seconds_seen(board, programs, tmp_path / name)
            assert board.time == _SECONDS
        print(f"{_SECONDS} seconds of {len(programs)} programs took {took:.2f} s")
        assert took < _HOST_SECONDS
        assert seconds == [expected] * len(programs)
        runs.append(steps)
    assert len(runs[0]) > 3 * _SECONDS
    assert runs[0] == runs[1]
