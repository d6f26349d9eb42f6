"""The program as its package brings it: VELOMIND_PACKAGE is unpacked into an empty folder. Without it
VELOMIND_BINARY is the program where a package has installed it."""

import os
import subprocess
import tempfile
import unittest

import driver
from driver import LIST_WINDOW, RoadTest, press, wait_until

PACKAGE = os.environ.get("VELOMIND_PACKAGE")


class PackageRoad(RoadTest):
    @classmethod
    def setUpClass(cls):
        if PACKAGE:
            root = tempfile.TemporaryDirectory(prefix="velomind-package-")
            cls.addClassCleanup(root.cleanup)
            subprocess.run(["dpkg-deb", "--extract", PACKAGE, root.name], check=True)
            driver.BINARY = os.path.join(root.name, "usr", "bin", "velomind")
        cls.usr = os.path.dirname(os.path.dirname(driver.BINARY))

    def install_browser(self):
        """Pages open in a program that only writes down their address, into the file given."""
        opened = self.sandbox.path("opened")
        browser = self.sandbox.write(
            "browser", f'#!/bin/sh\necho "$1" >{opened}.new && mv {opened}.new {opened}\n')
        os.chmod(browser, 0o755)
        applications = os.path.join(self.sandbox.home, ".local", "share", "applications")
        os.makedirs(applications)
        with open(os.path.join(applications, "browser.desktop"), "w", encoding="utf-8") as file:
            file.write(f"[Desktop Entry]\nType=Application\nName=Browser\nExec={browser} %u\n"
                       "MimeType=text/html;\n")
        with open(os.path.join(self.sandbox.config, "mimeapps.list"), "w", encoding="utf-8") as file:
            file.write("[Default Applications]\ntext/html=browser.desktop\n")
        return opened

    def test_the_link_leads_to_the_program_and_the_program_to_its_guide(self):
        opened = self.install_browser()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("F1")
        wait_until(lambda: os.path.exists(opened), "start of the browser")
        with open(opened, encoding="utf-8") as file:
            address = file.read().strip()
        guide = os.path.join(self.usr, "lib", "velomind", "Help.htm")
        self.assertEqual(guide, address.removeprefix("file://"))
        self.assertTrue(os.path.exists(guide))
        self.assertEqual(0, program.quit())

    def test_it_speaks_the_language_of_its_user(self):
        for self.sandbox.language, title in (("de", "Liste - Velomind"), ("ja", "一覧 - Velomind")):
            program = self.sandbox.start()
            program.wait_window(title)
            program.close(title)
            self.assertEqual(0, program.wait())

    def test_its_examples_can_be_imported(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        self.assertEqual(129, self.sandbox.card_count())


if __name__ == "__main__":
    unittest.main()
