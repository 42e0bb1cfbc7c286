"""What is told while it happens: changes, requests, scenarios, the end."""

import json
import os
import shutil
import signal
import subprocess
import time

import pytest


def _wait(condition, within=10.0):
    end = time.monotonic() + within
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.02)


def test_a_page_is_told_all_and_then_what_changes(serve, make_board, vboard):
    folder = make_board("board", "--time", "virtual")
    server = serve(folder)
    events = server.events()
    name, board = events.next()
    assert name == "board"
    assert set(board) == {"clock", "time", "properties", "parts", "faults", "users"}
    assert board["time"] == "virtual" and board["clock"] == board["properties"]["clock"]
    listed = vboard("get", folder, "fan.*", "clock").splitlines()
    assert board["properties"]["fan.1.state"] == "good" and len(listed) > 3
    assert board["parts"] == server.get("api/panel").json["parts"]
    vboard("set", folder, "fan.1.state", "stuck")
    change = events.until("change", lambda data: "properties" in data)
    assert change["properties"] == {"fan.1.state": "stuck"}
    vboard("fault", folder, "add", "--device", "cpld", "--effect", "refuse=-5")
    faults = events.until("change", lambda data: "faults" in data)["faults"]
    assert faults == json.loads(vboard("fault", folder, "list", "--json"))
    vboard("advance", folder, "10")
    moved = events.until("change", lambda data: "clock" in data)
    assert moved["clock"] == "10.000000000"
    parts = {part["id"]: part for part in moved.get("parts", [])}
    if "fan.1" not in parts:
        parts = {one["id"]: one for one in events.until("change", lambda data: "parts" in data)["parts"]}
    assert parts["fan.1"]["rpm"] == 0


def test_requests_of_programs_are_told(serve, make_board, vboard):
    folder = make_board("board", "--time", "virtual")
    events = serve(folder).events()
    events.next()
    request = {
        "time_ns": 0, "pid": 1, "kind": "i2c-read", "name": None, "bus": 0, "channel": 1,
        "device": 0x4F, "offset": 0, "offset_length": 1, "length": 2, "data": "0000",
        "result": 0, "errno": 0,
    }
    subprocess.run(
        [*vboard.start, "replay", folder, "-"], input=json.dumps(request) + "\n",
        text=True, capture_output=True,
    )
    trace = events.until("trace")
    assert (trace["next"], trace["lost"]) == (1, 0)
    [told] = trace["requests"]
    assert (told["number"], told["part"], told["kind"]) == (0, "temperature", "i2c-read")
    assert told["text"].startswith("I2C read")


def test_changes_are_told_within_100_ms(serve, make_board, is_fast):
    server = serve(make_board())
    events = server.events()
    events.next()
    took = []
    with server.connect() as connection:
        for number in range(20):
            state = "stuck" if number % 2 == 0 else "good"
            connection.send(server.request_bytes("PATCH", "api/properties", {"fan.1.state": state}))
            began = time.monotonic()
            events.until("change", lambda data: data.get("properties", {}).get("fan.1.state") == state)
            took.append(time.monotonic() - began)
            assert connection.answer().status == 200
            time.sleep(0.03)
    print(f"told after {min(took) * 1000:.1f} to {max(took) * 1000:.1f} ms")
    if is_fast:
        assert sorted(took)[-3] < 0.1  # two may be late where other work is on the machine
        assert max(took) < 0.5


def test_a_board_at_rest_costs_next_to_nothing(serve, make_board, is_fast):
    real, still = (serve(make_board(name, "--time", name)) for name in ("real", "virtual"))
    pages = [server.events() for server in (real, still)]
    for page in pages:
        page.next()
    time.sleep(1)
    before = [server.cpu_seconds() for server in (real, still)]
    time.sleep(4)
    shares = [(server.cpu_seconds() - start) / 4 for server, start in zip((real, still), before)]
    print(f"of a processor: {shares[0]:.1%} where time moves, {shares[1]:.1%} where it stands")
    if is_fast:
        assert shares[0] < 0.03 and shares[1] < 0.01


