"""The phone as its services describe it."""

import ast
import errno
import os
import signal
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest

import ozdevice
from ozdevice.parts import Part, Parts

FLASH = ["ozdevice", "call", "led", "flash", "3", "--set", "color=Green"]

# What is assigned or called, and a condition that holds afterwards.
TOLD = {
    "a number": (lambda p: setattr(p.battery, "level", 20), "battery.level == 20"),
    "a fraction": (lambda p: setattr(p.battery, "temperature", -3.5), "battery.temperature == -3.5"),
    "nothing": (lambda p: setattr(p.battery, "temperature", None), "battery.temperature == unknown"),
    "a word": (lambda p: setattr(p.battery, "condition", "bad"), "battery.condition == bad"),
    "on or off": (lambda p: setattr(p.radio, "data_roaming", True), "radio.data-roaming"),
    "a list": (lambda p: setattr(p.radio, "enable", ["lte"]), "not radio.enabled contains gsm"),
    "text with spaces": (lambda p: setattr(p.hardware, "name", "My phone"), "hardware.name == 'My phone'"),
    "a state": (lambda p: setattr(p.sdcard, "busy", True), "sdcard.busy"),
    "an action": (lambda p: p.sdcard.remove(), "not sdcard.mounted"),
    "a former name": (lambda p: getattr(p.sdcard, "unmount")(), "not sdcard.mounted"),
    "an action with arguments": (lambda p: p.display.resize(1, 640, 480), "display.1.width == 640"),
    "an action of one of several": (lambda p: p.display[1].attach(), "display.1.attached"),
    "an instance": (lambda p: p.cellular_network["abroad"].serve(), "cellular-network.mcc == '999'"),
    "a neighbour": (lambda p: p.miracast.connecting("tv"), "miracast.connection == connecting"),
    "words with a published name": (
        lambda p: p.miracast.tell("session", "paused", "tv"),
        "miracast.session == paused",
    ),
    "an order": (lambda p: p.tell("battery plug"), "battery.charging == yes"),
    "time": (lambda p: (p.battery.plug(), p.advance(hours=1)), "battery.level > 80"),
}


@pytest.mark.parametrize("tell, condition", TOLD.values(), ids=TOLD.keys())
def test_the_phone_does_what_it_is_told(phone, tell, condition):
    assert not phone.holds(condition)
    tell(phone)
    assert phone.holds(condition)


def test_attributes_have_what_is_published_or_set(phone):
    assert phone.battery.level == 80
    assert phone.battery.receiver == "null"
    assert phone.led.color is None
    assert phone.radio.power is True
    assert phone.data_profile["internet"].apn == "internet.example"
    assert phone.display[0].name == "panel"
    assert phone.cellular_network["abroad"].rssi == -95
    assert phone.battery.hold is False
    assert phone.radio.enable == ["gsm", "umts", "cdma_1x", "evdo", "lte"]
    assert phone.value("simcard.state") == "ready"


def test_peers_and_sinks_come_into_range_and_go(phone):
    assert list(phone.miracast) == ["monitor", "projector", "set-top-box", "tv"]
    sink = phone.miracast["tv"]
    assert sink.in_range
    sink.in_range = False
    assert not sink.in_range and phone.wifi_direct["tv"].in_range
    sink.sink_appears()
    assert sink.in_range


def test_a_display_that_is_added_can_be_told_at_once(phone):
    assert 7 not in phone.display
    phone.display.add(7, "wall", 800, 600)
    phone.display[7].rotate(90)
    assert phone.display[7].rotation == 90


