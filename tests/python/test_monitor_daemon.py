"""The example of a daemon, on boards to which something happens."""

import os
import re
import select
import signal
import subprocess
import time
from pathlib import Path

import pytest

pytestmark = pytest.mark.board(time="stepped")

_HOST_SECONDS = 60  # how long a line may take on a busy machine
_LONGEST_LOOK = 0.1  # at what else may have happened than that a line came
_BOARD_SECONDS = 600  # and how far the clock is moved for it where it does not move by itself


class Daemon:
    """A daemon on a board, whose lines are waited for."""

    def __init__(self, board, program):
        self._board = board
        self._is_moved = board["time"] == "stepped"
        self._process = board.start(program, stdout=subprocess.PIPE)
        os.set_blocking(self._process.stdout.fileno(), False)
        self._begun = b""  # of a line
        self.has_been_told = False
        self.lines = []

    def expect(self, *lines):
        """Waits until these have been written since the last time, in any order, and nothing else."""
        self.wait(lambda: len(self.lines) >= len(lines))
        assert sorted(self.lines) == sorted(lines)
        self.lines.clear()

    def wait(self, is_so):
        """Waits until something is so; where the clock does not move by itself it is moved."""
        until = time.monotonic() + _HOST_SECONDS
        clock = self._board.time
        while not is_so():
            assert time.monotonic() < until, self.lines
            assert self.is_running or self.has_been_told, f"it has ended; {self.lines}"
            if self._is_moved:
                assert self._board.time < clock + _BOARD_SECONDS, self.lines
                self._board.advance(1)
            self._read(0 if self._is_moved else _LONGEST_LOOK)

    @property
    def is_running(self):
        return self._process.poll() is None

    def _read(self, seconds):
        if select.select([self._process.stdout], [], [], seconds)[0]:
            *lines, self._begun = (self._begun + self._process.stdout.read()).split(b"\n")
            self.lines += [line.decode() for line in lines]

    def end(self, number=signal.SIGTERM):
        """Tells it to end; what it answers, and what it wrote that nobody has expected."""
        self.has_been_told = True
        self._process.send_signal(number)
        self.wait(lambda: not self.is_running)
        self._read(0)
        return self._process.returncode, self.lines

    def kill(self):
        self._process.kill()
        self._process.communicate()


@pytest.fixture
def monitor(pytestconfig):
    program = Path(pytestconfig.getoption("--iodbg")).with_name("monitor_daemon")
    assert program.exists()
    return program


@pytest.fixture
def daemon(board, monitor, tmp_path):
    watched = Daemon(board, [monitor, "-i", "1", "-p", "4", "-m", tmp_path / "messages"])
    try:
        watched.expect("monitor: begins")
        yield watched
        assert watched.end() == (0, ["monitor: ends"])
    finally:
        watched.kill()


def test_a_module_is_plugged_fails_and_is_pulled(board, daemon):
    board["sfp.49.module"] = "sr"
    daemon.expect("port 49: module plugged, works")
    board["sfp.49.state"] = "tx-fault"
    daemon.expect("port 49: module has a transmit fault")
    board["sfp.49.state"] = "dead"
    daemon.expect("port 49: module does not answer")
    board["sfp.49.state"] = "good"
    daemon.expect("port 49: module plugged, works")
    board["sfp.49.module"] = "none"
    daemon.expect("port 49: module pulled")


@pytest.mark.board(poe=True)
def test_a_poe_port_is_overloaded(board, daemon):
    board["poe.3.device"] = "class=4 draws=18000"
    daemon.expect("PoE port 3: delivers power")
    board["poe.3.device"] = "class=4 draws=18000 over-current"
    daemon.expect("PoE port 3: has a fault, gets no power")
    board["poe.3.device"] = "none"
    daemon.expect("PoE port 3: delivers no power")


