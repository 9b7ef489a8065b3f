# Made from the facilities' tables by `./oz pages`.
from collections.abc import Iterator, Sequence
from datetime import timedelta
from typing import Literal

from .description import Description

class Part:
    """What all parts have."""
    def tell(self, verb: str, *arguments: object) -> None:
        """Tells it a verb of `ozdevice sim` with its arguments."""
    def __iter__(self) -> Iterator[str]: ...
    def __contains__(self, item: object) -> bool: ...

class ServiceFaults(Part):
    """What can go wrong with any service."""
    def kill_service(self) -> None: """Ends the service, as if it had crashed."""
    def start_service(self) -> None: """Starts it again."""

class Activity(Part):
    """The part `activity`."""
    @property
    def state(self) -> Literal["active", "standby"] | None: """Whether somebody uses the phone."""
    def active(self) -> None: """Somebody uses the phone."""
    def standby(self) -> None: """Nobody uses the phone any more."""
    def status(self, name: str, value: str, /) -> None: """Sets a status of the power manager, known or new."""

class ActivityFaults(ServiceFaults):
    """What can go wrong with the service of `activity`."""

class Battery(Part):
    """The part `battery`."""
    @property
    def chargers(self) -> float | None: """How many are connected."""
    @property
    def charging(self) -> Literal["no", "yes", "full"] | None: """Whether it is charging."""
    condition: Literal["ok", "bad", "unknown"] | Literal["ok", "bad"] | None
    """Its condition."""
    @property
    def cycle_count(self) -> float | None: """How many times it was charged and discharged."""
    @property
    def full_charge_capacity(self) -> float | None: """The charge that it holds when full, in mAh."""
    hold: bool
    """Keeps the charge as it is, or lets it move by itself."""
    level: float | None
    """The charge, in %."""
    @property
    def present(self) -> bool | None: """Whether there is a battery."""
    @property
    def receiver(self) -> str | None: """The receiver on a wireless charger; null for none."""
    temperature: float | None
    """Its temperature, in °C."""
    wireless: str
    """Lays the phone on a wireless charger, or takes it off."""
    def plug(self) -> None: """Connects a charger."""
    def unplug(self) -> None: """Disconnects the charger."""
    def insert(self) -> None: """Puts the battery in."""
    def remove(self) -> None: """Takes the battery out."""

class BatteryFaults(ServiceFaults):
    """What can go wrong with the service of `battery`."""

class CellularNetworkItem(Part):
    """One of those that `cellular-network` has."""
    operator: str
    """Sets the operator's name, and the name that the user sees."""
    roaming: bool
    """Makes using it roaming, or not."""
    rssi: int
    """Sets its signal strength."""
    suppress: bool
    """Hides the roaming from the user, or shows it."""
    def serve(self) -> None: """Lets it serve, in the place of one of its kind."""
    def leave(self) -> None: """Leaves it."""

class CellularNetwork(Part):
    """The part `cellular-network`."""
    @property
    def cdma_mcc(self) -> str | None: """Its mobile country code."""
    @property
    def cdma_mnc(self) -> str | None: """Its mobile network code."""
    @property
    def cdma_operator(self) -> str | None: """Its operator."""
    @property
    def cdma_roaming(self) -> bool | None: """Whether using it is roaming."""
    @property
    def cdma_rssi(self) -> float | None: """Its signal strength, in dBm."""
    @property
    def cdma_services(self) -> Sequence[str] | None: """The services that the network offers now."""
    @property
    def cdma_suppress(self) -> bool | None: """Whether the roaming is hidden from the user."""
    @property
    def display_name(self) -> str | None: """The name that the user sees."""
    @property
    def mcc(self) -> str | None: """Its mobile country code."""
    @property
    def mnc(self) -> str | None: """Its mobile network code."""
    @property
    def operator(self) -> str | None: """Its operator."""
    @property
    def roaming(self) -> bool | None: """Whether using it is roaming."""
    @property
    def rssi(self) -> float | None: """Its signal strength, in dBm."""
    @property
    def services(self) -> Sequence[str] | None: """The services that the network offers now."""
    @property
    def suppress(self) -> bool | None: """Whether the roaming is hidden from the user."""
    def __getitem__(self, item: str | int, /) -> CellularNetworkItem: ...

