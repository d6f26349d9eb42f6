"""Files given to the program: by the dialogs, and on its command line, good ones, broken ones, and with
a kill on the way."""

import os
import unittest

from driver import LIMIT, LIST_WINDOW, RoadTest, press, type_text, wait_until

FAILURE = "Import Failed"
MARK = b"\xef\xbb\xbf"


class ImportRoad(RoadTest):
    def import_file(self, data):
        """Imports these bytes, closes the box of a failed import, and gives the exit code and
        whether there was a box."""
        path = self.sandbox.write("cards.txt", data)
        program = self.sandbox.start("--import", path)
        box = wait_until(
            lambda: program.process.poll() is not None or program.windows(FAILURE),
            "end or a box", 3 * LIMIT)
        if box is not True:
            program.wait_window(FAILURE)
            press("Return")
        code = program.wait()
        self.assertFalse(os.path.exists(path), "the file goes, whatever the import's result")
        return code, box is not True

    def test_a_fault_in_the_last_row_leaves_the_store_untouched(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        before = self.sandbox.store_bytes()

        rows = ["Front\tBack\tCategory\tLastScore"]
        rows += [f"front {number}\tback {number}\tnew\t3" for number in range(500)]
        rows += ["front\tback\tnew\t9"]
        path = self.sandbox.write("cards.txt", "\n".join(rows))
        program = self.sandbox.start("--import", path)
        program.wait_window(FAILURE)
        program.wait_text('"LastScore" must be followed by whole number between 0 and 5\n'
                          "Line Number: 502")
        press("Return")
        program.wait()
        self.assertEqual(before, self.sandbox.store_bytes())
        self.assertEqual([os.path.basename(self.sandbox.store)],
                         os.listdir(self.sandbox.documents))

    def test_hostile_files_end_with_a_sound_store(self):
        header = b"Front\tBack\n"
        names = b"\t".join(b"Notes%d" % number for number in range(1000000))
        # The file, the cards that come out of it, and whether the import is refused.
        table = {
            "nothing at all": (b"", 0, False),
            "only a mark": (MARK, 0, False),
            "only a header": (header, 0, False),
            "only blank rows": (b"\n\r\n\n", 0, True),
            "a missing cell": (header + b"front\n", 0, True),
            "every line end": (b"Front\tBack\ra\tb\nc\td\r\ne\tf", 3, False),
            "bad bytes behind a mark": (MARK + header + b"\xff\xc3(\tback\n", 1, False),
            "bytes of no encoding": (header + b"caf\xe9\t\x81\x8d\n", 1, False),
            "half a pair of UTF-16": (b"\xff\xfe" + "Front\tBack\na\t".encode("utf-16-le")
                                      + b"\x00\xd8\x41", 1, False),
            "zeros": (header + b"a\0b\tc\0\nd\te\n", None, None),
            "an unclosed quote": (header + b'"front\tback\n' * 3, 0, True),
            "a field of 50 MB": (header + b"x" * 50000000 + b"\tback\n", 1, False),
            "a million columns": (names + b"\nfront\tback\n", 0, True),
            "a million cells": (header + b"front\tback" + b"\tmore" * 1000000 + b"\n", 1, False),
        }
        cards = 0
        for name, (data, new_cards, refused) in table.items():
            with self.subTest(name):
                code, box = self.import_file(data)
                self.assertGreaterEqual(code, 0, "no signal ended the program")
                self.sandbox.check_store()
                if new_cards is not None:
                    self.assertEqual(refused, box)
                    self.assertEqual(cards + new_cards, self.sandbox.card_count())
                cards = self.sandbox.card_count()

    def choose_file(self, program, path):
        program.wait_window(LIST_WINDOW)
        press("ctrl+i")
        program.wait_window("Import Flashcards")
        type_text(path)
        press("Return")
        program.wait_window("Import")

    def test_a_list_is_imported_by_the_dialogs(self):
        self.sandbox.let_read_windows()
        program = self.sandbox.start()
        path = self.sandbox.sample("french.txt")
        self.choose_file(program, path)
        program.wait_text("Preview (first card)")
        program.click("OK")
        program.wait_window("New Category")
        program.wait_text('Category "French" does not exist.')
        program.click("Yes")
        program.wait_window("Import Complete")
        program.wait_text("110 Records Inserted\n0 Records Merged\n0 Duplicates Ignored")
        press("Return")
        # The list shows the category that came in.
        program.wait_window(LIST_WINDOW)
        program.wait_text("French")
        self.assertEqual(0, program.quit())
        self.assertEqual([(110, "French")], self.sandbox.query(
            "SELECT COUNT(*), Name FROM Cards JOIN Categories ON CategoryId = Id GROUP BY Id"))
        self.assertTrue(os.path.exists(path), "a file that a person chose stays")
        self.sandbox.check_store()

    def test_new_categories_are_asked_for_until_all_are_welcome(self):
        self.sandbox.let_read_windows()
        rows = ["Front\tBack\tCategory"]
        rows += [f"{name} front\tback\t{name}" for name in ("R&D", "B", "C", "D")]
        path = self.sandbox.write("cards.txt", "\n".join(rows))
        program = self.sandbox.start()
        self.choose_file(program, path)
        program.click("OK")
        for name, button in (("R&D", "Yes"), ("B", "Yes to All")):
            program.wait_window("New Category")
            program.wait_text(f'Category "{name}" does not exist.')
            program.click(button)
        program.wait_window("Import Complete")
        press("Return")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual([("B",), ("C",), ("D",), ("Default",), ("R&D",)],
                         self.sandbox.query("SELECT Name FROM Categories ORDER BY Name"))

    def test_a_kill_leaves_whole_cards(self):
        rows = ["Front\tBack\tNotes\tCategory"]
        rows += [f"front {number}\tback {number}\tnote {number}\tkilled" for number in range(50000)]
        program = self.sandbox.start("--import", self.sandbox.write("cards.txt", "\n".join(rows)))
        wait_until(lambda: self.sandbox.card_count() >= 300, "300 cards")
        program.kill()

        self.sandbox.check_store()
        cards = self.sandbox.query(
            "SELECT IntroductionOrder, Front, Back, Notes FROM Cards ORDER BY IntroductionOrder")
        self.assertLess(len(cards), 50000)
        self.assertEqual([(number, f"front {number}", f"back {number}", f"note {number}")
                          for number in range(len(cards))], cards)
        # The same store takes the next import.
        self.assertEqual((0, False), self.import_file(b"Front\tBack\nafter\tall\n"))
        self.assertEqual(len(cards) + 1, self.sandbox.card_count())

    def test_a_store_of_version_1_asks_for_its_engine(self):
        old = os.path.join(self.sandbox.documents, "Velomind Classic", "FlashCards.vls")
        os.mkdir(os.path.dirname(old))
        with open(old, "wb") as file:
            file.write(b"old")
        program = self.sandbox.start()
        program.wait_window("Import")
        press("alt+y")
        program.wait_window("Velomind")
        press("Escape")
        program.wait_no_window("Velomind")
        self.assertEqual(0, program.quit())
        self.assertTrue(os.path.exists(old))


if __name__ == "__main__":
    unittest.main()
