"""Owns a name on the session bus and writes down what it is called with, one JSON line a call: method and arguments.

Runs as a process in a session: bus_peer.py NAME PATH INTROSPECTION_XML LOG_FILE
"""

import json
import sys

from gi.repository import Gio, GLib


def main():
    name, path, introspection, log = sys.argv[1:]
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def called(_connection, _sender, _path, _interface, method, arguments, invocation):
        with open(log, "a", encoding="utf-8") as file:
            file.write(json.dumps([method, arguments.unpack()]) + "\n")
        invocation.return_value(None)

    bus.register_object(path, Gio.DBusNodeInfo.new_for_xml(introspection).interfaces[0], called, None, None)
    Gio.bus_own_name_on_connection(bus, name, Gio.BusNameOwnerFlags.NONE, None, None)
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