class CellularNetworkFaults(ServiceFaults):
    """What can go wrong with the service of `cellular-network`."""
    def __getitem__(self, item: str | int, /) -> CellularNetworkFaults: ...

class Clock(Part):
    """The part `clock`."""
    speed: str | float
    """Lets the phone's time go faster than the real one; 0 stands still."""
    def advance(self, time: float | timedelta, /) -> None: """Lets the phone's time pass at once."""

class DataProfileItem(Part):
    """One of those that `data-profile` has."""
    @property
    def access_controlled(self) -> bool | None: """Whether only permitted applications may use it."""
    @property
    def always_on(self) -> bool | None: """Whether it connects without being asked."""
    @property
    def apn(self) -> str | None: """Its access point."""
    @property
    def connection(self) -> Literal["disconnected", "connecting", "connected"] | None: """The state of its connection."""
    enabled: bool | None
    """Whether the profile is enabled."""
    @property
    def interface(self) -> str | None: """The network interface of its connection."""
    permitted: bool
    """Permits the applications here, where it is access-controlled."""
    def drop(self) -> None: """Ends its connection from the network's side."""

class DataProfile(Part):
    """The part `data-profile`."""
    def __getitem__(self, item: str | int, /) -> DataProfileItem: ...

class DataProfileFaults(ServiceFaults):
    """What can go wrong with the service of `data-profile`."""
    def fail_with(self, error: int, /) -> None: """Answers the next request with an error."""
    def answer_late(self, milliseconds: int, /) -> None: """Lets the next request wait."""
    def never_answer(self) -> None: """Leaves the next request unanswered."""
    def die_on_request(self) -> None: """Ends the connection at the next request, as a service that dies."""
    def answer_rubbish(self) -> None: """Answers the next request with what means nothing."""
    def __getitem__(self, item: str | int, /) -> DataProfileFaults: ...

class DisplayItem(Part):
    """One of those that `display` has."""
    @property
    def attached(self) -> bool | None: """Whether it is attached."""
    @property
    def detachable(self) -> bool | None: """Whether it can be detached."""
    @property
    def height(self) -> float | None: """Its native height, in px."""
    @property
    def kind(self) -> Literal["internal", "external"] | None: """Whether it is built into the device."""
    @property
    def mm_height(self) -> float | None: """Its physical height; 0 for unknown, in mm."""
    @property
    def mm_width(self) -> float | None: """Its physical width; 0 for unknown, in mm."""
    @property
    def name(self) -> str | None: """Its name."""
    @property
    def rotation(self) -> float | None: """How far its picture is turned, in °."""
    @property
    def technology(self) -> Literal["unknown", "crt", "lcd", "plasma", "led", "oled"] | None: """The kind of panel."""
    @property
    def width(self) -> float | None: """Its native width, in px."""
    def remove(self) -> None: """Takes a display away."""
    def attach(self) -> None: """Attaches a display."""
    def detach(self) -> None: """Detaches a display."""
    def rotate(self, degrees: int, /) -> None: """Turns what a display shows: 0, 90, 180 or 270."""
    def resize(self, width: int, height: int, /) -> None: """Gives a display another size in pixels."""

class Display(Part):
    """The part `display`."""
    def add(self, id: int, name: str, width: int, height: int, mm_width: int = ..., mm_height: int = ..., /) -> None: """Adds an external display, attached; one called 'miracast...' is wireless."""
    def remove(self, id: int, /) -> None: """Takes a display away."""
    def attach(self, id: int, /) -> None: """Attaches a display."""
    def detach(self, id: int, /) -> None: """Detaches a display."""
    def rotate(self, id: int, degrees: int, /) -> None: """Turns what a display shows: 0, 90, 180 or 270."""
    def resize(self, id: int, width: int, height: int, /) -> None: """Gives a display another size in pixels."""
    def __getitem__(self, item: str | int, /) -> DisplayItem: ...

class DisplayFaults(ServiceFaults):
    """What can go wrong with the service of `display`."""

