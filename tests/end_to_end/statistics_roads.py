"""A person studies and then looks at what came of it: the statistics count the scores, draw them and
lead to the cards that were hard."""

import os
import re
import unittest

from driver import (DESKTOP, LIST_WINDOW, STUDY_WINDOW, RoadTest, press, run_tool, wait_until)

STATISTICS_WINDOW = "Statistics - Velomind"
# How many cards get each score.
SCORES = {3: 6, 4: 4, 5: 10}
# The shades of those scores in the light theme.
SHADES = {3: "9CCBE8", 4: "3F8FC8", 5: "0B4F8A"}


class StatisticsRoad(RoadTest):
    def count_shades(self, window):
        """The number of pixels of each score's shade in a picture of the window."""
        path = self.sandbox.path("statistics.png")
        DESKTOP.take_picture(path, window)
        histogram = run_tool("convert", path, "-depth", "8", "-format", "%c", "histogram:info:-")
        counts = {}
        for score, shade in SHADES.items():
            found = re.search(rf"(\d+): [^#]*#{shade}", histogram)
            counts[score] = int(found.group(1)) if found else 0
        return counts

    def test_twenty_cards_are_studied_and_the_picture_shows_them(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+t")
        program.wait_window(STATISTICS_WINDOW)
        program.wait_text("No reviews yet")
        press("Escape")
        program.wait_no_window(STATISTICS_WINDOW)

        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        done = 0
        for score, count in SCORES.items():
            for _ in range(count):
                press("space", str(score))
                done += 1
                wait_until(lambda: done == self.sandbox.query(
                    "SELECT COUNT(*) FROM Cards WHERE Introduced = 1")[0][0], f"score {done}")
        press("ctrl+t")
        window = program.wait_window(STATISTICS_WINDOW)
        program.wait_text("reviewed today")
        wait_until(lambda: "20" in program.read(), "the count of today")
        # The second page after the overview: one bar of today, whose parts are as high as counts.
        press("Down", "Down")
        program.wait_text("20 reviews.")
        counts = wait_until(
            lambda: min((seen := self.count_shades(window)).values()) > 500 and seen, "the bar")
        for score, count in SCORES.items():
            self.assertAlmostEqual(count / 20, counts[score] / sum(counts.values()), delta=0.04)
        # The list of numbers stands before the box that shows it; the last row is today.
        press("alt+n", "shift+Tab", "End")
        program.wait_text("score 3 6, score 4 4, score 5 10, in all 20")
        press("Escape")
        program.wait_no_window(STATISTICS_WINDOW)
        self.assertEqual(0, program.quit())


if __name__ == "__main__":
    unittest.main()
