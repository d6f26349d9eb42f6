"""Settings that make no sense, and places where none can be kept, do not stop a person's study."""

import os
import shutil
import time
import unittest

from driver import (DESKTOP, LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, run_tool,
                    wait_until)

KEYS = ("Font", "FontColor", "StudyBgColor", "BrowseFont", "CardLayout", "CompactScoring", "LastWindow",
        "EarlyIntroduction", "EarlyIntroductionInterval", "CurrentCategoryId", "CardListColumns",
        "ImportDialogColumnWidths", "QuickHelp", "Test", "StudyFramePosition", "StudyFrameSize",
        "EditFramePosition", "BrowseFramePosition", "BrowseFrameSize", "ImportDialogPosition")
WARNING = "Velomind Warning"


class SettingsRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()

    def study(self, program):
        """Scores one card, after each window was open."""
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("ctrl+e")
        program.wait_window("Edit - Velomind")
        press("ctrl+w")
        program.wait_window(STUDY_WINDOW)
        press("space", "4")
        wait_until(lambda: self.sandbox.query("SELECT SUM(Introduced) FROM Cards") == [(1,)],
                   "a score")

    @on_one_desktop
    def test_nonsense_in_every_key(self):
        for nonsense in ("%s $HOME \\", "-99999999999999999999", "1,2,3,4,5,6,7", "Sans 9999999"):
            with self.subTest(nonsense):
                self.sandbox.close()
                self.setUp()
                self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("capitals.txt")))
                self.sandbox.set_setting("\n[[broken\n", "no name\n\n[/]")
                for key in KEYS:
                    self.sandbox.set_setting(key, nonsense)
                program = self.sandbox.start()
                self.study(program)
                self.assertEqual(0, program.quit())

    @on_one_desktop
    def test_no_place_for_settings_and_no_directory_for_documents(self):
        shutil.rmtree(self.sandbox.config)
        self.sandbox.write("config", "a file in place of the directory")
        self.sandbox.home = os.path.join(self.sandbox.home, "not", "there")
        self.sandbox.store = os.path.join(self.sandbox.home, "FlashCards2.vlm")
        for start in (("--import", self.sandbox.sample("capitals.txt")), ()):
            program = self.sandbox.start(*start)
            program.wait_window(WARNING)
            program.wait_text("Your settings cannot be kept: ")
            press("Return")
            program.wait_no_window(WARNING)
        self.study(program)
        self.assertEqual([], program.windows(WARNING), "told once")
        self.assertEqual(0, program.quit())


@unittest.skipUnless(DESKTOP.has_places, "the test reaches the title bar where windows have places")
class MaximisedRoad(RoadTest):
    def maximise(self, window, maximised):
        # The program takes the first moments of a window for the window manager's own doing.
        settled = time.monotonic() + 0.5
        wait_until(lambda: time.monotonic() > settled, "a settled window")
        run_tool("xdotool", "mousemove", "--window", window, "100", "-10",
                 "click", "--repeat", "2", "--delay", "40", "1")
        self.wait_maximised(window, maximised)

    def wait_maximised(self, window, maximised):
        wait_until(lambda: ("MAXIMIZED" in run_tool("xprop", "-id", window, "_NET_WM_STATE")) == maximised,
                   f"maximised {maximised}")

    def test_a_maximised_window_is_so_again_and_returns_to_its_place(self):
        self.sandbox.set_setting("BrowseFramePosition", "60,70,700,500")
        program = self.sandbox.start()
        window = program.wait_window(LIST_WINDOW)
        place = DESKTOP.place(window)
        self.maximise(window, True)
        self.assertEqual(0, program.quit())
        program = self.sandbox.start()
        window = program.wait_window(LIST_WINDOW)
        self.wait_maximised(window, True)
        self.maximise(window, False)
        wait_until(lambda: DESKTOP.place(window) == place, "the place before")
        self.assertEqual(0, program.quit())


if __name__ == "__main__":
    unittest.main()
