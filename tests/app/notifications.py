"""A notification service on a bus of its own: writes what it is told into a file.

notifications.py ADDRESS-FILE TOLD-FILE
"""
import os
import sys

from gi.repository import Gio, GLib

INTERFACE = """<node><interface name="org.freedesktop.Notifications">
<method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/>
<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
<arg type="as" direction="in"/><arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
<arg type="u" direction="out"/></method>
<method name="GetServerInformation"><arg type="s" direction="out"/><arg type="s" direction="out"/>
<arg type="s" direction="out"/><arg type="s" direction="out"/></method>
</interface></node>"""


def on_call(_connection, _sender, _path, _interface, method, parameters, invocation):
    if method == 'GetServerInformation':
        invocation.return_value(GLib.Variant('(ssss)', ('stub', 'test', '1', '1.2')))
        return
    with open(sys.argv[2], 'a', encoding='utf-8') as told:
        told.write('|'.join(parameters.unpack()[3:5]) + '\n')
    invocation.return_value(GLib.Variant('(u)', (1,)))


def on_name(*_):
    with open(sys.argv[1] + '.new', 'w', encoding='utf-8') as address:
        address.write(bus.get_bus_address())
    os.rename(sys.argv[1] + '.new', sys.argv[1])


bus = Gio.TestDBus.new(Gio.TestDBusFlags.NONE)
bus.up()
connection = Gio.bus_get_sync(Gio.BusType.SESSION)
connection.register_object('/org/freedesktop/Notifications',
                           Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], on_call)
Gio.bus_own_name_on_connection(connection, 'org.freedesktop.Notifications',
                               Gio.BusNameOwnerFlags.NONE, on_name, None)
# Ends after the test has: a program whose bus goes away is ended by its library.
parent = os.getppid()
GLib.timeout_add(200, lambda: os.getppid() == parent or loop.quit())
loop = GLib.MainLoop()
loop.run()
