"""The cards without a display: what velomind-cards prints, and how it ends."""

import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import threading
import time
import unittest

from driver import BINARY, LIST_WINDOW, RoadTest, wait_until

CARDS = os.path.join(os.path.dirname(BINARY), "velomind-cards")
TWO = "id\tFront\tBack\tCategory\n" \
      "11111111-1111-4111-8111-111111111111\tone\teins\tNumbers\n" \
      "22222222-2222-4222-8222-222222222222\ttwo\tzwei\tNumbers\n"
FAULTS = "Front: a\nBack: b\n\nFront c\nBack: d\n\nFront: e\n\nFront: g\nBack: h\nForwardX: perhaps\n"


class CardsRoad(RoadTest):
    def run_cards(self, *arguments, stdin=subprocess.DEVNULL):
        """Exit code, output and error text."""
        done = subprocess.run([CARDS, *arguments], env=self.sandbox.environment(), stdin=stdin,
                              cwd=self.sandbox.root, capture_output=True, text=True, timeout=60,
                              check=False)
        return done.returncode, done.stdout, done.stderr

    def cards(self, *arguments):
        """The value that a command prints as JSON, when it ends well."""
        code, output, error = self.run_cards("--json", *arguments)
        self.assertEqual((0, ""), (code, error))
        return json.loads(output)

    def change(self, sql):
        """Changes the store as another program does, which waits for nobody."""
        connection = sqlite3.connect(self.sandbox.store, timeout=0, isolation_level=None)
        try:
            connection.execute(sql)
        finally:
            connection.close()

    def read(self, path):
        with open(path, encoding="utf-8-sig", errors="surrogateescape") as file:
            return file.read()

    def test_lines_that_make_no_sense(self):
        for arguments in (("fly",), ("list", "--wings"), ("--json", "export"), ("list", "--category")):
            with self.subTest(arguments):
                code, output, error = self.run_cards(*arguments)
                self.assertEqual((2, ""), (code, output))
                self.assertTrue(error.startswith("velomind-cards: "), error)
        self.assertIn('"export" does not take the option --json', self.run_cards("--json", "export")[2])
        self.assertIn("--known=stop|skip|update", self.run_cards("import", "--help")[1])
        self.assertFalse(os.path.exists(self.sandbox.store))

    def test_no_window_library(self):
        self.assertNotRegex(subprocess.check_output(["ldd", CARDS], text=True), "gtk|gdk|wx_gtk")

    def test_what_is_refused(self):
        store = self.sandbox.path("other.vlm")
        self.assertEqual(0, self.run_cards("--store", store, "import", self.sandbox.write("two.txt", TWO))[0])
        bad = self.sandbox.write("bad.vlm.txt", FAULTS)
        whole = self.read(store)
        cases = ((1, "line 4", "import", bad), (1, "cannot be read: No such file", "import", "absent.txt"),
                 (1, "cannot be read: Is a directory", "import", self.sandbox.root),
                 (1, "\"caf\\xe9\"", "import", os.fsdecode(b"caf\xe9")),
                 (1, "store of flash cards", "import", store), (1, "no category", "list", "--category", "X"),
                 (1, "no length of time", "list", "due<xyz"),
                 (1, "flash cards themselves", "export", "--output", store),
                 (3, "There is no store", "--store", "absent.vlm", "due"),
                 (3, "cannot be opened", "--store", bad, "stats"))
        for expected, text, *arguments in cases:
            with self.subTest(arguments):
                code, output, error = self.run_cards("--store", store, *arguments)
                self.assertEqual((expected, ""), (code, output))
                self.assertIn(text.lower(), error.lower().replace("number: ", ""))
        self.assertEqual(whole, self.read(store))
        self.assertEqual(FAULTS, self.read(bad))

    def test_cards_in_and_out(self):
        two = self.sandbox.write("two.txt", TWO)
        outcome = {"inserted": 2, "merged": 0, "duplicates": 0, "message": "", "line": None}
        self.assertEqual(outcome, self.cards("import", "--dry-run", two))
        self.assertFalse(os.path.exists(self.sandbox.store))
        self.assertEqual(outcome, self.cards("import", two))
        before = self.sandbox.store_bytes()
        changed = self.sandbox.write("changed.txt", TWO.replace("eins", "ein"))
        self.assertEqual({**outcome, "inserted": 0, "merged": 1, "duplicates": 1},
                         self.cards("import", "--dry-run", changed))
        self.assertEqual(before, self.sandbox.store_bytes())
        self.assertEqual({**outcome, "inserted": 0, "duplicates": 2}, self.cards("import", two))
        code, output, _ = self.run_cards("--json", "import", self.sandbox.write("bad.txt", FAULTS))
        self.assertEqual((1, 4), (code, json.loads(output)["line"]))
        listed = self.cards("list", "--category", "Numbers", "ein")
        self.assertEqual([("one", "eins", False)], [(c["Front"], c["Back"], c["Introduced"]) for c in listed])
        for search in (("ein",), ("ÉIN category:numb -zwei is:new",), ("--exact", "Eins"), ("--", "-two"),
                       ("--reverse", "is:new o -w")):
            self.assertEqual("one\teins\tNumbers\n", self.run_cards("list", *search)[1])
        self.assertEqual("", self.run_cards("list", "--exact", "éin")[1])
        # Forgotten today, after a review a day before.
        with open(self.sandbox.store + ".reviews", "w", encoding="utf-8") as log:
            log.write(time.strftime("%Y-%m-%dT%H:%M:%SZ\t", time.gmtime()) +
                      "22222222-2222-4222-8222-222222222222\tF\t1\t86400\t86400\t60\t16\t18\t-\n")
        self.assertEqual("two\tzwei\tNumbers\n", self.run_cards("list", "is:hard")[1])
        self.assertEqual("", self.run_cards("list", "--reverse", "is:hard")[1])
        self.assertEqual([{"category": "Numbers", "forward": 0, "reverse": 0}], self.cards("due"))
        self.change("UPDATE Cards SET Introduced=1, LastReview=1, NextReview=2 WHERE Front='two'")
        due = self.cards("stats")["categories"][0]["forward"]
        self.assertEqual({"studied": 2, "introduced": 1, "due": 1}, due)
        for form in ((), ("--format", "delimited"), ("--scheduling",), ("--format", "delimited", "--scheduling")):
            with self.subTest(form):
                exported = self.sandbox.path("exported.txt")
                code, output, error = self.run_cards("export", *form)
                self.assertEqual((0, ""), (code, error))
                self.assertEqual(0, self.run_cards("export", *form, "--output", exported)[0])
                self.assertEqual(output, self.read(exported))
                again = self.sandbox.path("again.vlm")
                self.assertEqual(2, json.loads(self.run_cards(
                    "--json", "--store", again, "import", exported)[1])["inserted"])
                os.remove(again)
        self.sandbox.check_store()

    def test_how_a_list_is_read(self):
        latin = self.sandbox.write("latin.txt", "Front;Back\npiù;gi\xe0\n".encode("cp1252"))
        words = self.sandbox.write("words.csv", "a|it|eins\nback|it|zwei\n")
        cases = ((["Front=Back", "pi\u00f9=gi\u00e0"], latin, "--encoding", "windows-1252", "--headings", "no"),
                 (["pi\u0449=gi\u0430"], latin, "--encoding", "windows-1251"),
                 (["eins=a", "zwei=back"], words, "--delimiter", "pipe", "--columns", "back,ignore,front"),
                 (["it=back"], words, "--delimiter", "|", "--headings", "yes"))
        for expected, path, *options in cases:
            with self.subTest(options):
                store = self.sandbox.path("how.vlm")
                self.assertEqual(0, self.run_cards("--store", store, "import", *options, path)[0])
                self.assertEqual(expected, ["=".join(line.split("\t")[:2]) for line in
                                            self.run_cards("--store", store, "list")[1].splitlines()])
                os.remove(store)
        two = self.sandbox.write("two.txt", TWO.replace("id\t", "Notes\t"))
        self.cards("import", two)
        self.assertEqual(1, self.run_cards("import", two)[0])
        self.assertEqual(2, self.cards("import", "--known", "skip", two)["duplicates"])
        odd = self.sandbox.write("odd.csv", "a,\"b, c\"\nd,\"e, f\"\ng,\"h\" i\n")
        self.assertEqual([3], [fault["line"] for fault in self.cards("check", odd)])
        told = self.cards("import", odd)
        self.assertEqual(3, told["inserted"])
        self.assertIn("Line 3: ", told["notices"][0])

    def test_an_import_without_a_card_leaves_no_store(self):
        for text in ("", "words\n", "Front,Back\n"):
            with self.subTest(text):
                self.run_cards("import", self.sandbox.write("list.txt", text))
                self.assertFalse(os.path.exists(self.sandbox.store))

    def test_output_that_cannot_be_written_is_told(self):
        two = self.sandbox.write("two.txt", TWO)
        self.cards("import", two)
        for arguments in (("import", two), ("--json", "import", two), ("export",), ("export", "--output", "-"),
                          ("list",), ("--json", "list"), ("due",), ("stats",), ("--json", "check", two),
                          ("backup", self.sandbox.path("copy.vlm")), ("--help",), ("--version",)):
            with self.subTest(arguments), open("/dev/full", "w", encoding="utf-8") as full:
                done = subprocess.run([CARDS, *arguments], env=self.sandbox.environment(), stdout=full,
                                      stderr=subprocess.PIPE, text=True, timeout=60, check=False)
                self.assertEqual((1, "velomind-cards: The output could not be written to its end.\n"),
                                 (done.returncode, done.stderr))

    def test_every_fault_of_a_list_and_of_a_store(self):
        bad = self.sandbox.write("bad.txt", FAULTS)
        code, output, _ = self.run_cards("--json", "check", bad)
        self.assertEqual((1, [4, 7, 11]), (code, [fault["line"] for fault in json.loads(output)]))
        self.assertFalse(os.path.exists(self.sandbox.store))
        self.cards("import", self.sandbox.sample("capitals.txt"))
        self.assertEqual([], self.cards("check", self.sandbox.store))
        self.change("UPDATE Cards SET CategoryId=77, CardId='x' || CardId WHERE Front='Albania'")
        code, output, _ = self.run_cards("check", self.sandbox.store)
        self.assertEqual((1, 2), (code, len(output.splitlines())), output)
        with open(self.sandbox.store, "r+b") as file:
            file.seek(2 * 4096)
            file.write(bytes(4096))
        code, output, _ = self.run_cards("check", self.sandbox.store)
        self.assertEqual(1, code)
        self.assertIn("age 3", output)

    def test_a_backup_brings_everything_back(self):
        two = self.sandbox.write("two.txt", TWO)
        self.cards("import", two)
        copy = self.sandbox.path("copy.vlm")
        self.assertEqual({"backup": copy}, self.cards("backup", copy))
        own = self.cards("backup")["backup"]
        self.assertTrue(own.startswith(self.sandbox.home), own)
        for backup in (copy, own):
            with self.subTest(backup):
                self.assertEqual(1, self.run_cards("backup", backup)[0], "never written over")
                self.change("UPDATE Cards SET Front='lost' || char(10) || '[picture: a.png]'")
                self.assertIn(".vlm.media", self.run_cards("backup")[2])
                kept = self.cards("restore", backup)["backup"]
                self.assertEqual({"one", "two"}, {card["Front"] for card in self.cards("list")})
                self.assertIn("lost", self.run_cards("--store", kept, "list")[1])
                self.assertTrue(os.path.exists(backup))
        # A store that nobody can open is kept as it is.
        self.sandbox.set_setting("BackupDirectory", self.sandbox.path("elsewhere"))
        self.sandbox.set_setting("Backups", 0)
        whole = self.sandbox.store_bytes()
        with open(self.sandbox.store, "wb") as file:
            file.write(b"no store" * 1000)
        code, output, _ = self.run_cards("restore", copy)
        self.assertEqual(0, code)
        self.assertTrue(output.startswith(self.sandbox.path("elsewhere")), output)
        with open(output.strip(), "rb") as file:
            self.assertEqual(b"no store" * 1000, file.read())
        self.assertEqual(whole, self.sandbox.store_bytes())
        self.assertIn("elsewhere", self.cards("backup")["backup"])
        self.cards("import", self.sandbox.sample("capitals.txt"))
        names = os.listdir(self.sandbox.path("elsewhere"))
        self.assertEqual(2, len([name for name in names if name.endswith(".vlm")]), "backups are off")
        before = self.sandbox.store_bytes()
        for wrong in (two, "absent.vlm", self.sandbox.store):
            self.assertEqual(1, self.run_cards("restore", wrong)[0], wrong)
        self.assertEqual(before, self.sandbox.store_bytes())
        self.sandbox.check_store()

    def test_what_only_reads_writes_nothing(self):
        self.cards("import", self.sandbox.write("two.txt", TWO))
        whole = self.sandbox.store_bytes()
        first = self.sandbox.path("first.vlm")
        half = self.sandbox.path("half.vlm")
        for path in (first, half):
            with open(path, "wb") as file:
                file.write(whole)
        with sqlite3.connect(first) as connection:
            connection.executescript("DROP TABLE Globals; UPDATE Cards SET CardId = UPPER(CardId);")
        connection.close()
        # A log that another program has left.
        connection = sqlite3.connect(half, isolation_level=None)
        connection.executescript("PRAGMA journal_mode=WAL; UPDATE Cards SET Front = 'half';")
        left = shutil.copy(half, self.sandbox.path("left.vlm"))
        shutil.copy(half + "-wal", left + "-wal")
        connection.close()
        foreign = self.sandbox.path("bookmarks.db")
        with sqlite3.connect(foreign) as connection:
            connection.execute("CREATE TABLE Bookmarks (Address)")
        connection.close()
        empty = self.sandbox.write("empty.vlm", "")
        two = self.sandbox.write("two.txt", TWO)
        out = os.path.join(self.sandbox.root, "out")
        os.mkdir(out)
        for store, code in ((first, 0), (left, 0), (foreign, 3), (empty, 3)):
            with open(store, "rb") as file:
                before = file.read()
            names = sorted(os.listdir(self.sandbox.root))
            for command in (("stats",), ("list",), ("due",), ("export",), ("import", "--dry-run", two),
                            ("backup", os.path.join(out, os.path.basename(store)))):
                with self.subTest((os.path.basename(store), command)):
                    self.assertEqual(code, self.run_cards("--store", store, *command)[0])
                    with open(store, "rb") as file:
                        self.assertEqual(before, file.read())
                    self.assertEqual(names, sorted(os.listdir(self.sandbox.root)))
        self.assertEqual(["half", "half"],
                         [card["Front"] for card in json.loads(self.run_cards(
                             "--json", "--store", os.path.join(out, "left.vlm"), "list")[1])])
        self.assertEqual([], self.cards("check", left))
        for wrong in (foreign, empty):
            self.assertEqual(1, self.run_cards("restore", wrong)[0])
        self.assertEqual(whole, self.sandbox.store_bytes())

    def test_no_backup_no_replacement(self):
        self.cards("import", self.sandbox.write("two.txt", TWO))
        copy = self.cards("backup", self.sandbox.path("copy.vlm"))["backup"]
        self.change("UPDATE Cards SET Front = 'later'")
        later = self.sandbox.store_bytes()
        self.sandbox.set_setting("BackupDirectory", self.sandbox.write("file", "no folder"))
        code, _, error = self.run_cards("restore", copy)
        self.assertEqual(3, code)
        self.assertIn("--no-backup", error)
        self.assertNotIn("safe", error)
        self.assertEqual(later, self.sandbox.store_bytes())
        self.assertEqual(0, self.run_cards("restore", "--no-backup", copy)[0])
        self.assertNotEqual(later, self.sandbox.store_bytes())

    def test_a_damaged_store_gives_its_cards_to_a_new_one(self):
        self.cards("import", self.sandbox.sample("capitals.txt"))
        with open(self.sandbox.store, "r+b") as file:
            file.seek(8 * 4096)
            file.write(bytes(4096))
        damaged = self.sandbox.store_bytes()
        new = self.sandbox.path("new.vlm")
        told = self.cards("repair", self.sandbox.store, new)
        listed = json.loads(self.run_cards("--json", "--store", new, "list")[1])
        self.assertEqual(told["cards"] + told["remade"], len(listed))
        self.assertGreater(len(listed), 100)
        self.assertEqual([], self.cards("check", new))
        self.assertEqual(damaged, self.sandbox.store_bytes())
        for wrong in (("absent.vlm", "b.vlm"), (self.sandbox.store, new), (self.sandbox.write("t", TWO), "b.vlm")):
            self.assertEqual(1, self.run_cards("repair", *wrong)[0], wrong)

    def test_two_stores_exchange(self):
        self.cards("import", self.sandbox.sample("capitals.txt"))
        folder, other = self.sandbox.path("carried"), self.sandbox.path("other.vlm")

        def sync(store, *more):
            return self.run_cards("--json", "--store", store, "sync", *more, folder)

        def told(answer):
            self.assertEqual((0, ""), (answer[0], answer[2]))
            return json.loads(answer[1])

        code, output, _ = sync(self.sandbox.store)
        self.assertEqual((1, True), (code, folder in json.loads(output)["message"]), "no folder")
        os.mkdir(folder)
        self.assertEqual(3, sync(other)[0], "no cards yet")
        self.assertFalse(os.path.exists(other))
        cards = len(self.cards("list"))
        self.assertEqual(cards, told(sync(self.sandbox.store, "--name", "laptop"))["sent"])
        first = told(sync(other, "--name", "desk"))
        self.assertEqual((cards, ["laptop"]),
                         (first["received"], [machine["name"] for machine in first["machines"]]))
        told(sync(self.sandbox.store, "--name", "laptop"))
        # Nothing new changes nothing, anywhere.
        def all_bytes():
            return {path: path.read_bytes() for root in (self.sandbox.root, folder)
                    for path in pathlib.Path(root).iterdir() if path.is_file()}

        before = all_bytes()
        for store in (other, self.sandbox.store):
            again = told(sync(store, "--name", "desk" if store == other else "laptop"))
            self.assertEqual((0, 0, ""), (again["sent"], again["received"], again["message"]))
        self.assertEqual(before, all_bytes())
        # A backup that is put back is noticed, and the answer decides.
        backups = os.path.join(self.sandbox.home, ".local/share/velomind/backups")
        copy = self.cards("backup", self.sandbox.path("copy.vlm"))["backup"]
        self.change("UPDATE Cards SET Notes='changed'")
        told(sync(self.sandbox.store))
        told(sync(other))
        self.assertEqual(1, len([name for name in os.listdir(backups) if ".exchange.vlm" in name]))
        self.assertEqual(0, self.run_cards("restore", copy)[0])
        code, _, error = self.run_cards("sync", folder)
        self.assertEqual((1, True), (code, "--take-newer" in error))
        self.assertNotIn("changed", {card.get("Notes") for card in self.cards("list")})
        self.assertEqual(0, self.run_cards("sync", "--take-newer", folder)[0])
        self.assertEqual({"changed"}, {card.get("Notes") for card in self.cards("list")})

    def test_a_slow_neighbour_never_blocks_the_store(self):
        self.cards("import", self.sandbox.sample("capitals.txt"))
        text = "".join(f"Front: {n}\nBack: {n}\n\n" for n in range(5000))
        self.cards("import", self.sandbox.write("many.txt", text))
        for command in (("export",), ("list",)):
            with self.subTest(command):
                # The pipe is full long before the end, and nobody reads it.
                process = subprocess.Popen([CARDS, *command], env=self.sandbox.environment(),
                                           stdout=subprocess.PIPE)
                try:
                    process.stdout.read(1)
                    wait_until(lambda: self.read(f"/proc/{process.pid}/stat").split()[2] == "S", "a full pipe")
                    self.change("UPDATE Globals SET Value=Value")
                finally:
                    process.kill()
                    process.communicate()
        pipe = self.sandbox.path("pipe")
        os.mkfifo(pipe)
        answers = []
        thread = threading.Thread(target=lambda: answers.append(self.run_cards("--json", "import", pipe)))
        thread.start()
        with open(pipe, "w", encoding="utf-8") as writer:
            self.change("UPDATE Globals SET Value=Value")
            writer.write(TWO)
        thread.join()
        self.assertEqual(2, json.loads(answers[0][1])["inserted"])

    def test_the_program_keeps_its_store(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        two = self.sandbox.write("two.txt", TWO)
        code, _, error = self.run_cards("import", two)
        self.assertEqual(3, code)
        self.assertIn("Velomind has the store", error)
        self.assertEqual(3, self.run_cards("restore", self.cards("backup", self.sandbox.path("a.vlm"))["backup"])[0])
        self.assertEqual([], self.cards("list"))
        other = self.sandbox.path("other.vlm")
        self.assertEqual(2, self.cards("--store", other, "import", two)["inserted"])
        self.assertEqual(0, program.quit())
        self.assertEqual(2, self.cards("import", two)["inserted"])


if __name__ == "__main__":
    unittest.main()
