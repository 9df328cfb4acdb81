"""Calls to other programs on a session's bus."""

import os
import re
import socket

from gi.repository import Gio, GLib

_FLAGS = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION


class Bus:
    """A connection of the test's own to the session's bus."""

    def __init__(self, session):
        self._connection = Gio.DBusConnection.new_for_address_sync(session.env["DBUS_SESSION_BUS_ADDRESS"], _FLAGS, None, None)

    def close(self):
        self._connection.close_sync(None)

    def call(self, name, path, method, signature="()", *values):
        """Calls "interface.Method" and returns its results as Python values, a tuple. Starts nothing."""
        interface, _, member = method.rpartition(".")
        return self._connection.call_sync(name, path, interface, member, GLib.Variant(signature, values), None,
                                          Gio.DBusCallFlags.NO_AUTO_START, 5000, None).unpack()

    def property(self, name, path, interface, property_name):
        return self.call(name, path, "org.freedesktop.DBus.Properties.Get", "(ss)", interface, property_name)[0]

    def activate(self, application_id, action):
        """Activates an action of a running application."""
        path = "/" + application_id.replace(".", "/")
        self.call(application_id, path, "org.freedesktop.Application.ActivateAction", "(sava{sv})", action, [], {})


class DeafCaller:
    """A caller that never reads what it is answered."""

    def __init__(self, session):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(re.search(r"path=([^,]+)", session.env["DBUS_SESSION_BUS_ADDRESS"])[1])
        self._socket.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        self._socket.recv(1000)
        self._socket.sendall(b"BEGIN\r\n")
        self._calls = 0
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Hello")
        self._socket.recv(4096)

    def close(self):
        self._socket.close()

    def call(self, name, path, method, signature="()", *values, times=1):
        interface, _, member = method.rpartition(".")
        message = Gio.DBusMessage.new_method_call(name, path, interface, member)
        message.set_body(GLib.Variant(signature, values))
        for _ in range(times):
            self._calls += 1
            message.set_serial(self._calls)
            self._socket.sendall(message.to_blob(Gio.DBusCapabilityFlags.NONE))
