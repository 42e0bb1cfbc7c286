"""The library in Python, on virtual boards."""

import ctypes
import inspect
import json
import os
import pickle
import subprocess
import sys
import textwrap

import bsp
import pytest
from bsp import _library


@pytest.fixture
def on_board(board):
    """Runs a program on the board; it puts what it finds into the dictionary `found`."""

    def run(program):
        source = "import json, bsp\nfound = {}\n" + textwrap.dedent(program)
        source += "\nprint('\\n' + json.dumps(found))\n"
        ended = board.run([sys.executable, "-c", source], stdout=subprocess.PIPE, text=True)
        assert ended.returncode == 0
        return json.loads(ended.stdout.splitlines()[-1])

    return run


def test_outputs_are_results(board, on_board):
    board["fan.1.state"] = "failing"
    board.advance(60)
    found = on_board(
        """
        found["number"] = bsp.ioFanSpeedGet(1)
        found["text"] = bsp.ioHwVersionGet()
        found["text without a zero"] = bsp.ioBiosVersionGet()
        found["counted text"] = bsp.ioSerialNumGet()
        found["password"] = bsp.ioBootPwdGet()
        found["bytes"] = bsp.ioMacAddrGet(bsp.BSP_MAC_BASE).hex()
        found["bytes as many as asked for"] = bsp.bspLocalEepromRead(256, 7).decode()
        found["none"] = bsp.bspLocalEepromRead(0, 0).hex()
        found["record"] = bsp.ioRealtimeGet().year
        found["several"] = bsp.bsp_rtc_chip_get()._asdict()
        found["nothing"] = bsp.ioMfgDateGet()
        found["version"] = bsp.bspLibraryVersion() == bsp.BSP_VERSION
        found["no status"] = bsp.bsp_crc32_cal(0, b"123456789") == 0xCBF43926
        found["record that stays"] = bsp.bspStatusText(bsp.BSP_E_NULL).name.decode()
        found["variable"] = bsp.bspPoeRtl8239Driver.portModeSet(0, 3) == bsp.BSP_E_POE_INVALID
        """
    )
    year = {"year": 124, "month": 0, "day": 1, "hour": 0, "minute": 1}
    assert {key: found["several"][key] for key in year} == year
    del found["several"]
    assert found == {
        "number": board["fan.1.speed"],
        "text": "A.3",
        "text without a zero": "1.2.3 ",
        "counted text": "VB00000001",
        "password": "",
        "bytes": "02005e100000",
        "bytes as many as asked for": "DEVINFO",
        "none": "",
        "record": 124,
        "nothing": None,
        "version": True,
        "no status": True,
        "record that stays": "BSP_E_NULL",
        "variable": True,
    }


def test_inputs_reach_the_board(board, on_board, tmp_path):
    board.set({"eeprom.board@0x395": "ee", "eeprom.board@0x3A6": "ee"})
    (tmp_path / "image").write_bytes(b"x" * 512)
    on_board(
        f"""
        import array, pathlib
        bsp.ioFanSpeedSet(1, 5)
        bsp.ioSerialNumSet("SN42")
        bsp.ioMacAddrSet(0, bytes.fromhex("02005e100042"))
        bsp.bspLocalEepromWrite(0x390, bytearray(b"hello"))
        bsp.bspLocalEepromWrite(0x3A0, memoryview(array.array("H", [0x4242] * 3)))
        bsp.ioBootPwdSet("secret")
        bsp.ioRealtimeSet(bsp.BspCalendar(1, 2, 3, 4, 5, 150))
        bsp.bsp_mtd_write_from_file(pathlib.Path("{tmp_path}/image"), bsp.BSP_MTD_OS_BANK_1, 0)
        record = bsp.bspDevinfoGet(0)
        before = bytes(record.crc)
        record.productData1[0] = 0x41
        bsp.bspDevinfoSet(0, record)
        assert bytes(record.crc) != before
        """
    )
    assert board["cpld.6"] >> 5 & 0xF == 5 - 1
    assert board.get("identity.*") == {"identity.serial": "SN42", "identity.mac": "02:00:5e:10:00:42"}
    assert board["eeprom.board@0x390+6"] == b"hello\xee".hex()
    assert board["eeprom.board@0x3A0+7"] == "42" * 6 + "ee"
    assert board["eeprom.board@0x110+1"] == "41"
    assert bytes.fromhex(board["flash.4.content@0+256"]).count(b"boot_pwd=secret\0") == 1
    assert board["flash.14.content@0+512"] == "78" * 512
    assert board["rtc.time"].startswith("2050-")


