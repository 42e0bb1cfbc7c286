"""Many pages, many boards: what it costs, and that all are told. Few of both, unless the long way is
asked for."""

import os
import time
from concurrent.futures import ThreadPoolExecutor

_IS_THOROUGH = "BSP_TEST_THOROUGH" in os.environ
_PAGES = 20 if _IS_THOROUGH else 4
_BOARDS = 50 if _IS_THOROUGH else 6
_SECONDS = 10 if _IS_THOROUGH else 2


def _share(server, work):
    """What a server takes of a processor while something is done."""
    start, began = server.cpu_seconds(), time.monotonic()
    work()
    return (server.cpu_seconds() - start) / (time.monotonic() - began)


def _memory(server):
    with open(f"/proc/{server.process.pid}/statm") as file:
        return int(file.read().split()[1]) * 4096 / (1 << 20)


def test_many_pages_of_one_board(serve, make_board, is_fast):
    server = serve(make_board())
    pages = [server.events() for _ in range(_PAGES)]
    for page in pages:
        page.next(60)
    took = []

    def change():
        """Ten changes a second, each of which all pages are told."""
        with server.connect() as connection, ThreadPoolExecutor(_PAGES) as readers:
            for number in range(10 * _SECONDS):
                began = time.monotonic()
                value = f"root=/dev/{number}"
                connection.send(server.request_bytes("PATCH", "api/properties", {"cmdline": value}))
                told = lambda data: data.get("properties", {}).get("cmdline") == value

                def read(page):
                    page.until("change", told, 60)
                    return time.monotonic() - began

                took.append(max(readers.map(read, pages)))
                assert connection.answer().status == 200
                time.sleep(max(0, 0.1 - (time.monotonic() - began)))

    share = _share(server, change)
    took.sort()
    print(
        f"{_PAGES} pages of one board, ten changes a second: the last page is told after "
        f"{took[len(took) // 2] * 1000:.0f} ms (half of the changes), {took[-1] * 1000:.0f} ms (all); "
        f"{share:.1%} of a processor, {_memory(server):.0f} MiB"
    )
    if is_fast:
        assert took[len(took) // 2] < 0.1
        assert share < 0.3 and _memory(server) < 100


def test_many_boards_of_one_server(serve, make_board, vboard, tmp_path, is_fast):
    first = make_board("boards/b0")
    for number in range(1, _BOARDS):
        vboard("copy", first, tmp_path / f"boards/b{number}")
    server = serve(tmp_path / "boards")
    began = time.monotonic()
    assert len(server.get("api/boards").json["boards"]) == _BOARDS
    listed = time.monotonic() - began
    idle = _share(server, lambda: time.sleep(_SECONDS))
    pages = [server.events(f"?board=b{number}") for number in range(_BOARDS)]
    for page in pages:
        assert page.next(60)[0] == "board"
    time.sleep(1)
    looked_at = _share(server, lambda: time.sleep(_SECONDS))
    for number, page in enumerate(pages):
        change = {"fan.1.state": "stuck"}
        assert server.ask("PATCH", f"api/properties?board=b{number}", change).status == 200
        page.until("change", lambda data: data.get("properties", {}).get("fan.1.state") == "stuck", 60)
    print(
        f"{_BOARDS} boards of one server: listed in {listed * 1000:.0f} ms; {idle:.1%} of a processor "
        f"with no page, {looked_at:.1%} with a page of each, {_memory(server):.0f} MiB"
    )
    if is_fast:
        assert idle < 0.02 and looked_at < 0.01 * _BOARDS and _memory(server) < 300
    assert server.end()[0] == 0