# What is wrong, its exception, and its words.
WRONG = {
    "no such part": (lambda p: p.batery.level, AttributeError, r"no 'batery'; it has activity, .*'battery'\?"),
    "no such attribute": (lambda p: p.battery.levle, AttributeError, r"no 'levle'; it has .*wireless.*'level'\?"),
    "no such setting": (lambda p: setattr(p.battery, "levle", 3), AttributeError, "no 'levle'"),
    "no part to assign": (lambda p: setattr(p, "battery", 3), AttributeError, "cannot be assigned to"),
    "no such instance": (lambda p: p.cellular_network["abrod"], KeyError, r"home-lte.*'abroad'\?"),
    "no such neighbour": (lambda p: p.wifi_direct["tvv"], KeyError, r"speaker, tv"),
    "no instance": (lambda p: p.cellular_network.serve(), AttributeError, "each has more"),
    "a fault": (lambda p: p.led.kill_service(), AttributeError, r"it is a fault: faults\.led"),
    "no faults": (lambda p: p.faults.clock, AttributeError, "faults has no 'clock'"),
    "read-only": (lambda p: setattr(p.battery, "chargers", 3), ValueError, "cannot be set; .*level PERCENT"),
    "out of range": (lambda p: setattr(p.battery, "level", 500), ValueError, "from 0 to 100, found '500'"),
    "escaped text": (lambda p: p.battery.tell("level", "5\n0\x01"), ValueError, "found '5\n0\x01'"),
    "no such word": (lambda p: p.battery.tell("levle", 5), ValueError, "battery has no 'levle'; it has plug"),
    "too many words": (lambda p: p.sdcard.insert(1), ValueError, "sdcard insert"),
    "no such value": (lambda p: p.value("battery.levle"), ValueError, "no value 'battery.levle'"),
    "no such condition": (lambda p: p.holds("battery.level ="), ValueError, "means nothing"),
    "never true": (lambda p: p.expect("led", color="pink"), ValueError, "one of red, green"),
    "no such request": (lambda p: p.requests("led.blink"), ValueError, "no request 'led.blink'"),
    "no such time": (lambda p: p.advance(fortnights=1), TypeError, "fortnights"),
    "no such scenario": (lambda p: p.play("train-rid"), KeyError, r"low-battery.*'train-ride'\?"),
    "a wrong scenario": (lambda p: p.play('{"steps": ["battery level 500"]}'), ValueError, "steps.*'500'"),
    "no such phone": (lambda p: ozdevice.Phone("/nowhere"), ValueError, "/nowhere: No such file"),
    "a wrong phone": (
        lambda p: ozdevice.Phone({"battery.level": 500}),
        ozdevice.PhoneError,
        "did not start: .*battery.level",
    ),
    "a section with a value": (
        lambda p: ozdevice.Phone({"battery": 3, "battery.level": 50}),
        ValueError,
        "battery.level: battery has the value 3 already",
    ),
    "no such facility": (lambda p: p.watch("batery"), ozdevice.PhoneError, "no facility 'batery'"),
    "a program that fails": (lambda p: p.run(["ozdevice", "show", "x"]), ozdevice.PhoneError, "no facility 'x'"),
}


@pytest.mark.parametrize("act, error, text", WRONG.values(), ids=WRONG.keys())
def test_what_means_nothing_says_what_there_is(phone, act, error, text):
    with pytest.raises(error, match=text):
        act(phone)


def members_of_the_stub():
    """The public members of each class of the stub, with those of its bases."""
    stub = ast.parse(Path(ozdevice.parts.__file__).with_suffix(".pyi").read_text())
    members = {}
    for each in (node for node in stub.body if isinstance(node, ast.ClassDef)):
        own = {node.name for node in each.body if isinstance(node, ast.FunctionDef)}
        own |= {node.target.id for node in each.body if isinstance(node, ast.AnnAssign)}
        bases = (members[base.id] for base in each.bases)
        members[each.name] = {name for name in own if not name.startswith("_")}.union(*bases)
    return members


def test_the_stub_has_what_the_phone_has(phone):
    stub = members_of_the_stub()
    common = stub["Part"]
    assert stub["Parts"] == phone._names() | {"faults"}
    assert stub["Faults"] == phone.faults._names()
    for name in phone._names():
        part = getattr(phone, name)
        title = "".join(word.capitalize() for word in name.split("_"))
        assert stub[title] - common == part._names(), name
        for item in part:
            assert stub[f"{title}Item"] - common >= part[item]._names(), item
            assert stub[f"{title}Item"] - common <= {each for i in part for each in part[i]._names()}, item
        if name in stub["Faults"]:
            assert stub[f"{title}Faults"] - common == getattr(phone.faults, name)._names(), name


