"""What goes wrong with a phone, in the words of its services."""

from __future__ import annotations

import difflib
from collections.abc import Iterable


class PhoneError(Exception):
    """The phone did not do what it was told, or its services are gone."""


class OrderError(PhoneError, ValueError):
    """What the phone was told or asked means nothing: an unknown word, or a value out of range."""


class ExpectationError(PhoneError, AssertionError):
    """Something expected did not happen in time."""


class UnknownNameError(PhoneError, AttributeError, KeyError):
    """The phone has nothing of this name. The text lists what there is."""

    def __init__(self, owner: str, name: str, known: Iterable[str], hint: str = "") -> None:
        names = sorted(known)
        close = difflib.get_close_matches(name, names, n=1)
        if not hint and close:
            hint = f"did you mean {close[0]!r}?"
        text = f"{owner} has no {name!r}"
        text += f"; it has {', '.join(names)}" if names else ""
        super().__init__(f"{text} ({hint})" if hint else text)

    # A KeyError would show its text in quotes.
    __str__ = Exception.__str__
