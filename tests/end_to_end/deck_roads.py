"""Decks of other programs and other files, on the ways on which they come to the program: its menu,
its command line, and a start while it runs."""

import io
import json
import os
import shutil
import sqlite3
import subprocess
import unittest
import zipfile

from driver import BINARY, LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, wait_until

CARDS = os.path.join(os.path.dirname(BINARY), "velomind-cards")


def anki_package(words, rows=""):
    """A package as Anki shares it: a note with both directions for each pair of words."""
    database = sqlite3.connect(":memory:")
    templates = [{"ord": 0, "qfmt": "{{Word}}", "afmt": "{{FrontSide}}{{Sense}}"},
                 {"ord": 1, "qfmt": "{{Sense}}", "afmt": "{{FrontSide}}{{Word}}"}]
    fields = [{"name": "Word", "ord": 0}, {"name": "Sense", "ord": 1}]
    types = {"7": {"name": "Two ways", "type": 0, "flds": fields, "tmpls": templates}}
    database.executescript("""
        CREATE TABLE col(ver, crt, models, decks);
        CREATE TABLE notes(id INTEGER PRIMARY KEY, guid, mid, tags, flds);
        CREATE TABLE cards(id INTEGER PRIMARY KEY, nid, did, odid, ord, mod, type, queue, due, odue,
                           ivl, factor, data);""")
    for number, pair in enumerate(words, 1):
        database.execute("INSERT INTO notes VALUES (?, 'g' || ?, 7, '', ?)",
                         (number, number, "\x1f".join(pair)))
        for direction in (0, 1):
            database.execute("INSERT INTO cards VALUES (NULL, ?, 2, 0, ?, 0, 0, 0, ?, 0, 0, 0, '')",
                             (number, direction, number))
    database.executescript(rows)
    database.execute("INSERT INTO col VALUES (11, 1000000000, ?, ?)",
                     (json.dumps(types), json.dumps({"2": {"name": "Languages::French"}})))
    database.commit()
    package = io.BytesIO()
    with zipfile.ZipFile(package, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("collection.anki2", database.serialize())
        archive.writestr("media", "{}")
    return package.getvalue()


# A text of twenty characters in the package and of half a million in a card.
LONG = "UPDATE notes SET guid = 'long', flds = replace(hex(zeroblob(250000)), '00', 'ab') || char(31) || 'b';"
OLD = [("le chat", "cat<img src=a>")] + [(f"mot {number}", f"word {number}") for number in range(5)]
# A week later one note says more, and ten are new.
NEW = [("le chat", "cat, tomcat")] + OLD[1:] + \
      [(f"nouveau {number}", f"new {number}") for number in range(10)]


class DeckRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()

    def change(self, store, sql):
        connection = sqlite3.connect(store, isolation_level=None)
        connection.execute(sql)
        connection.close()

    def finish_import(self, program, result):
        program.wait_window("Import Complete")
        program.wait_text(result)
        press("Return")
        program.wait_window(LIST_WINDOW)

    @on_one_desktop
    def test_a_deck_and_the_same_deck_a_week_later(self):
        path = self.sandbox.write("french.apkg", anki_package(OLD))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.open_import(path)
        program.wait_text("1 picture is left out.")
        self.assertEqual(0, self.sandbox.card_count())
        program.click("OK")
        program.wait_window("New Category")
        program.click("Yes")
        self.finish_import(program, "6 Records Inserted")
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("space", "4")
        wait_until(lambda: self.sandbox.query("SELECT LastScore FROM Cards WHERE Introduced = 1")
                   == [(4,)], "the score")
        self.assertEqual(0, program.quit())
        self.change(self.sandbox.store, "UPDATE Categories SET Name = 'Mine' WHERE Id > 0")
        before = self.sandbox.query("SELECT CardId, LastScore, LastReview FROM Cards ORDER BY rowid")

        self.sandbox.write("french.apkg", anki_package(NEW))
        program = self.sandbox.start(path)
        program.wait_window("Import")
        program.wait_text("16 cards")
        program.click("OK")
        program.wait_window("New Category")
        program.click("Yes")
        self.finish_import(program, "10 Records Inserted\n1 Records Merged\n5 Duplicates Ignored")
        self.assertEqual(0, program.quit())
        self.assertEqual(before, self.sandbox.query(
            "SELECT CardId, LastScore, LastReview FROM Cards ORDER BY rowid LIMIT 6"))
        self.assertEqual([("Languages::French", 10), ("Mine", 6)], self.sandbox.query(
            "SELECT Name, COUNT(*) FROM Cards JOIN Categories ON CategoryId = Categories.Id "
            "GROUP BY Name ORDER BY Name"))
        self.assertEqual([("cat, tomcat",)],
                         self.sandbox.query("SELECT Back FROM Cards WHERE Front = 'le chat'"))
        self.sandbox.check_store()

    def test_a_deck_that_makes_far_more_than_it_is_asks_first(self):
        path = self.sandbox.write("long.apkg", anki_package([("a", "b")], LONG))
        self.sandbox.write("pointer.apkg", "version https://example.com/v1\noid 4d7a\nsize 12\n")
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.open_import(path)
        program.wait_text("are smaller.  Do you want to read it all the same?")
        press("Return")
        program.wait_text("more than 64 times the size of its file.")
        press("Escape")
        program.wait_window(LIST_WINDOW)
        program.open_import(path)
        program.wait_text("Do you want to read it all the same?")
        program.click("Yes")
        program.wait_text("1 card")
        press("Escape")
        program.wait_window(LIST_WINDOW)
        program.open_import(self.sandbox.path("pointer.apkg"))
        program.wait_text("there is no deck in it")
        press("Escape")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, self.sandbox.card_count())
        self.assertEqual(0, program.quit())

    def test_a_second_start_hands_its_file_to_the_first(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        self.sandbox.write("my words.tsv", "Front\tBack\na\tb\n")
        self.assertEqual(0, self.sandbox.run("my words.tsv"))
        program.wait_window("Import")
        # The next one waits until the dialog is gone.
        self.assertEqual(0, self.sandbox.run("missing.txt"))
        program.click("OK")
        program.wait_window("Import Complete")
        press("Return")
        program.wait_text("missing.txt\" cannot be read.")
        press("Return")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(1, self.sandbox.card_count())
        self.assertEqual(0, program.quit())

    @on_one_desktop
    def test_a_store_is_opened_and_an_open_one_is_left_alone(self):
        self.sandbox.run("--import", self.sandbox.sample("french.txt"))
        other = shutil.copy(self.sandbox.store, self.sandbox.path("other.deck"))
        self.change(other, "UPDATE Categories SET Name = 'From the other store'")
        program = self.sandbox.start(other)
        program.wait_window(LIST_WINDOW)
        program.wait_text("From the other store")
        self.assertEqual(0, self.sandbox.run(other))
        program.wait_window(LIST_WINDOW)
        # What only belongs to a store is neither opened nor imported.
        journal = self.sandbox.write("other.deck-journal", b"")
        self.assertEqual(0, self.sandbox.run(journal))
        program.wait_window("Import")
        program.wait_text("belongs to one")
        press("Escape")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())

    @on_one_desktop
    def test_a_deck_without_a_display(self):
        path = self.sandbox.write("french.apkg", anki_package(OLD))

        def run(*arguments):
            return subprocess.run([CARDS, *arguments], env=self.sandbox.environment(),
                                  capture_output=True, text=True, timeout=60, check=False)

        def cards(*arguments):
            done = run(*arguments)
            self.assertEqual((0, ""), (done.returncode, done.stderr))
            return done.stdout
        told = cards("import", "--dry-run", path)
        self.assertEqual(["6 notes", "6 cards", "1 picture is left out."], told.splitlines()[:3])
        self.assertFalse(os.path.exists(self.sandbox.store))
        result = json.loads(cards("--json", "import", path))
        self.assertEqual((6, "1 picture is left out."), (result["inserted"], result["notices"][2]))
        self.assertEqual([], json.loads(cards("--json", "check", path)))
        self.assertEqual(6, self.sandbox.card_count())
        path = self.sandbox.write("long.apkg", anki_package([("a", "b")], LONG))
        refused = run("import", path)
        self.assertEqual(1, refused.returncode)
        self.assertIn("With --large it is imported all the same.", refused.stderr)
        self.assertEqual(6, self.sandbox.card_count())
        cards("import", "--large", path)
        self.assertEqual(7, self.sandbox.card_count())


if __name__ == "__main__":
    unittest.main()
