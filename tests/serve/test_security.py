"""Who is kept out: strangers on the machine, pages from elsewhere, and those who take too much."""

import os
import socket
import subprocess
import threading
import time

import pytest
from client import Connection

_NO_TOKEN = (
    401,
    "VBOARD_E_PERMISSION",
    "the token is missing or wrong; use the URL that 'vboard serve' has printed",
)
_ELSEWHERE = (
    403,
    "VBOARD_E_PERMISSION",
    "pages from elsewhere have no part in this; open the URL that 'vboard serve' has printed by "
    "itself",
)
_OTHER_NAME = (
    421,
    "VBOARD_E_PERMISSION",
    "this server is not known by the name of the request; use the URL that 'vboard serve' has "
    "printed, or start it with --host NAME",
)


def _plain(server, target, *lines):
    with server.connect() as connection:
        head = [f"GET {target} HTTP/1.1", f"Host: {server.host}", *lines, "", ""]
        connection.send("\r\n".join(head).encode())
        return connection.answer()


def test_the_token_is_long_and_another_one_each_time(serve, make_board):
    folder = make_board()
    tokens = {serve(folder).token for _ in range(3)}
    assert len(tokens) == 3
    assert all(len(token) == 32 and set(token) <= set("0123456789abcdef") for token in tokens)


@pytest.mark.parametrize("path", ["/", "/api/boards", "/openapi.json", "/index.html", "//", "/?a=b"])
def test_nothing_is_told_without_the_token(quiet, path):
    assert _plain(quiet, path).refusal == _NO_TOKEN


def test_no_other_word_is_the_token(quiet):
    token = quiet.token
    other = ("1" if token[0] == "0" else "0") + token[1:]
    for word in other, token[:-1], token + "0", token.upper() + "g", "", "%" + token:
        assert _plain(quiet, f"/{word}/api/boards").refusal == _NO_TOKEN
        assert _plain(quiet, "/api/boards", f"Authorization: Bearer {word}").refusal == _NO_TOKEN
    assert _plain(quiet, "/api/boards", f"Authorization: Basic {token}").refusal == _NO_TOKEN
    assert _plain(quiet, "/api/boards", f"Cookie: token={token}").refusal == _NO_TOKEN


def test_a_bearer_needs_no_token_in_the_path(quiet):
    assert _plain(quiet, "/api/boards", f"Authorization: Bearer {quiet.token}").status == 200
    assert _plain(quiet, "/", f"authorization: bearer {quiet.token}").status == 200


@pytest.mark.parametrize(
    "host", ["evil.example", "evil.example:{port}", "localhost", "127.0.0.1:1", "localhost.:{port}"]
)
def test_a_name_that_is_not_the_servers_is_refused(quiet, host):
    assert quiet.ask("GET", "", host=host.format(port=quiet.port)).refusal == _OTHER_NAME


@pytest.mark.parametrize("host", ["localhost:{port}", "LOCALHOST:{port}", "[::1]:{port}"])
def test_names_of_the_machine_itself_are_not(quiet, host):
    assert quiet.ask("GET", "", host=host.format(port=quiet.port)).status == 200


def test_a_request_names_its_host_once(quiet):
    with quiet.connect() as connection:
        connection.send(f"GET {quiet.path} HTTP/1.1\r\n\r\n".encode())
        assert connection.answer().refusal == _OTHER_NAME
    twice = quiet.ask("GET", "", headers={"host": quiet.host})
    assert twice.refusal[0] == 400


_FOREIGN = [
    {"Origin": "http://evil.example"},
    {"Origin": "null"},
    {"Origin": "https://{host}"},
    {"Origin": "http://localhost:1"},
    {"Sec-Fetch-Site": "cross-site"},
    {"Sec-Fetch-Site": "same-site"},
    {"Origin": "http://{host}", "Sec-Fetch-Site": "cross-site"},
]


@pytest.mark.parametrize("headers", _FOREIGN)
@pytest.mark.parametrize("method, path", [("GET", ""), ("GET", "api/events"), ("PATCH", "api/properties")])
def test_pages_from_elsewhere_are_kept_out_even_with_the_token(quiet, headers, method, path):
    headers = {name: value.format(host=quiet.host) for name, value in headers.items()}
    body = {"fan.1.state": "stuck"} if method == "PATCH" else None
    assert quiet.ask(method, path, body, headers).refusal == _ELSEWHERE


def test_its_own_page_is_not(quiet):
    own = {"Origin": f"http://{quiet.host}", "Sec-Fetch-Site": "same-origin"}
    assert quiet.ask("GET", "api/boards", headers=own).status == 200
    assert quiet.ask("GET", "", headers={"Sec-Fetch-Site": "none"}).status == 200
    assert "access-control-allow-origin" not in quiet.ask("GET", "", headers=own).headers


@pytest.mark.parametrize(
    "kind", ["text/plain", "application/x-www-form-urlencoded", "multipart/form-data", ""]
)
def test_what_pages_send_without_asking_is_no_body(quiet, kind):
    answer = quiet.ask("PATCH", "api/properties", b'{"fan.1.state":"stuck"}', {"Content-Type": kind})
    text = "the body has to be JSON, and to say so: Content-Type: application/json"
    assert answer.refusal == (415, "VBOARD_E_REFUSED", text)