def test_a_fan_fails(board, daemon):
    board["fan.1.state"] = "stuck"
    daemon.expect("fan 1: stands still", "fan 2: stands still")  # they share a tachometer
    board["fan.1.state"] = "good"
    daemon.expect("fan 1: turns again", "fan 2: turns again")


def test_a_supply_loses_its_input_and_gets_it_back(board, daemon):
    board["supply.1.input"] = "failed"
    daemon.expect("supply 1: failed")
    board.set({"supply.1.input": "good", "supply.2.present": "no"})
    daemon.expect("supply 1: good again", "supply 2: not there")
    board["supply.2.present"] = "yes"
    daemon.expect("supply 2: good again")


@pytest.mark.board(poe=True)
def test_the_bus_dies_and_comes_back(board, daemon, tmp_path):
    board["sfp.49.module"] = "sr"
    daemon.expect("port 49: module plugged, works")
    with board.fault(device="i2c", effect="ioctl-fails=EIO", when="from"):
        daemon.expect("I2C bus: does not answer", "PoE controller: does not answer")
    daemon.expect("I2C bus: answers again", "PoE controller: answers again")
    assert "ioctl fail, cmd=0x1003" in (tmp_path / "messages").read_text().splitlines()


def test_a_unit_gets_warm_and_hot_and_cools_down(board, daemon):
    for ambient, state in {50: "warm", 70: "hot", 56: "warm", 25: "normal again"}.items():
        board["temperature.ambient"] = ambient
        daemon.wait(lambda: daemon.lines)
        [line] = daemon.lines
        assert re.fullmatch(f"temperature: {state}, [0-9]+ C", line)
        daemon.lines.clear()


def test_one_silent_device_is_not_the_bus(board, daemon):
    board["temperature.state"] = "missing"
    daemon.expect("temperature sensor: does not answer")
    board["temperature.state"] = "good"
    daemon.expect("temperature sensor: answers again")


def test_a_reading_that_is_disturbed_is_no_event(board, daemon):
    with board.fault(device="i2c:0.1.0x4F", effect="no-answer") as disturbance:
        daemon.wait(lambda: disturbance.fired == 1)
    board["supply.1.input"] = "failed"
    daemon.expect("supply 1: failed")


def test_what_is_wrong_from_the_beginning_is_told(board, monitor):
    board.set({"supply.1.input": "failed", "sfp.50.module": "dead"})
    watched = Daemon(board, [monitor, "-i", "1", "-p", "0"])
    try:
        watched.expect("monitor: begins", "supply 1: failed", "port 50: module does not answer")
        assert watched.end(signal.SIGINT) == (0, ["monitor: ends"])
    finally:
        watched.kill()


@pytest.mark.parametrize(
    "words, code, error",
    [
        (["-i", "0"], 2, "usage: monitor_daemon [-i SECONDS] [-p PORTS] [-m FILE]\n"),
        (["-p", "49"], 2, "usage: monitor_daemon [-i SECONDS] [-p PORTS] [-m FILE]\n"),
        (["-i", "1x"], 2, "usage: monitor_daemon [-i SECONDS] [-p PORTS] [-m FILE]\n"),
        (["more"], 2, "usage: monitor_daemon [-i SECONDS] [-p PORTS] [-m FILE]\n"),
        (["-m", "/nowhere/x"], 1, "monitor_daemon: /nowhere/x: No such file or directory\n"),
    ],
)
def test_bad_words_are_refused(board, monitor, words, code, error):
    ended = board.run([monitor, *words], capture_output=True, text=True)
    assert (ended.returncode, ended.stdout, ended.stderr) == (code, "", error)


def test_without_the_kernel_module_it_does_not_begin(board, monitor):
    with board.fault(device="/dev/bspHandle", effect="open-fails=ENOENT", op="open", when="from"):
        ended = board.run([monitor], capture_output=True, text=True)
    assert (ended.returncode, ended.stdout) == (1, "")
    assert ended.stderr == "monitor_daemon: ioDevIdGet: status -1\n"
