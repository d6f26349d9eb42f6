"""Drives the real program as a person would: windows found by their titles, keys and clicks sent to
the X server, and the outcome read from the store file behind the program's back.

Needs an X display with a window manager that tells the active window (scripts/with-display).
"""

import os
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BINARY = os.environ.get("VELOMIND_BINARY", os.path.join(ROOT, "build", "release", "velomind"))
SAMPLES = os.path.join(ROOT, "samples")
# Where a failed test leaves a picture of the screen.
SCREENS = os.environ.get("VELOMIND_SCREENS", "")
# Seconds that a state may take to come. Sanitizers make the program many times slower.
LIMIT = float(os.environ.get("VELOMIND_LIMIT", "20"))

LIST_WINDOW = "List - Velomind"
STUDY_WINDOW = "Study - Velomind"


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


def run_tool(*command):
    """The output of a small tool, or None when it ended with an error."""
    done = subprocess.run(
        command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        timeout=60, check=False, text=True)
    return done.stdout if done.returncode == 0 else None


def press(*keys):
    """Presses and releases keys, by their X names, in whatever window is active."""
    run_tool("xdotool", "key", "--delay", "4", *keys)


def type_text(text):
    run_tool("xdotool", "type", "--delay", "4", text)


def take_picture(path):
    run_tool("import", "-window", "root", path)


def fast_directory():
    """Memory if there is plenty, as each card that is stored waits for the disk; None for the usual
    place."""
    memory = "/dev/shm"
    if os.access(memory, os.W_OK) and shutil.disk_usage(memory).free > 2 << 30:
        return memory
    return None


class Sandbox:
    """Home, settings, documents and run-time directory of one test, removed at its end."""

    def __init__(self):
        self.root = tempfile.mkdtemp(prefix="velomind-", dir=fast_directory())
        self.home = self._make("home")
        self.config = self._make("config")
        self.documents = self._make("documents")
        self.runtime = self._make("run")
        with open(os.path.join(self.config, "user-dirs.dirs"), "w", encoding="utf-8") as file:
            file.write(f'XDG_DOCUMENTS_DIR="{self.documents}"\n')
        self.store = os.path.join(self.documents, "FlashCards2.vlm")
        self.language = "en"
        self.locale = "C.UTF-8"
        self.bus = None
        self._programs = []

    def _make(self, name):
        path = os.path.join(self.root, name)
        os.mkdir(path, 0o700)
        return path

    def environment(self):
        environment = dict(os.environ)
        environment.update(
            HOME=self.home, XDG_CONFIG_HOME=self.config, XDG_RUNTIME_DIR=self.runtime,
            LC_ALL=self.locale, LANGUAGE=self.language, GDK_BACKEND="x11",
            GSETTINGS_BACKEND="memory", NO_AT_BRIDGE="1")
        if self.bus:
            environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address
            del environment["NO_AT_BRIDGE"]
        else:
            # An address that nobody serves: no bus is started for the program.
            environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + self.path("no-bus")
        return environment

    def path(self, name):
        return os.path.join(self.root, name)

    def write(self, name, data):
        """A file of that name with these bytes, or this text as UTF-8; gives its path."""
        with open(self.path(name), "wb") as file:
            file.write(data.encode("utf-8") if isinstance(data, str) else data)
        return self.path(name)

    def sample(self, name):
        """A copy of a word list, as the program deletes what it imports by its option."""
        return shutil.copy(os.path.join(SAMPLES, name), self.path(name))

    def set_setting(self, key, value):
        with open(os.path.join(self.config, "Velomind.conf"), "a", encoding="utf-8") as file:
            file.write(f"{key}={value}\n")

    def let_read_windows(self):
        """Programs started from now on tell Program.read what their windows say."""
        if not self.bus:
            self.bus = AccessibilityBus(self.environment())

    def start(self, *arguments):
        program = Program(self, arguments)
        self._programs.append(program)
        return program

    def run(self, *arguments, limit=None):
        """Runs the program to its end without touching it, and gives its exit code."""
        return self.start(*arguments).wait(limit)

    def query(self, sql, *values):
        """Rows of the store, read through a connection of its own; none while there is no store.

        While the program runs no lock is taken, as a reader's lock can make a write of the program
        fail. What is read then may be half of a change: wait for a state, and look at the whole once
        the program has ended.
        """
        running = any(program.process.poll() is None for program in self._programs)
        if not os.path.exists(self.store):
            return []
        options = "mode=ro&immutable=1" if running else "mode=rw"
        connection = sqlite3.connect(f"file:{self.store}?{options}", uri=True, timeout=10)
        try:
            return connection.execute(sql, values).fetchall()
        except sqlite3.DatabaseError as error:
            if running or "no such table" in str(error):
                return []
            raise
        finally:
            connection.close()

    def card_count(self):
        rows = self.query("SELECT COUNT(*) FROM Cards")
        return rows[0][0] if rows else 0

    def store_bytes(self):
        with open(self.store, "rb") as file:
            return file.read()

    def check_store(self):
        """The store opens, and the engine finds no fault in it."""
        result = self.query("PRAGMA integrity_check")
        if result != [("ok",)]:
            raise AssertionError(f"the store is damaged: {result}")

    def kill(self):
        for program in self._programs:
            program.kill()

    def close(self):
        self.kill()
        if self.bus:
            self.bus.close()
        shutil.rmtree(self.root, ignore_errors=True)