def test_two_servers_of_one_board(serve, make_board):
    folder = make_board("board", "--time", "virtual")
    one, other = serve(folder), serve(folder)
    pages = [one.events(), other.events()]
    for page in pages:
        page.next()
    assert one.ask("PATCH", "api/properties", {"fan.2.state": "stuck"}).status == 200
    for page in pages:
        change = page.until("change", lambda data: "properties" in data)
        assert change["properties"] == {"fan.2.state": "stuck"}
    assert one.end()[0] == 0
    assert other.get("api/boards").status == 200


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_it_ends_when_it_is_told_to(serve, make_board, number):
    server = serve(make_board())
    page, idle = server.events(), server.connect()
    page.next()
    code, errors, took = server.end(number)
    assert (code, errors) == (0, "")
    assert took < 2
    while page.next() is not None:
        pass
    assert idle.is_closed()


def test_a_board_that_is_removed_ends_its_server(serve, make_board, vboard):
    folder = make_board()
    server = serve(folder)
    page = server.events()
    page.next()
    with open(f"/proc/{server.process.pid}/comm") as file:
        name = file.read().strip()
    in_use = f"{folder} is in use by {name} (process {server.process.pid}); end it first"
    assert vboard("delete", folder, code=1) == f"vboard: {in_use}\n"
    began = time.monotonic()
    shutil.rmtree(folder)
    reason = page.until("gone")["reason"]
    assert page.next() is None
    code, errors, took = server.ended(began)
    assert (code, errors) == (1, f"vboard: {reason}\n")
    assert str(folder) in reason and took < 3


def test_that_nobody_looks_at_as_well(serve, make_board):
    folder = make_board()
    server = serve(folder)
    began = time.monotonic()
    shutil.rmtree(folder)
    code, errors, took = server.ended(began)
    assert code == 1 and "the board is gone" in errors and took < 3


def test_a_folder_of_boards_goes_on_without_one(serve, make_board, tmp_path):
    first, second = make_board("boards/a"), make_board("boards/b/c")
    server = serve(tmp_path / "boards")
    assert [one["name"] for one in server.get("api/boards").json["boards"]] == ["a", "b/c"]
    assert server.get("api/panel").refusal == (
        400,
        "VBOARD_E_REFUSED",
        "several boards are served; name one with board=NAME, see api/boards",
    )
    page = server.events("?board=a")
    page.next()
    shutil.rmtree(first)
    assert "the board is gone" in page.until("gone")["reason"]
    assert page.next() is None
    assert server.get("api/panel?board=a").refusal[:2] == (404, "VBOARD_E_NO_BOARD")
    assert server.events("?board=b/c").next()[0] == "board"
    assert server.get("api/panel?board=b%2Fc").status == 200
    assert second.exists() and server.end()[0] == 0


def test_what_leads_out_of_the_folder_is_no_board(serve, make_board, tmp_path):
    outside = make_board("outside")
    make_board("boards/a")
    os.symlink(outside, tmp_path / "boards/link")
    os.symlink(tmp_path, tmp_path / "boards/up")
    server = serve(tmp_path / "boards")
    names = ["../outside", "..", ".", "", str(outside), "link", "up/outside", "a/../../outside",
             "a/", "/a", "a/.", "./a", "a%00", "a/state", "none"]
    for name in names:
        answer = server.get(f"api/panel?board={name}")
        assert answer.status in (400, 404), name
    assert server.get("api/panel?board=a").status == 200


# Boards made of captured units.


@pytest.fixture(scope="session")
def unit(vboard, tmp_path_factory, can_start_itself):
    if not can_start_itself:
        return b""
    board = tmp_path_factory.mktemp("unit") / "board"
    vboard("create", "--model", "0x0709", "--serial", "UNIT42", board)
    vboard("capture", board, board.parent / "unit.json")
    return (board.parent / "unit.json").read_bytes()


def test_a_captured_unit_becomes_a_board(serve, tmp_path, unit, needs_children, vboard):
    server = serve(tmp_path)
    assert server.get("api/boards").json == {"folder": str(tmp_path), "canCreate": True, "boards": []}
    made = server.ask("POST", "api/boards?name=twin-1&time=virtual", unit)
    assert (made.status, made.json["name"]) == (201, "twin-1")
    assert all(isinstance(line, str) and line for line in made.json["gaps"])
    [board] = server.get("api/boards").json["boards"]
    assert (board["name"], board["model"], board["time"]) == ("twin-1", "0x0709", "virtual")
    assert vboard("get", tmp_path / "twin-1", "identity.serial").strip() == "UNIT42"
    again = server.ask("POST", "api/boards?name=twin-1", unit)
    assert again.refusal[:2] == (409, "VBOARD_E_EXISTS")
    names = ["", ".", "..", "../x", "a/b", "/tmp/x", ".hidden", "-x", "x" * 65, "a%00", "a b", "%C3%A4"]
    for name in names:
        answer = server.ask("POST", f"api/boards?name={name}", unit)
        assert answer.status == 400, name
    assert sorted(os.listdir(tmp_path)) == ["twin-1"]


