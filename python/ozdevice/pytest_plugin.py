"""The fixtures for pytest: a phone for each test, and further ones."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import Any

import pytest

from .phone import Phone

_PHONES = pytest.StashKey[list[Phone]]()


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line(
        "markers", "phone(settings): the keys of the phone's file, or the file, of the fixture `phone`"
    )


@pytest.fixture
def make_phone(request: pytest.FixtureRequest) -> Iterator[Callable[..., Phone]]:
    """Makes phones, as Phone() does, that end with the test."""
    phones: list[Phone] = request.node.stash.setdefault(_PHONES, [])

    def make(*arguments: Any, **named: Any) -> Phone:
        phones.append(Phone(*arguments, **named))
        return phones[-1]

    yield make
    while phones:
        phones.pop().close()


@pytest.fixture
def phone(
    request: pytest.FixtureRequest, make_phone: Callable[..., Phone], monkeypatch: pytest.MonkeyPatch
) -> Phone:
    """A simulated phone of the test's own, which each program that the test starts sees as its device.

    @pytest.mark.phone({"battery.level": 50}) sets it up.
    """
    marker = request.node.get_closest_marker("phone")
    made: Phone = make_phone(*marker.args, **marker.kwargs) if marker else make_phone()
    monkeypatch.setenv("OZ_DEVICE_ROOT", str(made.root))
    return made


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(item: pytest.Item, call: pytest.CallInfo[None]) -> Iterator[None]:
    """Adds what the services of the test's phones have logged to the report of a failed test."""
    outcome: Any = yield
    report = outcome.get_result()
    if report.failed:
        phones: list[Phone] = item.stash.get(_PHONES, [])
        for number, made in enumerate(phones, start=1):
            if log := made.log:
                report.sections.append((f"Services of phone {number}", log))
