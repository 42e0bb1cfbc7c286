"""The plugin of pytest."""

PLUGIN = "-pvboard.pytest_plugin"


def test_the_marker_says_what_the_board_is(pytester):
    pytester.makepyfile(
        """
        import pytest

        pytestmark = pytest.mark.board(model="0x0109", serial="SN42")

        @pytest.mark.board(model="0x0809")
        def test_marked(board):
            assert board.get("model", "time", "identity.serial") == {
                "model": "0x0809", "time": "virtual", "identity.serial": "SN42"}

        def test_of_the_module(board):
            assert board["model"] == "0x0109"
        """
    )
    pytester.runpytest_subprocess(PLUGIN, "--strict-markers").assert_outcomes(passed=2)


def test_options_say_what_boards_are_without_a_marker(pytester):
    pytester.makepyfile(
        """
        def test_usual(board):
            assert board.get("model", "time") == {"model": "0x0309", "time": "real"}
        """
    )
    ended = pytester.runpytest_subprocess(PLUGIN, "--board-model=0x0309", "--board-time=real")
    ended.assert_outcomes(passed=1)


def test_a_poe_controller_is_initialised_once_for_all(pytester, pytestconfig):
    pytester.makepyfile(
        """
        import pytest

        @pytest.mark.board(poe=True)
        @pytest.mark.parametrize("turn", range(3))
        def test_powers(board, iodbg, turn):
            assert board.trace() == []
            assert board["poe.3.state"] == "idle"
            board["poe.3.device"] = "class=4 draws=18000"
            board.wait("poe.3.state == delivering", timeout=10)
        """
    )
    program = pytestconfig.getoption("--iodbg")
    ended = pytester.runpytest_subprocess(PLUGIN, f"--iodbg={program}", "--durations=0", "-vv")
    ended.assert_outcomes(passed=3)


def test_a_failing_test_shows_the_board(pytester, pytestconfig):
    pytester.makepyfile(
        """
        def test_fails(board, iodbg):
            board["fan.1.state"] = "stuck"
            board.advance(20)
            iodbg("cpld", "get", "2")
            assert board["fan.1.speed"] > 0
        """
    )
    program = pytestconfig.getoption("--iodbg")
    ended = pytester.runpytest_subprocess(PLUGIN, f"--iodbg={program}")
    ended.assert_outcomes(failed=1)
    ended.stdout.fnmatch_lines(
        [
            "*- virtual board -*",
            "fans    ?1 0 rpm? ?2 2400 rpm?",
            "*- end of its trace -*",
            "20.000000000 * CPLD read  reg 2 *",
        ]
    )


def test_a_passing_test_shows_nothing(pytester):
    pytester.makepyfile("def test_passes(board):\n    assert board['model'] == '0x0709'\n")
    ended = pytester.runpytest_subprocess(PLUGIN, "-rA")
    ended.assert_outcomes(passed=1)
    ended.stdout.no_fnmatch_line("*virtual board*")
