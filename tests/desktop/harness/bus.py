"""Calls to other programs on a session's bus."""

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
