"""What the program does with its command line, and with a second start."""

import fcntl
import os
import unittest
from unittest import mock

from driver import DESKTOP, LIST_WINDOW, RoadTest, on_one_desktop, press, wait_until


class CommandLineRoad(RoadTest):
    def test_a_second_start_ends_and_leaves_the_work_to_the_first(self):
        # What an installer gives along changes nothing.
        program = self.sandbox.start("--desktop_folder=/d", "--program_menu_folder", "/p",
                                     "--add_desktop_shortcut", "1", "--add_quicklaunch_shortcut", "1")
        program.wait_window(LIST_WINDOW)

        # A minimised window comes back, and in front of what was opened meanwhile.
        DESKTOP.put_away(program.windows(LIST_WINDOW)[0])
        program.wait_no_window(LIST_WINDOW)
        self.assertEqual(0, self.sandbox.run())
        wait_until(lambda: any(DESKTOP.is_active(window) for window in program.windows(LIST_WINDOW)),
                   "the window in front")

        words = self.sandbox.sample("french.txt")
        second = self.sandbox.start("--import", words)
        self.assertEqual(1, second.wait())
        self.assertIn("already", second.error_text())
        self.assertTrue(os.path.exists(words))
        self.assertEqual(0, self.sandbox.card_count())

        press("ctrl+q")
        self.assertEqual(0, program.wait())
        # What the first held is free again. Several options act in one run, the import first.
        program = self.sandbox.start("--uninstall", "--messagebox", "done", "--import", words)
        program.wait_window("Message")
        self.assertEqual(110, self.sandbox.card_count())
        press("Return")
        self.assertEqual(0, program.wait())

    @unittest.skipUnless(os.environ.get("VELOMIND_DESKTOP") == "wayland", "only there no window may")
    def test_a_second_start_asks_for_attention_where_it_may_not_take_the_focus(self):
        program = self.sandbox.start()
        DESKTOP.put_away(program.wait_window(LIST_WINDOW))
        program.wait_no_window(LIST_WINDOW)
        # A terminal gives no token along, unlike a launcher.
        self.enterContext(mock.patch.object(DESKTOP, "launch_environment", return_value={}))
        for may in (False, True):
            DESKTOP.let_take_focus(may)
            self.assertEqual(0, self.sandbox.run())
            if may:
                program.wait_window(LIST_WINDOW)
            else:
                wait_until(lambda: DESKTOP.wants_attention(program.process.pid), "attention asked for")
                self.assertEqual([], program.windows(LIST_WINDOW))

    @on_one_desktop
    def test_a_start_that_cannot_tell_whether_it_is_the_first_does_nothing(self):
        words = self.sandbox.sample("french.txt")
        lock = os.path.join(self.sandbox.runtime, "velomind.lock")
        with open(lock, "wb") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            held = self.sandbox.start("--import", words)
            self.assertEqual(1, held.wait())
            self.assertIn("does not answer", held.error_text())
        os.remove(lock)
        os.mkdir(lock)
        for arguments in ((), ("--import", words)):
            program = self.sandbox.start(*arguments)
            self.assertEqual(1, program.wait())
            self.assertIn("cannot be locked: Is a directory", program.error_text())
        self.assertTrue(os.path.exists(words))
        self.assertFalse(os.path.exists(self.sandbox.store))

    @on_one_desktop
    def test_an_import_without_questions_waits_for_nobody(self):
        words = self.sandbox.write("words.txt", "Front\tBack\na\n")
        program = self.sandbox.start("--no-questions", "--import", words)
        self.assertEqual(1, program.wait())
        self.assertIn("must have an back attribute", program.error_text())
        self.assertTrue(os.path.exists(words))
        good = self.sandbox.write("good.txt", "Front\tBack\na\tb\n")
        self.assertEqual(0, self.sandbox.run("--no-questions", "--import", good))
        self.assertFalse(os.path.exists(good))
        with open(self.sandbox.store, "wb") as file:
            file.write(b"no store" * 1000)
        program = self.sandbox.start("--no-questions", "--import", words)
        self.assertEqual(1, program.wait())
        self.assertIn("cannot be opened", program.error_text())
        self.assertTrue(os.path.exists(words))

    def refuse(self, path):
        program = self.sandbox.start("--import", path)
        self.assertEqual(1, program.wait())
        self.assertIn("is a store of flash cards or belongs to one", program.error_text())
        self.assertTrue(os.path.lexists(self.sandbox.path(path)), path)

    @on_one_desktop
    def test_a_store_is_neither_imported_nor_deleted(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        before = self.sandbox.store_bytes()
        symbolic, hard = self.sandbox.path("symbolic.txt"), self.sandbox.path("hard.txt")
        os.symlink(self.sandbox.store, symbolic)
        os.link(self.sandbox.store, hard)
        with open(self.sandbox.store + "-journal", "wb"):
            pass
        copy = self.sandbox.write("copy.txt", before)
        for path in (self.sandbox.store, symbolic, hard, self.sandbox.store + "-journal", copy,
                     os.path.relpath(self.sandbox.store, self.sandbox.root)):
            self.refuse(path)
        self.assertEqual(before, self.sandbox.store_bytes())
        # One that is to become a store only by being opened.
        empty = self.sandbox.write("empty.vlm", "")
        self.sandbox.set_setting("DatabasePath", empty)
        self.refuse(empty)

    @on_one_desktop
    def test_an_unknown_option_is_refused(self):
        self.assertEqual(0, self.sandbox.run("--uninstall", "--community_join", "0"))
        program = self.sandbox.start("--nonsense")
        self.assertEqual(1, program.wait())
        self.assertIn("nonsense", program.error_text())
        self.assertFalse(os.path.exists(self.sandbox.store))

    @on_one_desktop
    def test_a_message_box_needs_no_store(self):
        self.sandbox.let_read_windows()
        program = self.sandbox.start("--messagebox", "Grüße, 世界")
        program.wait_window("Message")
        program.wait_text("Grüße, 世界")
        press("Return")
        self.assertEqual(0, program.wait())
        self.assertFalse(os.path.exists(self.sandbox.store))


if __name__ == "__main__":
    unittest.main()
