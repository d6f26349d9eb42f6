"""The real program, ended by SIGKILL at moments that chance chooses while it writes: whatever the
moment, the store opens, nothing that was stored is missing, and nothing is there by half.

VELOMIND_KILLS says how often (20), VELOMIND_SEED with which chance.
"""

import glob
import os
import random
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from unittest import mock

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "end_to_end"))
import driver  # noqa: E402
from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press, run_tool, type_text, wait_until  # noqa: E402

CARDS = os.path.join(os.path.dirname(driver.BINARY), "velomind-cards")
KILLS = int(os.environ.get("VELOMIND_KILLS", "20"))
SEED = int(os.environ.get("VELOMIND_SEED", "1"))
EDIT_WINDOW = "Edit - Velomind"
IMPORTED = 400
FLOORS = (1, 1, 1, 3600, 14400, 57600)
SCHEDULE = ("Introduced", "LastReview", "NextReview", "ReviewInterval", "Difficulty", "LastScore",
            "ERC")


class Keys:
    """Presses the keys that a maker gives, again and again, until it is left."""

    def __init__(self, make):
        self._make = make
        self._done = threading.Event()
        self._thread = threading.Thread(target=self._run)

    def _run(self):
        while not self._done.is_set():
            self._make()

    def __enter__(self):
        self._thread.start()

    def __exit__(self, *_):
        self._done.set()
        self._thread.join()