def test_what_is_no_captured_unit_leaves_nothing(serve, tmp_path):
    server = serve(tmp_path)
    for body in b"{}", b"[]", b"", b"\xff", b'{"format":"other"}':
        status, kind, text = server.ask("POST", "api/boards?name=x", body).refusal
        assert (status, kind) == (400, "VBOARD_E_REFUSED")
        assert "/proc" not in text and text.startswith("the file")
    assert os.listdir(tmp_path) == []


def test_no_more_boards_are_made_than_64(serve, tmp_path, unit, needs_children):
    server = serve(tmp_path)
    for number in range(64):
        assert server.ask("POST", f"api/boards?name=b{number}", unit).status == 201
    assert server.ask("POST", "api/boards?name=more", unit).refusal == (
        429,
        "VBOARD_E_FULL",
        "this server has made 64 boards, and makes no more; start it anew",
    )


# Scenarios.

_SLOW = """title = "A fan that comes and goes"
[[step]]
set.fan.1.state = "stuck"
[[step]]
after = 0.7
title = "It turns again"
set.fan.1.state = "good"
[[step]]
after = 30
expect = "fan.1.state == good"
"""


@pytest.fixture
def scenario(tmp_path):
    def write(name, text):
        (tmp_path / name).write_text(text)
        return tmp_path / name

    return write


def _play(server, **body):
    return server.ask("POST", "api/play", body)


def _children(server):
    with open(f"/proc/{server.process.pid}/task/{server.process.pid}/children") as file:
        own = file.read().split()
    listed = subprocess.run(["ps", "-o", "pid=", "--ppid", str(server.process.pid)], capture_output=True)
    return set(own) | set(listed.stdout.decode().split())


def test_a_scenario_is_listed_played_and_stopped(serve, make_board, scenario, needs_children):
    file = scenario("slow.toml", _SLOW)
    server = serve(make_board(), "--scenario", file)
    assert server.get("api/scenarios").json["scenarios"] == [
        {
            "id": 0,
            "file": "slow.toml",
            "title": "A fan that comes and goes",
            "steps": [
                {"text": "set fan.1.state = stuck", "moment": "", "hasRun": False},
                {"text": "It turns again", "moment": "after 0.7 s", "hasRun": False},
                {"text": "expect fan.1.state == good", "moment": "after 30 s", "hasRun": False},
            ],
            "problem": "",
        }
    ]
    events = server.events()
    events.next()
    assert _play(server, action="start", scenario=0).json == {}
    begun = events.until("play")
    assert (begun["scenario"], begun["state"], begun["passed"]) == (0, "running", 0)
    assert [step["state"] for step in begun["steps"]] == ["under-way", "waiting", "waiting"]
    assert _play(server, action="start", scenario=0).refusal == (
        409,
        "VBOARD_E_BUSY",
        "a scenario is being played to this board; stop it first",
    )
    second = events.until("play", lambda data: data["passed"] == 2)
    assert [step["state"] for step in second["steps"]] == ["passed", "passed", "under-way"]
    assert float(second["steps"][1]["seconds"]) >= 0.7
    assert _play(server, action="pause").json == {}
    assert events.until("play")["state"] == "paused"
    [child] = _children(server)
    _wait(lambda: open(f"/proc/{child}/stat").read().rsplit(")", 1)[1].split()[0] == "T")
    late = server.events()
    assert [late.next()[0], late.next()[0]] == ["board", "play"]
    assert _play(server, action="pause").status == 409
    assert _play(server, action="resume").json == {}
    assert events.until("play")["state"] == "running"
    assert _play(server, action="stop").json == {}
    stopped = events.until("play", lambda data: data["state"] not in ("running", "paused"))
    assert (stopped["state"], stopped["passed"]) == ("stopped", 2)
    assert [step["state"] for step in stopped["steps"]] == ["passed", "passed", "waiting"]
    assert not _children(server)


