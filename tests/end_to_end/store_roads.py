"""A store that cannot be opened, and one that fails behind the program's back."""

import os
import sqlite3
import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press

RECOVERY = "Velomind"


class StoreRoad(RoadTest):
    def refuse(self):
        """Starts on a store that does not open, reads the box and leaves by "Exit"."""
        program = self.sandbox.start()
        program.wait_window(RECOVERY)
        program.wait_text("Unable to open the flash card store file.")
        program.wait_text(self.sandbox.store)
        program.click("Exit")
        self.assertEqual(255, program.wait())

    def write_store(self, data):
        with open(self.sandbox.store, "wb") as file:
            file.write(data)

    def test_a_store_that_does_not_open_stays_as_it_is(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        whole = self.sandbox.store_bytes()
        with sqlite3.connect(self.sandbox.store) as connection:
            connection.execute("UPDATE Globals SET Value = '3' WHERE Key = 'DATABASE_VERSION'")
        connection.close()
        newer = self.sandbox.store_bytes()
        # The last page of the file becomes one of the index that the list goes by.
        self.write_store(whole)
        with sqlite3.connect(self.sandbox.store) as connection:
            connection.executescript(
                "DROP INDEX Cards_CategoryId_IntroductionOrder;"
                "INSERT INTO Cards (CardId, CategoryId) SELECT a.CardId || b.CardId, 0"
                " FROM Cards AS a, Cards AS b LIMIT 9000;"
                "CREATE INDEX Cards_CategoryId_IntroductionOrder"
                " ON Cards (CategoryId,IntroductionOrder)")
        connection.close()
        damaged = self.sandbox.store_bytes()[:-4096] + bytes(4096)
        table = {
            "a header and nothing behind it": whole[:100],
            "a newer program's": newer,
            "damaged where only the list of all cards comes": damaged,
        }
        for name, data in table.items():
            with self.subTest(name):
                self.write_store(data)
                self.refuse()
                self.assertEqual(data, self.sandbox.store_bytes())

    def test_a_store_that_has_gone_is_not_made_anew(self):
        self.sandbox.let_read_windows()
        self.sandbox.store = self.sandbox.path("gone.vlm")
        self.sandbox.set_setting("DatabasePath", self.sandbox.store)
        program = self.sandbox.start()
        program.wait_window(RECOVERY)
        program.click("Retry")
        program.wait_window(RECOVERY)
        self.assertFalse(os.path.exists(self.sandbox.store))
        program.click("Exit")
        self.assertEqual(255, program.wait())

    def test_a_store_locked_by_another_process_is_fatal(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("space")
        program.wait_no_text("The back side of this flash card is hidden")

        other = sqlite3.connect(self.sandbox.store, isolation_level=None)
        other.execute("BEGIN EXCLUSIVE")
        press("4")
        program.wait_window("Fatal Error")
        program.wait_text("Problem accessing flash cards (5/")
        press("Return")
        self.assertEqual(3, program.wait())
        self.assertIn("Problem accessing flash cards (5/", program.error_text())
        self.assertIn(self.sandbox.store, program.error_text())
        other.execute("ROLLBACK")
        other.close()
        self.assertEqual([(0,)], self.sandbox.query("SELECT SUM(Introduced) FROM Cards"))
        self.sandbox.check_store()


if __name__ == "__main__":
    unittest.main()
