"""Two computers study the same cards and exchange them by velomind-cards, which is killed at moments
that chance chooses. In the end both have the same cards, and every review once.

VELOMIND_KILLS says how often the command is killed (10), VELOMIND_SEED with which chance;
VELOMIND_SYNCTHING for how many seconds two real daemons of Syncthing carry the folder (0: not tried).
"""

import json
import os
import random
import shutil
import socket
import sqlite3
import subprocess
import tempfile
import time
import unittest
import urllib.request
import xml.etree.ElementTree

CARDS = os.path.join(os.path.dirname(os.environ["VELOMIND_BINARY"]), "velomind-cards")
KILLS = int(os.environ.get("VELOMIND_KILLS", "10"))
SEED = int(os.environ.get("VELOMIND_SEED", "1"))
SECONDS = int(os.environ.get("VELOMIND_SYNCTHING", "0"))
FIRST_CARDS = 300
# After it a command that is not killed has ended.
LIMIT = 60


class Computer:
    """A store, a folder of its own, and somebody who studies."""

    def __init__(self, root, name, chance):
        self.name = name
        self.chance = chance
        self.home = os.path.join(root, name)
        self.folder = os.path.join(self.home, "carried")
        self.store = os.path.join(self.home, "Words.vlm")
        os.makedirs(self.folder)
        self.session = f"{chance.getrandbits(62) | 1 << 62:x}"
        self.reviews = []

    def start(self, *arguments):
        environment = dict(os.environ, HOME=self.home, XDG_DATA_HOME=self.home, XDG_CONFIG_HOME=self.home,
                           LC_ALL="C.UTF-8")
        return subprocess.Popen([CARDS, "--json", "--store", self.store, *arguments], env=environment,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def run(self, *arguments):
        process = self.start(*arguments)
        output, error = process.communicate(timeout=LIMIT)
        if process.returncode != 0:
            raise AssertionError(f"{self.name} {arguments}: {process.returncode} {output} {error}")
        return json.loads(output)

    def sync(self):
        return self.run("sync", "--name", self.name, self.folder)

    def killed_sync(self, within):
        """Returns true when the kill came before the command's end."""
        process = self.start("sync", "--name", self.name, self.folder)
        time.sleep(self.chance.random() * within)
        process.kill()
        process.communicate()
        return process.returncode < 0

    def change(self, sql, *values):
        connection = sqlite3.connect(self.store, timeout=20, isolation_level=None)
        try:
            return connection.execute(sql, values).fetchall()
        finally:
            connection.close()

    def score(self, now):
        """One score, as the program writes it: the card, then its two lines in the log."""
        rows = self.change("SELECT CardId, Introduced, LastReview, LastScore, ReviewInterval, Difficulty "
                           "FROM Cards ORDER BY random() LIMIT 1")
        card, introduced, last, score, interval, difficulty = rows[0]
        number, after = len(self.reviews) + 1, 86400 + self.chance.randrange(10**6)
        self.change("UPDATE Cards SET Introduced=1, LastReview=?, LastScore=4, ReviewInterval=?, "
                    "NextReview=? WHERE CardId=?", now, after, now + after, card)
        stamp = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(now))
        since = now - last if introduced else "-"
        line = f"{stamp}\t{card}\tF\t4\t{since}\t{round(interval)}\t{after}\t{difficulty}\t{difficulty}\t-\n" \
               f"#\t{self.session}\t{number}\t{introduced}\t{last if introduced else '-'}\t{score}\t" \
               f"{interval:g}\t{difficulty}\t0\t0\n"
        with open(self.store + ".reviews", "a", encoding="utf-8") as log:
            log.write(line)
        self.reviews.append((self.session, str(number)))

    def study(self, now):
        for _ in range(self.chance.randrange(1, 4)):
            self.score(now)
        self.change("UPDATE Cards SET Notes=? WHERE rowid=(SELECT rowid FROM Cards ORDER BY random() LIMIT 1)",
                    f"{self.name} {now}")

    def cards(self):
        return self.change("SELECT CardId, Front, Back, Notes, (SELECT Name FROM Categories WHERE Id=CategoryId), "
                           "Introduced, Introduced*LastReview, ReviewInterval, Difficulty FROM Cards ORDER BY CardId")

    def logged(self):
        """The reviews in the log, by session and number."""
        with open(self.store + ".reviews", encoding="utf-8") as log:
            lines = [line[2:].split("\t") for line in log if line.startswith("#\t")]
        return [(fields[0], fields[1]) for fields in lines if len(fields) > 5]


def free_ports(count):
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


