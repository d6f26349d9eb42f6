"""Stores that chance has damaged: whatever is in them, each command ends by itself and with words,
and what a repair makes of them is a whole store.

VELOMIND_HOSTILE says how many (20), VELOMIND_SEED with which chance. Needs no display.
"""

import json
import os
import random
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

    def damage(self, whole):
        """A page of zeros or of noise, single bytes, a cut end, two pages in each other's place."""
        store = bytearray(whole)
        page = self.chance.randrange(len(store) // PAGE) * PAGE
        other = self.chance.randrange(len(store) // PAGE) * PAGE
        kind = self.chance.randrange(5)
        if kind == 0:
            store[page:page + PAGE] = bytes(PAGE)
        elif kind == 1:
            store[page:page + PAGE] = self.chance.randbytes(PAGE)
        elif kind == 2:
            for _ in range(self.chance.choice((1, 20, 500))):
                store[self.chance.randrange(len(store))] = self.chance.randrange(256)
        elif kind == 3:
            del store[self.chance.randrange(1, len(store)):]
        else:
            store[page:page + PAGE], store[other:other + PAGE] = \
                store[other:other + PAGE], store[page:page + PAGE]
        return bytes(store)

    def test_each_command_ends_with_words(self):
        store, repaired = self.path("store.vlm"), self.path("repaired.vlm")
        for sample in ("french.txt", "japanese.txt", "capitals.txt"):
            self.assertEqual(0, self.run_cards(store, "import", os.path.join(ROOT, "samples", sample))[0])
        with open(store, "rb") as file:
            whole = file.read()
        cards = len(json.loads(self.run_cards(store, "list")[1]))
        opened = saved = 0
        for number in range(STORES):
            damaged = self.damage(whole)
            with self.subTest(store=number, seed=SEED):
                with open(store, "wb") as file:
                    file.write(damaged)
                code, output = self.run_cards(None, "repair", store, repaired)
                with open(store, "rb") as file:
                    self.assertEqual(damaged, file.read())
                if code == 0:
                    told = json.loads(output)
                    self.assertEqual([], json.loads(self.run_cards(repaired, "check", repaired)[1]))
                    self.assertEqual(told["cards"] + told["remade"],
                                     len(json.loads(self.run_cards(repaired, "list")[1])))
                    saved += told["cards"] + told["remade"]
                    os.remove(repaired)
                self.run_cards(store, "check", store)
                opened += self.run_cards(store, "list")[0] == 0
                for command in ("stats", "due", "export", "backup"):
                    self.run_cards(store, command)
        print(f"{STORES} damaged stores of {cards} cards, {opened} of them opened, {saved} cards saved "
              f"of {STORES * cards}", file=sys.stderr)


if __name__ == "__main__":
    unittest.main()
