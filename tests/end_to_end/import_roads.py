"""Files given to the program: by the dialogs, and on its command line, good ones and broken ones."""

import os
import unittest

from driver import LIMIT, LIST_WINDOW, RoadTest, press, wait_until

FAILURE = "Import Failed"
MARK = b"\xef\xbb\xbf"


class ImportRoad(RoadTest):
    def import_file(self, data):
        """Imports these bytes, closes the box of a failed import, and gives what that said."""
        path = self.sandbox.write("cards.txt", data)
        program = self.sandbox.start("--import", path)
        wait_until(lambda: program.process.poll() is not None or program.windows(FAILURE),
                   "end or a box", 3 * LIMIT)
        texts = ""
        if program.process.poll() is None:
            program.wait_window(FAILURE)
            program.wait_text("Line Number")
            texts = "\n".join(program.read())
            press("Return")
        self.assertGreaterEqual(program.wait(), 0, "no signal ended the program")
        self.assertFalse(os.path.exists(path), "the file goes, whatever the import's result")
        return texts

    def test_hostile_files_end_with_a_sound_store(self):
        header = b"Front\tBack\n"
        rows = "".join(f"front {number}\tback {number}\tnew\t3\n" for number in range(500))
        late = f"Front\tBack\tCategory\tLastScore\n{rows}front\tback\tnew\t9".encode()
        names = b"\t".join(b"Notes%d" % number for number in range(1000000))
        # The file, the cards that come out of it, and what the box of a refused import says.
        table = {
            "nothing at all": (b"", 0, ""),
            "only a mark": (MARK, 0, ""),
            "only a header": (header, 0, ""),
            "only blank rows": (b"\n\r\n\n", 0, "Line"),
            "a missing cell": (header + b"front\n", 0, "Line"),
            "every line end": (b"Front\tBack\ra\tb\nc\td\r\ne\tf", 3, ""),
            "a fault in the last row": (late, 0, '"LastScore" must be followed by whole number '
                                        "between 0 and 5\nLine Number: 502"),
            "bad bytes behind a mark": (MARK + header + b"\xff\xc3(\tback\n", 1, ""),
            "bytes of no encoding": (header + b"caf\xe9\t\x81\x8d\n", 1, ""),
            "half a pair of UTF-16": (b"\xff\xfe" + "Front\tBack\na\t".encode("utf-16-le")
                                      + b"\x00\xd8\x41", 1, ""),
            "zeros": (header + b"a\0b\tc\0\nd\te\n", None, ""),
            "an unclosed quote": (header + b'"front\tback\n' * 3, 0, "Line"),
            "a field of 50 MB": (header + b"x" * 50000000 + b"\tback\n", 1, ""),
            "a million columns": (names + b"\nfront\tback\n", 0, "Line"),
            "a million cells": (header + b"front\tback" + b"\tmore" * 1000000 + b"\n", 1, ""),
        }
        self.sandbox.let_read_windows()
        cards = 0
        for name, (data, new_cards, refusal) in table.items():
            with self.subTest(name):
                box = self.import_file(data)
                self.sandbox.check_store()
                if new_cards is not None:
                    self.assertEqual(bool(refusal), bool(box), box)
                    self.assertIn(refusal, box)
                    self.assertEqual(cards + new_cards, self.sandbox.card_count())
                cards = self.sandbox.card_count()
        self.assertEqual([], self.sandbox.query("SELECT Name FROM Categories WHERE Name = 'new'"))

    def test_a_list_is_imported_by_the_dialogs(self):
        self.sandbox.let_read_windows()
        rows = ["Front\tBack\tCategory"]
        rows += [f"{name} front\tback\t{name}" for name in ("R&D", "B", "C", "D")]
        path = self.sandbox.write("cards.txt", "\n".join(rows))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.open_import(path)
        program.wait_text("Preview (first card)")
        program.click("OK")
        program.wait_window("New Category")
        program.wait_text("\n\nR&D\nB\nC\nD")
        program.click("Yes")
        program.wait_window("Import Complete")
        program.wait_text("4 Records Inserted\n0 Records Merged\n0 Duplicates Ignored")
        press("Return")
        # The list shows the first category that came in.
        program.wait_window(LIST_WINDOW)
        program.wait_text("R&D")
        self.assertEqual(0, program.quit())
        self.assertEqual([("B",), ("C",), ("D",), ("Default",), ("R&D",)],
                         self.sandbox.query("SELECT Name FROM Categories ORDER BY Name"))
        self.assertTrue(os.path.exists(path), "a file that a person chose stays")
        self.sandbox.check_store()


if __name__ == "__main__":
    unittest.main()