class Hardware(Part):
    """The part `hardware`."""
    @property
    def hardware_id(self) -> str | None: """The identifier of the hardware model."""
    @property
    def hdmi(self) -> Literal["none", "micro"] | None: """The kind of HDMI connector."""
    @property
    def keyboard(self) -> str | None: """The kind of keyboard; none for none."""
    @property
    def model(self) -> str | None: """The name of the model."""
    @property
    def model_number(self) -> str | None: """The number of the model."""
    name: str | None
    """The name that the user gave it."""
    @property
    def processors(self) -> float | None: """How many processors it has."""

class HardwareFaults(ServiceFaults):
    """What can go wrong with the service of `hardware`."""

class Led(Part):
    """The part `led`."""
    @property
    def active(self) -> bool | None: """Whether a request is under way."""
    @property
    def color(self) -> Literal["red", "green", "blue", "yellow", "cyan", "magenta", "white"] | None: """The colour of the newest request under way."""
    @property
    def flashes(self) -> float | None: """How many flashes were shown since the service started."""
    @property
    def last_color(self) -> Literal["red", "green", "blue", "yellow", "cyan", "magenta", "white"] | None: """The colour of the request that ended last."""
    @property
    def last_end(self) -> Literal["done", "cancelled", "replaced", "client-gone"] | None: """How it ended."""
    @property
    def last_shown(self) -> float | None: """How many flashes it showed."""
    @property
    def lit(self) -> Literal["dark", "red", "green", "blue", "yellow", "cyan", "magenta", "white"] | None: """The colour that it shows; dark for none."""
    @property
    def shown(self) -> float | None: """How many of its flashes were shown."""

class LedFaults(ServiceFaults):
    """What can go wrong with the service of `led`."""
    def fail_with(self, error: int, /) -> None: """Answers the next request with an error."""
    def answer_late(self, milliseconds: int, /) -> None: """Lets the next request wait."""
    def never_answer(self) -> None: """Leaves the next request unanswered."""
    def die_on_request(self) -> None: """Ends the connection at the next request, as a service that dies."""
    def answer_rubbish(self) -> None: """Answers the next request with what means nothing."""

class MiracastItem(Part):
    """One of those that `miracast` has."""
    in_range: bool
    """Whether it is in range."""
    def sink_appears(self) -> None: """Brings a sink into range; scans bring it into sight."""
    def sink_goes(self) -> None: """Takes a sink out of range, which ends its session; a scan finds it missing."""

class Miracast(Part):
    """The part `miracast`."""
    @property
    def connection(self) -> Literal["disconnected", "connecting", "connected"] | None: """The state of the connection with a sink."""
    @property
    def height(self) -> float | None: """The height of the session's picture; 0 for none, in px."""
    @property
    def running(self) -> bool | None: """Whether the service runs."""
    session: Literal["playing", "paused", "none"] | Literal["stopped", "playing", "paused"] | None
    """The state of the session."""
    @property
    def sink(self) -> str | None: """The sink's name."""
    @property
    def sinks(self) -> float | None: """How many sinks are in sight."""
    @property
    def stop_reason(self) -> float | None: """The code of why it does not run; 0 while it runs."""
    @property
    def width(self) -> float | None: """The width of the session's picture; 0 for none, in px."""
    def sink_appears(self, sink: str, /) -> None: """Brings a sink into range; scans bring it into sight."""
    def sink_goes(self, sink: str, /) -> None: """Takes a sink out of range, which ends its session; a scan finds it missing."""
    def stop(self, code: int, /) -> None: """Stops the service: 1 internally, 2 by an application, 4 for lack of support, 5 by policy, 6 to 9 as Wi-Fi Direct fails."""
    def start(self) -> None: """Starts the service again."""
    def sight(self, names: Sequence[str] = ..., /) -> None: """Has these sinks in range and sight, and no others."""
    def connecting(self, sink: str, /) -> None: """Is connecting a sink, and stays so."""
    def __getitem__(self, item: str | int, /) -> MiracastItem: ...

class MiracastFaults(ServiceFaults):
    """What can go wrong with the service of `miracast`."""
    def answer_late(self, milliseconds: int, /) -> None: """Lets the next request wait."""
    def never_answer(self) -> None: """Leaves the next request unanswered."""
    def fail_next(self, value: Literal["scan", "connect", "disconnect", "pause", "resume", "shutdown", "warmup"], code: int, /) -> None: """Answers the next request of this kind with an error (scan, connect, disconnect, pause, resume, shutdown, warmup)."""