def test_what_pages_ask_before_they_send_is_refused(quiet):
    headers = {"Origin": "http://evil.example", "Access-Control-Request-Method": "PATCH"}
    assert quiet.ask("OPTIONS", "api/properties", headers=headers).refusal == _ELSEWHERE
    assert quiet.ask("OPTIONS", "api/properties").refusal[0] == 405


@pytest.mark.skipif(os.geteuid() != 0, reason="only root can be another user as well")
def test_another_user_comes_no_further(serve, make_board, tmp_path):
    file = tmp_path / "token"
    file.write_text("a-token-of-this-test\n")
    file.chmod(0o600)
    server = serve(make_board(), "--token-file", file)
    attempt = f"""
import socket
connection = socket.create_connection(("127.0.0.1", {server.port}))
connection.sendall(b"GET /api/boards HTTP/1.1\\r\\nHost: {server.host}\\r\\n\\r\\n")
print(connection.recv(100).split(b"\\r\\n")[0].decode())
for path in "{file}", "/proc/{server.process.pid}/mem", "/proc/{server.process.pid}/fd":
    try:
        open(path)
    except OSError as error:
        print(type(error).__name__)
"""
    ended = subprocess.run(
        ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "/usr/bin/python3", "-c", attempt],
        capture_output=True,
        text=True,
    )
    assert ended.stderr == ""
    assert ended.stdout.splitlines() == ["HTTP/1.1 401 Unauthorized"] + ["PermissionError"] * 3


def test_a_token_of_a_file(serve, make_board, tmp_path, vboard):
    file = tmp_path / "token"
    folder = make_board()

    def refusal(text, mode=0o600):
        file.write_text(text)
        file.chmod(mode)
        return vboard("serve", folder, "--token-file", file, code=1)

    no_token = f"vboard: {file} has no token: it is one line of 16 to 256 letters, digits, '_' and '-'\n"
    for text in "", "0123456789abcde", "0123456789abcde/", "0123456789abcdef\n\n", "a" * 257:
        assert refusal(text) == no_token
    for mode in 0o640, 0o604, 0o660:
        assert f"make it yours alone with 'chmod 600 {file}'" in refusal("0123456789abcdef", mode)
    assert vboard("serve", folder, "--token-file", tmp_path, code=1)
    assert vboard("serve", folder, "--token-file", tmp_path / "none", code=1) == (
        f"vboard: cannot read {tmp_path}/none: No such file or directory\n"
    )
    file.chmod(0o600)
    file.write_text("0123456789abcdef-_A\n")
    server = serve(folder, "--token-file", file)
    assert server.token == "0123456789abcdef-_A"
    assert server.get("api/boards").status == 200


def test_it_listens_on_loopback_unless_told_otherwise(quiet, serve, make_board, vboard):
    own = socket.gethostbyname_ex("localhost")[2]
    assert quiet.host == f"127.0.0.1:{quiet.port}" and own
    sockets = open("/proc/net/tcp").read()
    assert f"0100007F:{quiet.port:04X} 00000000:0000 0A" in sockets
    folder = make_board()
    for word in "", "80", "evil:80", "127.0.0.1:", "127.0.0.1:65536", "::1:80", "[127.0.0.1]:80":
        assert "is not ADDRESS:PORT" in vboard("serve", folder, "--listen", word, code=2)
    taken = vboard("serve", folder, "--listen", f"127.0.0.1:{quiet.port}", code=1)
    assert taken == f"vboard: cannot listen on 127.0.0.1:{quiet.port}: Address already in use\n"


def test_other_names_are_let_in_by_hand(serve, make_board):
    server = serve(make_board(), "--host", "lab.example", "--host", "gate.example:9000")
    assert server.ask("GET", "", host=f"lab.example:{server.port}").status == 200
    assert server.ask("GET", "", host="gate.example:9000").status == 200
    assert server.ask("GET", "", host="lab.example:9000").refusal == _OTHER_NAME
    own = {"Origin": "http://gate.example:9000"}
    assert server.ask("GET", "", headers=own, host="gate.example:9000").status == 200
    assert server.ask("GET", "", headers=own).refusal == _ELSEWHERE


def test_every_address_of_the_machine(serve, make_board):
    server = serve(make_board(), "--listen", "0.0.0.0:0")
    assert server.host == f"127.0.0.1:{server.port}"
    with Connection(server.port, "127.0.0.2") as connection:
        connection.send(server.request_bytes("GET", "api/boards", host=f"127.0.0.2:{server.port}"))
        assert connection.answer().status == 200
    assert server.ask("GET", "", host="evil.example").refusal == _OTHER_NAME


# How much there may be.


