"""What a phone is, can be told and says, as its services describe it. Nothing of that is known here."""

from __future__ import annotations

import enum
import errno
from collections.abc import Iterable, Sequence
from dataclasses import dataclass, field, fields, replace
from datetime import timedelta
from typing import Any

from .errors import OrderError, PhoneError
from .services import RefusalError, Services

__tracebackhide__ = True  # reports of pytest end at the line of the test

_ALL = "*"  # stands for one of several in the name of a value


def python_name(name: str) -> str:
    return name.replace("-", "_")


def number_text(value: float) -> str:
    """A number without an exponent, which neither orders nor conditions know."""
    return str(value) if isinstance(value, int) else f"{value:.9f}".rstrip("0").rstrip(".")


def word(value: object) -> str:
    """The word of an order that says `value`."""
    if value is None:
        return "unknown"
    if isinstance(value, bool):
        return "on" if value else "off"
    if isinstance(value, enum.Enum):
        return word(value.value)
    if isinstance(value, timedelta):
        return number_text(value.total_seconds())
    if isinstance(value, (int, float)):
        return number_text(value)
    if isinstance(value, (list, tuple, set, frozenset)):
        return ",".join(word(each) for each in value)
    return str(value)


@dataclass(frozen=True)
class Verb:
    """Something that a part of the phone can be told."""

    name: str
    help: str
    arguments: Sequence[str] = ()
    choices: dict[str, Any] = field(default_factory=dict)
    fault: bool = False
    present: str = ""  # the name that it has now, if this is its former one, which goes on working

    @property
    def first_words(self) -> Sequence[str]:
        """What its first argument can be, if that is a list of words."""
        words: Sequence[str] = self.choices.get(self.arguments[0], {}).get("words", ()) if self.arguments else ()
        return words

    def usage(self) -> str:
        return " ".join((self.name, *self.arguments))

    def value_of(self, now: Any) -> Any:
        """The value that a setting has now, which is told as the word of this verb's only argument."""
        argument = self.arguments[0]
        if not isinstance(now, str):
            return now
        if argument.strip("[]").endswith(",..."):
            return [each for each in now.split(",") if each]
        if "most" in self.choices.get(argument, {}):
            number = float(now)
            return int(number) if number.is_integer() else number
        return now


@dataclass(frozen=True)
class PartDescription:
    """A part of the phone: what it can be told, and the names of what it has several of."""

    name: str
    verbs: dict[str, Verb]
    values: frozenset[str]  # that it publishes
    item_values: frozenset[str]  # that each of several publishes
    instances: Sequence[str]  # one of which stands before each verb
    comes: str  # the verbs that bring neighbours into range and out of it
    goes: str


class Description:
    """Asks a phone's services what there is, and keeps the answer until something is not in it."""

    def __init__(self, services: Services) -> None:
        self._services = services
        self._parts: dict[str, PartDescription] = {}

    def parts(self, fresh: bool = False) -> dict[str, PartDescription]:
        """The parts by name. What there are several of can come and go: `fresh` asks again."""
        if fresh or not self._parts:
            described = self._services.ask("describe")["simulated"]
            published = [value["name"] for value in self._services.ask("public-values")["values"]]
            self._parts = {name: _part_of(name, part, published) for name, part in described.items()}
        return self._parts

    def setting(self, part: str, instance: str, verb: str) -> Any:
        """What a verb has set; None if that is not told."""
        return self._services.read("phone")["values"].get(part, {}).get(instance, {}).get(verb)

    def neighbours(self, part: str) -> dict[str, bool]:
        """Whether each of the things around a part is in range."""
        told = self._services.read("phone")["neighbours"]
        return {each["name"]: each["in-range"] for each in told if each["part"] == part}

    def value(self, name: str) -> Any:
        """A published value; None if it is unknown."""
        try:
            return self._services.ask("value", {"name": name}).get("value")
        except RefusalError as error:
            raise OrderError(str(error)) from None

    def tell(self, words: Iterable[object]) -> None:
        facility, verb, *arguments = [word(each) for each in words]
        order = {"facility": facility, "verb": verb, "arguments": arguments, "publish": True}
        try:
            self._services.ask("sim", order)
        except RefusalError as error:
            raise (OrderError if error.number == errno.EINVAL else PhoneError)(str(error)) from None


def _verb_of(described: dict[str, Any]) -> Verb:
    # The services also tell what other programs need, and newer ones may tell more.
    known = {each.name for each in fields(Verb)}
    return Verb(**{key: value for key, value in described.items() if key in known})


def _part_of(name: str, described: dict[str, Any], published: Iterable[str]) -> PartDescription:
    own = [value.removeprefix(f"{name}.") for value in published if value.startswith(f"{name}.")]
    several = f"{_ALL}."
    verbs = {verb["name"]: _verb_of(verb) for verb in described["verbs"]}
    for former, present in described.get("former-verbs", {}).items():
        verbs[former] = replace(verbs[present], name=former, present=present)
    return PartDescription(
        name,
        verbs,
        frozenset(value for value in own if not value.startswith(several)),
        frozenset(value.removeprefix(several) for value in own if value.startswith(several)),
        described.get("instances", ()),
        described.get("comes", ""),
        described.get("goes", ""),
    )
