"""Cards come back: from the backups that make themselves, and out of a damaged store."""

import datetime
import glob
import os
import shutil
import sqlite3
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

    @on_one_desktop
    def test_a_backup_that_is_opened_is_restored_instead(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        cards = self.sandbox.card_count()
        backup, = self.backups("import")
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, self.sandbox.run(backup), "handed over to the program that runs")
        program.wait_text("is a backup. Do you want to restore it")
        self.look("backup-opened")
        program.click("Yes")
        self.wait_cards(self.cards)
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual(1, len(self.backups("restore")))
        self.assertGreater(cards, self.cards)

    @on_one_desktop
    def test_what_is_no_backup_and_what_is_another_stores(self):
        backups = os.path.join(self.sandbox.home, ".local/share/velomind/backups")
        os.makedirs(backups)
        other = os.path.join(backups, "FlashCards2.0123abcd.20260101T000000Z.user.vlm")
        shutil.copy(self.sandbox.store, other)
        with open(os.path.join(backups, "FlashCards2.0123abcd.txt"), "w", encoding="utf-8") as file:
            file.write("/home/other/FlashCards2.vlm\n")
        foreign = self.sandbox.path("bookmarks.db")
        with sqlite3.connect(foreign) as connection:
            connection.execute("CREATE TABLE Bookmarks (Address)")
        connection.close()
        with open(foreign, "rb") as file:
            before = file.read()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.click("File")
        program.click("Restore...")
        program.wait_window(RESTORE)
        program.wait_text("A backup of the store file \"/home/other/FlashCards2.vlm\"")
        program.wait_text("Cards deleted since: 0")
        self.look("others")
        program.click("Other File...")
        program.wait_window("Open Store File")
        type_text(foreign)
        press("Return")
        program.wait_text("This file is no whole store of flash cards.")
        self.look("foreign")
        press("Escape")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())
        with open(foreign, "rb") as file:
            self.assertEqual(before, file.read())

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

    @unittest.skipUnless(os.environ.get("VELOMIND_DESKTOP") == "wayland", "only there it can be changed")
    def test_the_theme_changes_during_an_import_and_its_backup(self):
        self.sandbox.change_desktop("Adwaita", 1.0)
        rows = "".join(f"front {number}\tback {number}\n" for number in range(40000))
        for part in ("first", "second"):
            path = self.sandbox.write(f"{part}.txt", "Front\tBack\n" + rows.replace("front", part))
            program = self.sandbox.start()
            program.wait_window(LIST_WINDOW)
            program.open_import(path)
            press("Return")
            sizes = 0
            while not program.windows("Import Complete"):
                sizes += 1
                self.sandbox.change_desktop("Adwaita-dark" if sizes % 2 else "Adwaita", 1 + sizes % 3 / 10)
                self.look(f"theme-{part}-{sizes}")
                program.settle()
            press("Return")
            program.wait_window(LIST_WINDOW)
            self.assertEqual(0, program.quit())
            self.assertGreater(sizes, 0)
            self.sandbox.check_store()
        self.assertEqual(self.cards + 80000, self.sandbox.card_count())
        self.assertEqual(2, len(self.backups("import")))

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
