"""Tests of the program battery-lamp, each on a private phone."""

import os

import pytest

LAMP = os.environ["BATTERY_LAMP"]
LED = "/pps/services/led/activity"


@pytest.fixture
def lamp(phone, start):
    phone.sim("battery level 50")
    return start(LAMP)


def test_flashes_when_the_battery_gets_low(phone, lamp):
    phone.sim("battery level 9")
    phone.wait_for(lambda: "last" in phone.object(LED))
    assert phone.object(LED)["last"]["color"] == "red"
    assert phone.object(LED)["flashes"] == 2


def test_the_command_shows_what_applications_see(phone, lamp):
    phone.sim("battery plug")
    assert phone.show("battery")["chargingState"] == "Charging"
    assert lamp.poll() is None, "the lamp ended"
