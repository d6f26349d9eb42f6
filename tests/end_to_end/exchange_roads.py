"""One list on two computers: two programs with a store each, and a folder between them."""

import os
import shutil
import unittest

from driver import (LIST_WINDOW, RoadTest, STUDY_WINDOW, Sandbox, on_one_desktop, press, type_text,
                    wait_until)

OPTIONS = "Options"
EDITOR = "Edit - Velomind"
BOTH = "Changed on Both"
QUESTION = "Exchange"
ASKS = "The exchange has a question: press F9"
CARDS = ("SELECT CardId,Front,Back,Name,Introduced,LastReview,LastScore,ReviewInterval,Difficulty"
         " FROM Cards LEFT JOIN Categories ON CategoryId=Id ORDER BY CardId")


class ExchangeRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.laptop = self.sandbox
        self.desk = Sandbox()
        self.laptop.let_read_windows()
        # One screen has one bus that tells what its windows say.
        self.desk.bus = self.laptop.bus
        self.folder = self.laptop.path("carried")
        os.mkdir(self.folder)
        self.assertEqual(0, self.laptop.run("--import", self.laptop.sample("capitals.txt")))

    def tearDown(self):
        self.desk.bus = None
        self.desk.close()
        super().tearDown()

    def start(self, computer, name, then="Exchanged"):
        """Starts the program of a computer that takes part from now on."""
        program = computer.start()
        program.wait_window(LIST_WINDOW)
        press("F9")
        program.wait_window(OPTIONS)
        press("alt+f", "ctrl+a")
        type_text(self.folder)
        press("alt+n", "ctrl+a")
        type_text(name)
        press("Return")
        program.wait_window(LIST_WINDOW)
        program.wait_text(then)
        return program

    def start_both(self):
        laptop = self.start(self.laptop, "laptop")
        desk = self.start(self.desk, "desk")
        self.wait_equal()
        self.assertGreater(self.desk.card_count(), 20)
        return laptop, desk

    def exchange(self, *programs):
        for program in programs:
            program.wait_window(LIST_WINDOW)
            press("F9")
            program.wait_text("Exchanged just now")

    def wait_equal(self):
        wait_until(lambda: self.laptop.query(CARDS) and
                   self.laptop.query(CARDS) == self.desk.query(CARDS), "equal lists")

    def edit_first(self, program, text):
        program.wait_window(LIST_WINDOW)
        press("Home", "ctrl+e")
        program.wait_window(EDITOR)
        press("alt+b", "ctrl+a")
        type_text(text)
        press("ctrl+Return")
        program.wait_window(LIST_WINDOW)

    @staticmethod
    def has_back(computer, text):
        return computer.query("SELECT COUNT(*) FROM Cards WHERE Back=?", text) == [(1,)]

    def test_what_is_done_last_goes_at_the_end_and_comes_at_the_start(self):
        laptop = self.start(self.laptop, "laptop")
        self.edit_first(laptop, "on the way")
        self.assertEqual(0, laptop.quit())
        desk = self.start(self.desk, "desk")
        self.wait_equal()
        self.assertTrue(self.has_back(self.desk, "on the way"))
        self.edit_first(desk, "on the way back")
        self.assertEqual(0, desk.quit())
        laptop = self.laptop.start()
        laptop.wait_window(LIST_WINDOW)
        self.wait_equal()
        self.assertTrue(self.has_back(self.laptop, "on the way back"))
        self.assertEqual(0, laptop.quit())
        self.laptop.check_store()
        self.desk.check_store()

    @on_one_desktop
    def test_what_is_studied_and_edited_on_one_is_so_on_the_other(self):
        laptop, desk = self.start_both()
        laptop.wait_window(LIST_WINDOW)
        press("ctrl+2")
        laptop.wait_window(STUDY_WINDOW)
        press("space", "4")
        wait_until(lambda: self.laptop.query("SELECT SUM(Introduced) FROM Cards") == [(1,)], "a score")
        press("ctrl+1")
        self.edit_first(desk, "from the desk")
        wait_until(lambda: self.has_back(self.desk, "from the desk"), "an edit")
        self.exchange(desk, laptop, desk)
        self.wait_equal()
        self.assertTrue(self.has_back(self.laptop, "from the desk"))
        laptop.wait_text("Exchanged just now with desk")
        self.assertEqual(0, laptop.quit())
        self.assertEqual(0, desk.quit())

    @on_one_desktop
    def test_of_two_texts_for_one_card_the_lost_one_can_be_taken(self):
        laptop, desk = self.start_both()
        self.edit_first(laptop, "typed first")
        self.edit_first(desk, "typed last")
        self.exchange(laptop, desk, laptop)
        wait_until(lambda: self.has_back(self.laptop, "typed last"), "the later text")
        self.wait_equal()
        desk.wait_window(LIST_WINDOW)
        desk.click("Tools")
        desk.click("Changed on Both...")
        desk.wait_window(BOTH)
        desk.wait_text("typed first")
        press("alt+t")
        desk.wait_text("No text was changed on two computers.")
        press("Escape")
        self.exchange(desk, laptop)
        self.wait_equal()
        self.assertTrue(self.has_back(self.laptop, "typed first"))
        laptop.wait_window(LIST_WINDOW)
        laptop.click("Tools")
        laptop.click("Changed on Both...")
        laptop.wait_window(BOTH)
        laptop.wait_text("No text was changed on two computers.")
        press("Escape")
        self.assertEqual(0, laptop.quit())
        self.assertEqual(0, desk.quit())

    @on_one_desktop
    def test_the_same_list_imported_on_both_becomes_one_list(self):
        self.assertEqual(0, self.desk.run("--import", self.desk.sample("capitals.txt")))
        cards = self.laptop.card_count()
        laptop = self.start(self.laptop, "laptop")
        desk = self.start(self.desk, "desk", ASKS)
        press("F9")
        desk.wait_window(QUESTION)
        desk.wait_text(f"{cards} cards here are equal to cards of another computer.")
        press("Return")
        self.exchange(desk, laptop, desk)
        self.wait_equal()
        self.assertEqual(cards, self.desk.card_count())
        self.assertEqual(0, laptop.quit())
        self.assertEqual(0, desk.quit())

    @on_one_desktop
    def test_a_store_from_yesterday_asks_before_it_sends_anything(self):
        laptop, desk = self.start_both()
        self.assertEqual(0, laptop.quit())
        former = shutil.copy(self.laptop.store, self.laptop.path("former.vlm"))
        laptop = self.laptop.start()
        self.edit_first(laptop, "since then")
        self.exchange(laptop, desk)
        wait_until(lambda: self.has_back(self.desk, "since then"), "the edit")
        self.assertEqual(0, laptop.quit())
        shutil.copy(former, self.laptop.store)
        laptop = self.laptop.start()
        laptop.wait_window(LIST_WINDOW)
        laptop.wait_text(ASKS)
        press("F9")
        laptop.wait_window(QUESTION)
        press("Escape")
        laptop.wait_window(LIST_WINDOW)
        self.assertFalse(self.has_back(self.laptop, "since then"))
        press("F9")
        laptop.wait_window(QUESTION)
        press("Return")
        wait_until(lambda: self.has_back(self.laptop, "since then"), "the present state")
        self.wait_equal()
        self.assertEqual(0, laptop.quit())
        self.assertEqual(0, desk.quit())


if __name__ == "__main__":
    unittest.main()
