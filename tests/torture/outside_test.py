"""Other programs at the store: it is locked, replaced, cut, deleted or made read-only behind the
program's back. The person is told in clear words, and no card is lost."""

import os
import shutil
import sqlite3
import sys
import unittest
from unittest import mock

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "end_to_end"))
import driver  # noqa: E402
from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press, wait_until  # noqa: E402

FATAL = "Fatal Error"
PROBLEM = "Problem accessing flash cards ("
HIDDEN = "The back side of this flash card is hidden"
SCORED = "SELECT COUNT(*) FROM Cards WHERE Introduced = 1"


class OutsideTest(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))

    def study(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("space")
        program.wait_no_text(HIDDEN)
        return program

    def end_fatally(self, program, words=""):
        program.wait_window(FATAL)
        program.wait_text(PROBLEM)
        press("Return")
        self.assertEqual(3, program.wait())
        self.assertIn(words, program.error_text())

    def lock(self, statement):
        other = sqlite3.connect(self.sandbox.store, isolation_level=None)
        self.addCleanup(other.close)
        other.execute(statement)
        if statement == "BEGIN":
            other.execute("SELECT COUNT(*) FROM Cards").fetchall()
        return other

    def test_a_reader_elsewhere_stops_a_score_and_nothing_is_lost(self):
        for statement in ("BEGIN", "BEGIN IMMEDIATE", "BEGIN EXCLUSIVE"):
            with self.subTest(statement):
                program = self.study()
                other = self.lock(statement)
                press("4")
                self.end_fatally(program, "(5/")
                other.close()
                self.assertEqual([(0,)], self.sandbox.query(SCORED))
                self.sandbox.check_store()

    def test_two_users_of_one_home_study_side_by_side(self):
        programs = []
        for user in ("first", "second"):
            # Whose programs do not know of each other.
            self.sandbox.runtime = self.sandbox.path(user)
            os.mkdir(self.sandbox.runtime, 0o700)
            programs.append(self.sandbox.start())
            programs[-1].wait_window(LIST_WINDOW)
            press("ctrl+2")
            programs[-1].wait_window(STUDY_WINDOW)
        for number in range(10):
            programs[number % 2].wait_window(STUDY_WINDOW)
            before = self.sandbox.store_bytes()
            press("space", "5")
            wait_until(lambda: self.sandbox.store_bytes() != before, "the score")  # noqa: B023
        for program in programs:
            program.wait_window(STUDY_WINDOW)
            self.assertEqual(0, program.quit())
        # Both were asked the same cards, and the last word on each counts.
        self.assertEqual([(5, 110)], self.sandbox.query(
            "SELECT SUM(Introduced = 1 AND LastScore = 5), COUNT(*) FROM Cards"))
        self.sandbox.check_store()

    def test_a_locked_store_does_not_open_and_opens_when_it_is_free(self):
        other = self.lock("BEGIN EXCLUSIVE")
        program = self.sandbox.start()
        program.wait_window("Velomind")
        program.wait_text("Unable to open the flash card store file.")
        other.close()
        program.click("Retry")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual(110, self.sandbox.card_count())

    def test_a_store_changed_behind_the_back_is_told_or_used_whole(self):
        whole = self.sandbox.path("whole.vlm")
        shutil.copy(self.sandbox.store, whole)
        other = self.sandbox.path("other.vlm")
        shutil.copy(whole, other)
        connection = sqlite3.connect(other)
        connection.execute("UPDATE Cards SET Notes = 'the other'")
        connection.commit()
        connection.close()

        def cut(size):
            os.truncate(self.sandbox.store, size)

        def replace():
            os.replace(shutil.copy(other, self.sandbox.path("copy.vlm")), self.sandbox.store)

        # What happens, and what the program then says; nothing where the score goes well.
        table = {
            "cut to half": (lambda: cut(len(self.sandbox.store_bytes()) // 2), "malformed"),
            "cut to nothing": (lambda: cut(0), "no such table"),
            "deleted": (lambda: os.remove(self.sandbox.store), "readonly database"),
            "replaced": (replace, "readonly database"),
            "written over": (lambda: shutil.copyfile(other, self.sandbox.store), None),
        }
        for name, (change, words) in table.items():
            with self.subTest(name):
                shutil.copy(whole, self.sandbox.store)
                program = self.study()
                change()
                before = os.path.exists(self.sandbox.store) and self.sandbox.store_bytes()
                press("4")
                if words:
                    self.end_fatally(program, words)
                    # Nothing is written into a file that is not the one that was opened.
                    self.assertEqual(before, os.path.exists(self.sandbox.store)
                                     and self.sandbox.store_bytes())
                    continue
                wait_until(lambda: self.sandbox.query(SCORED) == [(1,)], "a score")
                self.assertEqual(0, program.quit())
                # The score is one of the new card, whose texts stay.
                self.assertEqual([(110,)], self.sandbox.query(
                    "SELECT COUNT(*) FROM Cards WHERE Notes = 'the other'"))
                self.sandbox.check_store()

    def be_somebody(self):
        """Programs started from now on run as a person to whom file modes matter."""
        if os.geteuid() != 0:
            return
        self.sandbox.bus.close()
        self.sandbox.bus = None
        program = shutil.copy(driver.BINARY, self.sandbox.path("program"))
        script = self.sandbox.write("as-nobody", "#!/bin/sh\nexec setpriv --reuid 65534 "
                                    f'--regid 65534 --clear-groups {program} "$@"\n')
        os.chmod(script, 0o755)
        for folder, _, files in os.walk(self.sandbox.root):
            for path in (folder, *(os.path.join(folder, file) for file in files)):
                os.chown(path, 65534, 65534)
        self.enterContext(mock.patch.object(driver, "BINARY", script))

    def test_a_store_that_may_only_be_read_is_told_of_and_stays(self):
        os.chmod(self.sandbox.store, 0o444)
        self.be_somebody()
        before = self.sandbox.store_bytes()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("space", "4")
        program.wait_window(FATAL)
        press("Return")
        self.assertEqual(3, program.wait())
        self.assertIn(PROBLEM + "attempt to write a readonly database", program.error_text())
        self.assertEqual(before, self.sandbox.store_bytes())


if __name__ == "__main__":
    unittest.main()
