"""What programs tell of their windows to those who hear the screen: roles, names, texts and places."""

import re
import subprocess

from desktop import DESKTOP, run_tool, title_pattern, wait_until


class Control:
    """One node of what a window tells: its role, its name, whether it takes the focus, and the part
    of the window that scrolls with it inside, or else the window."""

    def __init__(self, role, name, state, node, pane):
        self.role, self.name, self.node, self.pane = role, name, node, pane
        # One that is switched off takes no focus.
        self.focusable = bool(state >> 11 & 1 and state >> 24 & 1)
        self.focused = bool(state >> 12 & 1)

    def __repr__(self):
        return f"{self.role} “{self.name}”"


class AccessibilityBus:
    """The bus through which the toolkit tells what its windows show: of a session bus of its own, or
    of the one with the given address."""

    _ROOT = "/org/a11y/atspi/accessible/root"
    _STATE_ACTIVE = 1
    _STATE_FOCUSED = 12
    _STATE_SELECTED = 23
    _STATE_SHOWING = 25
    _CLICKED = ("push button", "check box", "menu", "menu item")
    _ACCESSIBLE = "org.a11y.atspi.Accessible"

    def __init__(self, environment, address=None):
        self._daemon = None if address else self._start_bus(environment)
        self.address = address or self._daemon.stdout.readline().strip()
        answer = wait_until(
            lambda: run_tool(
                "dbus-send", f"--bus={self.address}", "--print-reply=literal",
                "--dest=org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress"),
            "accessibility bus")
        self._bus = answer.strip()

    @staticmethod
    def _start_bus(environment):
        environment = dict(environment)
        environment.pop("DBUS_SESSION_BUS_ADDRESS", None)
        return subprocess.Popen(
            ["dbus-daemon", "--session", "--print-address", "--nofork", "--nopidfile"],
            env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True)

    def _call(self, name, path, method, *arguments):
        return run_tool(
            "dbus-send", f"--bus={self._bus}", "--print-reply", f"--dest={name}", path, method,
            *arguments) or ""

    def _children(self, node):
        return re.findall(r'string "(:[^"]+)"\s+object path "([^"]+)"',
                          self._call(*node, self._ACCESSIBLE + ".GetChildren"))

    def _name(self, node):
        reply = self._call(*node, "org.freedesktop.DBus.Properties.Get",
                           "string:" + self._ACCESSIBLE, "string:Name")
        found = re.search(r'variant\s+string "(.*)"\s*$', reply, re.DOTALL)
        return found.group(1) if found else ""

    def _text(self, node):
        if "org.a11y.atspi.Text" not in self._call(*node, self._ACCESSIBLE + ".GetInterfaces"):
            return ""
        reply = self._call(*node, "org.a11y.atspi.Text.GetText", "int32:0", "int32:-1")
        found = re.search(r'string "(.*)"\s*$', reply, re.DOTALL)
        return found.group(1) if found else ""

    def _process(self, name):
        reply = self._call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.GetConnectionUnixProcessID", "string:" + name)
        found = re.search(r"uint32 (\d+)", reply)
        return int(found.group(1)) if found else 0

    def _state(self, node):
        reply = self._call(*node, self._ACCESSIBLE + ".GetState")
        bits = re.findall(r"uint32 (\d+)", reply)
        return int(bits[0]) if bits else 0

    def role(self, node):
        reply = self._call(*node, self._ACCESSIBLE + ".GetRoleName")
        found = re.search(r'string "(.*)"', reply)
        return found.group(1) if found else ""

    def _has(self, node, state):
        return bool(self._state(node) >> state & 1)

    def _walk(self, node):
        if self._has(node, self._STATE_SHOWING):
            yield node
            for child in self._children(node):
                yield from self._walk(child)

    def _windows(self, process):
        for application in self._children(("org.a11y.atspi.Registry", self._ROOT)):
            if self._process(application[0]) == process:
                yield from self._children(application)

    def windows(self, process, title):
        """The visible windows of that process with that title, which a message box has for its first
        line where it draws its own frame."""
        return [window for window in self._windows(process)
                if self._has(window, self._STATE_SHOWING)
                and (re.match(title_pattern(title), self._name(window))
                     or self.role(window) == "alert"
                     and title in (self._text(node) for node in self._walk(window)))]

    def is_active(self, window):
        return self._has(window, self._STATE_ACTIVE)

    def activate(self, window):
        """Asks a window to come to the front, which not every desktop grants."""
        self._call(*window, "org.a11y.atspi.Component.GrabFocus")

    def act(self, node):
        """Does what a click on it would do. Never for what opens a dialog: the program would tell
        nothing of its windows until that one is closed."""
        self._call(*node, "org.a11y.atspi.Action.DoAction", "int32:0")

    def entries(self, process, role):
        """What has that role in the windows of that process, shown or not."""
        def walk(node):
            if self.role(node) == role:
                yield node
            for child in self._children(node):
                yield from walk(child)
        return [node for window in self._windows(process) for node in walk(window)]

    def is_chosen(self, node):
        return self._has(node, self._STATE_FOCUSED) or self._has(node, self._STATE_SELECTED)

    def content(self, process, title):
        """Width and height inside the frame of that window, wherever that comes from."""
        for window in self.windows(process, title):
            places = [self.place(child) for child in self._children(window)]
            return max(place[2:] for place in places) if places else None
        return None

    def _nodes(self, process):
        for window in self._windows(process):
            yield from self._walk(window)

    def controls(self, process):
        return [control for window in self._windows(process)
                if self._has(window, self._STATE_ACTIVE)
                for control in self._controls(window, window, window)]

    def _controls(self, node, pane, window):
        state, role = self._state(node), self.role(node)
        if state >> self._STATE_SHOWING & 1:
            yield Control(role, self._name(node), state, node, pane)
            if role == "scroll pane" and pane == window:
                pane = node
            for child in self._children(node):
                yield from self._controls(child, pane, window)

    def has_focus(self, control):
        return self._has(control.node, self._STATE_FOCUSED)

    def read(self, process):
        texts = []
        for node in self._nodes(process):
            texts += dict.fromkeys(text for text in (self._name(node), self._text(node)) if text)
        return texts

    def place(self, node):
        """Left, top, width and height on the screen."""
        reply = self._call(*node, "org.a11y.atspi.Component.GetExtents", "uint32:0")
        return [int(number) for number in re.findall(r"int32 (-?\d+)", reply)]

    def find(self, process, label):
        """What a click on that label is to hit, and its middle, or None."""
        for window in self._windows(process):
            for node in self._walk(window):
                if self.role(node) in self._CLICKED and self._name(node) == label:
                    place = self.place(node)
                    if len(place) == 4 and place[2] > 0 and place[3] > 0:
                        left, top = DESKTOP.origin(process, self._name(window))
                        return (node, left + place[0] + place[2] // 2,
                                top + place[1] + place[3] // 2)
        return None

    def close(self):
        self._daemon.terminate()
        self._daemon.wait()
        self._daemon.stdout.close()
