"""Boards as objects."""

import subprocess
import sys
import tarfile
import threading
import weakref
from pathlib import Path

import pytest
from vboard import (
    Board,
    BoardExists,
    BoardFull,
    BoardGone,
    BoardInUse,
    BoardTimeout,
    BoardVersion,
    NoBoard,
    Refused,
    _library,
    describe,
    models,
)


def test_is_made_as_it_is_asked_for(tmp_path):
    with Board.create(
        "0x0809",
        tmp_path / "board",
        time="virtual",
        serial="SN42",
        mac="02:00:5e:10:00:42",
        cmdline="quiet",
        mtd=["4:size=262144"],
        flash_timing="usual",
    ) as board:
        assert board["flash.timing"] == "usual"
        assert board.folder == tmp_path / "board"
        assert board.get("model", "time", "identity.*", "cmdline") == {
            "model": "0x0809",
            "time": "virtual",
            "identity.serial": "SN42",
            "identity.mac": "02:00:5e:10:00:42",
            "cmdline": "quiet",
        }
    assert (tmp_path / "board").exists()
    with pytest.raises(BoardExists):
        Board.create("0x0809", tmp_path / "board")


def test_goes_with_its_own_folder():
    with Board.create("0x0709") as board:
        folder = board.folder
        assert folder.exists()
    assert not folder.parent.exists()
    assert repr(board) == "<closed board>"
    with pytest.raises(ValueError, match="closed"):
        board.get("model")


def test_that_cannot_be_made_leaves_nothing(tmp_path, monkeypatch):
    monkeypatch.setattr("tempfile.tempdir", str(tmp_path))
    with pytest.raises(Refused, match="0x1234"):
        Board.create("0x1234")
    assert list(tmp_path.iterdir()) == []


def test_is_opened_where_it_is(tmp_path):
    with pytest.raises(NoBoard, match="vboard create") as failure:
        Board(tmp_path / "nowhere")
    assert isinstance(failure.value, FileNotFoundError)
    assert failure.value.status == 3
    assert failure.value.os_error == 2


def test_properties_have_types(board):
    assert board["fan.1.speed"] == 2400
    assert board["fan.1.state"] == "good"
    assert board["clock"] == 0.0
    assert board["fan.*.state"] == {"fan.1.state": "good", "fan.2.state": "good"}
    assert len(board.get()) > 200
    with pytest.raises(Refused, match="fan.9.speed"):
        board["fan.9.speed"]


def test_changes_are_made_all_or_none(board):
    board.set({"fan.1.state": "stuck", "temperature.ambient": 40})
    assert board.get("fan.1.state", "temperature.ambient") == {
        "fan.1.state": "stuck",
        "temperature.ambient": 40,
    }
    with pytest.raises(Refused, match="fan.1.state: 'broken'"):
        board.set({"temperature.ambient": 41, "fan.1.state": "broken"})
    assert board["temperature.ambient"] == 40


def test_time_is_moved_by_hands(board):
    board["fan.1.state"] = "stuck"
    board.advance(0.5)
    assert board.time == 0.5
    board.wait("fan.1.speed == 0", timeout=10)
    assert board.time == 4.0
    with pytest.raises(BoardTimeout, match="fan.2.speed is 2400"):
        board.wait("fan.2.speed == 0", timeout=1)


def test_time_does_not_go_back(board):
    for use in (
        lambda: board.advance(-1),
        lambda: board.advance(1, patience=-0.5),
        lambda: board.wait("fan.1.state == stuck", timeout=-1),
        lambda: board.await_change(board.changes, timeout=-1),
    ):
        with pytest.raises(ValueError, match="time does not go back"):
            use()
    assert board.time == 0


@pytest.mark.board(time="real")
def test_waits_for_what_others_do(board):
    before = board.changes
    assert not board.await_change(before, timeout=0.001)
    hands = threading.Timer(0.02, board.set, [{"fan.1.state": "stuck"}])
    hands.start()
    board.wait("fan.1.state == stuck", timeout=60)
    assert board.await_change(before, timeout=0)
    hands.join()


def test_faults_end_with_their_block(board, iodbg):
    with board.fault("cpld", "refuse=-5", op="read", offset=2, when="from") as fault:
        with pytest.raises(AssertionError, match="ended with 1"):
            iodbg("cpld", "get", "2")
        assert (fault.matched, fault.fired) == (1, 1)
        assert [rule["id"] for rule in board.faults()] == [fault.id]
    assert board.faults() == []
    iodbg("cpld", "get", "2")
    with pytest.raises(LookupError):
        fault.fired
    with board.fault("cpld", "refuse=-5") as fault:
        fault.clear()
    with pytest.raises(BoardFull):
        for _ in range(100):
            board.fault("cpld", "refuse=-5")


