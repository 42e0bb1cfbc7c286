"""What the server answers, request by request."""

import json
import subprocess

import jsonschema
import pytest

# Each route and a request that it answers, but for those that need more than a board.
_REQUESTS = {
    ("get", "/openapi.json"): None,
    ("get", "/api/boards"): None,
    ("get", "/api/properties"): None,
    ("patch", "/api/properties"): {"fan.1.state": "stuck", "temperature.ambient": 30},
    ("get", "/api/names"): None,
    ("get", "/api/panel"): None,
    ("get", "/api/panel.svg"): None,
    ("get", "/api/faults"): None,
    ("post", "/api/faults"): {"device": "cpld", "effect": "refuse=-5", "nth": 3},
    ("delete", "/api/faults"): None,
    ("get", "/api/trace"): None,
    ("delete", "/api/trace"): None,
    ("get", "/api/flash"): None,
    ("get", "/api/effects"): None,
    ("post", "/api/advance"): {"seconds": "0.5"},
    ("get", "/api/scenarios"): None,
}
_ELSEWHERE = {  # with their tests below
    ("get", "/api/events"),
    ("post", "/api/boards"),
    ("post", "/api/play"),
}


@pytest.fixture(scope="module")
def interface(quiet):
    return quiet.get("openapi.json").json


@pytest.fixture(scope="module")
def judge(interface):
    """Holds data against a schema of the description."""

    def holds(data, name):
        schema = {"$ref": f"#/components/schemas/{name}", "components": interface["components"]}
        jsonschema.Draft202012Validator(schema).validate(data)

    return holds


def _operations(interface):
    return {
        (method, path): operation
        for path, methods in interface["paths"].items()
        for method, operation in methods.items()
    }


def test_the_description_tells_every_route_and_no_other(interface):
    assert set(_operations(interface)) == set(_REQUESTS) | _ELSEWHERE
    for schema in interface["components"]["schemas"].values():
        jsonschema.Draft202012Validator.check_schema(schema)
    used = set(json.dumps(interface).split('"#/components/schemas/')[1:])
    used = {text.split('"')[0] for text in used}
    events = {"BoardEvent", "ChangeEvent", "GoneEvent", "PlayEvent"}
    assert used | events == set(interface["components"]["schemas"])


@pytest.mark.parametrize("method, path", _REQUESTS)
def test_answers_are_as_they_are_described(quiet, interface, judge, method, path):
    operation = _operations(interface)[method, path]
    answer = quiet.ask(method.upper(), path[1:], _REQUESTS[method, path])
    described = operation["responses"][str(answer.status)]
    [(kind, content)] = described["content"].items()
    assert answer.headers["content-type"] == kind
    if "schema" in content:
        judge(answer.json, content["schema"]["$ref"].rsplit("/", 1)[1])
    if "requestBody" in operation:
        [content] = operation["requestBody"]["content"].values()
        judge(_REQUESTS[method, path], content["schema"]["$ref"].rsplit("/", 1)[1])


@pytest.mark.parametrize("method, path", sorted({*_REQUESTS, *_ELSEWHERE}))
def test_a_word_that_no_route_knows_is_refused(quiet, judge, method, path):
    body = {} if method in ("post", "patch") else None
    answer = quiet.ask(method.upper(), path[1:] + "?colour=red", body)
    text = f"{path} knows no 'colour'; see openapi.json"
    assert answer.refusal == (400, "VBOARD_E_REFUSED", text)
    judge(answer.json, "Error")