class Program:
    """One run of the program."""

    def __init__(self, sandbox, arguments):
        self._error_path = tempfile.mkstemp(prefix="stderr-", dir=sandbox.root)[1]
        self._sandbox = sandbox
        with open(self._error_path, "wb") as errors:
            self.process = subprocess.Popen(
                [BINARY, *arguments], env=sandbox.environment(),
                cwd=sandbox.root, stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)

    def error_text(self):
        with open(self._error_path, encoding="utf-8", errors="replace") as file:
            return file.read()

    def windows(self, title):
        """Ids of the visible windows of this run with that title, behind which the editor's has the
        front of its card."""
        found = run_tool(
            "xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.process.pid),
            "--name", f"^{re.escape(title)}( - .*)?$")
        return found.split() if found else []

    def _settle(self):
        """Waits until nothing is left to do, as the toolkit makes the keys of labels work when it is
        idle first; a second at most, for windows that never rest."""
        def look():
            task = f"/proc/{self.process.pid}"
            with open(task + "/stat", encoding="ascii") as stat, \
                    open(task + "/schedstat", encoding="ascii") as times:
                return stat.read().rsplit(")", 1)[1].split()[0], times.read()
        end = time.monotonic() + 1
        before = None
        while time.monotonic() < end:
            now = look()
            if now == before and now[0] == "S":
                return
            before = now
            time.sleep(0.02)

    def wait_window(self, title, limit=None):
        """Waits until a window of that title is visible, active and ready for keys; gives its id."""
        def active():
            if self.process.poll() is not None:
                raise AssertionError(
                    f"the program ended with {self.process.returncode} while “{title}” was "
                    f"awaited: {self.error_text()}")
            windows = self.windows(title)
            if not windows:
                return None
            window = windows[-1]
            if (run_tool("xdotool", "getactivewindow") or "").strip() == window:
                self._settle()
                return window
            run_tool("xdotool", "windowactivate", window)
            return None
        return wait_until(active, f"window “{title}”", limit)

    def wait_no_window(self, title):
        wait_until(lambda: not self.windows(title), f"end of window “{title}”")

    def read(self):
        """Every text in the windows on the screen, from the top down; asks for let_read_windows."""
        return self._sandbox.bus.read(self.process.pid)

    def wait_text(self, text):
        seen = []

        def shown():
            seen[:] = self.read()
            return any(text in line for line in seen)
        try:
            wait_until(shown, f"“{text}” on the screen")
        except AssertionError as error:
            raise AssertionError(f"{error}; seen: {seen}") from None

    def wait_no_text(self, text):
        wait_until(lambda: not any(text in line for line in self.read()), f"end of “{text}”")

    def controls(self):
        """Each Control that the active window shows; asks for let_read_windows."""
        return self._sandbox.bus.controls(self.process.pid)

    def click(self, label):
        """Clicks the button, menu or entry of that label; asks for let_read_windows."""
        x, y = wait_until(lambda: self._sandbox.bus.find(self.process.pid, label),
                          f"“{label}” to click at")
        run_tool("xdotool", "mousemove", str(x), str(y), "click", "1")

    def click_at(self, title, across, down):
        """Clicks a window at parts of its width and height."""
        window = self.wait_window(title)
        shape = dict(line.split("=") for line in
                     run_tool("xdotool", "getwindowgeometry", "--shell", window).split())
        run_tool("xdotool", "mousemove", "--window", window,
                 str(int(int(shape["WIDTH"]) * across)), str(int(int(shape["HEIGHT"]) * down)),
                 "click", "1")

    def close(self, title):
        """Closes a window by the window manager's own key."""
        self.wait_window(title)
        press("alt+F4")

    def wait(self, limit=None):
        """Waits for the end of the program and gives its exit code."""
        limit = LIMIT if limit is None else limit
        try:
            return self.process.wait(limit)
        except subprocess.TimeoutExpired:
            raise AssertionError(
                f"the program still runs after {limit:g} seconds: {self.error_text()}") from None

    def quit(self):
        """Closes the window on the screen, and with it the program."""
        for title in (STUDY_WINDOW, LIST_WINDOW):
            if self.windows(title):
                self.close(title)
        code = self.wait()
        if code != 0:
            print(self.error_text(), file=sys.stderr)
        return code

    def kill(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()


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
    """A session bus of its own, through which the toolkit tells what its windows show."""

    _ROOT = "/org/a11y/atspi/accessible/root"
    _STATE_ACTIVE = 1
    _STATE_FOCUSED = 12
    _STATE_SHOWING = 25
    _CLICKED = ("push button", "menu", "menu item")
    _ACCESSIBLE = "org.a11y.atspi.Accessible"

    def __init__(self, environment):
        environment = dict(environment)
        environment.pop("DBUS_SESSION_BUS_ADDRESS", None)
        self._daemon = subprocess.Popen(
            ["dbus-daemon", "--session", "--print-address", "--nofork", "--nopidfile"],
            env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True)
        self.address = self._daemon.stdout.readline().strip()
        answer = wait_until(
            lambda: run_tool(
                "dbus-send", f"--bus={self.address}", "--print-reply=literal",
                "--dest=org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress"),
            "accessibility bus")
        self._bus = answer.strip()

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

    def _role(self, node):
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

    def _nodes(self, process):
        for window in self._windows(process):
            yield from self._walk(window)

    def controls(self, process):
        return [control for window in self._windows(process)
                if self._has(window, self._STATE_ACTIVE)
                for control in self._controls(window, window, window)]

    def _controls(self, node, pane, window):
        state, role = self._state(node), self._role(node)
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
        """The middle of what a click on that label is to hit, or None."""
        for node in self._nodes(process):
            if self._role(node) in self._CLICKED and self._name(node) == label:
                place = self.place(node)
                if len(place) == 4 and place[2] > 0 and place[3] > 0:
                    return place[0] + place[2] // 2, place[1] + place[3] // 2
        return None

    def close(self):
        self._daemon.terminate()
        self._daemon.wait()
        self._daemon.stdout.close()


class RoadTest(unittest.TestCase):
    """A test with a sandbox of its own; leaves a picture of the screen when it fails."""

    def setUp(self):
        self.sandbox = Sandbox()

    def tearDown(self):
        outcome = self._outcome.result
        failed = any(test is self for test, _ in outcome.failures + outcome.errors)
        if failed and SCREENS:
            os.makedirs(SCREENS, exist_ok=True)
            take_picture(os.path.join(SCREENS, f"{self.id()}.png"))
        self.sandbox.close()
