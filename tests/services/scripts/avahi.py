"""Avahi with the services that a test announces, as a template of dbusmock. It tells of them before it has answered.

The methods of the interface "oz.Network" of its main object are for tests.
"""
import dbus
import dbus.service
from dbusmock import mockobject

BUS_NAME = "org.freedesktop.Avahi"
MAIN_OBJ = "/"
MAIN_IFACE = BUS_NAME + ".Server"
SYSTEM_BUS = True

BROWSER = BUS_NAME + ".ServiceBrowser"
NETWORK = "oz.Network"


def load(mock, _parameters):
    mock.services = {}
    mock.browsers = 0


@dbus.service.method(MAIN_IFACE, in_signature="iissu", out_signature="o")
def ServiceBrowserNew(self, interface, protocol, kind, domain, _flags):
    assert (interface, protocol, domain) == (-1, 0, "")
    self.browsers += 1
    path = f"/Client1/ServiceBrowser{self.browsers}"
    self.AddObject(path, BROWSER, {}, [])
    browser = mockobject.objects[path]
    for name in self.services:
        browser.EmitSignal(BROWSER, "ItemNew", "iisssu", [2, 0, name, kind, "local", 0])
    browser.EmitSignal(BROWSER, "AllForNow", "", [])
    return dbus.ObjectPath(path)


@dbus.service.method(MAIN_IFACE, in_signature="iisssiu", out_signature="iissssisqaayu")
def ResolveService(self, interface, protocol, name, kind, domain, _address_protocol, _flags):
    address, port, texts = self.services[name]
    if not address:
        raise dbus.exceptions.DBusException("Timeout reached", name=BUS_NAME + ".TimeoutError")
    return (interface, protocol, name, kind, domain, "tv.local", 0, address, port,
            [dbus.ByteArray(text.encode()) for text in texts], 0)


@dbus.service.method(BROWSER, in_signature="", out_signature="")
def Free(self):
    main = mockobject.objects[MAIN_OBJ]
    main.browsers -= 1
    main.RemoveObject(self.path)


@dbus.service.method(NETWORK, in_signature="ssqas", out_signature="")
def Announce(self, name, address, port, texts):
    """A service; one without an address goes before it is resolved."""
    self.services[str(name)] = (address, port, texts)


@dbus.service.method(NETWORK, in_signature="", out_signature="i")
def Searches(self):
    """Those that nobody has ended."""
    return self.browsers