class CardsCommand:
    """One run of velomind-cards."""

    def __init__(self, sandbox, *arguments):
        self.process = subprocess.Popen([CARDS, *arguments], env=sandbox.environment(),
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def wait(self):
        return self.process.wait(60)

    def kill(self):
        self.process.kill()
        self.process.wait()


class KillTest(RoadTest):
    def setUp(self):
        # On a disk, whose syncs make a change last long enough to be hit.
        with mock.patch.object(driver, "fast_directory", lambda: "/var/tmp"):
            super().setUp()
        self.chance = random.Random(SEED)
        self.hot = 0
        self.confirmed = set()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))

    # What is looked at.

    def journal(self):
        return self.sandbox.store + "-journal"

    def observe(self, sql):
        """Keeps what the store says while no change is under way: it is confirmed from then on."""
        if not os.path.exists(self.journal()):
            rows = self.sandbox.query(sql)
            if not os.path.exists(self.journal()):
                self.confirmed.update(rows)

    def rows(self, store=None):
        """Every card by its id and every category, from a copy: the program is to settle by itself
        what the kill has left."""
        store = store or self.sandbox.store
        copy = self.sandbox.path("copy.vlm")
        shutil.copy(store, copy)
        if os.path.exists(store + "-journal"):
            shutil.copy(store + "-journal", copy + "-journal")
        connection = sqlite3.connect(copy)
        try:
            connection.row_factory = sqlite3.Row
            self.assertEqual(["ok"], [row[0] for row in connection.execute("PRAGMA integrity_check")])
            cards = {row["CardId"]: dict(row) for row in connection.execute("SELECT * FROM Cards")}
            names = dict(tuple(row) for row in connection.execute("SELECT * FROM Categories"))
        finally:
            connection.close()
            os.remove(copy)
        return cards, names

    def backups(self):
        return set(glob.glob(os.path.join(self.sandbox.home, ".local/share/velomind/backups/*.vlm")))

    def forget_backups(self):
        """So that the next change is the first of the day."""
        for path in self.backups():
            os.remove(path)
        self.whole_backups.clear()

    def check_backups(self, possible):
        """Each new one has every card of the store as it was at one time."""
        for path in self.backups() - self.whole_backups:
            self.assertIn(self.rows(path)[0], possible, path)
            self.whole_backups.add(path)

    # When the program ends.

    def kill_soon(self, program, within):
        """Ends it at any moment, and counts those that were still at work."""
        time.sleep(self.chance.uniform(0, within))
        if program.process.poll() is None:
            self.busy += 1
        program.kill()

    def kill(self, program, sql=None, within=0.6):
        """Ends the program at any moment, or just when a change is under way after it."""
        end = time.monotonic() + self.chance.uniform(0, within)
        while time.monotonic() < end:
            if sql:
                self.observe(sql)
            time.sleep(0.002)
        if self.chance.random() < 0.6:
            end = time.monotonic() + 1
            while time.monotonic() < end and not os.path.exists(self.journal()):
                pass
            # The journal comes first, and then the store itself is written.
            end = time.monotonic() + self.chance.uniform(0, 0.001)
            while time.monotonic() < end:
                pass
        program.kill()
        self.hot += os.path.exists(self.journal())

    def start(self, window=LIST_WINDOW):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        if window == STUDY_WINDOW:
            press("ctrl+2")
            program.wait_window(STUDY_WINDOW)
        return program

    # What the program does meanwhile, and what may have come of it.

    def import_cards(self, number):
        name = f"import {number}"
        lines = ["Front\tBack\tNotes\tCategory"]
        lines += [f"{name} {i}\tback {i}\tnote {i}\t{name}" for i in range(IMPORTED)]
        count = f"SELECT Front FROM Cards WHERE Front LIKE '{name} %'"
        program = self.sandbox.start("--import", self.sandbox.write("cards.txt", "\n".join(lines)))
        wait_until(lambda: os.path.exists(self.journal()) or self.sandbox.query(count)
                   or program.process.poll() is not None, "the first card")
        self.kill(program, count)

        def check(old, new, names):
            cards = sorted((card for card in new.values() if card["CardId"] not in old),
                           key=lambda card: card["IntroductionOrder"])
            for i, card in enumerate(cards):
                self.assertEqual((f"{name} {i}", f"back {i}", f"note {i}", name, 0, i),
                                 (card["Front"], card["Back"], card["Notes"],
                                  names[card["CategoryId"]], card["Introduced"],
                                  card["IntroductionOrder"]))
            self.assertLessEqual(self.confirmed, {(card["Front"],) for card in cards})
            return set()
        return check

    def import_by_command(self, number):
        """Many cards in groups, into the store, or into one that is made for them."""
        name = f"group {number}"
        store = self.chance.choice((self.sandbox.store, self.sandbox.path(f"new{number}.vlm")))
        text = "Front\tBack\tCategory\n" + "".join(f"{name} {i}\tback {i}\t{name}\n" for i in range(8000))
        program = CardsCommand(self.sandbox, "--store", store, "import",
                               self.sandbox.write("cards.txt", text))
        self.kill_soon(program, 1.5)

        def check(old, new, names):
            if store != self.sandbox.store:
                self.assertEqual(old, new)
                if not os.path.exists(store):
                    return set()
                old, (new, names) = {}, self.rows(store)
            cards = sorted((card for key, card in new.items() if key not in old),
                           key=lambda card: card["IntroductionOrder"])
            self.assertEqual([(f"{name} {i}", f"back {i}", name) for i in range(len(cards))],
                             [(card["Front"], card["Back"], names[card["CategoryId"]]) for card in cards])
            self.grouped += 0 < len(cards) < 8000
            return set()
        return check

    def back_up(self, number):
        self.forget_backups()
        wanted = self.sandbox.path(f"backup{number}.vlm")
        by_name = self.chance.random() < 0.5
        self.kill_soon(CardsCommand(self.sandbox, "backup", *[wanted] * by_name), 0.15)

        def check(old, new, _names):
            self.assertEqual(old, new)
            if os.path.exists(wanted):
                self.assertEqual(old, self.rows(wanted)[0])
            return set()
        return check

    def restore(self, number):
        backup = self.sandbox.path("restored.vlm")
        if os.path.exists(backup):
            os.remove(backup)
        self.assertEqual(0, CardsCommand(self.sandbox, "backup", backup).wait())
        then, _ = self.rows()
        extra = self.sandbox.write("extra.txt", f"Front\tBack\nextra {number}\tback\n")
        self.assertEqual(0, CardsCommand(self.sandbox, "import", extra).wait())
        now, _ = self.rows()
        self.assertEqual(len(then) + 1, len(now))
        self.kill_soon(CardsCommand(self.sandbox, "restore", backup), 0.25)

        def check(_old, new, _names):
            self.assertIn(new, (then, now))
            self.restored += new == then
            self.check_backups((then, now))
            return set()
        return check

    def repair(self, _):
        damaged = self.sandbox.store_bytes()
        page = self.chance.randrange(2, len(damaged) // 4096) * 4096
        damaged = damaged[:page] + bytes(4096) + damaged[page + 4096:]
        path = self.sandbox.write("damaged.vlm", damaged)
        whole, new = self.sandbox.path("whole.vlm"), self.sandbox.path("repaired.vlm")
        for old in (whole, new):
            if os.path.exists(old):
                os.remove(old)
        self.assertEqual(0, CardsCommand(self.sandbox, "repair", path, whole).wait())
        self.kill_soon(CardsCommand(self.sandbox, "repair", path, new), 1)

        def check(old, after, _names):
            self.assertEqual(old, after)
            with open(path, "rb") as file:
                self.assertEqual(damaged, file.read())
            if os.path.exists(new):
                # One whose identity is lost gets another.
                def texts(store):
                    return sorted((card["Front"], card["Back"]) for card in self.rows(store)[0].values())
                self.assertEqual(texts(whole), texts(new))
            return set()
        return check

    def score_cards(self, _):
        self.forget_backups()
        start = int(time.time())
        program = self.start(STUDY_WINDOW)
        scored = f"SELECT CardId FROM Cards WHERE LastReview >= {start} AND Introduced = 1"
        with Keys(lambda: press("space", str(self.chance.randrange(6)))):
            self.kill(program, scored)

        def check(old, new, _names):
            changed = set()
            for key, card in new.items():
                if card == old[key]:
                    continue
                changed.add(key)
                rest = {name: value for name, value in card.items() if name not in SCHEDULE}
                self.assertLessEqual(rest.items(), old[key].items(), "all else stays")
                self.assertEqual(1, card["Introduced"])
                self.assertTrue(start <= card["LastReview"] <= time.time())
                self.assertEqual(card["LastReview"] + int(card["ReviewInterval"]), card["NextReview"])
                self.assertIn(card["LastScore"], range(6))
                if not old[key]["Introduced"] and card["LastScore"] > 2:
                    self.assertGreaterEqual(card["ReviewInterval"], FLOORS[3] * 0.8)
                self.assertGreaterEqual(card["ReviewInterval"], 1)
                self.assertNotEqual(old[key]["ERC"], card["ERC"])
            self.assertLessEqual({row[0] for row in self.confirmed}, changed)
            return changed
        return check

    def write_cards(self, number):
        self.forget_backups()
        program = self.start()
        press("ctrl+n")
        program.wait_window(EDIT_WINDOW)
        written = iter(range(1000))

        def write():
            i = next(written)
            type_text(f"w{number}.{i}")
            press("Tab")
            type_text(f"b{number}.{i}")
            press("alt+Return")
        with Keys(write):
            self.kill(program, f"SELECT Front FROM Cards WHERE Front LIKE 'w{number}.%'")

        def check(old, new, _names):
            fronts = {card["Front"]: card["Back"] for key, card in new.items() if key not in old}
            self.assertEqual({f"w{number}.{i}": f"b{number}.{i}" for i in range(len(fronts))}, fronts)
            self.assertLessEqual({row[0] for row in self.confirmed}, set(fronts))
            return set()
        return check

    def paste_cards(self, _):
        program = self.start()
        program.click_at(LIST_WINDOW, 0.6, 0.4)
        press("Home", "shift+Next", "shift+Next", "shift+Next", "ctrl+c")
        try:
            wait_until(lambda: run_tool("xclip", "-o", "-selection", "clipboard"), "a text", 5)
        except AssertionError:
            # A kill may have left the current category empty, and then there is nothing to copy.
            cards, names = self.rows()
            self.assertTrue(names.keys() - {card["CategoryId"] for card in cards.values()})
        press("ctrl+v")
        self.kill(program, within=0.2)

        def check(old, new, _names):
            def copied(card):
                return tuple(value for name, value in card.items() if name != "CardId")
            known = {copied(card) for card in old.values()}
            self.assertLessEqual({copied(card) for card in new.values()}, known)
            self.pasted += len(new) - len(old)
            return set()
        return check

    def rename_category(self, number):
        """To a name of its own, or to that of another category, which takes its cards."""
        _, names = self.rows()
        target = self.chance.choice(sorted(names.items()))
        name = self.chance.choice((f"renamed {number}", target[1]))
        program = self.start()
        program.click_at(LIST_WINDOW, 0.06, 0.055)
        wait_until(lambda: press("ctrl+r") or program.windows("Rename Category"), "the question")
        program.wait_window("Rename Category")
        press("ctrl+a")
        type_text(name)
        press("Return")
        if name == target[1]:
            wait_until(lambda: not program.windows("Rename Category"), "the answer")
            press("Return")
        self.kill(program, within=self.chance.choice((0.005, 1)))

        def check(old, new, names_now):
            changed = {key for key in old if new[key] != old[key]}
            for key in changed:
                self.assertEqual({**old[key], "CategoryId": target[0]}, new[key])
            left = {old[key]["CategoryId"] for key in changed}
            self.assertFalse(left & {card["CategoryId"] for card in new.values()}, "all or none")
            self.assertLessEqual(len(left), 1)
            gone = names.keys() - names_now.keys()
            self.assertLessEqual(len(gone), 1)
            self.assertFalse(gone & {card["CategoryId"] for card in new.values()})
            others = {key for key in names_now if names_now[key] != names[key]}
            self.assertLessEqual({names_now[key] for key in others}, {name})
            self.renamed += bool(others or left)
            self.names_before = names_now
            return changed
        return check

    def start_with_many(self):
        """All cards of the category that has the most of them are selected."""
        cards, _ = self.rows()
        categories = [card["CategoryId"] for card in cards.values() if card["CategoryId"] >= 0]
        largest = max(set(categories), key=categories.count)
        path = os.path.join(self.sandbox.config, "Velomind.conf")
        with open(path, encoding="utf-8") as file:
            text = re.sub("CurrentCategoryId=.*\n", "", file.read())
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"CurrentCategoryId={largest}\n{text}")
        self.forget_backups()
        program = self.start()
        press("ctrl+f", "Escape", "ctrl+a")
        return program, {key for key, card in cards.items() if card["CategoryId"] == largest}

    def check_many(self, chosen, expected):
        """Each chosen card is as it was or as it is expected to become, whole."""
        def check(old, new, _names):
            changed = {key for key in old if new[key] != old[key]}
            self.assertLessEqual(changed, chosen)
            for key in changed:
                self.assertEqual({**old[key], **expected(old[key], new[key])}, new[key])
            self.many += len(changed)
            self.partly += 0 < len(changed) < len(chosen)
            return changed
        return check

    def edit_many(self, number):
        program, chosen = self.start_with_many()
        window = f"Edit {len(chosen)} Cards - Velomind"
        wait_until(lambda: press("Return") or program.windows(window), window)
        program.wait_window(window)
        press("alt+a", "ctrl+a")
        type_text(f"author {number}")
        press("alt+p", "ctrl+a")
        type_text(f"chapter {number}")
        press("ctrl+Return")
        self.kill(program)
        return self.check_many(
            chosen, lambda *_: {"Author": f"author {number}", "Chapter": f"chapter {number}"})

    def replace_in_many(self, _):
        program, chosen = self.start_with_many()
        press("ctrl+h")
        program.wait_window("Find and Replace")
        type_text("a")
        press("Tab")
        type_text("ax")
        wait_until(lambda: press("alt+r") or not program.windows("Find and Replace")
                   or os.path.exists(self.journal()), "the replacement")
        self.kill(program)
        return self.check_many(chosen, lambda old, _: {
            name: re.sub("a", "ax", old[name], flags=re.IGNORECASE) for name in ("Front", "Back")})

    def renumber_many(self, number):
        program, chosen = self.start_with_many()
        # From the end of the menu to the orders, and from the end of those to the command.
        deal = self.chance.random() < 0.5
        press("alt+e", "Up", "Up", "Up", "Up", "Right", "Up", *["Up"] * (not deal), "Return")
        first = 100000 * (number + 1)
        if not deal:
            program.wait_window("Renumber Cards")
            press("ctrl+a")
            type_text(str(first))
            press("Return")
        self.kill(program)

        def expected(_, new):
            # A deal that was killed has left equal numbers, which the next one tells apart.
            order = new["IntroductionOrder"]
            self.assertTrue(deal or first <= order < first + len(chosen))
            return {"IntroductionOrder": order}
        return self.check_many(chosen, expected)

    def export_cards(self, number):
        program = self.start(STUDY_WINDOW)
        press("alt+f", "Up", "Up", "Up", "Up", "Up", "Up", "Return")
        program.wait_window("Export Options")
        press("alt+o")
        program.wait_window("Export Flashcards")
        press("ctrl+a")
        type_text(self.sandbox.path(f"out{number}.txt"))
        press("Return")
        self.kill(program)
        return lambda old, new, _names: set()

    def move_store(self, number):
        self.sandbox.let_read_windows()
        program = self.start()
        # The start has played back what the last kill had left.
        whole = self.sandbox.store_bytes()
        old = self.sandbox.store
        # By turns to the other file system, where there is one, and to a name beside.
        place = self.elsewhere if number % 2 == 0 else self.sandbox.documents
        new = os.path.join(place, f"moved{number}.vlm")
        press("alt+t", "Up", "Return")
        program.wait_window("Options")
        program.tab_to("Your flash cards are stored in this file:")
        press("Tab", "space")
        program.settle()
        press("Down", "Return", "Tab", "ctrl+a")
        type_text(new)
        press("Return")
        # Too early, on the way, or while the settings are told of it.
        end = time.monotonic() + self.chance.choice((0, 0.05, 3, 3, 3))
        name = os.path.basename(new)
        while time.monotonic() < end and not any(at.startswith(name) for at in os.listdir(place)):
            pass
        time.sleep(self.chance.choice((0, 0.001, 0.01, 0.2)))
        program.kill()
        self.sandbox.bus.close()
        self.sandbox.bus = None
        there = [path for path in (old, new) if os.path.exists(path)]
        self.assertTrue(there, "the store is at its old or its new place")
        for path in there:
            with open(path, "rb") as file:
                self.assertEqual(whole, file.read(), "and whole")
        self.sandbox.store = there[-1]
        self.moves += there[-1] == new
        # As a person would who is told that the store is not where it was.
        path = os.path.join(self.sandbox.config, "Velomind.conf")
        with open(path, encoding="utf-8") as file:
            text = re.sub("DatabasePath=.*", f"DatabasePath={self.sandbox.store}", file.read())
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return lambda old, new, _names: set()

    def test_no_kill_loses_a_card(self):
        deeds = [self.import_cards, self.score_cards, self.paste_cards, self.rename_category,
                 self.write_cards, self.export_cards, self.move_store, self.import_by_command,
                 self.back_up, self.restore, self.repair, self.edit_many, self.replace_in_many,
                 self.renumber_many]
        self.moves = self.pasted = self.renamed = self.busy = self.grouped = self.restored = 0
        self.many = self.partly = 0
        self.whole_backups = set()
        self.elsewhere = tempfile.mkdtemp(prefix="velomind-", dir=driver.fast_directory())
        self.addCleanup(shutil.rmtree, self.elsewhere)
        before, self.names_before = self.rows()
        for number in range(KILLS):
            deed = deeds[number % len(deeds)]
            with self.subTest(deed=deed.__name__, kill=number, seed=SEED):
                self.confirmed = set()
                try:
                    check = deed(number)
                finally:
                    self.sandbox.kill()
                after, names = self.rows()
                if deed != self.restore:
                    self.check_backups((before,))
                changed = check(before, after, names)
                self.assertLessEqual(self.names_before.items(), names.items())
                for key, card in before.items():
                    if key not in changed:
                        self.assertEqual(card, after.get(key))
                before, self.names_before = after, names
        if KILLS >= 20 * len(deeds):
            # Keys that lead to no deed any more would try nothing.
            self.assertTrue(self.moves and self.renamed and self.pasted and self.many)
        print(f"{KILLS} kills, {self.hot} of them in the middle of a change, "
              f"{self.moves} stores moved, {self.renamed} categories renamed or merged, "
              f"{self.pasted} cards pasted, {self.busy} commands ended at work, {self.grouped} between "
              f"two groups, {self.restored} stores restored, {self.many} cards changed together, "
              f"{self.partly} times a part of them, {len(before)} cards at the end",
              file=sys.stderr)


if __name__ == "__main__":
    unittest.main()
