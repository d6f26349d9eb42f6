"""Drives the real program as a person would: windows found by their titles, keys and clicks sent to
the desktop, and the outcome read from the store file behind the program's back.

Needs a display of scripts/with-display, of X or with --wayland.
"""

import os
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
sys.path.insert(0, os.path.join(ROOT, "scripts"))

from accessibility import AccessibilityBus  # noqa: E402  (found by the line above)
from desktop import DESKTOP, LIMIT, run_tool, wait_until  # noqa: E402

SAMPLES = os.path.join(ROOT, "samples")
# Where a failed test leaves a picture of the screen.
SCREENS = os.environ.get("VELOMIND_SCREENS", "")

LIST_WINDOW = "List - Velomind"
STUDY_WINDOW = "Study - Velomind"


def press(*keys):
    """Presses and releases keys, by their X names, in whatever window is active."""
    DESKTOP.press(*keys)


def type_text(text):
    DESKTOP.type_text(text)


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
        self.desktop_settings = "memory"
        self._programs = []
        if not DESKTOP.tells_windows:
            self.let_read_windows()

    def _make(self, name):
        path = os.path.join(self.root, name)
        os.mkdir(path, 0o700)
        return path

    def environment(self):
        environment = dict(os.environ)
        environment.update(
            HOME=self.home, XDG_CONFIG_HOME=self.config, XDG_RUNTIME_DIR=self.runtime,
            LC_ALL=self.locale, LANGUAGE=self.language,
            GSETTINGS_BACKEND=self.desktop_settings, NO_AT_BRIDGE="1")
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
        return shutil.copy(os.path.join(SAMPLES, name), self.path(os.path.basename(name)))

    def set_setting(self, key, value):
        with open(os.path.join(self.config, "Velomind.conf"), "a", encoding="utf-8") as file:
            file.write(f"{key}={value}\n")

    def change_desktop(self, theme, scaling):
        """Gives the desktop a theme and a text size, for programs started after the first call. Only
        one of Wayland takes them from here."""
        self.desktop_settings = "keyfile"
        directory = os.path.join(self.config, "glib-2.0", "settings")
        os.makedirs(directory, exist_ok=True)
        with open(os.path.join(directory, "keyfile.new"), "w", encoding="utf-8") as file:
            file.write(f"[org/gnome/desktop/interface]\ngtk-theme='{theme}'\n"
                       f"text-scaling-factor={scaling}\n")
        os.replace(os.path.join(directory, "keyfile.new"), os.path.join(directory, "keyfile"))

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

    def window_names(self):
        """The titles of the windows on the screen, as far as anybody tells them."""
        if DESKTOP.tells_windows:
            return DESKTOP.titles()
        return [name for program in self._programs for name in self.bus.names(program.process.pid)]

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
                [BINARY, *arguments],
                env={**sandbox.environment(), **DESKTOP.launch_environment()}, cwd=sandbox.root, stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)

    def error_text(self):
        with open(self._error_path, encoding="utf-8", errors="replace") as file:
            return file.read()

    def windows(self, title):
        """Ids of the visible windows of this run with that title."""
        return self._desk().windows(self.process.pid, title)

    def _desk(self):
        """What tells of the windows."""
        return DESKTOP if DESKTOP.tells_windows else self._sandbox.bus

    def settle(self):
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
            if self._desk().is_active(window):
                self.settle()
                return window
            self._desk().activate(window)
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

    def wait_focus(self, name):
        """Waits until what has the focus is called so."""
        wait_until(lambda: [name] == [control.name for control in self.controls() if control.focused],
                   f"the focus on {name}")

    def tab_to(self, name):
        """Presses Tab until what is called so has the focus; asks for let_read_windows."""
        for _ in range(60):
            if any(control.focused and control.name == name for control in self.controls()):
                return
            press("Tab")
            self.settle()
        raise AssertionError(f"“{name}” is not reached by Tab")

    def click(self, label, times=1):
        """Clicks the button, menu or entry of that label; asks for let_read_windows."""
        node, x, y = wait_until(lambda: self._sandbox.bus.find(self.process.pid, label),
                                f"“{label}” to click at")
        self.settle()
        if DESKTOP.tells_windows:
            DESKTOP.click(x, y, times=times)
        else:
            self._press_control(label, node)

    def _press_control(self, label, node):
        """Presses a button, menu or entry by the keys, where the pointer cannot find it."""
        role = self._sandbox.bus.role(node)
        step, last = {"menu": ("alt+" + label[0].lower(), None),
                      "menu item": ("Down", "Return"),
                      "check menu item": ("Down", "Return")}.get(role, ("Tab", "space"))
        for _ in range(50):
            self.settle()
            if self._sandbox.bus.is_chosen(node):
                press(*[last] if last else [])
                return
            press(step)
        raise AssertionError(f"“{label}” is not reached by {step}")

    def click_at(self, title, across, down):
        """Clicks a window at parts of its width and height."""
        left, top, width, height = DESKTOP.place(self.wait_window(title))
        DESKTOP.click(left + int(width * across), top + int(height * down))

    def open_import(self, path):
        """Chooses a file to import and waits for the dialog that shows it."""
        press("ctrl+i")
        self.wait_window("Import Flashcards")
        type_text(path)
        press("Return")
        self.wait_window("Import")

    def close(self, title):
        DESKTOP.close(self.wait_window(title))

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
        # A window that a dialog has just left takes no close yet.
        self.settle()
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


def on_one_desktop(test):
    """Marks what no desktop can change, as it is about the store, files and texts: on X it runs, on
    the others it would show the same again."""
    return unittest.skipIf(os.environ.get("VELOMIND_DESKTOP", "x11") != "x11",
                           "no desktop changes what comes of it")(test)


class RoadTest(unittest.TestCase):
    """A test with a sandbox of its own. When it fails, its message ends with what was on the screen
    and with how to run it alone."""

    def setUp(self):
        self.sandbox = Sandbox()

    def tearDown(self):
        outcome = self._outcome.result
        for found in (outcome.failures, outcome.errors):
            # Those of a table count for the whole test.
            mine = [number for number, (test, _) in enumerate(found)
                    if getattr(test, "test_case", test) is self]
            if mine:
                test, text = found[mine[-1]]
                found[mine[-1]] = test, text + self._describe_screen()
        self.sandbox.close()

    def _describe_screen(self):
        lines = ["", f"windows on the screen: {self.sandbox.window_names() or 'none'}"]
        if SCREENS:
            os.makedirs(SCREENS, exist_ok=True)
            picture = os.path.join(SCREENS, f"{self.id()}.png")
            DESKTOP.take_picture(picture)
            lines.append(f"a picture of the screen: {picture}")
        kind = os.environ.get("VELOMIND_DESKTOP", "x11")
        place = os.path.relpath(os.path.dirname(sys.modules[type(self).__module__].__file__), ROOT)
        lines.append(f"to run it alone: (cd {place} && VELOMIND_BINARY={BINARY} {ROOT}/scripts/with-display"
                     f" --test --{kind} python3 -B -m unittest {self.id()})")
        return "\n".join(lines) + "\n"