def test_a_scenario_that_fails_tells_why(serve, make_board, scenario, needs_children):
    file = scenario("x.toml", '[[step]]\nset.fan.1.state = "stuck"\n[[step]]\nexpect = "fan.1.state == good"\n')
    server = serve(make_board("board", "--time", "virtual"), "--scenario", file)
    events = server.events()
    assert _play(server, action="start", scenario=0).status == 200
    failed = events.until("play", lambda data: data["state"] == "failed")
    assert (failed["passed"], [step["state"] for step in failed["steps"]]) == (1, ["passed", "failed"])
    assert "fan.1.state" in failed["reason"] and failed["steps"][1]["reason"] == failed["reason"]
    fixed = scenario("x.toml", '[[step]]\nset.fan.1.state = "good"\n')
    assert fixed and _play(server, action="start", scenario=0).status == 200
    assert events.until("play", lambda data: data["state"] == "passed")["reason"] == ""


def test_a_board_that_cannot_be_played_it(serve, make_board, scenario, needs_children, vboard):
    files = [
        scenario("wrong.toml", "[[step]]\nset.fan.9.state = 'stuck'\n"),
        scenario("broken.toml", "[[step"),
    ]
    server = serve(make_board(), "--scenario", files[0], "--scenario", files[1])
    wrong, broken = server.get("api/scenarios").json["scenarios"]
    assert len(wrong["steps"]) == 1 and "fan.9.state" in wrong["problem"]
    assert broken["steps"] == [] and "broken.toml" in broken["problem"]
    assert _play(server, action="start", scenario=0).refusal == (400, "VBOARD_E_REFUSED", wrong["problem"])
    missing = vboard("serve", server_folder(server), "--scenario", "none.toml", code=1)
    assert missing == "vboard: cannot read the scenario none.toml: No such file or directory\n"


def server_folder(server):
    return server.get("api/boards").json["folder"]


def test_programs_are_run_only_if_that_is_allowed(serve, make_board, scenario, needs_children, tmp_path):
    mark = tmp_path / "mark"
    file = scenario("run.toml", f"[[step]]\nrun = 'touch {mark}'\n")
    board = make_board("board", "--time", "virtual")
    careful = serve(board, "--scenario", file)
    assert careful.get("api/scenarios").json["scenarios"][0]["steps"][0]["hasRun"] is True
    assert _play(careful, action="start", scenario=0).refusal == (
        403,
        "VBOARD_E_PERMISSION",
        "the scenario runs programs; start 'vboard serve' with --allow-run to let it",
    )
    assert not mark.exists()
    free = serve(board, "--scenario", file, "--allow-run")
    events = free.events()
    assert _play(free, action="start", scenario=0).status == 200
    events.until("play", lambda data: data["state"] == "passed")
    assert mark.exists()


def test_what_plays_ends_with_the_server(serve, make_board, scenario, needs_children):
    file = scenario("sleep.toml", "[[step]]\nrun = 'sleep 300'\nbackground = true\n[[step]]\nafter = 300\n")
    for number, code in (signal.SIGTERM, 0), (signal.SIGKILL, -signal.SIGKILL):
        server = serve(make_board(f"board{number}"), "--scenario", file, "--allow-run")
        assert _play(server, action="start", scenario=0).status == 200
        _wait(lambda: len(_children(server)) == 1)
        [child] = _children(server)
        _wait(lambda: subprocess.run(["ps", "--ppid", child], capture_output=True).returncode == 0)
        grandchildren = subprocess.run(
            ["ps", "-o", "pid=", "--ppid", child], capture_output=True, text=True
        ).stdout.split()
        ended, _, took = server.end(number)
        assert ended == code and took < 2
        for process in [child, *grandchildren]:
            _wait(lambda: not os.path.exists(f"/proc/{process}"), 5)


def test_a_check_tells_the_steps(vboard, make_board, scenario):
    board = make_board("board", "--time", "virtual")
    file = scenario("slow.toml", _SLOW)
    lines = [json.loads(line) for line in vboard("play", board, file, "--check", "--json").splitlines()]
    assert lines[0] == {
        "event": "scenario",
        "file": str(file),
        "title": "A fan that comes and goes",
        "steps": 3,
    }
    assert lines[2] == {
        "event": "step",
        "step": 2,
        "line": 7,
        "title": "It turns again",
        "does": "set",
        "text": "set fan.1.state = good",
        "moment": "after 0.7 s",
    }
    assert vboard("play", board, file, "--check", "--no-run") == ""
    runs = scenario("run.toml", "[[step]]\nrun = 'true'\n")
    assert vboard("play", board, runs, "--no-run", code=1) == (
        f"vboard: {runs}:2: run true: programs are not run with --no-run\n"
    )
