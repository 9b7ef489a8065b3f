"""wpa_supplicant with one radio, as a template of dbusmock. It says what the real one was recorded to say.

The methods of the interface "oz.Radio" of its main object are for tests: they have something happen on the air.
"""
import dbus
import dbus.service
from dbusmock import mockobject

BUS_NAME = "fi.w1.wpa_supplicant1"
MAIN_OBJ = "/fi/w1/wpa_supplicant1"
MAIN_IFACE = BUS_NAME
SYSTEM_BUS = True

LINK = BUS_NAME + ".Interface"
P2P = LINK + ".P2PDevice"
PEER = BUS_NAME + ".Peer"
GROUP = BUS_NAME + ".Group"
BSS = BUS_NAME + ".BSS"
RADIO = "oz.Radio"


def load(mock, _parameters):
    mock.next = 0  # number of an interface
    mock.radio = mock.group = None
    mock.asked = []
    mock.AddProperties(MAIN_IFACE, {"Capabilities": dbus.Array(["ap", "p2p"], signature="s"),
                                    "Interfaces": dbus.Array([], signature="o"),
                                    "WFDIEs": dbus.ByteArray(b"")})


def main():
    return mockobject.objects[MAIN_OBJ]


def of(path):
    return mockobject.objects[path]


def octets(text):
    return dbus.ByteArray(bytes.fromhex(text.replace(":", "")))


def peer_path(address):
    return main().radio + "/Peers/" + address.replace(":", "").lower()


def add_link(name, role):
    mock = main()
    path = f"{MAIN_OBJ}/Interfaces/{mock.next}"
    mock.next += 1
    none = dbus.ObjectPath("/")
    mock.AddObject(path, LINK, {
        "Ifname": name, "State": "inactive", "BSSs": dbus.Array([], signature="o"),
        "Stations": dbus.Array([], signature="o"),
        "Capabilities": dbus.Dictionary({"Modes": dbus.Array(["infrastructure", "p2p"], signature="s")}, signature="sv"),
    }, [])
    of(path).AddProperties(P2P, {
        "P2PDeviceConfig": dbus.Dictionary({"GOIntent": dbus.UInt32(7)}, signature="sv"), "Role": role,
        "Peers": dbus.Array([], signature="o"), "Group": none, "PeerGO": none})
    mock.props[MAIN_IFACE]["Interfaces"].append(dbus.ObjectPath(path))
    mock.EmitSignal(MAIN_IFACE, "InterfaceAdded", "oa{sv}", [path, {"Ifname": name, "State": "inactive"}])
    return path


def remove_link(path):
    mock = main()
    mock.props[MAIN_IFACE]["Interfaces"].remove(path)
    for each in [each for each in mockobject.objects if each.startswith(path)]:
        mock.RemoveObject(each)
    mock.EmitSignal(MAIN_IFACE, "InterfaceRemoved", "o", [dbus.ObjectPath(path)])


def say(path, interface, signal, signature, arguments):
    of(path).EmitSignal(interface, signal, signature, arguments)


def note(self, *words):
    main().asked.append(" ".join(str(word) for word in words))


def fail(name, text):
    raise dbus.exceptions.DBusException(text, name=f"{BUS_NAME}.{name}")


# What clients call.

@dbus.service.method(MAIN_IFACE, in_signature="s", out_signature="o")
def GetInterface(self, name):
    if self.radio is None or name != "wlan0":
        fail("InterfaceUnknown", "wpa_supplicant knows nothing about this interface.")
    return dbus.ObjectPath(self.radio)


@dbus.service.method(MAIN_IFACE, in_signature="a{sv}", out_signature="o")
def CreateInterface(self, arguments):
    if self.radio is not None:
        fail("InterfaceExists", "wpa_supplicant already controls this interface.")
    note(self, "create", arguments["Ifname"], arguments["Driver"])
    self.radio = add_link(arguments["Ifname"], "device")
    return dbus.ObjectPath(self.radio)


@dbus.service.method(P2P, in_signature="a{sv}", out_signature="")
def Find(self, arguments):
    note(self, "find", arguments["DiscoveryType"], arguments["Timeout"])


@dbus.service.method(P2P, in_signature="", out_signature="")
def StopFind(self):
    note(self, "stop")


@dbus.service.method(P2P, in_signature="a{sv}", out_signature="s")
def Connect(self, arguments):
    if arguments["peer"] not in mockobject.objects:
        fail("InvalidArgs", "Did not receive correct message arguments.")
    intent = f"intent {arguments['go_intent']}" if "go_intent" in arguments else ""
    words = [arguments["wps_method"], arguments.get("pin", ""), intent, "join" if "join" in arguments else ""]
    note(self, "connect", *[word for word in words if word])
    return arguments.get("pin", "00000000")


@dbus.service.method(P2P, in_signature="", out_signature="")
def Cancel(self):
    note(self, "cancel")


@dbus.service.method(P2P, in_signature="", out_signature="")
def Disconnect(self):
    if self.path == main().radio:
        fail("UnknownError", "failed to disconnect")
    note(self, "disconnect")
    GroupEnds(main(), True)


# What happens, for tests.

