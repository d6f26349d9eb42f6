"""A person corrects many cards at once and makes one card of two, and takes both back after study."""

import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, type_text, wait_until

CARDS = "SELECT Front, Back FROM Cards ORDER BY IntroductionOrder"
FIRST = [("ecole", "school"), ("maison", "house"), ("Ecole", "academy")]


class ReviseRoad(RoadTest):
    def setUp(self):
        super().setUp()
        rows = ["Front\tBack", *("\t".join(card) for card in FIRST)]
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.write("c.txt", "\n".join(rows))))
        self.sandbox.let_read_windows()
        self.program = self.sandbox.start()
        self.program.wait_window(LIST_WINDOW)

    def wait_cards(self, cards):
        wait_until(lambda: self.sandbox.query(CARDS) == cards, cards)

    def score_and_take_back(self, step):
        """Scores a card, undoes the step in the list, and finds all cards as they were but the score."""
        press("ctrl+2")
        self.program.wait_window(STUDY_WINDOW)
        press("space", "4")
        wait_until(lambda: self.sandbox.query("SELECT 1 FROM Cards WHERE Introduced = 1"), "a score")
        press("ctrl+1")
        self.program.wait_window(LIST_WINDOW)
        for label in ("Edit", step):
            self.program.click(label)
        self.wait_cards(FIRST)
        self.assertEqual([(1,)], self.sandbox.query("SELECT count(*) FROM Cards WHERE Introduced = 1"))

    def open_merge(self):
        for label in ("Edit", "Duplicates..."):
            self.program.click(label)
        self.program.wait_window("Duplicates")
        self.program.wait_text("1 group with 2 cards")
        press("Return")
        self.program.wait_window("Merge")

    @on_one_desktop
    def test_a_word_is_replaced_in_all_cards_by_the_keys(self):
        press("ctrl+f", "ctrl+h")
        self.program.wait_window("Find and Replace")
        type_text("ecole")
        press("Tab")
        type_text("lycee")
        self.program.wait_text("2 cards would change, 2 ticked")
        press("alt+r")
        self.program.wait_no_window("Find and Replace")
        changed = [("lycee", "school"), ("maison", "house"), ("Lycee", "academy")]
        self.wait_cards(changed)
        self.program.wait_window(LIST_WINDOW)
        for key, cards in (("ctrl+z", FIRST), ("ctrl+shift+z", changed)):
            press(key)
            self.wait_cards(cards)
        self.score_and_take_back("Undo replacement in 2 cards")

    @on_one_desktop
    def test_two_cards_of_one_word_become_one(self):
        self.open_merge()
        # Both are called off, and the list of duplicates ends with rows and the focus in it.
        for window in ("Duplicates", LIST_WINDOW):
            press("Escape")
            self.program.wait_window(window)
        self.open_merge()
        press("space")
        self.program.wait_text("No two cards are the same.")
        press("Escape")
        self.program.wait_window(LIST_WINDOW)
        self.wait_cards(FIRST[:2])
        self.score_and_take_back('Undo merging of cards "ecole"')

    @on_one_desktop
    def test_the_ticked_duplicates_are_merged_by_the_keys(self):
        for label in ("Edit", "Duplicates..."):
            self.program.click(label)
        self.program.wait_window("Duplicates")
        self.program.wait_text("1 group with 2 cards, 0 ticked")
        press("space")
        self.program.wait_text("1 ticked")
        press("alt+k")
        self.program.wait_text("Merge the cards of 1 group?")
        press("Return")
        self.program.wait_text("No two cards are the same.")
        press("Escape")
        self.program.wait_window(LIST_WINDOW)
        self.wait_cards(FIRST[:2])
        press("ctrl+z")
        self.wait_cards(FIRST)


if __name__ == "__main__":
    unittest.main()
