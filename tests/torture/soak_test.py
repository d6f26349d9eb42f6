"""One run of the real program for as long as a person might leave it open: scores, editors and
imports, after which it holds no more memory and no more handles than before.

VELOMIND_SOAK=1 does 5,000 scores, 200 editors and 100 imports; without it, a fiftieth of that.
"""

import os
import struct
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "end_to_end"))
from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press, wait_until  # noqa: E402

PART = 1 if "VELOMIND_SOAK" in os.environ else 50
SCORES, EDITORS, IMPORTS = 5000 // PART, 200 // PART, 100 // PART
EDIT_WINDOW = "Edit - Velomind"
# Megabytes that the toolkit's own stores may still grow by once each window has been shown. A
# sanitizer keeps what is freed for a while.
GROWTH = float(os.environ.get("VELOMIND_GROWTH", "4"))


class SoakTest(RoadTest):
    def commits(self):
        """How often the store has been changed: its file counts that."""
        with open(self.sandbox.store, "rb") as file:
            return struct.unpack(">I", file.read(28)[24:])[0]

    def size(self, program):
        """Megabytes of the program's own, and how many handles it has open."""
        task = f"/proc/{program.process.pid}"
        with open(task + "/smaps_rollup", encoding="ascii") as file:
            own = next(int(line.split()[1]) for line in file if line.startswith("Pss_Anon:"))
        return own / 1024, len(os.listdir(task + "/fd"))

    def score(self, program, times):
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        for first in range(0, times, 20):
            before = self.commits()
            count = min(20, times - first)
            for number in range(count):
                press("space", str((first + number) % 6))
            wait_until(lambda: self.commits() >= before + count, "the scores")  # noqa: B023
        press("ctrl+1")

    def open_editors(self, program, times):
        for _ in range(times):
            program.wait_window(LIST_WINDOW)
            press("ctrl+n")
            program.wait_window(EDIT_WINDOW)
            press("Escape")
            program.wait_no_window(EDIT_WINDOW)

    def import_cards(self, program, times):
        for number in range(times):
            # The same cards again and again, or the store itself would grow.
            lines = [f"{i:08x}-0000-4000-8000-000000000000\tfront {i}\tback {i}, {number}\tFrench"
                     for i in range(100)]
            path = self.sandbox.write("cards.txt", "\n".join(["Id\tFront\tBack\tCategory", *lines]))
            program.wait_window(LIST_WINDOW)
            program.open_import(path)
            press("Return")
            program.wait_window("Import Complete")
            press("Return")
            program.wait_no_window("Import Complete")

    def test_memory_and_handles_stay_as_they_are(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.sandbox.start()
        for name, work, times in (("scores", self.score, SCORES),
                                  ("editors", self.open_editors, EDITORS),
                                  ("imports", self.import_cards, IMPORTS)):
            with self.subTest(name):
                first = max(times // 5, 1)
                work(program, first)
                program.wait_window(LIST_WINDOW)
                before, handles = self.size(program)
                work(program, times - first)
                program.wait_window(LIST_WINDOW)
                after, handles_after = self.size(program)
                print(f"{times} {name}: {before:.1f} MB and {handles} handles after the first "
                      f"{first}, {after:.1f} MB and {handles_after} at the end", file=sys.stderr)
                self.assertLessEqual(after, before + GROWTH)
                self.assertLessEqual(handles_after, handles)
        self.assertEqual(0, program.quit())
        self.sandbox.check_store()


if __name__ == "__main__":
    unittest.main()
