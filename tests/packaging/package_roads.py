"""The program in the tree that an installation makes: VELOMIND_BINARY lies in its bin."""

import os
import unittest

import driver
from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press, type_text, wait_until


class PackageRoad(RoadTest):
    def install_browser(self):
        """Pages open in a program that only writes down their address."""
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

    def check_guide(self, page, section):
        """F1 opens that section of that page."""
        opened = self.sandbox.path("opened")
        press("F1")
        wait_until(lambda: os.path.exists(opened), "start of the browser")
        with open(opened, encoding="utf-8") as file:
            address = file.read().strip()
        os.remove(opened)
        usr = os.path.dirname(os.path.dirname(driver.BINARY))
        guide = os.path.join(usr, "share", "velomind", page)
        self.assertEqual(f"{guide}#{section}", address.removeprefix("file://"))
        self.assertTrue(os.path.exists(guide))

    def test_f1_leads_to_what_the_guide_says_of_the_window_in_front(self):
        self.install_browser()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        self.check_guide("Help.htm", "list")
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        self.check_guide("Help.htm", "study")
        press("ctrl+i")
        program.wait_window("Import Flashcards")
        type_text(self.sandbox.sample("french.txt"))
        press("Return")
        program.wait_window("Import")
        self.check_guide("Help.htm", "import")
        press("Escape")
        program.wait_window(STUDY_WINDOW)
        press("ctrl+n")
        program.wait_window("Edit - Velomind")
        self.check_guide("Help.htm", "editor")

    def test_it_speaks_the_language_of_its_user(self):
        self.install_browser()
        for language, title in (("de", "Liste - Velomind"), ("ja", "一覧 - Velomind")):
            self.sandbox.language = language
            program = self.sandbox.start()
            program.wait_window(title)
            self.check_guide(f"Help.{language}.htm", "list")
            program.close(title)
            self.assertEqual(0, program.wait())

    def test_a_first_start_offers_the_examples_in_the_language_of_its_user(self):
        self.sandbox.let_read_windows()
        self.sandbox.language = "de"
        program = self.sandbox.start()
        program.wait_window("Liste - Velomind")
        program.click("Eine Beispielliste ausprobieren...")
        program.wait_text("Category: Hauptstädte")

    def test_its_examples_can_be_imported(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("japanese.txt")))
        self.assertEqual(129, self.sandbox.card_count())


if __name__ == "__main__":
    unittest.main()
