"""The word lists that come with the program: sound as files, and imported whole."""

import contextlib
import csv
import os
import unittest

from driver import SAMPLES, RoadTest, Sandbox

COLUMNS = {"Front", "Front2", "Back", "Back2", "Category", "Chapter", "Notes"}


def read_list(name):
    """Rows as dictionaries; the lists use no more of the format than this module knows."""
    with open(os.path.join(SAMPLES, name), encoding="utf-8", newline="") as file:
        rows = list(csv.reader(file, delimiter="\t"))
    for number, row in enumerate(rows, 1):
        if len(row) != len(rows[0]):
            raise AssertionError(f"{name}, row {number}: {len(row)} fields for {len(rows[0])}")
    return [dict(zip(rows[0], row)) for row in rows[1:]]


def stored_text(text):
    return text.replace("\\n", "\n")


def stored_side(row, name):
    second = row.get(name + "2", "")
    return f"{row[name]}\n【{second}】" if second else row[name]


class SampleRoad(RoadTest):
    def test_every_list_is_imported_as_it_reads(self):
        names = sorted(os.path.relpath(os.path.join(folder, name), SAMPLES)
                       for folder, _, names in os.walk(SAMPLES)
                       for name in names if name.endswith(".txt"))
        sizes = {folder: sorted(len(read_list(name)) for name in names
                                if os.path.dirname(name) == folder) for folder in ("", "de", "ja")}
        self.assertEqual(3, len(sizes[""]))
        self.assertEqual(sizes[""], sizes["de"])
        self.assertEqual(sizes[""], sizes["ja"])
        for name in names:
            # Each has a store of its own: some countries and capitals are the same in two languages.
            with self.subTest(name), contextlib.closing(Sandbox()) as sandbox:
                rows = read_list(name)
                self.assertTrue(50 <= len(rows) <= 300)
                self.assertLessEqual(set(rows[0]), COLUMNS)
                pairs = {(row["Front"], row["Back"]) for row in rows}
                self.assertEqual(len(rows), len(pairs), "a pair of front and back comes twice")
                self.assertEqual(1, len({row["Category"] for row in rows}))

                self.assertEqual(0, sandbox.run("--import", sandbox.sample(name)))
                stored = sandbox.query(
                    "SELECT Front, Back, Chapter, Notes FROM Cards, Categories "
                    "WHERE CategoryId = Id AND Name = ? ORDER BY IntroductionOrder",
                    rows[0]["Category"])
                self.assertEqual(
                    [(stored_side(row, "Front"), stored_side(row, "Back"), row["Chapter"],
                      stored_text(row["Notes"])) for row in rows], stored)
                sandbox.check_store()


if __name__ == "__main__":
    unittest.main()
