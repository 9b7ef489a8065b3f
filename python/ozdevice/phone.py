"""A simulated phone of its own for a test."""

from __future__ import annotations

import errno
import json
import os
import shutil
import subprocess
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from datetime import timedelta
from pathlib import Path
from typing import Any

from . import processes
from .description import Description, number_text
from .errors import ExpectationError, OrderError, PhoneError, UnknownNameError
from .handled import wait_until_handled
from .parts import Parts
from .services import RefusalError, Services
from .signals import Signals

__tracebackhide__ = True  # reports of pytest end at the line of the test

Scenario = str | os.PathLike[str] | Mapping[str, Any]

_WITHIN = 5.0  # seconds that an expectation waits
_NEWEST = 2**62  # skips a whole log or list
_MOST_SHOWN = 10  # requests in an error


@dataclass(frozen=True)
class Request:
    """What an application asked for."""

    kind: str
    values: dict[str, Any]
    at: float  # seconds since the phone started

    def __str__(self) -> str:
        return " ".join((self.kind, *(f"{name}={value}" for name, value in self.values.items())))


class Phone(Parts):
    """A simulated phone: its services in a process of their own, under a device root of their own.

    Its parts are attributes, as `ozdevice sim` and the values of conditions name them, with `_` for `-`.
    """

    def __init__(self, settings: Mapping[str, Any] | str | os.PathLike[str] | None = None) -> None:
        """Starts the phone and waits until everything is served.

        `settings` are keys of the phone's file with their values, as {"battery.level": 50}, or the path of such a file
        or of a scenario. What is not set is as in the installed phone.
        """
        self._services = Services(_phone_file(settings))
        self._started: list[tuple[subprocess.Popen[Any], Callable[[subprocess.Popen[Any]], None]]] = []
        super().__init__(Description(self._services))
        self._ask("observe")

    def __enter__(self) -> Phone:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<simulated phone under {self.root}>"

    def close(self) -> None:
        """Ends the programs that start() has started, and the phone."""
        for process, end in reversed(self._started):
            end(process)
        self._started.clear()
        self._services.close()

    # Where it is

    @property
    def root(self) -> Path:
        """The device root, which programs find in OZ_DEVICE_ROOT."""
        return self._services.root

    @property
    def environment(self) -> dict[str, str]:
        """The environment for programs that are to see this phone; with the command `ozdevice` in the path."""
        path = os.pathsep.join(filter(None, (os.environ.get("PATH"), os.path.dirname(self._command()))))
        return {**os.environ, "OZ_DEVICE_ROOT": str(self.root), "PATH": path}

    @property
    def log(self) -> str:
        """What the phone's services have logged."""
        return self._services.log()

    # Telling it

    def tell(self, *words: object) -> None:
        """Tells it an order of `ozdevice sim`: "battery level 20", or its words one by one."""
        order = str(words[0]).split() if len(words) == 1 else words
        if len(order) < 2:
            raise OrderError("an order is a facility and a verb")
        self._description.tell(order)

    def advance(self, **time: float) -> None:
        """Lets the phone's time pass at once: advance(minutes=5), with the words of datetime.timedelta."""
        self.tell("clock", "advance", timedelta(**time))

    # Looking at it

    def value(self, name: str) -> Any:
        """A published value, as conditions name it: "miracast.session"; None if it is unknown."""
        return self._description.value(name)

    def holds(self, condition: str) -> bool:
        """Whether a condition holds now: "led.active and led.color == red"."""
        try:
            self.wait_until(condition, within=0)
        except ExpectationError:
            return False
        return True

    def requests(self, kind: str = "", condition: str = "") -> list[Request]:
        """What applications have asked for, in its order: all, or those of a kind that meet a condition."""
        found: list[Request] = []
        order = {"request": kind, "with": condition, "from": 0}
        while page := self._ask("requests", order, OrderError)["requests"]:
            found += (Request(each["request"], each["values"], each["at"]) for each in page)
            order["from"] = page[-1]["number"] + 1
        return found

    # Expecting something of it

    def wait_until(self, condition: str, within: float = _WITHIN) -> None:
        """Waits until a condition holds; ExpectationError, which says what was seen, if that takes too long."""
        try:
            self._services.ask("await", {"condition": condition, "within": within}, within)
        except RefusalError as error:
            if error.number == errno.ETIMEDOUT:
                raise ExpectationError(f"expected {condition}; {error}") from None
            raise OrderError(str(error)) from None

    def wait_until_handled(self, within: float = _WITHIN) -> None:
        """Waits until applications have handled everything that the phone was told so far.

        Then a test can expect what they did not do. What an application does after a time of its own, by a timer, is
        not waited for. ExpectationError, which names the threads that are still busy, if that takes too long.
        """
        try:
            busy = wait_until_handled(self.root, within)
        except OSError as error:
            raise PhoneError(f"the phone's services are gone: {error.strerror}") from error
        if busy:
            text = f"still busy after {within:g} s is {' and '.join(busy)}"
            raise ExpectationError(f"expected applications to have handled everything; {text}")

    def expect(self, facility: str, *, within: float = _WITHIN, **values: object) -> None:
        """Waits until a facility publishes these values: expect("led", color="blue", within=2).

        One of several is named behind a dot: expect("display.1", attached=True). A list has to contain each of its
        words; None is unknown.
        """
        if not values:
            raise OrderError("nothing is expected; wait_until() takes a condition")
        prefix = facility.replace("_", "-")
        self.wait_until(_condition(values, f"{prefix}."), within)

    def expect_request(
        self, kind: str, condition: str = "", *, times: int = 1, within: float = _WITHIN, **values: object
    ) -> list[Request]:
        """Waits until applications have sent a kind of request so often, and returns those that came.

        They count from the phone's start. `condition` and `values` say what they come with:
        expect_request("led.flash", "count >= 2", color="red").
        """
        parts = (f"({condition})" if condition and values else condition, _condition(values) if values else "")
        wanted = " and ".join(filter(None, parts))
        found: list[Request] = []

        def have_come() -> bool:
            found[:] = self.requests(kind, wanted)
            return len(found) >= times

        if not self._services.follow("requests", within, have_come):
            requests = ", ".join(map(str, self.requests()[-_MOST_SHOWN:]))
            asked = f"asked was {requests}" if requests else "nothing was asked"
            what = f"{kind} with {wanted}" if wanted else kind
            raise ExpectationError(f"{what}: {len(found)} of {times} came within {within:g} s; {asked}")
        return found

    def watch(self, facility: str) -> Signals:
        """The signals of the facility's class, as applications get them:

        with phone.watch("battery") as signals:
            phone.battery.level = 20
            signals.wait_for("levelChanged", within=2)
        """
        return Signals(self._command(), self.environment, facility.replace("_", "-"))

    # Scenarios

    def play(
        self,
        scenario: Scenario,
        *,
        speed: float | str = 1,
        variables: Mapping[str, Any] | None = None,
        wait_for: str = "none",
        wait_limit: float = 10,
        keep_going: bool = False,
    ) -> None:
        """Begins to play a scenario: a file, the name of an installed one, its text, or the same as a dictionary.

        With `wait_for` it begins when an application has opened its first object ("open") or sent its first request
        ("request"), at the latest after `wait_limit` seconds. A speed of "max" does not wait.
        """
        file = self._scenario_file(scenario)
        order = {
            "file": str(file),
            "speed": speed,
            "variables": dict(variables or {}),
            "wait-for": wait_for,
            "wait-limit": wait_limit,
            "keep-going": keep_going,
        }
        try:
            self._ask("play", order, OrderError)
        finally:
            if file.parent == self.root:  # made of a text
                file.unlink()

    def wait_until_played(self, within: float = 60) -> None:
        """Waits for the end of the scenario; ExpectationError if one of its steps failed, or if it still plays."""
        told: dict[str, Any] = {}

        def is_over() -> bool:
            told.update(self._ask("scenario", {"from": _NEWEST}))
            return bool(told["state"] != "playing")

        if not self._services.follow("scenario", within, is_over):
            raise ExpectationError(f"the scenario still plays after {within:g} s")
        if told["state"] != "passed":
            late = "; it began without an application" if told["late"] else ""
            raise ExpectationError(f"the scenario: {told['problem']}{late}")

    def stop_playing(self) -> None:
        """Ends the scenario."""
        self._ask("stop-scenario")

    # Programs

    def run(self, words: Sequence[str | os.PathLike[str]], **options: Any) -> subprocess.CompletedProcess[str]:
        """Runs a program on this phone and returns what it printed; PhoneError if it fails.

        `options` are those of subprocess.run(): check=False lets it fail, timeout is 60 seconds by default, at the
        end of which the programs that it has started end, too.
        """
        check, timeout, given = options.pop("check", True), options.pop("timeout", 60), options.pop("input", None)
        pipe = subprocess.PIPE if options.pop("capture_output", True) else None
        has_own_group = "process_group" not in options
        defaults = {"stdout": pipe, "stderr": pipe, "text": True, "env": self.environment, "process_group": 0}
        if given is not None:
            defaults["stdin"] = subprocess.PIPE
        options = {**defaults, **options}
        process: subprocess.Popen[Any]
        with subprocess.Popen(words, **options) as process:
            try:
                out, errors = process.communicate(given, timeout)
            except BaseException:
                processes.end_group(process) if has_own_group else processes.end(process)
                raise
        if check and process.returncode:
            raise PhoneError(f"{words[0]} ended with {process.returncode}: {(errors or out or '').strip()}")
        return subprocess.CompletedProcess(words, process.returncode, out, errors)

    def start(self, words: Sequence[str | os.PathLike[str]], **options: Any) -> subprocess.Popen[Any]:
        """Starts a program on this phone, which ends with it, as do the programs that it starts itself.

        `options` are those of subprocess.Popen().
        """
        options = {"env": self.environment, "process_group": 0, **options}
        process: subprocess.Popen[Any] = subprocess.Popen(words, **options)
        # A shell that ends leaves its programs behind. `options` may have chosen another group, as that of the tests.
        leads_group = os.getpgid(process.pid) == process.pid
        self._started.append((process, processes.end_group if leads_group else processes.end))
        return process

    def _ask(self, request: str, data: Any = None, refused: type[PhoneError] = PhoneError) -> dict[str, Any]:
        try:
            return self._services.ask(request, data)
        except RefusalError as error:
            raise refused(str(error)) from None

    def _command(self) -> str:
        beside = self._services.program.with_name("ozdevice")
        return str(beside) if beside.exists() else shutil.which("ozdevice") or "ozdevice"

    def _scenario_file(self, scenario: Scenario) -> Path:
        if isinstance(scenario, Mapping):
            scenario = json.dumps(scenario)
        if isinstance(scenario, str) and scenario.lstrip().startswith(("{", "//", "/*")):
            file = self.root / "scenario.json"
            file.write_text(scenario)
            return file
        if Path(scenario).exists():
            return Path(scenario).absolute()
        folder = self._services.program.resolve().parents[1] / "share/ozdevice/scenarios"
        installed = {file.stem: file for file in folder.glob("*.json")}
        if str(scenario) in installed:
            return installed[str(scenario)]
        if Path(scenario).suffix:
            raise OrderError(f"there is no scenario {str(scenario)!r}")
        raise UnknownNameError("the installation", str(scenario), installed)


