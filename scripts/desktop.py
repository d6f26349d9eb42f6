"""The desktop that a script runs on, as scripts/with-display has started it: finds windows, presses
keys, clicks and takes pictures. DESKTOP is the one at hand.

Places and sizes are those of a window's content, without the frame that the desktop draws.
"""

import json
import os
import re
import socket
import string
import struct
import subprocess
import tempfile
import time

# Seconds that a state may take to come. Sanitizers make the program many times slower.
LIMIT = float(os.environ.get("VELOMIND_LIMIT", "20"))


def wait_until(condition, what, limit=None):
    """Gives the condition's first true value; fails when it does not come within the limit."""
    limit = LIMIT if limit is None else limit
    end = time.monotonic() + limit
    pause = 0.005
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {limit:g} seconds")
        time.sleep(pause)
        pause = min(pause * 1.5, 0.1)


def run_tool(*command, **options):
    """The output of a small tool, or None when it ended with an error."""
    done = subprocess.run(
        command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        timeout=60, check=False, text=True, **options)
    return done.stdout if done.returncode == 0 else None


def title_pattern(title):
    """A window has that title, behind which the editor's has the front of its card."""
    return f"^{re.escape(title)}( - .*)?$"


class Desktop:
    """What all desktops have in common."""

    # False where only the programs themselves can tell of their windows.
    tells_windows = True
    # Whether windows lie where programs put them.
    has_places = False

    def launch_environment(self):
        """What a launcher of this desktop adds to the environment of a program."""
        return {}

    def take_settled(self, path, window=None, unlike=""):
        """A picture of what no longer changes, and is not that of the given signature. Gives the
        signature of its pixels."""
        seen = [""]

        def settled():
            time.sleep(0.1)
            self.take_picture(path, window)
            seen.append(run_tool("identify", "-format", "%#", path))
            return seen[-1] == seen[-2] and seen[-1] not in (None, unlike)
        wait_until(settled, f"{path}: a picture that stays as it is")
        return seen[-1]


