"""The parts of a phone as objects, with the attributes that the phone's services describe."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import Any

from .description import Description, PartDescription, Verb, python_name, word
from .errors import OrderError, UnknownNameError

__tracebackhide__ = True  # reports of pytest end at the line of the test

_IN_RANGE = "in-range"


class _Described:
    """An object whose public attributes come from the description."""

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        return self._get(name)

    def __setattr__(self, name: str, value: Any) -> None:
        if name.startswith("_"):
            object.__setattr__(self, name, value)
        else:
            self._set(name, value)

    def __dir__(self) -> list[str]:
        return sorted({*object.__dir__(self), *self._names()})

    def _get(self, name: str) -> Any:
        raise NotImplementedError

    def _set(self, name: str, value: Any) -> None:
        if name not in self._names():
            raise UnknownNameError(str(self), name, self._names())
        raise AttributeError(f"{self}: {name!r} cannot be assigned to, but its attributes can")

    def _names(self) -> set[str]:
        raise NotImplementedError


class Part(_Described):
    """A part of the phone, or one of several things that a part has.

    What is published, or was set, is an attribute with a value. What the part can be told is an attribute to be
    assigned to, if it takes one value that can be read back, else a method.
    """

    def __init__(self, description: Description, name: str, item: str = "", faults: bool = False) -> None:
        self._description = description
        self._name = name
        self._item = item
        self._faults = faults

    def __str__(self) -> str:
        title = f"{self._name}[{self._item!r}]" if self._item else self._name
        return f"faults.{title}" if self._faults else title

    def __repr__(self) -> str:
        return f"<{self} of a simulated phone>"

    def tell(self, verb: str, *arguments: object) -> None:
        """Tells it a verb of `ozdevice sim` with its arguments. What changes is published when this returns."""
        item = (self._item,) if self._item else ()
        # An instance stands before the verb; anything else is the verb's first argument.
        words = (*item, verb) if self._part().instances else (verb, *item)
        self._description.tell((self._name, *words, *arguments))

    def __getitem__(self, item: object) -> Part:
        """One of several by its name in the phone's file, or by its number."""
        name = word(item)
        if self._item or name not in self._items():
            raise UnknownNameError(str(self), name, () if self._item else self._items())
        return Part(self._description, self._name, name, self._faults)

    def __iter__(self) -> Iterator[str]:
        return iter(sorted(self._items()))

    def __contains__(self, item: object) -> bool:
        return word(item) in self._items()

    def _items(self) -> set[str]:
        part = self._part(fresh=True)
        if part.instances:
            return set(part.instances)
        if part.comes:
            return set(self._description.neighbours(self._name))
        return {each for verb in part.verbs.values() for each in verb.first_words} if part.item_values else set()

    def _part(self, fresh: bool = False) -> PartDescription:
        return self._description.parts(fresh)[self._name]

    def _verbs(self) -> dict[str, Verb]:
        part = self._part()
        verbs = {name: verb for name, verb in part.verbs.items() if verb.fault == self._faults}
        if part.instances:
            return verbs if self._item or self._faults else {}
        if self._item:
            return {name: verb for name, verb in verbs.items() if self._item in verb.first_words}
        return verbs

    def _values(self) -> frozenset[str]:
        if self._faults:
            return frozenset()
        return self._part().item_values if self._item else self._part().values

    def _is_neighbour(self) -> bool:
        return bool(self._item and self._part().comes) and not self._faults

    def _names(self) -> set[str]:
        names = {*(name for name, verb in self._verbs().items() if not verb.present), *self._values()}
        if self._is_neighbour():
            names.add(_IN_RANGE)
        return {python_name(name) for name in names}

    def _known(self, attribute: str) -> str:
        """The described name of an attribute."""
        for name in (*self._verbs(), *self._values(), *((_IN_RANGE,) if self._is_neighbour() else ())):
            if python_name(name) == attribute:
                return name
        hint = ""
        if any(verb.fault and python_name(name) == attribute for name, verb in self._part().verbs.items()):
            hint = f"it is a fault: faults.{self}"
        elif self._part().instances and not self._item:
            hint = f"each has more: {self._name}[{self._part().instances[0]!r}]"
        raise UnknownNameError(str(self), attribute, self._names(), hint)

    def _get(self, attribute: str) -> Any:
        name = self._known(attribute)
        if name in self._values():
            return self._description.value(".".join(each for each in (self._name, self._item, name) if each))
        if name == _IN_RANGE:
            return self._description.neighbours(self._name)[self._item]
        verb = self._verbs()[name]
        instance = self._item if self._part().instances else ""
        if len(verb.arguments) == 1 and not verb.fault:
            now = self._description.setting(self._name, instance, verb.present or name)
            if now is not None:
                return verb.value_of(now)
        return self._method(verb)

    def _method(self, verb: Verb) -> Callable[..., None]:
        def method(*arguments: object) -> None:
            self.tell(verb.name, *arguments)

        method.__name__ = method.__qualname__ = python_name(verb.name)
        method.__doc__ = f"{verb.usage()}: {verb.help}"
        return method

    def _set(self, attribute: str, value: Any) -> None:
        name = self._known(attribute)
        if name == _IN_RANGE and self._is_neighbour():
            self.tell(self._part().comes if value else self._part().goes)
            return
        verb = self._verbs().get(name)
        if not verb:
            told = ", ".join(sorted(each.usage() for each in self._verbs().values() if not each.present))
            raise OrderError(f"{self} publishes {attribute!r}, which cannot be set; it can be told {told or 'nothing'}")
        if verb.arguments:
            self.tell(name, value)
        elif value is True:  # a verb that makes it so
            self.tell(name)
        else:
            raise OrderError(f"{self} {name} takes no value but True")


class Faults(_Described):
    """What can go wrong with the services of each part."""

    def __init__(self, description: Description) -> None:
        self._description = description

    def __str__(self) -> str:
        return "faults"

    def _names(self) -> set[str]:
        parts = self._description.parts().values()
        return {python_name(part.name) for part in parts if any(verb.fault for verb in part.verbs.values())}

    def _get(self, name: str) -> Part:
        if name not in self._names():
            raise UnknownNameError("faults", name, self._names())
        return Part(self._description, _part_name(self._description, name), faults=True)


class Parts(_Described):
    """A phone's parts."""

    def __init__(self, description: Description) -> None:
        self._description = description

    @property
    def faults(self) -> Faults:
        return Faults(self._description)

    def __str__(self) -> str:
        return "the phone"

    def _names(self) -> set[str]:
        return {python_name(name) for name in self._description.parts()}

    def _get(self, name: str) -> Part:
        return Part(self._description, _part_name(self._description, name))


def _part_name(description: Description, attribute: str) -> str:
    for name in description.parts():
        if python_name(name) == attribute:
            return name
    raise UnknownNameError("the phone", attribute, (python_name(name) for name in description.parts()))