def _condition(values: Mapping[str, object], prefix: str = "") -> str:
    return " and ".join(_comparison(prefix + name.replace("_", "-"), value) for name, value in values.items())


def _comparison(name: str, value: object) -> str:
    if value is None:
        return f"{name} == unknown"
    if isinstance(value, bool):
        return name if value else f"not {name}"
    if isinstance(value, (int, float)):
        return f"{name} == {number_text(value)}"
    if isinstance(value, (list, tuple, set, frozenset)):
        return " and ".join(f"{name} contains '{each}'" for each in value)
    text = str(value)
    if "'" in text:
        raise OrderError(f"a condition cannot hold a quote: {text}")
    return f"{name} == '{text}'"


def _phone_file(settings: Mapping[str, Any] | str | os.PathLike[str] | None) -> bytes | None:
    if settings is None or isinstance(settings, Mapping):
        return json.dumps(_nested(settings)).encode() if settings else None
    try:
        return Path(settings).read_bytes()
    except OSError as error:
        raise OrderError(f"{settings}: {error.strerror}") from None


def _nested(settings: Mapping[str, Any], file: dict[str, Any] | None = None) -> dict[str, Any]:
    """{"battery.level": 50} as {"battery": {"level": 50}}, added to what `file` has."""
    file = {} if file is None else file
    for path, value in settings.items():
        place = file
        *sections, key = path.split(".")
        for section in [*sections, key] if isinstance(value, Mapping) else sections:
            place = place.setdefault(section, {})
            if not isinstance(place, dict):
                raise OrderError(f"{path}: {section} has the value {place!r} already, and is no section")
        if isinstance(value, Mapping):
            _nested(value, place)
        else:
            place[key] = value
    return file
