"""A window is as large inside its frame as it was left, whoever draws the frame."""

import unittest

from driver import DESKTOP, LIST_WINDOW, STUDY_WINDOW, RoadTest, press, wait_until


class FrameRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("capitals.txt")))

    def shape(self, program, title):
        """Width and height inside the frame, and the corner where the desktop tells it."""
        window = program.wait_window(title)
        content = wait_until(
            lambda: self.sandbox.bus.content(program.process.pid, title), "a content")
        return content, DESKTOP.place(window)[:2] if DESKTOP.tells_windows else None

    def start_and_end(self):
        """The shapes of the list and the study window in one run."""
        program = self.sandbox.start()
        shapes = [self.shape(program, LIST_WINDOW)]
        press("ctrl+2")
        shapes.append(self.shape(program, STUDY_WINDOW))
        press("ctrl+1")
        shapes.append(self.shape(program, LIST_WINDOW))
        self.assertEqual(0, program.quit())
        return shapes

    def check_sizes(self, size):
        shapes = self.start_and_end()
        self.assertEqual([size] * 3, [content for content, _ in shapes])
        for _ in range(2):
            self.assertEqual(shapes, self.start_and_end())

    def test_the_first_size_stays_from_start_to_start(self):
        self.check_sizes([640, 480])

    def test_a_size_of_an_earlier_version_stays_from_start_to_start(self):
        for key in ("BrowseFramePosition", "StudyFramePosition"):
            self.sandbox.set_setting(key, "120,90,700,500")
        self.check_sizes([700, 500])

    @unittest.skipUnless(DESKTOP.tells_windows, "nobody can drag the frame of a window here")
    def test_a_window_that_was_made_larger_stays_so(self):
        program = self.sandbox.start()
        DESKTOP.resize(program.wait_window(LIST_WINDOW), 900, 600)
        wait_until(lambda: self.shape(program, LIST_WINDOW)[0] == [900, 600], "a larger window")
        self.assertEqual(0, program.quit())
        self.assertEqual([900, 600], self.start_and_end()[0][0])


if __name__ == "__main__":
    unittest.main()
