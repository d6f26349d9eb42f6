"""A person studies: cards scored by keys, a score taken back, and all of it there the next day."""

import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press, wait_until

SCHEDULES = """SELECT CardId, Front, Introduced, LastReview, LastScore, ReviewInterval, Difficulty, ERC
               FROM Cards ORDER BY CardId"""
HIDDEN = "The back side of this flash card is hidden"
INTRODUCED = "SELECT CardId, LastScore FROM Cards WHERE Introduced = 1"


class StudyRoad(RoadTest):
    def study(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        return program

    def introduced(self):
        return dict(self.sandbox.query(INTRODUCED))

    def score(self, digit):
        """Shows the back, scores the card, and gives the id of the card that was stored."""
        before = self.introduced()
        press("space", str(digit))
        after = wait_until(lambda: (now := self.introduced()) != before and now,
                           f"a card scored {digit}")
        changed = [card for card in after if before.get(card) != after[card]]
        self.assertEqual(1, len(changed))
        self.assertEqual(digit, after[changed[0]])
        return changed[0]

    def test_ten_scores_one_taken_back_and_nothing_lost(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.study()
        # Passes alone, so that no card comes back while the test runs.
        digits = (3, 4, 5, 4, 3, 5, 5, 4, 3, 4)
        cards = [self.score(digit) for digit in digits]
        scores = dict(zip(cards, digits))
        self.assertEqual(10, len(scores))

        press("Left")
        program.wait_no_text(HIDDEN)
        press("2")
        program.wait_window("Rescore")
        program.click("Original Score")
        program.wait_no_window("Rescore")
        self.assertEqual(scores, self.introduced())

        program.wait_window(STUDY_WINDOW)
        press("2")
        program.wait_window("Rescore")
        program.click("Rescore")
        wait_until(lambda: self.introduced().get(cards[-1]) == 2, "the new score")
        program.wait_window(STUDY_WINDOW)

        self.assertEqual(0, program.quit())
        scores[cards[-1]] = 2
        self.assertEqual(scores, self.introduced())
        before = self.sandbox.query(SCHEDULES)

        program = self.study()
        self.assertEqual(0, program.quit())
        self.assertEqual(before, self.sandbox.query(SCHEDULES))
        self.sandbox.check_store()

    def test_the_mouse_shows_the_back(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        program = self.study()
        program.wait_text(HIDDEN)
        program.click_at(STUDY_WINDOW, 0.5, 0.3)
        program.wait_no_text(HIDDEN)
        press("5")
        wait_until(self.introduced, "a card scored 5")
        self.assertEqual(0, program.quit())


if __name__ == "__main__":
    unittest.main()
