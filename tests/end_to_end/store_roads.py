"""A store that cannot be opened, and one that fails behind the program's back."""

import os
import shutil
import sqlite3
import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, type_text

RECOVERY = "Velomind"


class StoreRoad(RoadTest):
    def open_store(self, program, path):
        program.click("File")
        program.click("Open Store...")
        program.wait_window("Open Store File")
        type_text(path)
        press("Return")

    def test_a_store_that_fails_at_the_first_list_can_be_left(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        # The first card of the list is in the midst of the file, and the index that the list goes
        # by ends it: both far from what opening reads.
        with sqlite3.connect(self.sandbox.store) as connection:
            connection.executescript(
                "DROP INDEX Cards_CategoryId_IntroductionOrder;"
                "INSERT INTO Cards (CardId, CategoryId, IntroductionOrder)"
                " SELECT a.CardId || b.CardId, 0, 999"
                " FROM Cards AS a, Cards AS b LIMIT 9000;"
                "UPDATE Cards SET IntroductionOrder = -1, Notes = '!!!!' WHERE ROWID = 4500;"
                "CREATE INDEX Cards_CategoryId_IntroductionOrder"
                " ON Cards (CategoryId,IntroductionOrder)")
        connection.close()
        whole = self.sandbox.store_bytes()
        for place in (whole.index("!!!!".encode("utf-16-le")), len(whole) - 1):
            page = place // 4096 * 4096
            damaged = whole[:page] + bytes(4096) + whole[page + 4096:]
            with open(self.sandbox.store, "wb") as file:
                file.write(damaged)
            program = self.sandbox.start()
            for button in ("Retry", "Exit"):
                program.wait_window(RECOVERY)
                program.wait_text("Unable to open the flash card store file.")
                program.wait_text(self.sandbox.store)
                program.click(button)
            self.assertEqual(255, program.wait())
            self.assertEqual(damaged, self.sandbox.store_bytes())

    @on_one_desktop
    def test_another_store_opens_from_the_menu_and_a_wrong_path_changes_nothing(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        other = self.sandbox.path("other.vlm")
        shutil.copy(self.sandbox.store, other)
        with sqlite3.connect(other) as connection:
            connection.execute("DELETE FROM Cards")
        connection.close()
        broken = self.sandbox.write("broken.vlm", b"no store, and long enough to be taken for one")
        empty = "Try a Sample List..."
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.wait_no_text(empty)
        for path in (broken, other):
            self.open_store(program, path)
            if path == broken:
                program.wait_text("This is no store file of Velomind")
                press("Return")
                program.wait_no_window("Open Store File")
                program.wait_no_text(empty)
        program.wait_text(empty)
        # By the keys, which open a submenu on every desktop: its first entry is the former store.
        press("alt+f", "r", "Return")
        program.wait_no_text(empty)
        self.assertEqual(0, program.quit())

    @on_one_desktop
    def test_the_log_and_the_history_go_with_the_store(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        other = shutil.copy(self.sandbox.store, self.sandbox.path("other.vlm"))
        hidden = "The back side of this flash card is hidden"
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        for store, digit in ((self.sandbox.store, "5"), (other, "4")):
            if store == other:
                press("ctrl+1")
                program.wait_window(LIST_WINDOW)
                self.open_store(program, other)
                program.wait_no_window("Open Store File")
            press("ctrl+2")
            program.wait_window(STUDY_WINDOW)
            # The card of the former store must not come back, to be scored in this one.
            press("Left")
            program.wait_text(hidden)
            press("space")
            program.wait_no_text(hidden)
            press(digit)
            program.wait_text(hidden)
        self.assertEqual(0, program.quit())
        for store, digit in ((self.sandbox.store, 5), (other, 4)):
            with open(store + ".reviews", encoding="utf-8") as log:
                self.assertEqual(1, sum(not line.startswith("#") for line in log))
            with sqlite3.connect(store) as connection:
                self.assertEqual([(digit,)], connection.execute(
                    "SELECT LastScore FROM Cards WHERE Introduced").fetchall())
            connection.close()

    @on_one_desktop
    def test_what_fails_is_told_with_its_own_reason(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        whole = self.sandbox.store_bytes()
        with open(self.sandbox.store, "wb") as file:
            file.write(b"x" * 5000)
        program = self.sandbox.start()
        program.wait_window(RECOVERY)
        program.wait_text("This is no store file of Velomind")
        program.click("Repair...")
        program.wait_text("(it is no whole store of flash cards)")
        press("Return")
        program.wait_no_window("Repair")
        self.sandbox.write("documents/FlashCards2.vlm", whole)
        program.click("Retry")
        program.wait_window(LIST_WINDOW)
        closed = "/sys/velomind"
        with self.assertRaises(OSError) as refused:
            open(closed, "wb")  # noqa: SIM115  (it never opens)
        refusal = refused.exception.strerror
        full = self.sandbox.path("full")
        for entry, title, path, reason in (
                ("Back Up...", "Back Up Store File", closed, f"({refusal})"),
                ("Back Up...", "Back Up Store File", full, "(it is no plain file)"),
                ("Export...", "Export Flashcards", closed, f"cannot be written: {refusal}."),
                ("Export...", "Export Flashcards", full, "its end: No space left on device.")):
            program.click("File")
            program.click(entry)
            if entry == "Export...":
                program.wait_window("Export Options")
                press("alt+o")
            program.wait_window(title)
            press("ctrl+a")
            type_text(path)
            if path == full:
                # Now it is there; the file dialog would have offered it while the name was typed.
                os.symlink("/dev/full", full)
            press("Return")
            if path == full:
                program.click("Replace")
            program.wait_text(reason)
            if path == full:
                os.remove(full)
            press("Return")
            program.wait_no_text(reason)
            program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual(whole, self.sandbox.store_bytes())

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
