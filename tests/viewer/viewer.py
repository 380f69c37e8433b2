"""The viewer on a virtual screen, driven through its control socket."""

import os
import pathlib
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time
import zlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ.setdefault("KELO_BIN", str(ROOT / "build/viewer/bin"))
sys.path.insert(0, str(ROOT / "tests/apps"))

from service import BIN, Service  # noqa: E402

LIMIT = 60


class Home:
    """A user's folders, with what a run of the viewer leaves there."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.environment = {"HOME": str(self.folder)}
        for kind in ("DATA_HOME", "STATE_HOME", "CONFIG_HOME", "CACHE_HOME", "RUNTIME_DIR"):
            self.environment[f"XDG_{kind}"] = str(self.folder)

    def service(self, *arguments):
        """A service whose certificate the viewer finds in this home."""
        return Service(*arguments, **self.environment)

    def remove(self):
        shutil.rmtree(self.folder)


class Viewer:
    def __init__(self, home, host, **more):
        address = str(home.folder / "control")
        self.log = home.folder / "viewer.log"
        log = open(self.log, "w")
        self.process = subprocess.Popen(
            [f"{BIN}/kelo-viewer"], stdout=log, stderr=log,
            env={**os.environ, **home.environment, "KELO_HOST": host, "QT_QPA_PLATFORM": "offscreen",
                 "QT_QUICK_BACKEND": "software", "KELO_VIEWER_CONTROL": address, "LC_ALL": "C.UTF-8",
                 **more})
        log.close()
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(LIMIT)
        self.until(lambda: self.connects(address), "the viewer listens")
        self.replies = self.socket.makefile("rb")

    def connects(self, address):
        try:
            self.socket.connect(address)
            return True
        except OSError:
            return False

    def until(self, holds, what):
        """Polls for what happens in the viewer. Its value when it holds."""
        deadline = time.monotonic() + LIMIT
        while True:
            value = holds()
            if value:
                return value
            if time.monotonic() > deadline or self.process.poll() is not None:
                raise AssertionError(f"not in time: {what}\n{self.said()}")
            time.sleep(0.02)

    def ask(self, *words):
        self.socket.sendall((" ".join(map(str, words)) + "\n").encode())
        return self.replies.readline().decode().rstrip("\n")

    def eval(self, name, code):
        return self.ask("eval", name, code)

    def shown(self, name):
        """Whether an item of this name is shown."""
        return self.ask("rect", name) != "none"

    def is_in_window(self, name):
        """Whether the middle of the item can be clicked."""
        rect, window = self.ask("rect", name), self.ask("rect", "window")
        if "none" in (rect, window):
            return False
        _, y, _, height = map(int, rect.split())
        return 0 <= y + height // 2 < int(window.split()[3])

    def wait(self, name):
        self.until(lambda: self.shown(name), f"{name} is shown")

    def wait_gone(self, name):
        self.until(lambda: not self.shown(name), f"{name} is gone")

    def wait_for(self, name, code, value):
        self.until(lambda: self.eval(name, code) == str(value), f"{code} of {name} is {value}")

    def click(self, name):
        self.until(lambda: self.is_in_window(name), f"{name} is in the window")
        self.ask("click", name)

    def shot(self, name="pages"):
        """(width, height, pixels), 4 bytes each."""
        width, height = map(int, self.ask("shot", name).split())
        return width, height, self.replies.read(width * height * 4)

    def save(self, path, name="pages"):
        """As a PNG, to look at. Each row is written as its difference to the one above it."""
        width, height, pixels = self.shot(name)
        rows, above = bytearray(), bytes(width * 3)
        for y in range(height):
            line = pixels[y * width * 4:(y + 1) * width * 4]
            rgb = bytearray(width * 3)
            rgb[0::3], rgb[1::3], rgb[2::3] = line[2::4], line[1::4], line[0::4]
            rows += b"\2" + bytes((one - other) & 255 for one, other in zip(rgb, above))
            above = rgb

        def chunk(kind, data):
            return (struct.pack(">I", len(data)) + kind + data
                    + struct.pack(">I", zlib.crc32(kind + data)))
        pathlib.Path(path).write_bytes(
            b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))

    def frames(self):
        """How many while the feed moved, and the longest between two in milliseconds: by the clock,
        and of the process's own time."""
        count, latest, own = self.ask("frames").split()
        return int(count), float(latest), float(own)

    def memory(self):
        """In MiB."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(status.split("VmRSS:")[1].split()[0]) / 1024

    def said(self):
        """What stands in the log, but for the scripts that this machine's fonts do not have."""
        lines = self.log.read_text().splitlines()
        return "\n".join(line for line in lines if "OpenType support missing" not in line)

    def stop(self):
        """Closes the window, as a user does. The exit code."""
        self.ask("eval", "pages", "Qt.quit()")
        code = self.process.wait(timeout=LIMIT)
        self.socket.close()
        self.replies.close()
        return code
