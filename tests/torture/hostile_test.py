"""Stores that chance has damaged: whatever is in them, each command ends by itself and with words,
what a repair makes of them is a whole store, and it saves each row that the engine still reads.

VELOMIND_HOSTILE says how many (20), VELOMIND_SEED with which chance. Needs no display.
"""

import json
import os
import random
import sqlite3
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
CARDS = os.path.join(os.path.dirname(os.environ["VELOMIND_BINARY"]), "velomind-cards")
STORES = int(os.environ.get("VELOMIND_HOSTILE", "20"))
SEED = int(os.environ.get("VELOMIND_SEED", "1"))
PAGE = 4096


class HostileTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = directory.name
        self.environment = {**os.environ, "HOME": self.root, "XDG_CONFIG_HOME": self.root,
                            "XDG_RUNTIME_DIR": self.root, "LC_ALL": "C.UTF-8"}
        self.chance = random.Random(SEED)

    def path(self, name):
        return os.path.join(self.root, name)

    def run_cards(self, store, *arguments):
        options = (["--store", store] if store else []) + ["--json"] * ("export" not in arguments)
        done = subprocess.run([CARDS, *options, *arguments], timeout=60, check=False,
                              env=self.environment, cwd=self.root, capture_output=True, text=True)
        self.assertIn(done.returncode, (0, 1, 3), (arguments, done.stderr))
        self.assertTrue(done.stdout or done.stderr, arguments)
        return done.returncode, done.stdout

    def rows(self, store, row_ids=None):
        """The rows of a store that the engine reads one by one."""
        connection = sqlite3.connect(store)
        connection.text_factory = bytes
        found = set()
        try:
            connection.execute("PRAGMA writable_schema=ON")
            for row_id in row_ids or [row[0] for row in connection.execute("SELECT rowid FROM Cards")]:
                try:
                    found.update(connection.execute("SELECT * FROM Cards NOT INDEXED WHERE rowid=?", (row_id,)))
                except sqlite3.DatabaseError:
                    pass
        except sqlite3.DatabaseError:
            pass
        connection.close()
        return found

    def fill(self, store):
        """Schedules, notes longer than a page, and pictures, so that each kind of page is there."""
        connection = sqlite3.connect(store)
        connection.execute("UPDATE Cards SET Introduced=1, LastReview=1700000000+rowid, ReviewInterval=rowid*10,"
                           " NextReview=1700000000+rowid*11 WHERE rowid%2=0")
        connection.execute("UPDATE Cards SET Notes=printf('%.*c', 9000, 'n') WHERE rowid%29=0")
        connection.execute("UPDATE Cards SET FrontImage=randomblob(3000) WHERE rowid%31=0")
        connection.execute("DELETE FROM Cards WHERE rowid%17=0")
        connection.commit()
        row_ids = [row[0] for row in connection.execute("SELECT rowid FROM Cards")]
        connection.close()
        return row_ids

    def damage(self, whole):
        """A page of zeros or of noise, single bytes, a cut end, two pages in each other's place, a header."""
        store = bytearray(whole)
        page = self.chance.randrange(len(store) // PAGE) * PAGE
        other = self.chance.randrange(len(store) // PAGE) * PAGE
        kind = self.chance.randrange(6)
        if kind == 0:
            store[page:page + PAGE] = bytes(PAGE)
        elif kind == 1:
            store[page:page + PAGE] = self.chance.randbytes(PAGE)
        elif kind == 2:
            for _ in range(self.chance.choice((1, 20, 500))):
                store[self.chance.randrange(len(store))] = self.chance.randrange(256)
        elif kind == 3:
            del store[self.chance.randrange(1, len(store)):]
        elif kind == 4:
            at = self.chance.choice((16, 20, 28, 32, 36, 56))
            store[at + 3] = self.chance.randrange(1, 256)
        else:
            store[page:page + PAGE], store[other:other + PAGE] = \
                store[other:other + PAGE], store[page:page + PAGE]
        return bytes(store)

    def test_each_command_ends_with_words(self):
        store, repaired = self.path("store.vlm"), self.path("repaired.vlm")
        for sample in ("french.txt", "japanese.txt", "capitals.txt"):
            self.assertEqual(0, self.run_cards(store, "import", os.path.join(ROOT, "samples", sample))[0])
        row_ids = self.fill(store)
        with open(store, "rb") as file:
            whole = file.read()
        original = self.rows(store)
        cards = len(json.loads(self.run_cards(store, "list")[1]))
        opened = saved = rows = 0
        for number in range(STORES):
            damaged = self.damage(whole)
            with self.subTest(store=number, seed=SEED):
                with open(store, "wb") as file:
                    file.write(damaged)
                if os.path.exists(repaired):
                    os.remove(repaired)
                code, output = self.run_cards(None, "repair", store, repaired)
                with open(store, "rb") as file:
                    self.assertEqual(damaged, file.read())
                readable = self.rows(store, row_ids) & original
                with open(store, "wb") as file:
                    file.write(damaged)
                self.assertLessEqual(readable, self.rows(repaired) if code == 0 else set())
                rows += len(readable)
                if code == 0:
                    told = json.loads(output)
                    self.assertEqual([], json.loads(self.run_cards(repaired, "check", repaired)[1]))
                    self.assertEqual(told["cards"] + told["remade"],
                                     len(json.loads(self.run_cards(repaired, "list")[1])))
                    saved += told["cards"] + told["remade"]
                self.run_cards(store, "check", store)
                opened += self.run_cards(store, "list")[0] == 0
                for command in ("stats", "due", "export", "backup"):
                    self.run_cards(store, command)
        print(f"{STORES} damaged stores of {cards} cards, {opened} of them opened, {saved} cards saved "
              f"and {rows} read by the engine of {STORES * cards}", file=sys.stderr)


if __name__ == "__main__":
    unittest.main()
