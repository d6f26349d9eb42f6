"""A person takes cards out: on the clipboard for another program, and into a file."""

import os
import subprocess
import unittest
from unittest import mock

from driver import (DESKTOP, LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press,
                    type_text, wait_until)


class ExportRoad(RoadTest):
    def test_a_card_leaves_as_text(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)

        press("ctrl+c")
        copied = wait_until(DESKTOP.clipboard, "text on the clipboard")
        names, values = (line.split("\t") for line in copied.splitlines())
        card = dict(zip(names, values))
        self.assertEqual(("一", "いち", "one"), (card["Front"], card["Front2"], card["Back"]))

        # The entry above those of the stores and backups.
        press("alt+f", "Up", "Up", "Up", "Up", "Up", "Up", "Return")
        program.wait_window("Export Options")
        press("alt+o")
        program.wait_window("Export Flashcards")
        press("ctrl+a")
        type_text(self.sandbox.path("out.txt"))
        press("Return")
        program.wait_window("Export Complete")
        press("Return")
        program.wait_no_window("Export Options")
        with open(os.path.join(self.sandbox.root, "out.txt"), encoding="utf-16") as file:
            lines = file.read().splitlines()
        self.assertEqual([f"id: {card['id']}", "Front: 一", "Front2: いち", "Back: one"], lines[:4])

        # Row ids mean nothing once the program has ended.
        self.assertEqual(0, program.quit())
        self.assertIsNone(DESKTOP.clipboard())

    @on_one_desktop
    def test_the_range_that_the_keys_are_at_is_exported(self):
        for words in ("japanese.txt", "french.txt"):
            self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample(words)))
        self.sandbox.let_read_windows()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.click("File")
        program.click("Export...")
        program.wait_window("Export Options")
        while not any(control.focused and control.name.startswith("Current Category")
                      for control in program.controls()):
            press("Tab")
            program.settle()
        press("Up", "Return")
        program.wait_window("Export Flashcards")
        press("ctrl+a")
        type_text(self.sandbox.path("all.txt"))
        press("Return")
        program.wait_text(f"{self.sandbox.card_count()} Records Exported")

    def test_copies_of_all_cards_of_the_list(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        count = self.sandbox.card_count()
        program = self.sandbox.start()
        program.click_at(LIST_WINDOW, 0.6, 0.4)
        press("ctrl+a", "ctrl+c")
        wait_until(lambda: len((DESKTOP.clipboard() or "").splitlines()) == count + 1, "all cards as text")
        press("ctrl+v")
        wait_until(lambda: self.sandbox.card_count() == 2 * count, "copies of all cards")
        program.wait_no_window("Progress")
        self.assertEqual(0, program.quit())
        self.assertEqual([(2 * count,)],
                         self.sandbox.query("SELECT COUNT(DISTINCT CardId) FROM Cards"))
        self.sandbox.check_store()

    @on_one_desktop
    def test_in_turkish_words_are_found_and_a_file_of_ours_is_read(self):
        subprocess.run(["localedef", "--no-archive", "-i", "tr_TR", "-f", "UTF-8",
                        self.sandbox.path("tr_TR.UTF-8")], check=True)
        self.enterContext(mock.patch.dict(os.environ, LOCPATH=self.sandbox.root))
        self.sandbox.locale = "tr_TR.UTF-8"
        path = self.sandbox.write("words.txt", "FRONT\tBACK\nMIT\tmit\nother\tword\n")
        self.assertEqual(0, self.sandbox.run("--import", path))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+f")
        type_text("MIT")
        press("Return")
        program.click_at(LIST_WINDOW, 0.6, 0.4)
        press("ctrl+a", "ctrl+c")
        found = wait_until(DESKTOP.clipboard, "text on the clipboard")
        self.assertEqual(["MIT"], [line.split("\t")[1] for line in found.splitlines()[1:]])
        press("ctrl+i")
        program.wait_window("Import Flashcards")
        press("Escape")
        program.wait_no_window("Import Flashcards")
        self.assertEqual(0, program.quit())
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.write("copied.txt", found)))
        self.assertEqual(2, self.sandbox.card_count())


if __name__ == "__main__":
    unittest.main()