def test_the_trace_tells_what_has_happened(board, iodbg):
    iodbg("cpld", "get", "2")
    requests = board.trace()
    assert requests[-1].kind == "cpld-read"
    assert requests[-1].details["register"] == 2
    assert "reg 2" in str(requests[-1])
    iodbg("cpld", "get", "3")
    assert [request.details["register"] for request in board.trace(since=len(requests))] == [3]
    before = board["cpld.3"]
    asked = board.trace()[-1].details
    assert board.send(asked) == asked
    board["cpld.3"] = before ^ 1
    assert board.send(asked)["value"] == before ^ 1
    with pytest.raises(Refused):
        board.send({})
    board.clear_trace()
    assert board.trace() == []


def test_programs_run_on_it(board):
    ended = board.run(["cat", "/proc/cmdline"], capture_output=True, text=True, check=True)
    assert ended.stdout == "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12\n"
    command = "import os; print(os.environ['OWN'], os.path.exists('/dev/bspHandle'))"
    ended = board.run(
        [sys.executable, "-c", command], env={"OWN": "1"}, capture_output=True, text=True
    )
    assert ended.stdout == "1 True\n"
    with board.start(["cat"], stdin=subprocess.PIPE) as program:
        while program.pid not in board.users:
            pass
        assert board.users[program.pid] == "cat"
        with pytest.raises(BoardInUse, match="cat"):
            board.delete()
        program.stdin.close()


def test_a_program_that_cannot_be_on_it_is_refused(board, tmp_path):
    foreign = bytearray(Path("/bin/true").read_bytes())
    foreign[18] ^= 0x40  # the machine that it is for
    program = tmp_path / "program"
    program.write_bytes(foreign)
    program.chmod(0o755)
    with pytest.raises(Refused, match="program"):
        board.run([program])


def test_copies_go_their_own_way(board, tmp_path):
    board["fan.1.state"] = "stuck"
    with board.copy(tmp_path / "copy") as copy:
        board["fan.1.state"] = "good"
        assert copy["fan.1.state"] == "stuck"
        copy.delete()
    assert not (tmp_path / "copy").exists()


def test_of_a_captured_unit(board, tmp_path, pytestconfig):
    board["sfp.49.module"] = "sr"
    board["supply.2.present"] = "no"
    document = tmp_path / "unit.json"
    program = pytestconfig.getoption("--iodbg")
    captured = board.run([program, "capture", "-"], capture_output=True, check=True)
    document.write_bytes(captured.stdout)
    with Board.create(from_file=document, time="virtual") as twin:
        assert twin["sfp.49.module"] == "sr"
        assert twin["supply.2.present"] == "no"
        assert twin.gaps == []
    with pytest.raises(TypeError, match="either a model or a captured unit"):
        Board.create()
    with pytest.raises(TypeError, match="all but how time passes"):
        Board.create(from_file=document, serial="SN42")
    document.write_text("{}")
    with pytest.raises(Refused, match="unit.json"):
        Board.create(from_file=document)


def test_of_an_earlier_version_is_taken_along(tmp_path):
    released = Path(__file__).parents[1] / "control" / "released" / "before-1.1.0.tar.gz"
    with tarfile.open(released) as archive:
        archive.extractall(tmp_path)
    with pytest.raises(BoardVersion, match="vboard upgrade"):
        Board(tmp_path / "board")
    with Board.upgrade(tmp_path / "board") as board:
        assert board["identity.serial"] == "KEPT-1.1.0"
    Board.upgrade(tmp_path / "board").close()


def test_tells_when_it_is_gone(board):
    Board(board.folder).delete()
    with pytest.raises(BoardGone):
        board["model"]


def test_threads_share_it(board):
    def work(number):
        for _ in range(100):
            board[f"eeprom.board@{number}"] = f"{number:02x}"
            assert board[f"eeprom.board@{number}+1"] == f"{number:02x}"

    threads = [threading.Thread(target=work, args=[number]) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert board["eeprom.board@0+4"] == "00010203"


def test_is_closed_when_the_last_call_has_ended(board):
    other = Board(board.folder)
    held_by_a_call = other._board
    handle = weakref.ref(held_by_a_call)
    other.close()
    with pytest.raises(ValueError, match="closed"):
        other.changes
    assert _library.changes(held_by_a_call) == board.changes
    del held_by_a_call
    assert handle() is None


def test_tells_what_there_can_be():
    assert "0x0709" in models()
    [row] = describe("fan.1.speed")
    assert (row["name"], row["type"], row["unit"]) == ("fan.#.speed", "number", "rpm")
