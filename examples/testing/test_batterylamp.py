"""Tests of the program battery-lamp, each on a phone of its own."""

import os
from pathlib import Path

import pytest


LAMP = os.environ["BATTERY_LAMP"]


@pytest.fixture
def lamp(phone):
    return phone.start([LAMP])


@pytest.mark.phone({"battery.level": 50})
def test_flashes_when_the_battery_gets_low(phone, lamp):
    phone.battery.level = 9
    phone.expect_request("led.flash", color="red", count=2)
    phone.expect("led", last_color="red", last_shown=2)
    assert phone.led.flashes == 2


@pytest.mark.phone(Path(__file__).with_name("low.json"))
def test_does_what_the_scenario_expects(phone):
    phone.play(Path(__file__).with_name("low.json"), speed=60, wait_for="open")
    phone.start([LAMP])
    phone.wait_until_played()


def test_the_command_shows_what_applications_see(phone, lamp):
    phone.battery.plug()
    assert phone.run(["ozdevice", "show", "battery", "chargingState"]).stdout == "Charging\n"
    assert lamp.poll() is None, "the lamp ended"