_WRONG = [
    ("GET", "api/nothing", None, 404, "there is nothing at '/api/nothing'; see openapi.json"),
    ("GET", "api/boards/", None, 404, "there is nothing at '/api/boards/'; see openapi.json"),
    ("GET", "../etc/passwd", None, 404, "there is nothing at '/../etc/passwd'; see openapi.json"),
    ("GET", "%2e%2e", None, 404, "there is nothing at '/%2e%2e'; see openapi.json"),
    ("PUT", "api/faults", None, 405, "/api/faults takes GET, POST and DELETE, not 'PUT'"),
    ("POST", "", {}, 405, "the page is there to be read: GET"),
    ("GET", "api/panel?board=unit-8", None, 404, "no board is called 'unit-8' here; see api/boards"),
    ("GET", "api/panel?board=a&board=b", None, 400, "board is given twice; give it once"),
    (
        "GET",
        "api/properties?name=fan.%2",
        None,
        400,
        "'fan.%2' is wrongly encoded: a percent sign is %25, and zeros are refused",
    ),
    (
        "GET",
        "api/properties?name=%00",
        None,
        400,
        "'%00' is wrongly encoded: a percent sign is %25, and zeros are refused",
    ),
    ("GET", "api/properties?name=fan.9.speed", None, 400, None),
    ("PATCH", "api/properties", {"fan.1.state": "tired"}, 400, None),
    (
        "PATCH",
        "api/properties",
        {"fan.1.state": ["stuck"]},
        400,
        "'fan.1.state' is given neither a text nor a number",
    ),
    ("PATCH", "api/properties", [], 400, "the body is no object of JSON; see openapi.json"),
    ("PATCH", "api/properties", b"{", 400, "the body is no object of JSON; see openapi.json"),
    ("PATCH", "api/properties", b"", 400, "the body is no object of JSON; see openapi.json"),
    (
        "POST",
        "api/faults",
        {"device": "cpld"},
        400,
        "a rule has a device and an effect; see 'vboard fault DIR add --help'",
    ),
    (
        "POST",
        "api/faults",
        {"gadget": "cpld"},
        400,
        "the body has a member 'gadget'; it can have device, op, offset, nth, when and effect",
    ),
    ("POST", "api/faults", {"device": "cpld", "effect": "short=1"}, 400, None),
    ("DELETE", "api/faults?id=77", None, 400, None),
    (
        "DELETE",
        "api/faults?id=-1",
        None,
        400,
        "id: '-1' is not a number from 0 to 4294967295",
    ),
    ("GET", "api/trace?most=1001", None, 400, "most: '1001' is not a number from 0 to 1000"),
    (
        "POST",
        "api/advance",
        {},
        400,
        'seconds is missing: {"seconds":"0.5"}',
    ),
    ("POST", "api/advance", {"seconds": "90000"}, 400, None),
    ("POST", "api/play", {"action": "dance"}, 400, "action is start, pause, resume or stop"),
    ("POST", "api/play", {}, 400, "action is start, pause, resume or stop"),
    (
        "POST",
        "api/play",
        {"action": "start"},
        400,
        "scenario is missing: the id that api/scenarios tells",
    ),
    (
        "POST",
        "api/play",
        {"action": "start", "scenario": 0},
        404,
        "there is no scenario 0; 'vboard serve --scenario FILE' names those that there are",
    ),
    (
        "POST",
        "api/play",
        {"action": "stop"},
        409,
        "no scenario is being played to this board that could be told to stop",
    ),
    (
        "POST",
        "api/boards?name=x",
        {},
        409,
        "a single board is served; serve a folder to make boards in it",
    ),
]


@pytest.mark.parametrize("method, path, body, status, text", _WRONG)
def test_wrong_requests_are_refused(quiet, judge, method, path, body, status, text):
    before = quiet.get("api/properties").body
    answer = quiet.ask(method, path, body)
    found, kind, error = answer.refusal
    assert found == status
    assert kind == ("VBOARD_E_NO_BOARD" if "unit-8" in path else "VBOARD_E_REFUSED")
    if text is not None:
        assert error == text
    assert quiet.get("api/properties").body == before


def test_refusals_of_the_board_are_those_of_the_command(quiet, vboard):
    complaint = vboard("set", quiet.folder, "fan.1.state", "tired", code=1)
    answer = quiet.ask("PATCH", "api/properties", {"fan.1.state": "tired"})
    assert complaint == f"vboard: {answer.refusal[2]}\n"


def test_what_is_read_is_what_the_command_reads(quiet, vboard):
    def command(*words):
        return json.loads(vboard(words[0], quiet.folder, *words[1:], "--json"))

    assert quiet.get("api/flash").json["partitions"] == command("flash")
    assert quiet.get("api/names").json == json.loads(vboard("properties", "--json"))
    [fan] = quiet.get("api/properties?name=fan.1.state").json["properties"]
    assert fan["value"] == vboard("get", quiet.folder, "fan.1.state").strip()
    names = {one["name"] for one in quiet.get("api/properties?name=fan.%2A").json["properties"]}
    assert names >= {"fan.1.state", "fan.2.speed"}
    both = quiet.get("api/properties?name=fan.1.state&name=fan.2.state").json["properties"]
    assert [one["name"] for one in both] == ["fan.1.state", "fan.2.state"]
    part = quiet.get("api/properties?name=eeprom.board@0x100%2B4").json["properties"][0]
    assert part["name"] == "eeprom.board" and len(part["value"]) == 8


def test_changes_are_made_at_once_or_not_at_all(quiet, vboard):
    order = {"sfp.49.module": "sr", "sfp.49.rx-power": "420"}
    assert quiet.ask("PATCH", "api/properties", order).json == {"changed": 2}
    assert vboard("get", quiet.folder, "sfp.49.rx-power").strip() == "420"
    wrong = {"sfp.49.module": "none", "fan.1.state": "tired"}
    assert quiet.ask("PATCH", "api/properties", wrong).status == 400
    assert vboard("get", quiet.folder, "sfp.49.module").strip() == "sr"
    twice = b'{"fan.1.state": "stuck", "fan.1.state": "good"}'
    assert quiet.ask("PATCH", "api/properties", twice).status == 400
    assert quiet.ask("PATCH", "api/properties", {"sfp.49.module": "none"}).status == 200