class Orientation(Part):
    """The part `orientation`."""
    @property
    def orientation(self) -> Literal["top-up", "bottom-up", "left-up", "right-up", "face-up", "face-down", "undefined"] | None: """How the phone is held."""
    def top_up(self) -> None: """Holds the phone top-up."""
    def bottom_up(self) -> None: """Holds the phone bottom-up."""
    def left_up(self) -> None: """Holds the phone left-up."""
    def right_up(self) -> None: """Holds the phone right-up."""
    def face_up(self) -> None: """Holds the phone face-up."""
    def face_down(self) -> None: """Holds the phone face-down."""
    def undefined(self) -> None: """Holds the phone so that its sensor cannot tell how."""

class OrientationFaults(ServiceFaults):
    """What can go wrong with the service of `orientation`."""

class Radio(Part):
    """The part `radio`."""
    data: bool | None
    """Whether mobile data is on."""
    data_roaming: bool | None
    """Whether the user allows mobile data while roaming."""
    enable: Sequence[str]
    """Lets networks of these technologies serve, and no others."""
    @property
    def enabled(self) -> Sequence[str] | None: """The technologies that the user allows."""
    @property
    def hardware(self) -> Sequence[str] | None: """The technologies that the hardware supports."""
    power: bool | None
    """Whether the radio is on."""
    @property
    def roaming(self) -> bool | None: """Whether mobile data is roaming."""
    @property
    def technologies(self) -> Sequence[str] | None: """The technologies of the serving networks."""

class RadioFaults(ServiceFaults):
    """What can go wrong with the service of `radio`."""

class Sdcard(Part):
    """The part `sdcard`."""
    busy: bool | None
    """Whether the card is being read or written."""
    @property
    def mounted(self) -> bool | None: """Whether a card is mounted."""
    def insert(self) -> None: """Inserts a card."""
    def remove(self) -> None: """Takes the card out, busy or not."""
    def idle(self) -> None: """Ends reading and writing."""

class SdcardFaults(ServiceFaults):
    """What can go wrong with the service of `sdcard`."""

class Simcard(Part):
    """The part `simcard`."""
    @property
    def mcc(self) -> str | None: """The country code of its home network."""
    @property
    def mnc(self) -> str | None: """The network code of its home network."""
    @property
    def state(self) -> Literal["removed", "ready", "pin", "not-provisioned", "incompatible", "unreadable"] | None: """The state of the card; pin while it waits for its PIN."""
    def insert(self) -> None: """Inserts the card, ready."""
    def remove(self) -> None: """Takes the card out."""
    def ready(self) -> None: """Makes it ready."""
    def pin(self) -> None: """Makes it wait for its PIN."""
    def not_provisioned(self) -> None: """Makes it one that is not provisioned."""
    def incompatible(self) -> None: """Makes it one that cannot be used here."""
    def unreadable(self) -> None: """Makes it one that cannot be read."""

class SimcardFaults(ServiceFaults):
    """What can go wrong with the service of `simcard`."""

class Vibration(Part):
    """The part `vibration`."""
    @property
    def intensity(self) -> float | None: """The intensity of the present run, up to 100."""
    @property
    def last_duration(self) -> float | None: """How long the last run was asked to take, in ms."""
    @property
    def last_end(self) -> Literal["done", "stopped", "replaced"] | None: """How it ended."""
    @property
    def last_intensity(self) -> float | None: """Its intensity, up to 100."""
    @property
    def last_ran(self) -> float | None: """How long it took, in ms."""
    present: bool
    """Puts the motor in, or takes it out."""
    @property
    def running(self) -> bool | None: """Whether the motor runs."""
    @property
    def runs(self) -> float | None: """How many runs there were since the service started."""

class VibrationFaults(ServiceFaults):
    """What can go wrong with the service of `vibration`."""

class WifiDirectItem(Part):
    """One of those that `wifi-direct` has."""
    in_range: bool
    """Whether it is in range."""
    def peer_appears(self) -> None: """Brings a peer into range; scans bring it into sight."""
    def peer_goes(self) -> None: """Takes a peer out of range and sight."""
    def peer_joins(self) -> None: """Lets a peer join the group that the phone owns."""
    def peer_leaves(self) -> None: """Lets a peer leave the phone's group."""

