"""What the program does with its command line, and with a second start."""

import os
import unittest

from driver import LIST_WINDOW, RoadTest, press


class CommandLineRoad(RoadTest):
    def test_a_second_start_ends_and_leaves_the_work_to_the_first(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)

        self.assertEqual(0, self.sandbox.run())

        words = self.sandbox.sample("french.txt")
        second = self.sandbox.start("--import", words)
        self.assertEqual(1, second.wait())
        self.assertIn("already", second.error_text())
        self.assertTrue(os.path.exists(words))
        self.assertEqual(0, self.sandbox.card_count())

        self.assertEqual(0, program.quit())
        # What the first held is free again.
        self.assertEqual(0, self.sandbox.run("--import", words))
        self.assertEqual(110, self.sandbox.card_count())

    def test_a_start_after_a_kill_is_the_first_again(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.kill()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        self.assertEqual(0, program.quit())

    def test_a_store_is_no_list_to_import_and_delete(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        link = self.sandbox.path("link.txt")
        os.symlink(self.sandbox.store, link)
        for path in (self.sandbox.store, link):
            program = self.sandbox.start("--import", path)
            self.assertEqual(1, program.wait())
            self.assertIn("is a store", program.error_text())
        self.assertTrue(os.path.lexists(link))
        self.assertEqual(110, self.sandbox.card_count())

    def test_an_unknown_option_is_refused(self):
        program = self.sandbox.start("--nonsense")
        self.assertEqual(1, program.wait())
        self.assertIn("nonsense", program.error_text())
        self.assertFalse(os.path.exists(self.sandbox.store))

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