class X11(Desktop):
    """An X display with a window manager that tells the active window."""

    has_places = True

    def __init__(self, display=None):
        self._environment = dict(os.environ, **{"DISPLAY": display} if display else {})

    def _run(self, *command):
        return run_tool(*command, env=self._environment)

    def press(self, *keys):
        """Presses and releases keys, by their X names, in whatever window is active."""
        self._run("xdotool", "key", "--delay", "4", *keys)

    def type_text(self, text):
        self._run("xdotool", "type", "--delay", "4", text)

    def click(self, x, y, button=1, times=1):
        self._run("xdotool", "mousemove", str(x), str(y),
                 "click", "--repeat", str(times), "--delay", "4", str(button))

    def windows(self, process, title=None):
        """Ids of the visible windows of that process with that title, or with any."""
        found = self._run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(process),
                          "--name", title_pattern(title) if title else ".")
        return found.split() if found else []

    def is_active(self, window):
        return (self._run("xdotool", "getactivewindow") or "").strip() == window

    def activate(self, window):
        self._run("xdotool", "windowactivate", window)

    def close(self, window):
        """Closes a window as by the button of its frame, which no key that gets lost can miss."""
        self._run("wmctrl", "-i", "-c", hex(int(window)))

    def put_away(self, window):
        """Takes a window out of sight, as a person does who turns to something else."""
        self._run("xdotool", "windowminimize", window)

    def title(self, window):
        return (self._run("xdotool", "getwindowname", window) or "").rstrip("\n")

    def titles(self):
        """Those of all visible windows."""
        found = self._run("xdotool", "search", "--onlyvisible", "--name", ".") or ""
        return [self.title(window) for window in found.split()]

    def place(self, window):
        """Left, top, width and height."""
        told = self._run("xdotool", "getwindowgeometry", "--shell", window) or ""
        shape = dict(line.split("=") for line in told.split())
        return [int(shape[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")]

    def resize(self, window, width, height):
        self._run("xdotool", "windowsize", "--sync", window, str(width), str(height))

    def origin(self, _process, _title):
        """Where the accessible places in that window begin, on the screen."""
        return 0, 0

    def clipboard(self):
        """What another program gets from the clipboard as text; None for nothing."""
        return self._run("xclip", "-o", "-selection", "clipboard")

    def take_picture(self, path, window=None):
        """A picture of the screen, or of one window."""
        self._run("import", "-window", window or "root", path)


class Weston(X11):
    """Weston on the whole screen of an X display, where the keys are pressed. It tells nothing of
    its windows, and so the pointer finds nothing either."""

    tells_windows = False
    has_places = False

    def __init__(self):
        super().__init__(os.environ["OUTER_DISPLAY"])

    def close(self, _window):
        """Closes the active window, by the key of the program."""
        self.press("ctrl+w")

    def take_picture(self, path, _window=None):
        """A picture of the screen."""
        super().take_picture(path)


# The keys of a US keyboard by the codes of the kernel, and by their X names.
ROWS = {2: "1234567890-=", 16: "qwertyuiop[]", 30: "asdfghjkl;'`", 43: "\\zxcvbnm,./"}
CODES = {key: code for first, row in ROWS.items() for code, key in enumerate(row, first)}
CODES |= {f"F{number}": 58 + number for number in range(1, 11)}
CODES |= {"Escape": 1, "minus": 12, "equal": 13, "BackSpace": 14, "Tab": 15, "Return": 28, "ctrl": 29,
          "shift": 42, "alt": 56, "space": 57, " ": 57, "F11": 87, "F12": 88, "KP_Enter": 96, "Home": 102,
          "KP_Add": 78, "KP_Subtract": 74, "KP_0": 82, "comma": 51, "period": 52, "slash": 53,
          "Up": 103, "Page_Up": 104, "Prior": 104, "Left": 105, "Right": 106, "End": 107, "Down": 108,
          "Page_Down": 109, "Next": 109, "Delete": 111, "Menu": 127}
SHIFTED = dict(zip('!@#$%^&*()_+{}:"~|<>?' + string.ascii_uppercase,
                   "1234567890-=[];'`\\,./" + string.ascii_lowercase))
SHIFTED["plus"] = "="
MODIFIERS = {"shift": 1, "ctrl": 4, "alt": 8}
KEYMAP = b"""xkb_keymap {
xkb_keycodes { include "evdev+aliases(qwerty)" }; xkb_types { include "complete" };
xkb_compat { include "complete" }; xkb_symbols { include "pc+us+inet(evdev)" }; };\0"""


class VirtualInput:
    """A keyboard and a pointer, plugged into a compositor that offers virtual ones, for as long as
    this object lives. Speaks the Wayland protocol itself: words of 32 bits, each message headed by
    the object that it is for, its length and the number of the request."""

    _DISPLAY = 1
    _USED = (b"wl_seat", b"zwp_virtual_keyboard_manager_v1", b"zwlr_virtual_pointer_manager_v1",
             b"xdg_activation_v1")

    def __init__(self, address):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(30)
        self._socket.connect(address)
        self._received = b""
        self._last_id = self._DISPLAY
        self._held = 0
        registry = self._new_id()
        self._send(self._DISPLAY, 1, registry)
        bound = {}
        for sender, _, body in self._wait():
            if sender == registry:
                name, length = struct.unpack_from("=II", body)
                interface = body[8:7 + length]
                if interface in self._USED:
                    bound[interface] = self._new_id()
                    # The interface goes back as it came, with its length and padding.
                    self._send(registry, 0, name, body[4:-4], 1, bound[interface])
        seat, keyboards, pointers, self._activation = (bound[interface] for interface in self._USED)
        self._keyboard = self._new_id()
        self._send(keyboards, 0, seat, self._keyboard)
        self._pointer = self._new_id()
        self._send(pointers, 0, seat, self._pointer)
        with tempfile.TemporaryFile() as file:
            file.write(KEYMAP)
            file.flush()
            self._send(self._keyboard, 0, 1, len(KEYMAP), descriptors=[file.fileno()])
            self._wait()

    def _new_id(self):
        self._last_id += 1
        return self._last_id

    def _send(self, receiver, request, *words, descriptors=()):
        body = b"".join(word if isinstance(word, bytes) else struct.pack("=I", word)
                        for word in words)
        socket.send_fds(self._socket,
                        [struct.pack("=II", receiver, (len(body) + 8) << 16 | request) + body],
                        descriptors)

    def _receive(self, count):
        while len(self._received) < count:
            more = self._socket.recv(1 << 16)
            if not more:
                raise AssertionError("the compositor has ended")
            self._received += more
        data, self._received = self._received[:count], self._received[count:]
        return data

    def _wait(self):
        """Waits until all that was sent is done, and gives the events on the way."""
        done = self._new_id()
        self._send(self._DISPLAY, 0, done)
        events = []
        while True:
            sender, size = struct.unpack("=II", self._receive(8))
            event = sender, size & 0xffff, self._receive((size >> 16) - 8)
            if event[:2] == (self._DISPLAY, 0):
                raise AssertionError(f"refused by the compositor: {event[2]}")
            if sender == done:
                return events
            events.append(event)

    @staticmethod
    def _now():
        return int(time.monotonic() * 1000) & 0xffffffff

    def key(self, code, down, modifier):
        self._held = self._held | modifier if down else self._held & ~modifier
        self._send(self._keyboard, 1, self._now(), code, int(down))
        self._send(self._keyboard, 2, self._held, 0, 0, 0)
        self._wait()

    def move(self, x, y, width, height):
        """Moves the pointer to a place on a screen of that size."""
        self._send(self._pointer, 1, self._now(), x, y, width, height)
        self._send(self._pointer, 4)
        self._wait()

    def activation_token(self):
        """What a launcher gives to a program, so that it may bring a window to the front."""
        token = self._new_id()
        self._send(self._activation, 1, token)
        self._send(token, 3)
        told = next(body for sender, _, body in self._wait() if sender == token)
        return told[4:].split(b"\0")[0].decode()

    def button(self, code, down):
        self._send(self._pointer, 2, self._now(), code, int(down))
        self._send(self._pointer, 4)
        self._wait()


class Sway(Desktop):
    """Sway, which tells its windows over a socket. The keyboard is plugged in before any window
    comes, and stays: without one, no window would have the focus. The pointer waits where windows
    come up, as the toolkit takes one that was in none for being over the first menu."""

    _COMMAND, _OUTPUTS, _TREE = 0, 3, 4
    _BUTTONS = {1: 0x110, 2: 0x112, 3: 0x111}

    def __init__(self):
        self._input = VirtualInput(os.environ["WAYLAND_DISPLAY"])
        screen = self._ask(self._OUTPUTS)[0]["rect"]
        self._move(screen["width"] // 2, screen["height"] // 2)

    @staticmethod
    def _ask(kind, text=""):
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(30)
            connection.connect(os.environ["SWAYSOCK"])
            body = text.encode()
            connection.sendall(b"i3-ipc" + struct.pack("=II", len(body), kind) + body)
            stream = connection.makefile("rb")
            length = struct.unpack("=6xI4x", stream.read(14))[0]
            return json.loads(stream.read(length))

    def _nodes(self):
        nodes = [self._ask(self._TREE)]
        for node in nodes:
            nodes += node["nodes"] + node["floating_nodes"]
        return [node for node in nodes if node.get("pid")]

    def _node(self, window):
        return next((node for node in self._nodes() if node["id"] == window), None)

    def press(self, *keys):
        """Presses and releases keys, by their X names, in whatever window is active."""
        for key in keys:
            *held, last = key.split("+") if len(key) > 1 else [key]
            if last in SHIFTED:
                held, last = [*held, "shift"], SHIFTED[last]
            for name in [*held, last]:
                self._input.key(CODES[name], True, MODIFIERS.get(name, 0))
            for name in [last, *reversed(held)]:
                self._input.key(CODES[name], False, MODIFIERS.get(name, 0))

    def type_text(self, text):
        self.press(*text)

    def _move(self, x, y):
        screen = self._ask(self._OUTPUTS)[0]["rect"]
        self._input.move(x, y, screen["width"], screen["height"])

    def click(self, x, y, button=1, times=1):
        # Programs learn from the second step where the pointer is.
        self._move(x - 1, y)
        self._move(x, y)
        for down in (True, False) * times:
            self._input.button(self._BUTTONS[button], down)

    def windows(self, process, title=None):
        """Ids of the visible windows of that process with that title, or with any."""
        return [node["id"] for node in self._nodes()
                if node["pid"] == process and node["visible"]
                and (title is None or re.match(title_pattern(title), node["name"] or ""))]

    def is_active(self, window):
        return (self._node(window) or {}).get("focused", False)

    def activate(self, window):
        self._ask(self._COMMAND, f"[con_id={window}] focus")

    def close(self, window):
        """Closes a window as by the button of its frame."""
        self._ask(self._COMMAND, f"[con_id={window}] kill")

    def launch_environment(self):
        return {"XDG_ACTIVATION_TOKEN": self._input.activation_token()}

    def put_away(self, _window):
        """Takes a window out of sight, as a person does who turns to something else."""
        self._ask(self._COMMAND, "workspace away")

    def let_take_focus(self, may):
        """Whether programs may take the focus from others. Of itself sway lets none."""
        self._ask(self._COMMAND, f"focus_on_window_activation {'focus' if may else 'urgent'}")

    def wants_attention(self, process):
        """Whether a window of that process asks for it."""
        return any(node["urgent"] for node in self._nodes() if node["pid"] == process)

    def title(self, window):
        return (self._node(window) or {}).get("name") or ""

    def titles(self):
        """Those of all visible windows."""
        return [node["name"] for node in self._nodes() if node["visible"]]

    def place(self, window):
        """Left, top, width and height."""
        node = self._node(window)
        outer, inner = node["rect"], node["window_rect"]
        return [outer["x"] + inner["x"], outer["y"] + inner["y"], inner["width"], inner["height"]]

    def resize(self, window, width, height):
        node = self._node(window)
        outer, inner, bar = node["rect"], node["window_rect"], node["deco_rect"]
        self._ask(self._COMMAND, f"[con_id={window}] resize set"
                  f" {width + outer['width'] - inner['width']} px"
                  f" {height + outer['height'] - inner['height'] + bar['height']} px")

    def origin(self, process, title):
        """Where the accessible places in that window begin, on the screen: a program knows where in
        its window something is, but not where the window is. Menus belong to the active one."""
        for window in (self.windows(process, title) or
                       [window for window in self.windows(process) if self.is_active(window)]):
            return self.place(window)[:2]
        return 0, 0

    def clipboard(self):
        """What another program gets from the clipboard as text; None for nothing."""
        return run_tool("wl-paste", "--no-newline", "--type", "text/plain;charset=utf-8")

    def take_picture(self, path, window=None):
        """A picture of the screen, or of one window."""
        if window is None:
            run_tool("grim", path)
        else:
            x, y, width, height = self.place(window)
            run_tool("grim", "-g", f"{x},{y} {width}x{height}", path)


DESKTOP = {"wayland": Sway, "own-frames": Weston}.get(os.environ.get("VELOMIND_DESKTOP"), X11)()
