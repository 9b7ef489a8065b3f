"""Simulated phones for the tests of applications: a private one for each test, without root rights or a display.

With pytest, ask for the fixture `phone`. Elsewhere:

    with ozdevice.Phone({"battery.level": 50}) as phone:
        phone.battery.level = 9
        phone.expect("led", color="red", within=2)
"""

from .errors import ExpectationError, OrderError, PhoneError, UnknownNameError
from .phone import Phone, Request
from .signals import Signal, Signals

__all__ = [
    "ExpectationError",
    "OrderError",
    "Phone",
    "PhoneError",
    "Request",
    "Signal",
    "Signals",
    "UnknownNameError",
]