def test_no_name_of_the_phone_hides_one_of_the_kit(phone):
    parts = {name.replace("-", "_"): name for name in phone._description.parts()}
    assert not set(parts) & set(dir(Parts) + list(vars(ozdevice.Phone)))
    for part in map(phone.__getattr__, parts):
        assert not part._names() & set(vars(Part)), part


@pytest.mark.parametrize(
    "facility, values, text",
    [
        ("led", {"color": "blue"}, "expected led.color == 'blue'; led.color is unknown after 0.05 s"),
        ("battery", {"level": 3, "present": True}, "battery.level is 80, battery.present is true"),
        ("display.1", {"attached": True}, "display.1.attached is false"),
        ("radio", {"enabled": ["lte"], "power": False}, "radio.power is true"),
    ],
)
def test_an_expectation_that_fails_says_what_was_seen(phone, facility, values, text):
    with pytest.raises(AssertionError) as failure:
        phone.expect(facility, within=0.05, **values)
    assert text in str(failure.value)


def test_requests_of_applications_are_seen(phone):
    with pytest.raises(AssertionError, match="0 of 1 came within 0.05 s; nothing was asked"):
        phone.expect_request("led.flash", within=0.05)
    phone.start(FLASH, stdout=subprocess.DEVNULL)
    (flash,) = phone.expect_request("led.flash", "count > 2", color="green")
    assert flash.values == {"color": "green", "count": 3}
    phone.expect("led", color="green", within=5)
    with pytest.raises(AssertionError, match="asked was led.flash color=green count=3"):
        phone.expect_request("led.flash", within=0.05, color="red")


def test_faults_happen_to_services(phone):
    phone.faults.data_profile["mms"].fail_with(errno.EIO)
    failed = phone.run(["ozdevice", "call", "data-profile", "requestConnect", "--name", "mms"], check=False)
    assert (failed.returncode, failed.stdout) == (1, "InternalError (1)\n")
    phone.faults.vibration.kill_service()
    with pytest.raises(ozdevice.PhoneError, match="No such file"):
        phone.run(["ozdevice", "call", "vibration", "start", "100"])
    phone.faults.vibration.start_service()
    phone.run(["ozdevice", "call", "vibration", "start", "100"])


def test_signals_come_once_each(phone):
    with phone.watch("battery") as signals:
        phone.battery.level = 20
        assert signals.wait_for("levelChanged").arguments == (20, "Discharging")
        phone.battery.remove()
        assert signals.wait_for("presentChanged", False)
        assert signals.wait_for("levelChanged", -1)  # it came before the other one
        with pytest.raises(AssertionError, match=r"did not come within 0.05 s; levelChanged\(20, 'Discharging'\), "):
            signals.wait_for("levelChanged", 20, within=0.05)
        with pytest.raises(ozdevice.UnknownNameError, match="did you mean 'levelChanged'"):
            signals.wait_for("levelChange")
    with phone.watch("data_profile") as signals:
        phone.data_profile["mms"].enabled = False
        assert signals.wait_for("validChanged").instance == "mms"


def test_what_applications_have_handled_is_waited_for(phone):
    watch = phone.start(["ozdevice", "watch", "battery", "--json", "--tell-begin"], stdout=subprocess.PIPE)
    signals = watch.stdout.fileno()
    os.read(signals, 10_000)  # it watches
    for level in (59, 58, 57):
        phone.battery.level = level
        phone.wait_until_handled()
        assert os.read(signals, 10_000).count(b'"signal":"levelChanged"') == 1

    os.kill(watch.pid, signal.SIGSTOP)
    phone.battery.level = 9
    with pytest.raises(AssertionError, match=rf"still busy after 0.05 s is process {watch.pid} \(ozdevice\)$"):
        phone.wait_until_handled(within=0.05)
    # Several tests can wait at the same time, although each replaces the mark of the others.
    with ThreadPoolExecutor() as threads:
        waits = [threads.submit(phone.wait_until_handled) for _ in range(4)]
        os.kill(watch.pid, signal.SIGCONT)
    assert not [error for wait in waits if (error := wait.exception())]
    assert b'"signal":"levelChanged"' in os.read(signals, 10_000)
    watch.kill()
    phone.wait_until_handled()  # a program that has ended is not waited for
    with watch.stdout:
        phone.close()
    with pytest.raises(ozdevice.PhoneError, match="services are gone"):
        phone.wait_until_handled()