class Syncthing:
    """A daemon that speaks to one other on this machine alone."""

    def __init__(self, computer, ports):
        self.home = os.path.join(computer.home, "syncthing")
        self.folder = computer.folder
        self.web, self.port = ports
        self.environment = dict(os.environ, HOME=self.home, STNOUPGRADE="1")
        subprocess.run(["syncthing", "generate", "--home", self.home, "--no-default-folder"], check=True,
                       env=self.environment, capture_output=True)
        config = xml.etree.ElementTree.parse(os.path.join(self.home, "config.xml"))
        self.key = config.find("gui/apikey").text
        self.id = subprocess.run(["syncthing", "--home", self.home, "--device-id"], check=True, text=True,
                                 env=self.environment, capture_output=True).stdout.strip()
        self.process = subprocess.Popen(["syncthing", "serve", "--home", self.home, "--no-browser", "--no-restart",
                                         f"--gui-address=127.0.0.1:{self.web}"], env=self.environment,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        limit = time.monotonic() + LIMIT
        while True:
            try:
                self.ask("GET", "system/ping")
                return
            except OSError:
                if time.monotonic() > limit:
                    raise
                time.sleep(0.1)

    def ask(self, method, path, value=None):
        request = urllib.request.Request(f"http://127.0.0.1:{self.web}/rest/{path}", method=method,
                                         headers={"X-API-Key": self.key, "Content-Type": "application/json"},
                                         data=None if value is None else json.dumps(value).encode())
        with urllib.request.urlopen(request, timeout=10) as answer:
            body = answer.read()
        return json.loads(body) if body else None

    def meet(self, other):
        options = self.ask("GET", "config/options")
        options.update(listenAddresses=[f"tcp://127.0.0.1:{self.port}"], globalAnnounceEnabled=False,
                       localAnnounceEnabled=False, relaysEnabled=False, natEnabled=False,
                       crashReportingEnabled=False, urAccepted=-1, reconnectionIntervalS=1, autoUpgradeIntervalH=0)
        self.ask("PUT", "config/options", options)
        self.ask("POST", "config/devices", {"deviceID": other.id, "name": "other",
                                            "addresses": [f"tcp://127.0.0.1:{other.port}"]})
        self.ask("POST", "config/folders", {"id": "carried", "path": self.folder, "type": "sendreceive",
                                            "fsWatcherEnabled": True, "fsWatcherDelayS": 1, "rescanIntervalS": 5,
                                            "devices": [{"deviceID": self.id}, {"deviceID": other.id}]})

    def stop(self):
        self.process.terminate()
        self.process.wait(LIMIT)


class ExchangeTest(unittest.TestCase):
    def setUp(self):
        # On a disk, whose syncs make an exchange last long enough to be hit.
        self.root = tempfile.mkdtemp(prefix="velomind-exchange-", dir="/var/tmp")
        self.addCleanup(shutil.rmtree, self.root)
        self.chance = random.Random(SEED)
        self.computers = [Computer(self.root, name, self.chance) for name in ("laptop", "desk")]
        words = os.path.join(self.root, "words.txt")
        with open(words, "w", encoding="utf-8") as file:
            file.write("".join(f"Front: {i}\nBack: back {i}\nCategory: {i % 5}\n\n" for i in range(FIRST_CARDS)))
        self.computers[0].run("import", words)
        self.now = 1780000000
        self.hit = 0

    def carry(self):
        """A service that deletes nothing."""
        for one, other in (self.computers, self.computers[::-1]):
            for name in set(os.listdir(one.folder)) - set(os.listdir(other.folder)):
                if not name.startswith("."):
                    shutil.copy(os.path.join(one.folder, name), other.folder)

    def step(self, computer, within):
        self.now += self.chance.randrange(1, 5000)
        computer.study(self.now)
        if self.chance.random() < 0.5:
            self.hit += computer.killed_sync(within)
        else:
            computer.sync()

    def equal(self):
        one, other = self.computers
        return one.cards() == other.cards() and sorted(one.logged()) == sorted(other.logged())

    def check(self):
        one, other = self.computers
        given = sorted(one.reviews + other.reviews)
        for computer in self.computers:
            self.assertEqual([("ok",)], computer.change("PRAGMA integrity_check"))
            self.assertEqual(given, sorted(computer.logged()), computer.name)
        self.assertEqual(one.cards(), other.cards())
        self.assertEqual(FIRST_CARDS, len(one.cards()))
        print(f"{self.hit} kills in the middle, {len(given)} reviews", flush=True)

    def test_no_kill_loses_or_doubles_a_review(self):
        for computer in self.computers:
            computer.sync()
            self.carry()
        begin = time.monotonic()
        self.computers[0].sync()
        within = (time.monotonic() - begin) * 3
        for number in range(100 * KILLS):
            if self.hit >= KILLS:
                break
            self.step(self.computers[number % 2], within)
            self.carry()
        for _ in range(4):
            for computer in self.computers:
                computer.sync()
                self.carry()
        self.assertGreaterEqual(self.hit, KILLS)
        self.check()

    @unittest.skipUnless(SECONDS, "takes minutes")
    def test_two_daemons_carry_the_folder(self):
        ports = free_ports(4)
        daemons = []
        self.addCleanup(lambda: [daemon.stop() for daemon in daemons])
        for number, computer in enumerate(self.computers):
            daemons.append(Syncthing(computer, ports[2 * number:2 * number + 2]))
        daemons[0].meet(daemons[1])
        daemons[1].meet(daemons[0])
        self.computers[0].sync()
        limit = time.monotonic() + LIMIT
        while not any(name.endswith(".whole") for name in os.listdir(self.computers[1].folder)):
            self.assertLess(time.monotonic(), limit, "nothing was carried")
            time.sleep(0.2)
        self.computers[1].sync()
        end = time.monotonic() + SECONDS
        while time.monotonic() < end:
            self.step(self.chance.choice(self.computers), 0.3)
        limit = time.monotonic() + LIMIT
        while not self.equal() and time.monotonic() < limit:
            for computer in self.computers:
                computer.sync()
            time.sleep(0.5)
        self.check()


if __name__ == "__main__":
    unittest.main()
