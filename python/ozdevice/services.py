"""The services of a simulated phone: a process of their own, and the requests that it answers."""

from __future__ import annotations

import contextlib
import errno
import os
import shutil
import socket
import subprocess
import tempfile
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any

from . import message, processes
from .errors import PhoneError

__tracebackhide__ = True  # reports of pytest end at the line of the test

_DIRECTORY = "pps/system/ozdeviced"
_START_LIMIT = 20.0  # seconds
_ANSWER_LIMIT = 20.0  # also on a machine that is busy
_MOST_BYTES = 1 << 20  # of a message
_PAUSE = 0.005  # between looks at an object


class RefusalError(Exception):
    """The services answered a request with an error."""

    def __init__(self, number: int, text: str) -> None:
        super().__init__(text)
        self.number = number


def _daemon_program() -> str:
    # The one that the environment names, else the one of this package's installation, else the one in the path.
    name = "ozdeviced"
    if chosen := os.environ.get("OZ_DEVICED"):
        return chosen
    beside = Path(__file__).resolve().parents[4] / "bin" / name
    if os.access(beside, os.X_OK):
        return str(beside)
    return shutil.which(name) or name


def _folder_for_roots() -> str:
    # In memory where possible, as on a device.
    for folder in (os.environ.get("XDG_RUNTIME_DIR", ""), "/dev/shm"):
        if folder and os.access(folder, os.W_OK):
            return folder
    return tempfile.gettempdir()


class Services:
    """A running daemon with a device root of its own. It ends with close(), and with this process in any case."""

    def __init__(self, phone_file: bytes | None = None) -> None:
        """Starts it and waits until everything is served. `phone_file` is the content of a phone's file."""
        program = _daemon_program()
        self.program = Path(shutil.which(program) or program)
        self.root = Path(tempfile.mkdtemp(prefix="ozdevice-py-", dir=_folder_for_roots()))
        self._log = os.memfd_create("ozdeviced.log")
        self._process: subprocess.Popen[bytes] | None = None
        try:
            self._start(phone_file)
        except BaseException:
            self.close()
            raise

    def _start(self, phone_file: bytes | None) -> None:
        words = [str(self.program), "--private", str(os.getpid()), "--config", os.devnull, "--simulated"]
        file = self.root / "phone.json"
        if phone_file is not None:
            file.write_bytes(phone_file)
            words += ["--phone", str(file)]
        try:
            # Ctrl-C on the terminal is for the tests; the phone ends after them.
            self._process = subprocess.Popen(
                words,
                env={**os.environ, "OZ_DEVICE_ROOT": str(self.root)},
                stdin=subprocess.DEVNULL,
                stderr=self._log,
                process_group=0,
            )
        except OSError as error:
            raise PhoneError(f"the simulated phone cannot start: {error}") from error
        end = time.monotonic() + _START_LIMIT
        while not self._is_ready():
            if (status := self._process.poll()) is not None or time.monotonic() > end:
                serves_nothing = f"{self.program} serves nothing after {_START_LIMIT:g} s"
                how = serves_nothing if status is None else f"{self.program} ended with {status}"
                raise PhoneError(f"the simulated phone did not start: {self.log().strip() or how}")
            time.sleep(_PAUSE)
        # The daemon has read it; nobody is to find it if this process is killed.
        file.unlink(missing_ok=True)

    def _is_ready(self) -> bool:
        # The control object is served once everything is published.
        with self._new_socket() as connection:
            connection.setblocking(False)
            try:
                connection.connect(self._path("control"))
            except BlockingIOError:
                return True
            except OSError:
                return False
        return True

    @property
    def pid(self) -> int:
        assert self._process
        return self._process.pid

    def log(self) -> str:
        """What the daemon has logged so far."""
        size = os.fstat(self._log).st_size
        return os.pread(self._log, size, 0).decode(errors="replace")

    def close(self) -> None:
        if self._log < 0:
            return
        if self._process:
            processes.end(self._process)
        os.close(self._log)
        self._log = -1
        shutil.rmtree(self.root, ignore_errors=True)

    def ask(self, request: str, data: Any = None, limit: float = 0) -> dict[str, Any]:
        """Sends a request and returns the data of its answer. `limit` is how long the services may wait first.

        Raises RefusalError if they answer with an error, and PhoneError if they do not answer.
        """
        attributes = {"msg": request} if data is None else {"msg": request, "dat": data}
        try:
            answer = message.decode(self._exchange(message.encode(attributes), limit + _ANSWER_LIMIT))
        except TimeoutError:
            raise PhoneError("the phone does not answer") from None
        except OSError as error:
            raise PhoneError(f"the phone's services are gone: {error.strerror}") from error
        if number := answer.get("err", 0):
            raise RefusalError(number, answer.get("errstr", os.strerror(number)))
        return answer.get("dat") or {}

    def _exchange(self, text: bytes, limit: float) -> bytes:
        end = time.monotonic() + limit
        # Each request has a connection of its own, so that threads can ask while another one waits.
        with self._new_socket() as connection:
            connection.settimeout(limit)
            while True:
                try:
                    connection.connect(self._path("control"))
                    break
                except BlockingIOError:  # many are waiting to be accepted
                    if time.monotonic() > end:
                        raise TimeoutError from None
                    time.sleep(_PAUSE)
            connection.sendall(text)
            answer = connection.recv(_MOST_BYTES)
        if not answer:
            raise ConnectionResetError(errno.ECONNRESET, os.strerror(errno.ECONNRESET))
        return answer

    def read(self, name: str) -> dict[str, Any]:
        """The attributes of one of the daemon's own state objects."""
        try:
            return message.decode(Path(self._path(name)).read_bytes())
        except OSError as error:
            raise PhoneError(f"the phone's services are gone: {error.strerror}") from error

    def follow(self, name: str, within: float, look: Callable[[], bool]) -> bool:
        """Calls look() at once, and after each change of an object until it is true; False after `within` seconds."""
        end = time.monotonic() + within
        while True:
            seen = self._stamp(name)
            if look():
                return True
            while self._stamp(name) == seen:
                if time.monotonic() > end:
                    return False
                time.sleep(_PAUSE)

    def _stamp(self, name: str) -> tuple[int, int] | None:
        if self._process and self._process.poll() is not None:
            raise PhoneError("the phone's services are gone: the daemon has ended")
        # A publish replaces the file.
        with contextlib.suppress(FileNotFoundError):
            status = os.stat(self._path(name))
            return status.st_ino, status.st_mtime_ns
        return None

    def _path(self, name: str) -> str:
        return f"{self.root}/{_DIRECTORY}/{name}"

    @staticmethod
    def _new_socket() -> socket.socket:
        return socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