class WifiDirect(Part):
    """The part `wifi-direct`."""
    connecting: bool
    """Is connecting a peer, or ends that."""
    @property
    def connection(self) -> Literal["disconnected", "connecting", "connected"] | None: """The state of the connection with a group."""
    enabled: bool
    """Switches Wi-Fi Direct on or off."""
    @property
    def members(self) -> float | None: """How many peers are in the group."""
    @property
    def role(self) -> Literal["owner", "client"] | None: """The phone's role in the group."""
    scanning: bool | None
    """Whether it is looking for peers."""
    supported: bool
    """Gives the phone Wi-Fi Direct, or takes it away."""
    @property
    def visible(self) -> float | None: """How many peers are in sight."""
    def peer_appears(self, peer: str, /) -> None: """Brings a peer into range; scans bring it into sight."""
    def peer_goes(self, peer: str, /) -> None: """Takes a peer out of range and sight."""
    def peer_joins(self, peer: str, /) -> None: """Lets a peer join the group that the phone owns."""
    def peer_leaves(self, peer: str, /) -> None: """Lets a peer leave the phone's group."""
    def sight(self, names: Sequence[str] = ..., /) -> None: """Has these peers in range and sight, and no others."""
    def group(self, value: Literal["owner", "client", "none"], names: Sequence[str] = ..., /) -> None: """Puts the phone into a group with these peers, whose owner comes first (owner, client, none)."""
    def __getitem__(self, item: str | int, /) -> WifiDirectItem: ...

class WifiDirectFaults(ServiceFaults):
    """What can go wrong with the service of `wifi-direct`."""
    def fail_with(self, error: int, /) -> None: """Answers the next request with an error."""
    def answer_late(self, milliseconds: int, /) -> None: """Lets the next request wait."""
    def never_answer(self) -> None: """Leaves the next request unanswered."""
    def die_on_request(self) -> None: """Ends the connection at the next request, as a service that dies."""
    def answer_rubbish(self) -> None: """Answers the next request with what means nothing."""
    def fail_next(self, value: Literal["scan", "connect", "cancel-connect", "start-session", "stop-session", "get-ip-address"], error: int, /) -> None: """Answers the next request of this kind with an error (scan, connect, cancel-connect, start-session, stop-session, get-ip-address)."""

class Faults:
    """What can go wrong with the services of each part."""
    @property
    def activity(self) -> ActivityFaults: ...
    @property
    def battery(self) -> BatteryFaults: ...
    @property
    def cellular_network(self) -> CellularNetworkFaults: ...
    @property
    def data_profile(self) -> DataProfileFaults: ...
    @property
    def display(self) -> DisplayFaults: ...
    @property
    def hardware(self) -> HardwareFaults: ...
    @property
    def led(self) -> LedFaults: ...
    @property
    def miracast(self) -> MiracastFaults: ...
    @property
    def orientation(self) -> OrientationFaults: ...
    @property
    def radio(self) -> RadioFaults: ...
    @property
    def sdcard(self) -> SdcardFaults: ...
    @property
    def simcard(self) -> SimcardFaults: ...
    @property
    def vibration(self) -> VibrationFaults: ...
    @property
    def wifi_direct(self) -> WifiDirectFaults: ...

class Parts:
    """A phone's parts."""
    _description: Description
    def __init__(self, description: Description) -> None: ...
    @property
    def faults(self) -> Faults: ...
    @property
    def activity(self) -> Activity: ...
    @property
    def battery(self) -> Battery: ...
    @property
    def cellular_network(self) -> CellularNetwork: ...
    @property
    def clock(self) -> Clock: ...
    @property
    def data_profile(self) -> DataProfile: ...
    @property
    def display(self) -> Display: ...
    @property
    def hardware(self) -> Hardware: ...
    @property
    def led(self) -> Led: ...
    @property
    def miracast(self) -> Miracast: ...
    @property
    def orientation(self) -> Orientation: ...
    @property
    def radio(self) -> Radio: ...
    @property
    def sdcard(self) -> Sdcard: ...
    @property
    def simcard(self) -> Simcard: ...
    @property
    def vibration(self) -> Vibration: ...
    @property
    def wifi_direct(self) -> WifiDirect: ...
