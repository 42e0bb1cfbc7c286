"""Captured units are what their schema says, and the schema refuses what is none."""

import copy
import json
import re
from pathlib import Path

import jsonschema
import pytest

_ROOT = Path(__file__).parents[2]
_SCHEMA = json.loads((_ROOT / "docs/captured-unit.schema.json").read_text())
_VALIDATOR = jsonschema.Draft202012Validator(_SCHEMA)


@pytest.fixture
def captured(board, pytestconfig):
    """What iodbg captures of the test's board, when its schema has judged it."""

    def capture(*options):
        program = pytestconfig.getoption("--iodbg")
        ended = board.run([program, "capture", "-", *options], capture_output=True, text=True)
        assert ended.returncode == 0, ended.stderr
        document = json.loads(ended.stdout)
        _VALIDATOR.validate(document)
        return document

    return capture


def test_the_schema_is_one():
    jsonschema.Draft202012Validator.check_schema(_SCHEMA)


def test_a_unit_with_all_kinds_of_things(board, captured):
    board["sfp.49.module"] = "sr"
    board["sfp.50.module"] = "copper-mode4"
    board["supply.2.present"] = "no"
    document = captured()
    assert document["properties"]["fan.1.speed"] == {"value": 2400, "unit": "rpm"}
    assert document["properties"]["sfp.50.diagnostics"]["name"] == "BSP_E_FAILED"
    assert list(document["properties"])[0] == "model"
    assert captured("--with-secrets", "--with-flash")["capture"]["with"] == ["secrets", "flash"]
    assert captured("--anonymous")["capture"]["anonymous"]


@pytest.mark.parametrize("device", ["i2c", "cpld"])
def test_a_unit_that_does_not_answer(board, captured, device):
    with board.fault(device, "refuse=-5", op="read", when="from"):
        document = captured()
    assert any("status" in each for each in document["properties"].values())
    assert any(each["verdict"] == "fault" for each in document["findings"])


def _example():
    page = (_ROOT / "docs/captured-unit.md").read_text()
    [block] = re.findall(r"^```json\n(.*?)^```", page, re.DOTALL | re.MULTILINE)
    return json.loads(block)


def test_the_example_of_the_page():
    _VALIDATOR.validate(_example())


def _without(path):
    def change(document):
        *way, last = path
        for key in way:
            document = document[key]
        del document[last]

    return change


def _with(path, value):
    def change(document):
        *way, last = path
        for key in way:
            document = document[key]
        document[last] = value

    return change


@pytest.mark.parametrize(
    "change",
    [
        _with(["format"], "other"),
        _with(["version"], 2),
        _with(["revision"], -1),
        _without(["revision"]),
        _without(["findings"]),
        _without(["capture", "left_out"]),
        _with(["capture", "began"], "yesterday"),
        _with(["capture", "with"], ["everything"]),
        _with(["properties", "model"], "0x0709"),
        _with(["properties", "model"], {}),
        _with(["properties", "model", "value"], 1.5),
        _with(["properties", "model", "raw"], "abc"),
        _with(["properties", "fan.1.speed", "value"], "2400"),
        _with(["properties", "fan.1.speed", "status"], -1),
        _with(["properties", "temperature.sensor", "name"], "broken"),
        _without(["properties", "temperature.sensor", "message"]),
        _with(["properties", "eeprom.board"], {"value": "0x00"}),
        _with(["properties", "flash.4.content"], {"value": "00"}),
        _with(["properties", "flash.4.content"], {"value": [{"offset": -1, "bytes": ""}]}),
        _with(["findings", 0, "verdict"], "perhaps"),
        _without(["findings", 0, "cause"]),
    ],
)
def test_what_is_none_is_refused(change):
    document = copy.deepcopy(_example())
    change(document)
    assert not _VALIDATOR.is_valid(document)
