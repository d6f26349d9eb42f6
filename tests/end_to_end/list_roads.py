"""A person finds, opens, deletes and moves cards in the list by the keys alone, and names categories."""

import os
import re
import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, wait_until

EDIT_WINDOW = "Edit - Velomind"
DELETE_BOX = "Delete Card(s)"
BLANK = "Categories cannot have a blank name"
CARDS = "SELECT group_concat(Front || Name, ' ') FROM Cards JOIN Categories ON CategoryId = Id"
INTRODUCED = "SELECT Front FROM Cards WHERE Introduced = 1 ORDER BY Front"


class ListRoad(RoadTest):
    def setUp(self):
        super().setUp()
        rows = [f"{front}\tx\t{category}" for front, category in ("a1", "b1", "c1", "d1", "e2")]
        cards = self.sandbox.write("cards.txt", "\n".join(["Front\tBack\tCategory", *rows]))
        self.assertEqual(0, self.sandbox.run("--import", cards))
        self.sandbox.let_read_windows()
        self.program = self.sandbox.start()
        self.program.wait_window(LIST_WINDOW)

    def open_and_leave(self, window, keys, leave="Escape"):
        press(*keys.split())
        self.program.wait_window(window)
        press(leave)
        self.program.wait_no_window(window)
        self.program.wait_window(LIST_WINDOW)

    def wait_cards(self, cards):
        wait_until(lambda: self.sandbox.query(CARDS) == [(cards,)], cards)

    def wait_focus(self, name):
        self.program.wait_focus(name)

    def test_the_keys_always_have_a_card(self):
        # At the start, after a search with one card, after a window and a menu above the list.
        for window, keys in ((EDIT_WINDOW, "Return"), (EDIT_WINDOW, "ctrl+e"),
                             (DELETE_BOX, "Delete"), (EDIT_WINDOW, "ctrl+f c Return Down Return"),
                             (EDIT_WINDOW, "KP_Enter"), (DELETE_BOX, "Menu Escape Delete")):
            self.open_and_leave(window, keys)
        press("ctrl+2")
        self.program.wait_window(STUDY_WINDOW)
        press("ctrl+1")
        self.program.wait_window(LIST_WINDOW)
        self.open_and_leave(DELETE_BOX, "Delete", "Return")
        self.wait_cards("a1 b1 d1 e2")
        # All others are there again, and Shift reaches from the first one on.
        self.open_and_leave(DELETE_BOX, "ctrl+f Escape Escape shift+Down Delete", "Return")
        self.wait_cards("d1 e2")

    def move_first_card(self):
        """Into the second category, by the keys alone."""
        press("ctrl+x", "F4")
        self.wait_focus("1")
        press("Down", "Return", "ctrl+v")
        self.wait_cards("a2 b1 c1 d1 e2")
        self.program.wait_no_window("Progress")
        self.program.wait_window(LIST_WINDOW)

    def wait_order(self, fronts):
        order = ("SELECT group_concat(Front, ' ') FROM (SELECT * FROM Cards"
                 " WHERE Front <> 'e' ORDER BY IntroductionOrder)")
        wait_until(lambda: self.sandbox.query(order) == [(fronts,)], fronts)

    def test_the_order_of_introduction_changes_by_the_keys(self):
        press("ctrl+f", "Escape", "Home", "alt+Down")
        self.wait_order("b a c d")
        press("alt+Down")
        self.wait_order("b c a d")
        press("alt+Up", "ctrl+z", "ctrl+z")
        self.wait_order("b a c d")
        self.program.wait_window(LIST_WINDOW)

    def test_cards_move_by_the_keys(self):
        self.move_first_card()
        self.open_and_leave(DELETE_BOX, "Delete")

    def test_the_categories_open_over_the_list_and_the_button_studies(self):
        for close in (lambda: press("Escape"), lambda: self.program.click_at(LIST_WINDOW, .5, .9),
                      lambda: press("Return"), lambda: self.program.click("Category: 1")):
            press("F4")
            self.wait_focus("1")
            close()
            wait_until(lambda: "1" not in [control.name for control in self.program.controls()],
                       "the end of the list of categories")
            press("ctrl+f", "Escape")
        # What is pressed goes where the focus was before.
        press("F4", "Escape")
        self.open_and_leave(EDIT_WINDOW, "Return")
        self.program.click("Study")
        self.program.wait_window(STUDY_WINDOW)

    @on_one_desktop
    def test_a_search_in_all_categories_finds_a_card_and_is_offered_again(self):
        press("ctrl+f", "alt+Down", "Up", "Return")
        # The field has the keys again once the cards are there.
        self.program.wait_text("5 cards")
        press("e", "Return")
        self.program.wait_text("1 card")
        self.open_and_leave(DELETE_BOX, "Down Delete", "Return")
        self.wait_cards("a1 b1 c1 d1")
        self.program.wait_text("Nothing here matches the search")
        press("ctrl+f", "Delete", "alt+Down", "Down", "Return", "Down")
        self.program.wait_text("Nothing here matches the search")
        press("ctrl+f", "Escape")
        self.program.wait_no_text("Nothing here matches the search")
        self.open_and_leave(DELETE_BOX, "Down Delete", "Return")
        self.wait_cards("b1 c1 d1")

    def test_columns_are_chosen_by_the_keys_and_kept(self):
        def shown():
            path = os.path.join(self.sandbox.config, "Velomind.conf")
            if not os.path.exists(path):
                return []
            with open(path, encoding="utf-8") as file:
                return re.findall("^CardListShown=(.*)$", file.read(), re.MULTILINE)
        press("ctrl+shift+c", "Down", "Down", "Return")
        wait_until(lambda: shown() == ["Author,Category"], "the author shown")
        self.assertEqual(0, self.program.quit())
        self.program = self.sandbox.start()
        self.program.wait_window(LIST_WINDOW)
        press("ctrl+shift+c", "Down", "Down", "Return")
        wait_until(lambda: shown() == ["Category"], "the author hidden")

    def rename_category(self, name):
        press("ctrl+r")
        self.program.wait_window("Rename Category")
        press(name, "Return")
        self.program.wait_no_window("Rename Category")

    def score(self):
        scored = self.sandbox.query(INTRODUCED)
        press("ctrl+2")
        self.program.wait_window(STUDY_WINDOW)
        press("space", "4")
        wait_until(lambda: self.sandbox.query(INTRODUCED) != scored, "a card scored")
        press("ctrl+1")
        self.program.wait_window(LIST_WINDOW)

    @on_one_desktop
    def test_cards_deleted_by_mistake_come_back_after_studying_went_on(self):
        deleted = "SELECT * FROM Cards WHERE Front IN ('a', 'b') ORDER BY Front"
        self.score()
        before = self.sandbox.query(deleted)
        self.open_and_leave(DELETE_BOX, "shift+Down Delete", "Return")
        self.wait_cards("c1 d1 e2")
        self.score()
        # The search field has the focus, so that the key takes back what was typed there.
        press("ctrl+f", "x", "ctrl+z", "Escape")
        for label in ("Edit", "Undo deletion of 2 cards"):
            self.program.click(label)
        self.wait_cards("c1 d1 e2 a1 b1")
        self.assertEqual(before, self.sandbox.query(deleted))
        self.assertEqual([("a",), ("c",)], self.sandbox.query(INTRODUCED))
        # The cards that came back are selected, and nothing else is left to take back.
        self.open_and_leave(DELETE_BOX, "ctrl+z Delete", "Return")
        self.wait_cards("c1 d1 e2")

    @on_one_desktop
    def test_moves_names_and_merges_are_taken_back_one_after_the_other(self):
        self.move_first_card()
        self.rename_category("7")
        self.wait_cards("a7 b1 c1 d1 e7")
        self.program.wait_window(LIST_WINDOW)
        self.rename_category("1")
        self.program.wait_window("Confirm Rename")
        press("Return")
        self.wait_cards("a1 b1 c1 d1 e1")
        self.program.wait_window(LIST_WINDOW)
        self.take_back_and_do_again((
            ("moving of 1 card", "a1 b1 c1 d1 e2"), ('renaming of category "2"', "a2 b1 c1 d1 e2"),
            ('merging of category "7"', "a7 b1 c1 d1 e7"), ("", "a1 b1 c1 d1 e1")))

    def take_back_and_do_again(self, steps):
        """Takes all steps back by the keys and does them again by the menu, each told by its name and
        by the cards before it; the last has no name."""
        for _, cards in reversed(steps[:-1]):
            press("ctrl+z")
            self.wait_cards(cards)
            self.program.wait_window(LIST_WINDOW)
        for (name, _), (_, cards) in zip(steps, steps[1:]):
            self.program.click("Edit")
            self.program.click(f"Redo {name}")
            self.wait_cards(cards)
            self.program.wait_window(LIST_WINDOW)

    @on_one_desktop
    def test_what_was_edited_written_and_pasted_is_taken_back_and_done_again(self):
        for key, *typed in (("Return", "End", "z"), ("ctrl+n", "n", "Tab", "x")):
            press(key)
            self.program.wait_window(EDIT_WINDOW)
            press(*typed, "ctrl+Return")
            self.program.wait_no_window(EDIT_WINDOW)
            self.program.wait_window(LIST_WINDOW)
        edited = "az1 b1 c1 d1 e2"
        self.wait_cards(edited + " n1")
        # The pasted card comes beside the one that the keys were on.
        press("ctrl+c", "ctrl+v")
        self.wait_cards(edited + " n1 n1")
        self.program.wait_no_window("Progress")
        self.program.wait_window(LIST_WINDOW)
        self.take_back_and_do_again((
            ('editing of "az"', "a1 b1 c1 d1 e2"), ('new card "n"', edited),
            ("pasting of 1 card", edited + " n1"), ("", edited + " n1 n1")))

    def answer_blank_first(self, title, name):
        self.program.wait_window(title)
        press("space", "Return")
        self.program.wait_text(BLANK)
        press("Return")
        self.program.wait_no_text(BLANK)
        self.open_and_leave(title, name, "Return")

    def test_a_category_is_added_and_renamed_by_the_mouse_but_not_to_a_blank(self):
        press("ctrl+shift+n")
        self.answer_blank_first("Add Category", "3")
        for label in ("Edit", "Rename"):
            self.program.click(label)
        self.answer_blank_first("Rename Category", "4")
        self.wait_cards("a4 b4 c4 d4 e2")
        self.assertEqual([(3,)], self.sandbox.query("SELECT Name FROM Categories WHERE Id > 1"))


class LongListRoad(RoadTest):
    def test_scrolling_and_sorting_leave_the_toolkit_nothing_to_complain_of(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        # A search without a card leaves its notice behind, hidden, for the rows to scroll over.
        for keys in (("ctrl+f", "z", "z", "Return"), ("Escape",), ("Escape",)):
            press(*keys)
            program.settle()
        for across in (.3, .7, .6):
            press("Next", "Next", "End", "Home", "End")
            program.settle()
            program.click_at(LIST_WINDOW, across, .17)
            program.settle()
        self.assertEqual(0, program.quit())
        self.assertEqual("", program.error_text())


class EmptyListRoad(RoadTest):
    @on_one_desktop
    def test_the_first_start_says_what_to_do(self):
        self.sandbox.let_read_windows()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.wait_text("Ctrl+N writes a card, Ctrl+I imports a list.")
        press("ctrl+n")
        program.wait_window(EDIT_WINDOW)
        press("a", "Tab", "b", "ctrl+Return")
        wait_until(lambda: self.sandbox.card_count() == 1, "the card")
        program.wait_no_text("Ctrl+N writes a card")


if __name__ == "__main__":
    unittest.main()
