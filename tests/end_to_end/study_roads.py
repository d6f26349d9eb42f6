"""A person studies: cards scored by keys, a score taken back, and all of it there the next day."""

import contextlib
import os
import sqlite3
import time
import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, type_text, wait_until

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

    @staticmethod
    def read_text(path):
        with open(path, encoding="utf-8") as file:
            return file.read()

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

    def import_two(self):
        """French, and then Japanese, which is current."""
        self.sandbox.let_read_windows()
        for words in ("french.txt", "japanese.txt"):
            self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample(words)))
        self.sandbox.set_setting("CurrentCategoryId", 1)

    def setting(self, key):
        with open(os.path.join(self.sandbox.config, "Velomind.conf"), encoding="utf-8") as file:
            lines = dict(line.rstrip("\n").partition("=")[::2] for line in file)
        return lines.get(key)

    def end_the_day(self, due):
        """Lets the next card of each category fall due tomorrow, but so many of the first one are due."""
        now = int(time.time())
        with contextlib.closing(sqlite3.connect(self.sandbox.store)) as store, store:
            store.execute("UPDATE Cards SET Introduced = 1, LastReview = ?, ReviewInterval = 90000, "
                          "NextReview = ?", (now - 3600, now + 86400))
            store.execute("UPDATE Cards SET ReviewInterval = 60, NextReview = ? WHERE ROWID IN "
                          "(SELECT ROWID FROM Cards WHERE CategoryId = 0 LIMIT ?)", (now - 3540, due))

    @on_one_desktop
    def test_each_score_tells_when_the_card_comes_back(self):
        self.import_two()
        program = self.study()
        press("space")
        program.wait_text("3 - Pass (with difficulty), 60 minutes")
        press("Up", "Up")
        program.wait_text("5 - Pass (no hesitation), 16 hours")
        press("Return")
        rows = wait_until(lambda: self.sandbox.query(
            "SELECT ReviewInterval FROM Cards WHERE Introduced = 1"), "a card scored 5")
        self.assertEqual([(16 * 3600.0,)], rows)
        self.assertEqual(0, program.quit())

    def test_a_double_click_on_show_back_scores_nothing(self):
        self.import_two()
        program = self.study()
        program.wait_text(HIDDEN)
        program.click("Show Back", times=2)
        program.wait_no_text(HIDDEN)
        self.assertEqual([4], list(self.score_shown(4).values()))
        self.assertEqual(0, program.quit())

    def score_shown(self, digit):
        """Scores the card whose back is shown; gives the scores of all cards."""
        before = self.introduced()
        press(str(digit))
        return wait_until(lambda: (now := self.introduced()) != before and now, "the score")

    @on_one_desktop
    def test_the_end_of_the_day_is_told_and_another_category_offered(self):
        self.import_two()
        self.end_the_day(due=7)
        program = self.study()
        program.wait_text("Nothing is due now.")
        program.wait_text("Study French (7 due)")
        # The keys still score, and the bar stays.
        reviewed = "SELECT COUNT(*) FROM Cards WHERE LastReview > 1 + (SELECT MIN(LastReview) FROM Cards)"
        press("space", "4")
        wait_until(lambda: self.sandbox.query(reviewed) == [(1,)], "an early review")
        program.wait_text("Nothing is due now.")
        press("Escape")
        program.wait_no_text("Nothing is due now.")
        press("space", "4")
        wait_until(lambda: self.sandbox.query(reviewed) == [(2,)], "another early review")
        self.assertFalse([line for line in program.read() if "Nothing is due now." in line])
        press("ctrl+d")
        program.wait_text("bonjour")
        self.assertEqual(0, program.quit())

    @on_one_desktop
    def test_the_bar_leads_to_the_category_that_it_offers(self):
        self.import_two()
        self.end_the_day(due=3)
        program = self.study()
        program.wait_text("Nothing is due now.")
        program.click("Study French (3 due)")
        program.wait_text("bonjour")
        press("space")
        program.wait_no_text(HIDDEN)
        self.assertEqual(0, program.quit())

    def test_a_category_above_another_studies_both(self):
        self.import_two()
        self.end_the_day(due=5)
        with contextlib.closing(sqlite3.connect(self.sandbox.store)) as store, store:
            store.execute("UPDATE Categories SET Name = 'Languages::French' WHERE Id = 0")
            store.execute("INSERT INTO Categories VALUES (2, 'Languages')")
        program = self.study()
        program.wait_text("Nothing is due now.")
        press("alt+Down")
        program.wait_focus("Japanese")
        type_text("la")
        program.wait_focus("Languages")
        press("Return")
        program.wait_text("bonjour")
        self.score(4)
        # The first letters find a name behind the blanks of a row below another, too.
        press("alt+Down")
        program.wait_focus("Languages")
        type_text("fr")
        program.wait_focus("French (4/0)")
        press("Return")
        wait_until(lambda: self.setting("CurrentCategoryId") == "0", "the lower category")
        self.assertEqual(0, program.quit())

    def test_a_category_is_chosen_without_the_list(self):
        self.import_two()
        self.end_the_day(due=5)
        program = self.study()
        program.wait_text("Nothing is due now.")
        press("alt+Down")
        program.wait_text("Japanese")
        press("Up")
        program.wait_text("French (5/0)")
        press("Return")
        program.wait_no_text("French (5/0)")
        program.wait_text("bonjour")
        # The scores have the keys again.
        press("space")
        program.wait_no_text(HIDDEN)
        self.assertEqual(0, program.quit())

    def test_an_answer_is_typed_and_the_difference_said(self):
        self.import_two()
        program = self.study()
        program.click("View")
        program.click("Type the Answer")
        program.wait_text("Your answer")
        # Digits, Delete and Space belong to the text while it is typed.
        type_text("ohayo 4")
        press("Delete", "Return")
        program.wait_no_text(HIDDEN)
        program.wait_text("wrong:")
        self.assertEqual({}, self.introduced())
        self.assertEqual([5], list(self.score_shown(5).values()))
        # The next card has the field again.
        type_text("x")
        press("Return")
        program.wait_no_text(HIDDEN)
        press("Return")
        wait_until(lambda: len(self.introduced()) == 2, "the proposed score")
        self.assertEqual([0, 5], sorted(self.introduced().values()))
        self.assertEqual("1", self.setting("TypeAnswerForward"))
        self.assertEqual(0, program.quit())

    def test_the_sides_are_spoken_by_the_desktops_service(self):
        config = os.path.join(self.sandbox.config, "speech-dispatcher")
        os.makedirs(os.path.join(config, "modules"))
        said = self.sandbox.path("said")
        with open(os.path.join(config, "speechd.conf"), "w", encoding="utf-8") as file:
            file.write('AudioOutputMethod "libao"\nLogLevel 0\nDefaultModule recorder\n'
                       'AddModule "recorder" "sd_generic" "recorder.conf"\n')
        with open(os.path.join(config, "modules", "recorder.conf"), "w", encoding="utf-8") as file:
            file.write(f"GenericExecuteSynth \"echo '$VOICE|$DATA' >> {said}; exec sleep 60\"\n"
                       'AddVoice "en" "MALE1" "Alice"\nAddVoice "ja" "MALE1" "Hana"\n')

        def wait_said(line):
            wait_until(lambda: os.path.exists(said) and line in self.read_text(said), line)

        self.import_two()
        program = self.study()
        self.assertFalse(os.listdir(self.sandbox.runtime).count("speech-dispatcher"))
        for entry in ("Speak the Front", "Speak the Back", "Voices..."):
            program.click("View")
            program.click("Speak")
            press("Right")
            program.click(entry)
        program.wait_window("Voices")
        program.wait_text("Front Voice:")
        program.click("OK")
        program.wait_window(STUDY_WINDOW)
        press("space")
        wait_said("|one")
        self.assertEqual(0, program.quit())

    def test_the_size_of_the_text_is_kept(self):
        self.import_two()
        program = self.study()
        # Two steps more than a new installation begins with.
        press("ctrl+plus", "ctrl+KP_Add", "ctrl+plus", "ctrl+minus")
        wait_until(lambda: self.setting("StudyTextStep") == "9", "larger text")
        self.assertEqual(0, program.quit())
        program = self.study()
        press("ctrl+plus")
        wait_until(lambda: self.setting("StudyTextStep") == "10", "still larger text")
        press("ctrl+0")
        wait_until(lambda: self.setting("StudyTextStep") == "0", "the usual size")
        self.assertEqual(0, program.quit())


if __name__ == "__main__":
    unittest.main()