LOW = {"steps": ["battery level 4", {"expect": "battery.level == ${level}", "within": 0.1}], "variables": {"level": 4}}


def test_scenarios_are_played(phone, tmp_path):
    phone.play("low-battery", speed="max")
    phone.stop_playing()
    phone.play(LOW)
    phone.wait_until_played(within=5)
    phone.play(LOW, variables={"level": 5})
    with pytest.raises(AssertionError, match="the scenario: .*battery.level is 4"):
        phone.wait_until_played(within=5)
    file = tmp_path / "wait.json"
    file.write_text('{ // for long\n"steps": ["battery level 9", {"wait": 1000}] }')
    phone.play(file)
    phone.wait_until("battery.level == 9")
    with pytest.raises(AssertionError, match="still plays after 0.05 s"):
        phone.wait_until_played(within=0.05)


@pytest.mark.phone(settings={"battery.level": 33, "battery": {"held": True}, "hardware": {"device-name": "Marked"}})
def test_a_mark_sets_the_phone_up(phone):
    assert (phone.battery.level, phone.battery.hold, phone.hardware.name) == (33, True, "Marked")


def test_services_that_say_nothing_are_named(monkeypatch):
    monkeypatch.setenv("OZ_DEVICED", "/bin/false")
    with pytest.raises(ozdevice.PhoneError, match="did not start: /bin/false ended with 1"):
        ozdevice.Phone()


def test_each_phone_is_on_its_own(phone, make_phone):
    other = make_phone({"battery.level": 7})
    for each, level in ((phone, "80"), (other, "7")):
        assert each.run(["ozdevice", "show", "battery", "level"]).stdout == f"{level}\n"
    # What the test starts itself sees the phone of the fixture.
    assert os.environ["OZ_DEVICE_ROOT"] == str(phone.root)
    other.close()
    with pytest.raises(ozdevice.PhoneError, match="services are gone"):
        other.battery.plug()
    assert not other.root.exists()


@pytest.mark.parametrize("options", [{}, {"process_group": None}], ids=["own group", "group of the tests"])
def test_programs_end_with_the_phone(make_phone, options):
    phone = make_phone()
    shell = phone.start(["sh", "-c", "sleep 60 & echo $!; wait"], stdout=subprocess.PIPE, text=True, **options)
    child = int(shell.stdout.readline())
    begun = time.monotonic()
    phone.close()
    assert shell.returncode == -signal.SIGTERM
    if options:
        os.kill(child, signal.SIGTERM)
    with shell.stdout:
        assert shell.stdout.read() == ""  # it ends when nobody can write any more
    assert time.monotonic() - begun < 30


PROGRAMS = {
    "its shell has ended": "sleep 60 & echo $!",
    "it ignores the signal": "(trap '' TERM; echo $BASHPID; while :; do sleep 1; done) & wait",
}


@pytest.mark.parametrize("script", PROGRAMS.values(), ids=PROGRAMS.keys())
def test_no_program_outlives_the_phone(make_phone, script):
    phone = make_phone()
    with phone.start(["bash", "-c", script], stdout=subprocess.PIPE, text=True).stdout as output:
        assert output.readline()
        phone.close()
        assert output.read() == ""  # nobody can write any more


def test_a_program_that_takes_too_long_ends_with_what_it_started(phone):
    reading, writing = os.pipe()
    with pytest.raises(subprocess.TimeoutExpired):
        phone.run(["sh", "-c", "sleep 60 & wait"], timeout=0.5, pass_fds=[writing])
    os.close(writing)
    assert os.read(reading, 1) == b""  # nobody can write any more
    os.close(reading)


def test_a_phone_ends_with_its_process():
    code = "import os, ozdevice; p = ozdevice.Phone(); print(p.root, flush=True); os._exit(0)"
    root = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True).stdout.strip()
    assert root
    # The daemon notices the end of the process by itself.
    subprocess.run(["timeout", "10", "sh", "-c", f"while [ -e {root} ]; do sleep 0.01; done"], check=True)