def test_rules_are_added_listed_and_removed(quiet, vboard):
    quiet.ask("DELETE", "api/faults")
    rule = {"device": "i2c:0.1.0x4F", "op": "read", "effect": "no-answer", "when": "every"}
    added = quiet.ask("POST", "api/faults", rule)
    assert added.status == 201
    number = added.json["id"]
    listed = json.loads(vboard("fault", quiet.folder, "list", "--json"))
    assert quiet.get("api/faults").json["faults"] == listed
    assert [one["id"] for one in listed] == [number]
    other = quiet.ask("POST", "api/faults", {"device": "cpld", "effect": "refuse=-5"}).json["id"]
    left = quiet.ask("DELETE", f"api/faults?id={number}").json["faults"]
    assert [one["id"] for one in left] == [other]
    assert quiet.ask("DELETE", "api/faults").json == {"faults": []}


def test_effects_are_those_of_the_command(quiet, vboard):
    effects = quiet.get("api/effects").json
    page = " ".join(vboard("fault", quiet.folder, "add", "--help").split())
    assert len(effects["effects"]) > 10
    for effect in effects["effects"]:
        assert effect["form"] in page
        for use in effect["uses"]:
            assert use["device"] in {one["device"] for one in effects["devices"]}
    assert effects["whens"] == ["once", "every", "from"]


def test_a_clock_is_moved(quiet):
    before = float(quiet.ask("POST", "api/advance", {"seconds": 0}).json["clock"])
    after = float(quiet.ask("POST", "api/advance", {"seconds": "3.25"}).json["clock"])
    assert after - before == 3.25


def test_a_clock_that_moves_by_itself_is_not(serve, make_board):
    answer = serve(make_board()).ask("POST", "api/advance", {"seconds": 1})
    assert answer.refusal[:2] == (400, "VBOARD_E_REFUSED")


def _sent(vboard, folder, *lines):
    """Requests to a board, without a program."""
    text = "".join(json.dumps(line) + "\n" for line in lines)
    subprocess.run(
        [*vboard.start, "replay", folder, "-"], input=text, text=True, capture_output=True
    )


def test_the_trace_is_read_in_parts(quiet, vboard):
    quiet.ask("DELETE", "api/trace")
    start = quiet.get("api/trace").json["next"]
    for value in 1, 2, 3:
        quiet.ask("PATCH", "api/properties", {"temperature.ambient": 20 + value})
    assert quiet.get("api/trace").json["requests"] == []  # hands are no requests
    read = {"kind": "cpld-read", "register": 1, "name": "device id", "value": 1801}
    common = {"time_ns": 0, "pid": 1, "result": 0, "errno": 0}
    _sent(vboard, quiet.folder, *[{**common, **read}] * 3)
    trace = quiet.get("api/trace").json
    assert (trace["next"], trace["lost"]) == (start + 3, 0)
    assert [one["number"] for one in trace["requests"]] == [start, start + 1, start + 2]
    last = quiet.get("api/trace?last=1").json
    assert [one["number"] for one in last["requests"]] == [start + 2]
    part = quiet.get(f"api/trace?from={start + 1}&most=1").json
    assert [one["number"] for one in part["requests"]] == [start + 1]
    assert part["next"] == start + 2
    [line] = vboard("trace", quiet.folder, "--last", "1", "--json").splitlines()
    told = last["requests"][0]
    assert json.loads(line).items() <= told.items()
    assert told["text"] == "CPLD read  reg 1 (device id) = 0x0709"
    assert quiet.ask("DELETE", "api/trace").json == {}
    assert quiet.get("api/trace").json["requests"] == []


def test_the_page_and_its_files(quiet):
    page = quiet.get("")
    assert page.status == 200
    assert page.headers["content-type"] == "text/html; charset=utf-8"
    assert quiet.get("index.html").body == page.body
    assert quiet.get("panel.css").headers["content-type"] == "text/css; charset=utf-8"
    head = quiet.ask("HEAD", "")
    assert head.status == 200 and int(head.headers["content-length"]) == len(page.body)
    assert b"<script>" not in page.body and b"style=" not in page.body
    with quiet.connect() as connection:
        text = f"GET {quiet.path[:-1]} HTTP/1.1\r\nHost: {quiet.host}\r\n\r\n"
        connection.send(text.encode())
        moved = connection.answer()
    assert (moved.status, moved.headers["location"]) == (301, quiet.path)


def test_all_answers_carry_what_protects_the_page(quiet):
    for path in "", "api/boards", "nothing":
        headers = quiet.get(path).headers
        assert headers["content-security-policy"] == (
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
            "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"
        )
        assert headers["referrer-policy"] == "no-referrer"
        assert headers["x-content-type-options"] == "nosniff"
        assert headers["cross-origin-resource-policy"] == "same-origin"
        assert headers["cache-control"] == "no-store"


def test_one_connection_carries_many_requests(quiet):
    with quiet.connect() as connection:
        for _ in range(3):
            connection.send(quiet.request_bytes("GET", "api/boards"))
            assert connection.answer().status == 200
        connection.send(quiet.request_bytes("GET", "nothing"))
        assert connection.answer().status == 404
        connection.send(quiet.request_bytes("GET", "api/boards") * 2)
        assert [connection.answer().status for _ in range(2)] == [200, 200]
