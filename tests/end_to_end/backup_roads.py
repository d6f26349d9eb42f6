"""Cards come back: from the backups that make themselves, and out of a damaged store."""

import datetime
import glob
import os
import unittest

from driver import (DESKTOP, LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press,
                    type_text, wait_until)

RECOVERY = "Velomind"
DELETE_BOX = "Delete Card(s)"
RESTORE = "Restore"
HIDDEN = "The back side of this flash card is hidden"


class BackupRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        self.cards = self.sandbox.card_count()

    def backups(self, cause):
        return glob.glob(os.path.join(self.sandbox.home, ".local/share/velomind/backups",
                                      f"FlashCards2.*.{cause}.vlm"))

    def wait_cards(self, count):
        wait_until(lambda: self.sandbox.card_count() == count, f"{count} cards")

    def delete_all(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        self.assertEqual([], self.backups("day"))
        press("ctrl+a", "Delete")
        program.wait_window(DELETE_BOX)
        press("Return")
        self.wait_cards(0)
        program.wait_window(LIST_WINDOW)
        self.assertEqual(1, len(self.backups("day")))
        return program

    def open_backups(self, program):
        program.click("File")
        program.click("Restore...")
        program.wait_window(RESTORE)
        program.wait_text(f"Cards deleted since: {self.cards}")

    @on_one_desktop
    def test_deleted_cards_come_back_one_by_one_and_all(self):
        program = self.delete_all()
        self.open_backups(program)
        program.click("Bring Back Cards...")
        program.wait_window("Bring Back Cards")
        press("Down")
        program.click("Bring Back")
        self.wait_cards(1)
        program.wait_window(RESTORE)
        # Return brings back all that is selected, which the list would reduce to one row.
        program.wait_text(f"Cards deleted since: {self.cards - 1}")
        program.click("Bring Back Cards...")
        program.wait_window("Bring Back Cards")
        press("Return")
        self.wait_cards(self.cards)
        program.wait_window(RESTORE)
        press("Escape")
        # The card that came back can be studied.
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        program.wait_text(HIDDEN)
        self.assertEqual(0, program.quit())
        self.sandbox.check_store()

    @on_one_desktop
    def test_a_restoration_goes_back_and_can_be_taken_back(self):
        program = self.delete_all()
        self.assertEqual(0, program.quit())
        # A store without cards is not worth a backup, so one card stands in it.
        one = self.sandbox.write("one.txt", "Front\tBack\nnew\tcard\n")
        self.assertEqual(0, self.sandbox.run("--import", one))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        self.open_backups(program)
        program.click("Restore")
        program.wait_text("Do you want to go back to the backup of")
        program.click("Yes")
        self.wait_cards(self.cards)
        program.wait_window(LIST_WINDOW)
        self.assertEqual(1, len(self.backups("restore")))
        self.assertEqual(0, program.quit())
        self.sandbox.check_store()

    @on_one_desktop
    def test_an_import_makes_a_backup(self):
        self.assertEqual([], self.backups("import"), "there was nothing to keep yet")
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        self.assertEqual(1, len(self.backups("import")))
        self.sandbox.set_setting("Backups", 0)
        one = self.sandbox.write("one.txt", "Front\tBack\nnew\tcard\n")
        self.assertEqual(0, self.sandbox.run("--import", one))
        self.assertEqual(1, len(self.backups("import")))

    def put_zeros(self, page):
        """Damages the store, and gives the bytes that it then has."""
        whole = self.sandbox.store_bytes()
        damaged = whole[:page] + bytes(4096) + whole[page + 4096:]
        with open(self.sandbox.store, "wb") as file:
            file.write(damaged)
        return damaged

    def look(self, name):
        """Leaves a picture for a person to look at, where one is asked for."""
        directory = os.environ.get("VELOMIND_PICTURES")
        if directory:
            DESKTOP.take_picture(os.path.join(directory, f"{name}.png"))

    def test_a_backup_goes_where_the_user_wants_it(self):
        # A typed name that is there already would bring up the file dialog's list of names that fit, which
        # may take a Return. So the file to replace has the name that the dialog offers.
        offered = self.sandbox.path(f"FlashCards2 {datetime.date.today().isoformat()}.vlm")
        for wanted, before in ((self.sandbox.path("mine.vlm"), None), (offered, b"an older file")):
            with self.subTest(before):
                program = self.sandbox.start()
                program.wait_window(LIST_WINDOW)
                program.click("File")
                self.look("file-menu")
                program.click("Back Up...")
                program.wait_window("Back Up Store File")
                if before:
                    self.sandbox.write(os.path.basename(wanted), before)
                else:
                    press("ctrl+a")
                    type_text(wanted)
                self.look("back-up")
                press("Return")
                if before:
                    program.click("Replace")
                program.wait_text("The backup was written to")
                self.look("backed-up")
                press("Return")
                program.wait_window(LIST_WINDOW)
                self.assertEqual(0, program.quit())
                with open(wanted, "rb") as file:
                    self.assertEqual(self.sandbox.store_bytes(), file.read())
        self.assertEqual([], glob.glob(os.path.join(self.sandbox.root, "*unfinished*")))

    def test_a_backup_takes_the_place_of_a_damaged_store(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        damaged = self.put_zeros(0)
        program = self.sandbox.start()
        program.wait_window(RECOVERY)
        self.look("recovery")
        program.click("Restore...")
        program.wait_window(RESTORE)
        program.wait_text(str(self.cards))
        self.look("restore")
        program.click("Restore")
        program.wait_text("Do you want to put the backup of")
        self.look("restore-question")
        program.click("Yes")
        program.wait_window(LIST_WINDOW)
        self.look("restored")
        self.assertEqual(0, program.quit())
        self.assertEqual(self.cards, self.sandbox.card_count())
        self.sandbox.check_store()
        with open(self.sandbox.store.replace(".vlm", " damaged.vlm"), "rb") as file:
            self.assertEqual(damaged, file.read())

    @on_one_desktop
    def test_zeros_over_a_page_leave_the_other_cards(self):
        whole = self.sandbox.store_bytes()
        front = self.sandbox.query("SELECT Front FROM Cards WHERE ROWID = 50")[0][0]
        damaged = self.put_zeros(whole.index(front.encode("utf-16-le")) // 4096 * 4096)
        program = self.sandbox.start()
        program.wait_window(RECOVERY)
        program.click("Repair...")
        program.wait_window("Repair")
        self.look("repaired")
        press("Return")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual(damaged, self.sandbox.store_bytes())
        self.sandbox.store = self.sandbox.store.replace(".vlm", " repaired.vlm")
        self.sandbox.check_store()
        # A page holds no more than a few dozen cards.
        self.assertGreater(self.sandbox.card_count(), self.cards - 60)


if __name__ == "__main__":
    unittest.main()