@pytest.mark.board(poe=True)
def test_every_function_can_be_called(on_board):
    found = on_board(
        """
        import inspect
        usual = {"int": 1, "int | None": 1, "Data": b"123456", "str | bytes": "text", "FilePath": "/nowhere",
                 "Sequence[str | bytes]": ["io", "poe", "none"], "Any": None}
        for name, function in inspect.getmembers(bsp, inspect.isfunction):
            kinds = [one.annotation for one in inspect.signature(function).parameters.values()]
            arguments = [usual[kind] if kind in usual else getattr(bsp, kind)() for kind in kinds]
            try:
                function(*arguments)
                found[name] = 0
            except bsp.Error as error:
                found[name] = error.status
        """
    )
    assert len(found) > 280
    assert (found["bsp_crc32_cal"], found["ioPoePortStateGet"], found["ioHwVersionGet"]) == (0, 0, 0)
    assert found["bspLaserQsfpRead"] == bsp.BSP_E_NOT_SUPPORTED


def test_another_status_than_success_is_an_error(board, on_board):
    with board.fault(device="i2c:0.1.0x4F", effect="refuse=-121", when="from"):
        found = on_board(
            """
            for name, call in {
                "of the library": lambda: bsp.ioFanSpeedSet(1, 11),
                "of the kernel module": lambda: bsp.ioTemperGet(0),
            }.items():
                try:
                    call()
                except bsp.Error as error:
                    found[name] = [error.function, error.status, error.name, str(error)]
            """
        )
    invalid = "an argument is out of range, or a record fails its CRC"
    foreign = found.pop("of the kernel module")
    assert foreign[:3] == ["ioTemperGet", -121, ""]
    assert foreign[3].startswith("ioTemperGet: status (-121): ")
    assert found == {
        "of the library": [
            "ioFanSpeedSet",
            bsp.BSP_E_INVALID,
            "BSP_E_INVALID",
            f"ioFanSpeedSet: BSP_E_INVALID (1002): {invalid}",
        ]
    }


def test_words_and_messages_go_out_in_order(board):
    source = """
        import bsp
        print("before", flush=True)
        bsp.bspPoeDebugChipDispatch(0, ["io", "poe", "nonsense"])
        print("behind", flush=True)
    """
    program = [sys.executable, "-c", textwrap.dedent(source)]
    lines = board.run(program, capture_output=True, text=True, check=True).stdout.splitlines()
    assert (lines[0], lines[-1]) == ("before", "behind")
    assert '"nonsense"' in lines[1]


def test_what_no_function_can_take_is_refused():
    with pytest.raises(ctypes.ArgumentError, match="-1 is not 0 to 4294967295"):
        bsp.ioFanSpeedGet(-1)
    with pytest.raises(ctypes.ArgumentError, match="2147483648 is not -2147483648 to 2147483647"):
        bsp.ioFanSpeedSet(1, 2**31)
    with pytest.raises(ctypes.ArgumentError, match="'str'"):
        bsp.ioFanSpeedGet("1")
    with pytest.raises(ValueError, match="5 bytes, where 6 are needed"):
        bsp.ioMacAddrSet(0, b"12345")
    with pytest.raises(TypeError):
        bsp.bspLocalEepromWrite(0, 5)
    with pytest.raises(ValueError, match="zero"):
        bsp.ioBootPwdSet("se\0cret")
    with pytest.raises(ValueError, match="zero"):
        bsp.ioCpldUpgrade(b"/tmp/im\0age")


def test_errors_can_be_handed_on():
    error = bsp.Error("ioFanSpeedSet", bsp.BSP_E_INVALID)
    copy = pickle.loads(pickle.dumps(error))
    assert (copy.function, copy.status, str(copy)) == ("ioFanSpeedSet", 1002, str(error))


def test_records_tell_and_compare_what_they_hold():
    record = bsp.BspCalendar(second=1, year=150)
    assert repr(record) == "BspCalendar(second=1, minute=0, hour=0, day=0, month=0, year=150)"
    assert record == bsp.BspCalendar(1, 0, 0, 0, 0, 150)
    assert record != bsp.BspCalendar(2, 0, 0, 0, 0, 150)


def test_everything_is_described():
    functions = [one for name, one in vars(bsp).items() if inspect.isfunction(one)]
    assert len(functions) > 280
    for function in functions:
        assert function.__doc__ and "return" in function.__annotations__
    about = inspect.getdoc(bsp.ioFanSpeedSet)
    assert "level: BSP_FAN_LEVEL_MIN to BSP_FAN_LEVEL_MAX" in about
    assert "BSP_E_INVALID for another level" in about
    assert list(inspect.signature(bsp.ioFanSpeedGet).parameters) == ["fan"]


def test_a_library_that_is_not_there_is_told():
    environment = {**os.environ, "BSP_LIBRARY": "/nowhere/libbsp.so.1"}
    ended = subprocess.run(
        [sys.executable, "-c", "import bsp"], env=environment, capture_output=True, text=True
    )
    assert ended.stderr.splitlines()[-1] == (
        "ImportError: libbsp.so.1 cannot be loaded (/nowhere/libbsp.so.1: cannot open shared object file: "
        "No such file or directory); install it, or say where it is with BSP_LIBRARY"
    )


def test_a_library_that_is_too_old_is_told():
    with pytest.raises(NotImplementedError, match="has no bspNewest: it is too old"):
        _library.call("bspNewest")