def test_heads_are_limited(quiet):
    assert quiet.ask("GET", "", headers={"X": "x" * 15000}).status == 200
    too_large = (431, "VBOARD_E_REFUSED", "the head of the request is larger than 16 KiB")
    assert quiet.ask("GET", "", headers={"X": "x" * 17000}).refusal == too_large
    assert quiet.ask("GET", "x" * 20000).refusal == too_large


def test_bodies_are_limited(quiet):
    too_large = (413, "VBOARD_E_REFUSED", "the body is larger than 1048576 bytes")
    fits = b'{"fan.1.state":"good"' + b" " * (1048576 - 22) + b"}"
    assert len(fits) == 1048576
    assert quiet.ask("PATCH", "api/properties", fits).json == {"changed": 1}
    assert quiet.ask("PATCH", "api/properties", fits + b" ").refusal == too_large
    with quiet.connect() as connection:  # of unknown length
        head = quiet.request_bytes("PATCH", "api/properties", headers={"Transfer-Encoding": "chunked"})
        head = head.replace(b"\r\n\r\n", b"\r\nContent-Type: application/json\r\n\r\n")
        connection.send(head + b"100000\r\n" + b" " * 0x100000 + b"\r\n1\r\n")
        connection.send(b" \r\n0\r\n\r\n")
        assert connection.answer().refusal == too_large
    none = (413, "VBOARD_E_REFUSED", "this request has no body")
    assert quiet.ask("GET", "api/boards", {}).refusal == none
    deep = b'{"a":' * 1000 + b"1" + b"}" * 1000
    assert quiet.ask("PATCH", "api/properties", deep).refusal[0] == 400


def test_a_body_is_not_read_from_a_stranger(quiet):
    with quiet.connect() as connection:
        head = f"POST /api/boards HTTP/1.1\r\nHost: {quiet.host}\r\nContent-Length: 60000000\r\n"
        connection.send(head.encode() + b"Expect: 100-continue\r\n\r\n")
        assert connection.answer().refusal == _NO_TOKEN
        assert connection.is_closed()


def test_a_body_is_asked_for(quiet):
    body = b'{"fan.1.state":"good"}'
    with quiet.connect() as connection:
        request = quiet.request_bytes("PATCH", "api/properties", body, {"Expect": "100-continue"})
        connection.send(request[: -len(body)])
        assert connection.answer().status == 100
        connection.send(body)
        assert connection.answer().json == {"changed": 1}


@pytest.mark.parametrize(
    "text",
    [
        b"\0\0\0\0\r\n\r\n",
        b"GET\r\n\r\n",
        b"GET / HTTP/9.9\r\n\r\n",
        b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n",  # TLS
        b"GET / HTTP/1.1\r\nHost\r\n\r\n",
        b"POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
        b"POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
        b"POST / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n",
    ],
)
def test_what_is_no_request_is_refused(quiet, text):
    with quiet.connect() as connection:
        connection.send(text)
        assert connection.answer().refusal == (400, "VBOARD_E_REFUSED", "this is no request of HTTP/1.1")
        assert connection.is_closed()


def test_connections_that_do_nothing_keep_nobody_out(quiet):
    idle = [quiet.connect() for _ in range(200)]
    began = time.monotonic()
    assert quiet.get("api/boards").status == 200
    assert time.monotonic() - began < 5
    for connection in idle:
        connection.socket.close()


def test_slow_requests_end(serve, make_board):
    server = serve(make_board())
    began = time.monotonic()
    with server.connect() as slow:
        def drip():
            try:
                for byte in b"GET / HTTP/1.1\r\n" * 100:
                    slow.send(bytes([byte]))
                    time.sleep(0.5)
            except OSError:
                pass

        threading.Thread(target=drip, daemon=True).start()
        assert slow.is_closed(20)
    assert 8 < time.monotonic() - began < 15


def test_64_pages_can_follow_and_no_more(serve, make_board):
    server = serve(make_board("board", "--time", "virtual"))
    streams = [server.events() for _ in range(64)]
    for stream in streams:
        assert stream.next(30)[0] == "board"
    assert server.get("api/events").refusal == (
        429,
        "VBOARD_E_FULL",
        "64 pages follow boards of this server, and no more can; close one",
    )
    assert server.get("api/boards").status == 200
    streams[0].close()
    time.sleep(0.5)
    assert server.events().next()[0] == "board"


def test_who_does_not_read_is_told_all_again(serve, make_board, vboard, is_fast):
    folder = make_board("board", "--time", "virtual")
    server = serve(folder)
    slow = server.connect()
    slow.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    slow.send(server.request_bytes("GET", "api/events"))
    other = server.events()
    changes = 400 if is_fast else 100
    for number in range(changes):
        value = f"quiet root=/dev/{number} " + "x" * 900
        assert server.ask("PATCH", "api/properties", {"cmdline": value}).status == 200
    last = lambda data: str(data.get("properties", {}).get("cmdline")).startswith(f"quiet root=/dev/{changes - 1} ")
    other.until("change", last, 30)
    with open(f"/proc/{server.process.pid}/statm") as file:
        pages = int(file.read().split()[1])
    if is_fast:
        assert pages * 4096 < 64 << 20


