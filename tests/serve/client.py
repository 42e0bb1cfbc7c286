"""A client that sends what a test wants, right or wrong."""

import json
import select
import signal
import socket
import subprocess
import time
from dataclasses import dataclass
from urllib.parse import urlparse

_PATIENCE = 60


@dataclass
class Answer:
    status: int
    headers: dict
    body: bytes

    @property
    def json(self):
        assert self.headers["content-type"] == "application/json"
        return json.loads(self.body)

    @property
    def refusal(self):
        """Of an error the status, the kind and the text."""
        assert set(self.json) == {"error", "status"}
        return self.status, self.json["status"], self.json["error"]


class Connection:
    """Bytes to a server, and answers."""

    def __init__(self, port, address="127.0.0.1"):
        self.socket = socket.create_connection((address, port), timeout=_PATIENCE)
        self.buffer = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, data):
        self.socket.sendall(data)

    def more(self):
        """Reads on; false at the end."""
        try:
            data = self.socket.recv(1 << 16)
        except ConnectionResetError:
            return False
        self.buffer += data
        return bool(data)

    def is_closed(self, within=5.0):
        """Whether the server closes it."""
        end = time.monotonic() + within
        while (left := end - time.monotonic()) > 0:
            if select.select([self.socket], [], [], left)[0] and not self.more():
                return True
        return False

    def head(self):
        while b"\r\n\r\n" not in self.buffer:
            assert self.more(), self.buffer
        head, self.buffer = self.buffer.split(b"\r\n\r\n", 1)
        first, *lines = head.decode("latin-1").split("\r\n")
        pairs = [line.split(": ", 1) for line in lines]
        headers = {name.lower(): value for name, value in pairs}
        assert len(headers) == len(pairs), lines
        return int(first.split()[1]), headers

    def answer(self, has_body=True):
        status, headers = self.head()
        if status == 100:
            return Answer(status, headers, b"")
        length = int(headers["content-length"]) if has_body else 0
        while len(self.buffer) < length:
            assert self.more()
        body, self.buffer = self.buffer[:length], self.buffer[length:]
        return Answer(status, headers, body)


class Events:
    """A stream of server-sent events."""

    def __init__(self, connection):
        self.connection = connection

    def close(self):
        self.connection.socket.close()

    def next(self, within=10.0):
        """The next event, its name and its data; none at the end."""
        end = time.monotonic() + within
        while True:
            while b"\n\n" not in self.connection.buffer:
                left = end - time.monotonic()
                assert left > 0, "no event has come"
                if select.select([self.connection.socket], [], [], left)[0]:
                    if not self.connection.more():
                        return None
            text, self.connection.buffer = self.connection.buffer.split(b"\n\n", 1)
            fields = dict(line.split(": ", 1) for line in text.decode().split("\n") if ": " in line)
            if "event" in fields:
                assert set(fields) == {"event", "data"}
                return fields["event"], json.loads(fields["data"])

    def until(self, name, wanted=lambda data: True, within=10.0):
        """The data of the next event of a name that is as it should be."""
        end = time.monotonic() + within
        while True:
            event = self.next(end - time.monotonic())
            assert event is not None, "the stream has ended"
            if event[0] == name and wanted(event[1]):
                return event[1]


class Server:
    """`vboard serve`, started."""

    def __init__(self, words):
        self.process = subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.url = self.process.stdout.readline().decode().strip()
        if not self.url:
            raise RuntimeError(self.process.stderr.read().decode())
        parts = urlparse(self.url)
        self.host, self.port, self.path = parts.netloc, parts.port, parts.path

    @property
    def token(self):
        return self.path.strip("/")

    def connect(self):
        return Connection(self.port)

    def request_bytes(self, method, path, body=None, headers=None, host=None):
        """A request below the token's path."""
        lines = [f"{method} {self.path}{path} HTTP/1.1", f"Host: {host or self.host}"]
        if body is not None and not isinstance(body, bytes):
            body = json.dumps(body).encode()
        if body is not None:
            lines += [f"Content-Length: {len(body)}"]
            if "Content-Type" not in (headers or {}):
                lines += ["Content-Type: application/json"]
        lines += [f"{name}: {value}" for name, value in (headers or {}).items() if value]
        return "\r\n".join([*lines, "", ""]).encode() + (body or b"")

    def ask(self, method, path, body=None, headers=None, host=None):
        with self.connect() as connection:
            connection.send(self.request_bytes(method, path, body, headers, host))
            return connection.answer(method != "HEAD")

    def get(self, path):
        return self.ask("GET", path)

    def events(self, query=""):
        connection = self.connect()
        connection.send(self.request_bytes("GET", "api/events" + query))
        status, headers = connection.head()
        assert (status, headers["content-type"]) == (200, "text/event-stream")
        return Events(connection)

    def cpu_seconds(self):
        with open(f"/proc/{self.process.pid}/stat") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / 100

    def end(self, number=signal.SIGINT):
        """Its exit code, what it complained of, and how long it took."""
        began = time.monotonic()
        self.process.send_signal(number)
        return self.ended(began)

    def ended(self, began=None):
        _, errors = self.process.communicate(timeout=_PATIENCE)
        return self.process.returncode, errors.decode(), time.monotonic() - (began or 0)

    def kill(self):
        self.process.kill()
        self.process.communicate()
