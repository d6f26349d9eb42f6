"""What programs tell of their windows to those who hear the screen: roles, names, texts and places.

Speaks to the bus over one connection that stays open. Questions that do not depend on each other go out
together, so that a tree of windows takes as many journeys as it has levels.
"""

import os
import re
import subprocess
import sys

from desktop import DESKTOP, title_pattern, wait_until

SYSTEM_PYTHON = "/usr/bin/python3"
try:
    from gi.repository import Gio, GLib
except ModuleNotFoundError:
    # The module belongs to the system's Python, and another may come first in the path.
    if os.path.realpath(sys.executable) == os.path.realpath(SYSTEM_PYTHON):
        raise
    os.execv(SYSTEM_PYTHON, [SYSTEM_PYTHON, *sys.orig_argv[1:]])

ACCESSIBLE = "org.a11y.atspi.Accessible"
TEXT = "org.a11y.atspi.Text"
STATE_ACTIVE, STATE_FOCUSED, STATE_SELECTED, STATE_SHOWING = 1, 12, 23, 25
STATES_FOCUSABLE = (11, 24)


class Control:
    """One node of what a window tells: its role, its name, what it can do and its children; and the
    part of the window that scrolls with it inside, or else the window."""

    def __init__(self, node, state, role, name, interfaces, children):
        self.node, self.role, self.name = node, role, name
        self.pane = None
        self._state, self._interfaces = state, interfaces
        # Addresses at first, and then those that are shown, as Controls.
        self.children = children

    def has(self, state):
        return bool(self._state >> state & 1)

    @property
    def has_text(self):
        return TEXT in self._interfaces

    @property
    def focusable(self):
        """One that is switched off takes no focus."""
        return all(self.has(state) for state in STATES_FOCUSABLE)

    @property
    def focused(self):
        return self.has(STATE_FOCUSED)

    def __repr__(self):
        return f"{self.role} “{self.name}”"

    def walk(self):
        """This and all below it, from the top down."""
        yield self
        for child in self.children:
            yield from child.walk()


