"""A phone for each test, controlled by the program `ozdevice`."""

import json
import os
import subprocess
import time

import pytest

OZDEVICE = os.environ.get("OZDEVICE", "ozdevice")


class Phone:
    """A private simulated phone. Programs that the test starts with its environment see it."""

    def __init__(self, root):
        self.environment = {**os.environ, "OZ_DEVICE_ROOT": str(root)}
        daemon = os.path.join(os.path.dirname(OZDEVICE), "ozdeviced")
        self._daemon = subprocess.Popen(
            [daemon, "--private", str(os.getpid()), "--simulated", "--config", os.devnull],
            env=self.environment,
        )
        self.run("wait-ready")

    def run(self, *words):
        """Returns the output of `ozdevice`; fails the test with its errors."""
        done = subprocess.run(
            [OZDEVICE, *words], env=self.environment, capture_output=True, text=True, timeout=60
        )
        assert done.returncode == 0, done.stderr
        return done.stdout

    def sim(self, order):
        """Sends an order of `ozdevice sim`."""
        self.run("sim", *order.split())

    def show(self, facility):
        """Returns the properties of the facility as applications see them."""
        shown = json.loads(self.run("show", facility, "--json"))[facility]
        return {name: entry["value"] for name, entry in shown.items()}

    def object(self, path):
        """Returns the attributes of an object of the tree."""
        (attributes,) = json.loads(self.run("pps", "get", path, "--json")).values()
        return attributes

    def wait_for(self, condition, seconds=10):
        """Waits until condition() is true."""
        end = time.monotonic() + seconds
        while not condition():
            assert time.monotonic() < end, f"{condition} did not hold within {seconds} s"
            time.sleep(0.01)

    def end(self):
        self._daemon.terminate()
        self._daemon.wait(timeout=10)


@pytest.fixture
def phone(tmp_path):
    root = tmp_path / "root"
    root.mkdir()
    phone = Phone(root)
    yield phone
    phone.end()


@pytest.fixture
def start(phone):
    """Starts programs on the phone; ends them with the test."""
    started = []

    def start_program(*words):
        started.append(subprocess.Popen(words, env=phone.environment))
        return started[-1]

    yield start_program
    for program in started:
        program.terminate()
        program.wait(timeout=10)
