"""The signals of the classes that applications use, as they come."""

from __future__ import annotations

import json
import subprocess
import threading
import time
from dataclasses import dataclass
from typing import Any

from . import processes
from .errors import ExpectationError, PhoneError, UnknownNameError

__tracebackhide__ = True  # reports of pytest end at the line of the test

_START_LIMIT = 20.0  # seconds


@dataclass(frozen=True)
class Signal:
    """A signal with its arguments. Enumerators are their names."""

    facility: str
    name: str
    arguments: tuple[Any, ...]
    instance: str = ""  # of several displays, networks or profiles, the one that signals

    def __str__(self) -> str:
        return f"{self.name}({', '.join(map(repr, self.arguments))})"


def _signal_of(told: dict[str, Any]) -> Signal:
    # The option that selects an instance is the key of its name.
    others = set(told) - {"time", "facility", "signal", "signature", "arguments"}
    instance = str(told[others.pop()]) if others else ""
    return Signal(told["facility"], told["signal"], tuple(told["arguments"]), instance)


class Signals:
    """The signals of a facility from now on, until the `with` block ends. Made by Phone.watch()."""

    def __init__(self, command: str, environment: dict[str, str], facility: str) -> None:
        self.facility = facility
        self._command = command
        self._environment = environment
        self._names = self._described()
        self._came: list[Signal] = []
        self._waiting: list[Signal] = []  # those that no wait has returned
        self._change = threading.Condition()
        self._has_begun = False
        self._has_ended = False

    def __enter__(self) -> Signals:
        self._process = subprocess.Popen(
            [self._command, "watch", self.facility, "--json", "--tell-begin"],
            env=self._environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        with self._change:
            self._change.wait_for(lambda: self._has_begun or self._has_ended, _START_LIMIT)
        if not self._has_begun:
            text = self._error_text()
            self._stop()
            raise PhoneError(f"{self.facility} cannot be watched: {text}")
        return self

    def __exit__(self, *_: object) -> None:
        self._stop()

    @property
    def came(self) -> list[Signal]:
        """All that have come so far."""
        with self._change:
            return list(self._came)

    def wait_for(self, name: str, *arguments: object, within: float = 5) -> Signal:
        """Returns the next signal of this name, and with these arguments if any are given. Each is returned once.

        Raises ExpectationError, which says what came instead, if none comes within that many seconds.
        """
        if name not in self._names:
            raise UnknownNameError(self.facility, name, self._names)
        end = time.monotonic() + within
        with self._change:
            while True:
                for signal in self._waiting:
                    if signal.name == name and signal.arguments[: len(arguments)] == arguments:
                        self._waiting.remove(signal)
                        return signal
                if self._has_ended:
                    raise PhoneError(f"{self.facility} is not watched any more: {self._error_text()}")
                if not self._change.wait(max(0, end - time.monotonic())) and time.monotonic() > end:
                    break
            wanted = f"{self.facility} {name}" + (f"({', '.join(map(repr, arguments))})" if arguments else "")
            came = ", ".join(map(str, self._came)) or "nothing"
        raise ExpectationError(f"{wanted} did not come within {within:g} s; {came} came")

    def _described(self) -> list[str]:
        done = subprocess.run(
            [self._command, "describe", self.facility, "--json"],
            env=self._environment,
            capture_output=True,
            text=True,
        )
        if done.returncode:
            raise PhoneError(done.stderr.strip())
        described = json.loads(done.stdout)[self.facility]
        return sorted({signal["name"] for signal in described["signals"]})

    def _read(self) -> None:
        assert self._process.stdout
        for line in self._process.stdout:
            told = json.loads(line)
            with self._change:
                if "watching" in told:
                    self._has_begun = True
                elif "signal" in told:
                    self._came.append(_signal_of(told))
                    self._waiting.append(self._came[-1])
                self._change.notify_all()
        with self._change:
            self._has_ended = True
            self._change.notify_all()

    def _error_text(self) -> str:
        assert self._process.stderr
        return self._process.stderr.read().strip() if self._process.poll() is not None else "it does not begin"

    def _stop(self) -> None:
        processes.end(self._process)
        self._reader.join()
        for pipe in (self._process.stdout, self._process.stderr):
            assert pipe
            pipe.close()