@dbus.service.method(RADIO, in_signature="", out_signature="s")
def Asked(self):
    """What was asked since the last call."""
    asked, self.asked = self.asked, []
    return ", ".join(asked)


@dbus.service.method(RADIO, in_signature="", out_signature="b")
def HasRadio(self):
    """Whether somebody has given it the radio."""
    return self.radio is not None


@dbus.service.method(RADIO, in_signature="", out_signature="s")
def Shown(self):
    """The wireless display elements that peers see, in hexadecimal."""
    return bytes(self.props[MAIN_IFACE]["WFDIEs"]).hex()


@dbus.service.method(RADIO, in_signature="ssss", out_signature="")
def PeerComes(self, address, name, elements, group):
    """In sight, with wireless display elements in hexadecimal, and with the name of a group that it owns."""
    path = peer_path(address)
    if group:
        for number, (ssid, age) in enumerate([("DIRECT-old", 100), (group, 1), ("Elsewhere", 0)]):
            bss = f"{self.radio}/BSSs/{number}"
            self.AddObject(bss, BSS, {"SSID": dbus.ByteArray(ssid.encode()), "Age": dbus.UInt32(age),
                                      "IEs": dbus.ByteArray(b"\xdd\x50\x6f\x9a\x09" + octets(address))}, [])
            of(self.radio).props[LINK]["BSSs"].append(dbus.ObjectPath(bss))
    self.AddObject(path, PEER, {
        "DeviceName": name, "PrimaryDeviceType": octets("00070050f2040001"), "IEs": octets(elements),
        "DeviceAddress": octets(address), "groupcapability": dbus.Byte(0x89 if group else 0x08)}, [])
    of(self.radio).props[P2P]["Peers"].append(dbus.ObjectPath(path))
    say(self.radio, P2P, "DeviceFound", "o", [dbus.ObjectPath(path)])


@dbus.service.method(RADIO, in_signature="s", out_signature="")
def PeerGoes(self, address):
    path = peer_path(address)
    self.RemoveObject(path)
    of(self.radio).props[P2P]["Peers"].remove(path)
    say(self.radio, P2P, "DeviceLost", "o", [dbus.ObjectPath(path)])


@dbus.service.method(RADIO, in_signature="", out_signature="")
def FindEnds(self):
    say(self.radio, P2P, "FindStopped", "", [])


@dbus.service.method(RADIO, in_signature="s", out_signature="")
def Become(self, state):
    """The radio's state: "inactive", or "interface_disabled"."""
    of(self.radio).UpdateProperties(LINK, {"State": state})


@dbus.service.method(RADIO, in_signature="ss", out_signature="")
def GroupStarts(self, role, address):
    """With a peer; as client with addresses from the handshake."""
    path = add_link("p2p-wlan0-0", role)
    group = path + "/Groups/zz"
    peer = dbus.ObjectPath(peer_path(address))
    members = dbus.Array([peer] if role == "GO" else [], signature="o")
    self.AddObject(group, GROUP, {
        "SSID": dbus.ByteArray(b"DIRECT-zz"), "BSSID": octets("46:00:00:00:00:00"), "Members": members,
        "Passphrase": "jIvC85uB" if role == "GO" else ""}, [])
    of(path).props[P2P]["Group"] = dbus.ObjectPath(group)
    started = {"interface_object": dbus.ObjectPath(path), "group_object": dbus.ObjectPath(group), "role": role,
               "persistent": False}
    if role == "client":
        of(path).props[P2P]["PeerGO"] = peer
        started.update({"IpAddr": octets("c0a84d0a"), "IpAddrMask": octets("ffffff00"), "IpAddrGo": octets("c0a84d01")})
    self.group = path
    say(self.radio, P2P, "GroupStarted", "a{sv}", [started])


@dbus.service.method(RADIO, in_signature="b", out_signature="")
def GroupEnds(self, isSaid):
    """In order, or only by the removal of its interface."""
    path, self.group = self.group, None
    if isSaid:
        say(self.radio, P2P, "GroupFinished", "a{sv}", [{"interface_object": dbus.ObjectPath(path), "role": "client",
                                                       "group_object": dbus.ObjectPath(path + "/Groups/zz")}])
    remove_link(path)


@dbus.service.method(RADIO, in_signature="sb", out_signature="")
def Member(self, address, joins):
    say(self.group + "/Groups/zz", GROUP, "PeerJoined" if joins else "PeerDisconnected", "o",
        [dbus.ObjectPath(peer_path(address))])


@dbus.service.method(RADIO, in_signature="si", out_signature="")
def Fails(self, signal, code):
    """A connection does not come about. All but GONegotiationFailure are said by the interface of the group."""
    if signal == "GONegotiationFailure":
        say(self.radio, P2P, signal, "a{sv}", [{"status": dbus.Int32(code)}])
        return
    path = add_link("p2p-wlan0-0", "device")
    signature, arguments = {"GroupFormationFailure": ("s", [""]), "WpsFailed": ("sa{sv}", ["fail", {"config_error": code}])}[signal]
    say(path, P2P, signal, signature, arguments)
    remove_link(path)


@dbus.service.method(RADIO, in_signature="", out_signature="")
def Taken(self):
    """The radio is taken from it."""
    path, self.radio = self.radio, None
    remove_link(path)