class AccessibilityBus:
    """The bus through which the toolkit tells what its windows show: of a session bus of its own, or
    of the one with the given address."""

    _REGISTRY = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
    _CLICKED = ("push button", "check box", "menu", "menu item", "check menu item")

    def __init__(self, environment, address=None):
        self._daemon = None if address else self._start_bus(environment)
        self.address = address or self._daemon.stdout.readline().strip()
        self._processes = {}
        self._connection = self._connect(self.address)
        question = ("org.a11y.Bus", "/org/a11y/bus"), "org.a11y.Bus.GetAddress"
        told, = wait_until(lambda: self._ask([question])[0], "accessibility bus")
        self._connection.close_sync()
        self._connection = self._connect(told)

    @staticmethod
    def _start_bus(environment):
        environment = dict(environment)
        environment.pop("DBUS_SESSION_BUS_ADDRESS", None)
        return subprocess.Popen(
            ["dbus-daemon", "--session", "--print-address", "--nofork", "--nopidfile"],
            env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True)

    @staticmethod
    def _connect(address):
        connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        connection.set_exit_on_close(False)
        return connection

    def _ask(self, questions):
        """The answers to questions that all are sent before the first answer is awaited; None for one
        that nobody answered. A question is a node, a method with its interface, and a Variant for what
        it takes."""
        answers = [None] * len(questions)
        left = len(questions)

        def take(source, result, number):
            nonlocal left
            left -= 1
            try:
                answers[number] = source.call_finish(result).unpack()
            except GLib.Error:
                pass  # The program or its window has gone.
        for number, ((name, path), method, *given) in enumerate(questions):
            interface, member = method.rsplit(".", 1)
            self._connection.call(
                name, path, interface, member, given[0] if given else None, None,
                Gio.DBusCallFlags.NONE, -1, None, take, number)
        while left:
            GLib.MainContext.default().iteration(True)
        return answers

    def _look(self, nodes):
        """What those nodes are, without those that have gone."""
        questions = []
        for node in nodes:
            questions += [(node, ACCESSIBLE + ".GetState"), (node, ACCESSIBLE + ".GetRoleName"),
                          (node, "org.freedesktop.DBus.Properties.Get",
                           GLib.Variant("(ss)", (ACCESSIBLE, "Name"))),
                          (node, ACCESSIBLE + ".GetInterfaces"), (node, ACCESSIBLE + ".GetChildren")]
        answers = self._ask(questions)
        controls = []
        for number, node in enumerate(nodes):
            told = answers[5 * number:5 * number + 5]
            if None not in told:
                (state,), (role,), (name,), (interfaces,), (children,) = told
                low, high = (*state, 0, 0)[:2]
                controls.append(Control(node, low | high << 32, role, name, interfaces, children))
        return controls

    def _trees(self, process, hidden=False):
        """The windows of that process with all that they show, or with what they do not show too."""
        level = self._look(self._windows(process))
        windows = level = level if hidden else [node for node in level if node.has(STATE_SHOWING)]
        while level:
            found = self._look([child for control in level for child in control.children])
            shown = {control.node: control for control in found if hidden or control.has(STATE_SHOWING)}
            for control in level:
                control.children = [shown[child] for child in control.children if child in shown]
            level = list(shown.values())
        return windows

    def _windows(self, process):
        applications, = self._ask([(self._REGISTRY, ACCESSIBLE + ".GetChildren")])
        names = [name for name, _ in (applications or [[]])[0]]
        # A name stands for one connection for as long as the bus lives.
        new = [name for name in names if name not in self._processes]
        asked = (("org.freedesktop.DBus", "/org/freedesktop/DBus"),
                 "org.freedesktop.DBus.GetConnectionUnixProcessID")
        for name, answer in zip(new, self._ask([(*asked, GLib.Variant("(s)", (name,))) for name in new])):
            if answer:
                self._processes[name] = answer[0]
        answers = self._ask([((name, self._REGISTRY[1]), ACCESSIBLE + ".GetChildren") for name in names
                             if self._processes.get(name) == process])
        return [node for answer in answers if answer for node in answer[0]]

    def _texts(self, controls):
        """The text of each of those, empty where it has none."""
        with_text = [control for control in controls if control.has_text]
        answers = self._ask([(control.node, TEXT + ".GetText", GLib.Variant("(ii)", (0, -1)))
                             for control in with_text])
        texts = {control.node: answer[0] for control, answer in zip(with_text, answers) if answer}
        return [texts.get(control.node, "") for control in controls]

    def _has(self, node, *states):
        state, = self._ask([(node, ACCESSIBLE + ".GetState")])
        return state is not None and any(state[0][0] >> wanted & 1 for wanted in states)

    def role(self, node):
        role, = self._ask([(node, ACCESSIBLE + ".GetRoleName")])
        return role[0] if role else ""

    def windows(self, process, title):
        """The visible windows of that process with that title, which a message box has for its first
        line where it draws its own frame."""
        shown = [window for window in self._look(self._windows(process)) if window.has(STATE_SHOWING)]
        found = [window.node for window in shown if re.match(title_pattern(title), window.name)]
        if any(window.role == "alert" for window in shown):
            found += [window.node for window in self._trees(process)
                      if window.role == "alert" and window.node not in found
                      and title in self._texts(list(window.walk()))]
        return found

    def names(self, process):
        """The titles of the windows of that process."""
        return [window.name for window in self._look(self._windows(process))
                if window.has(STATE_SHOWING)]

    def is_active(self, window):
        return self._has(window, STATE_ACTIVE)

    def activate(self, window):
        """Asks a window to come to the front, which not every desktop grants."""
        self._ask([(window, "org.a11y.atspi.Component.GrabFocus")])

    def act(self, node):
        """Does what a click on it would do. Never for what opens a dialog: the program would tell
        nothing of its windows until that one is closed."""
        self._ask([(node, "org.a11y.atspi.Action.DoAction", GLib.Variant("(i)", (0,)))])

    def entries(self, process, role):
        """What has that role in the windows of that process, shown or not."""
        return [control.node for window in self._trees(process, hidden=True)
                for control in window.walk() if control.role == role]

    def is_chosen(self, node):
        return self._has(node, STATE_FOCUSED, STATE_SELECTED)

    def content(self, process, title):
        """Width and height inside the frame of that window, wherever that comes from."""
        for window in self.windows(process, title):
            children, = self._ask([(window, ACCESSIBLE + ".GetChildren")])
            places = [self.place(child) for child in (children or [[]])[0]]
            return max(place[2:] for place in places) if places else None
        return None

    def controls(self, process):
        """All that the active window shows."""
        found = []
        for window in self._trees(process):
            if window.has(STATE_ACTIVE):
                self._set_pane(window, window, window)
                found += window.walk()
        return found

    def _set_pane(self, control, pane, window):
        control.pane = pane.node
        inner = control if control.role == "scroll pane" and pane is window else pane
        for child in control.children:
            self._set_pane(child, inner, window)

    def has_focus(self, control):
        return self._has(control.node, STATE_FOCUSED)

    def read(self, process):
        controls = [control for window in self._trees(process) for control in window.walk()]
        texts = []
        for control, text in zip(controls, self._texts(controls)):
            texts += dict.fromkeys(text for text in (control.name, text) if text)
        return texts

    def place(self, node):
        """Left, top, width and height on the screen."""
        place, = self._ask([(node, "org.a11y.atspi.Component.GetExtents", GLib.Variant("(u)", (0,)))])
        return list(place[0]) if place else []

    def find(self, process, label):
        """What a click on that label is to hit, and its middle, or None."""
        for window in self._trees(process):
            for control in window.walk():
                if control.role in self._CLICKED and control.name == label:
                    place = self.place(control.node)
                    if len(place) == 4 and place[2] > 0 and place[3] > 0:
                        left, top = DESKTOP.origin(process, window.name)
                        return (control.node, left + place[0] + place[2] // 2,
                                top + place[1] + place[3] // 2)
        return None

    def close(self):
        self._connection.close_sync()
        self._daemon.terminate()
        self._daemon.wait()
        self._daemon.stdout.close()
