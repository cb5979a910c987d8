"""A viewer to talk to, and what its page does, by hand: HTTP and WebSocket with the standard library alone."""

import base64
import contextlib
import json
import os
import pathlib
import shutil
import socket
import struct
import subprocess
import tempfile
import time

PATIENCE = 60  # seconds until a condition that never comes is a failure
TEXT, BINARY, CLOSE, PING, PONG = 1, 2, 8, 9, 10


class Viewer:
    """`zelcam view` with simulated cameras, in a folder of its own."""

    running = []

    def __init__(self, command, *arguments, **simulated):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zel-viewer."))
        known = {name: value for name, value in os.environ.items() if not name.startswith("ZEL_SIM_")}
        cameras = {"CL_CAMERAS": "1", "EBUS_CAMERAS": "0", "USB_CAMERAS": "0", **simulated}
        self.process = subprocess.Popen(
            [*command, "view", "--no-browser", "--json", *arguments], cwd=self.folder, text=True, stdout=subprocess.PIPE,
            env={**known, **{f"ZEL_SIM_{name}": value for name, value in cameras.items()}})
        Viewer.running.append(self)
        line = self.process.stdout.readline()
        assert line.strip(), "the viewer printed no address"
        self.address = json.loads(line)["address"]
        self.host, path = self.address.removeprefix("http://").split("/", 1)
        self.path = "/" + path
        self.port = int(self.host.rsplit(":", 1)[1])

    def answer(self, request):
        """What the server says to these bytes, until it closes the connection or has said all."""
        received = b""
        with socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE) as plain:
            with contextlib.suppress(ConnectionError):
                plain.sendall(request)
                plain.shutdown(socket.SHUT_WR)
                while data := plain.recv(1 << 16):
                    received += data
        return received

    def get(self, path="", **headers):
        lines = [f"GET {self.path}{path} HTTP/1.1", f"Host: {headers.pop('host', self.host)}", "Connection: close"]
        lines += [f"{name}: {value}" for name, value in headers.items()]
        head, _, body = self.answer("\r\n".join([*lines, "", ""]).encode()).partition(b"\r\n\r\n")
        fields = dict(line.split(": ", 1) for line in head.decode().split("\r\n")[1:])
        return int(head.split()[1]), fields, body

    @staticmethod
    def end_all():
        while Viewer.running:
            Viewer.running[-1].end()

    def end(self):
        Viewer.running.remove(self)
        if self.process.poll() is None:
            try:  # a program that runs under another one does not get its signals
                Page(self).do("quit")
            except Exception:  # it may have told no address
                self.process.terminate()
        self.process.communicate()
        shutil.rmtree(self.folder, ignore_errors=True)
        return self.process.returncode


class Picture:
    def __init__(self, data):
        (magic, header, self.channels, self.number, self.bits, self.width, self.height, self.x, self.y,
         self.part_width, self.part_height, self.columns, self.rows, self.hand_over, self.view, self.exposure,
         self.made) = struct.unpack("<IHHIIIIIIIIIIdIId", data[:72])
        assert (magic, header) == (0x564C455A, 72)
        assert len(data) == 72 + 2 * self.columns * self.rows * self.channels
        self.samples = data[72:]


class Page:
    """One page: looks at the whole frame, and says what it has shown."""

    def __init__(self, viewer, columns=64, rows=64, receive_buffer=None, origin=None, shows=True):
        self.socket = socket.socket()
        if receive_buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(("127.0.0.1", viewer.port))
        self.received, self.requests, self.shows = bytearray(), 0, shows
        self.seen, self.picture, self.pictures, self.events = {}, None, 0, []
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall((f"GET {viewer.path}socket HTTP/1.1\r\nHost: {viewer.host}\r\nUpgrade: websocket\r\n"
                             f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n"
                             f"Origin: {origin or 'http://' + viewer.host}\r\n\r\n").encode())
        while b"\r\n\r\n" not in self.received:
            self.receive()
        head = self.take(self.received.index(b"\r\n\r\n") + 4)
        self.status = int(head.split()[1])
        if self.status == 101:
            self.send(type="view", view=1, x=0, y=0, width=0, height=0, columns=columns, rows=rows)

    def receive(self):
        data = self.socket.recv(1 << 20)
        if not data:
            raise EOFError("the server closed the connection")
        self.received += data

    def take(self, size):
        while len(self.received) < size:
            self.receive()
        data = bytes(self.received[:size])
        del self.received[:size]
        return data

    def frame(self, opcode, data, first=0x80, mask=True):
        """Sends a frame; first: the bits beside the opcode."""
        size = len(data)
        length = bytes([size]) if size < 126 else b"\x7e" + struct.pack(">H", size)
        key = os.urandom(4) if mask else b""
        masked = bytes(byte ^ key[i & 3] for i, byte in enumerate(data)) if mask else data
        self.socket.sendall(bytes([first | opcode, length[0] | (0x80 if mask else 0)]) + length[1:] + key + masked)

    def send(self, **message):
        self.frame(TEXT, json.dumps(message).encode())

    def next(self):
        """The next message: a Picture, which is shown, or an object."""
        while True:
            first, size = self.take(2)
            if size == 126:
                size, = struct.unpack(">H", self.take(2))
            elif size == 127:
                size, = struct.unpack(">Q", self.take(8))
            data = self.take(size)
            if first & 15 == PING:
                self.frame(PONG, data)
            elif first & 15 == CLOSE:
                raise EOFError("the server said good-bye")
            elif first & 15 == BINARY:
                self.picture = Picture(data)
                self.pictures += 1
                if self.shows:
                    self.send(type="shown", frame=self.picture.number, at=time.time() * 1000)
                return self.picture
            elif first & 15 == TEXT:
                message = json.loads(data)
                self.seen[message["type"]] = message
                if message["type"] == "event":
                    self.events.append(message["message"])
                return message

    def wait(self, condition, what):
        """Takes messages until the condition holds; what it is then."""
        end = time.monotonic() + PATIENCE
        while not (result := condition()):
            assert time.monotonic() < end, f"waited {PATIENCE} s for {what}; events: {self.events}"
            self.next()
        return result

    def wait_picture(self, wanted=lambda picture: True):
        """The next picture that is as wanted."""
        self.picture = None
        return self.wait(lambda: self.picture and wanted(self.picture) and self.picture, "a picture")

    def wait_state(self, wanted=lambda state: True):
        self.seen.pop("state", None)
        return self.wait(lambda: "state" in self.seen and wanted(self.seen["state"]) and self.seen["state"], "a state")

    def wait_event(self, text):
        return self.wait(lambda: any(text in event for event in self.events), f"the event '{text}'")

    def ask(self, type, **members):
        """Whether it was done, and the answer."""
        self.requests += 1
        self.send(type=type, request=self.requests, **members)
        while True:
            message = self.next()
            if not isinstance(message, Picture) and message.get("request") == self.requests:
                return message["type"] == "done", message

    def do(self, type, **members):
        done, answer = self.ask(type, **members)
        assert done, answer
        return answer

    def is_ended(self):
        """Whether the server ends this connection."""
        with contextlib.suppress(EOFError, ConnectionError):
            while True:
                self.next()
        return True
