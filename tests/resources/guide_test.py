"""Checks the built user guide against the sources: guide_test.py GUIDE SOURCES"""

import html
import os
import re
import sys
import unittest

GUIDE, SOURCES = sys.argv[1:3]


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


PAGE = read(GUIDE)
# What a person reads, in single blanks.
TEXT = " ".join(html.unescape(re.sub(r"<[^>]*>", " ", PAGE)).split())


class GuideTest(unittest.TestCase):
    def test_every_link_has_its_place(self):
        places = re.findall(r'\bid="([^"]+)"', PAGE)
        self.assertEqual(len(places), len(set(places)))
        links = re.findall(r'\bhref="([^"]+)"', PAGE)
        self.assertEqual(set(places), {link.lstrip("#") for link in links})

    def test_it_is_one_file_with_all_its_pictures(self):
        pictures = re.findall(r'\b(?:src|srcset)="([^"]+)"', PAGE)
        self.assertTrue(pictures)
        for picture in pictures:
            self.assertRegex(picture, r"^data:image/png;base64,[A-Za-z0-9+/]+=*$")
        self.assertNotRegex(PAGE, r"url\(|@import|<script|<link")

    def test_it_names_every_attribute(self):
        names = re.findall(r'\{L"(\w+)"', read(SOURCES, "exchange", "CardRecord.cpp"))
        self.assertTrue(names)
        told = {name.lower() for name in re.findall(r"<code>(\w+)</code>", PAGE)}
        self.assertEqual([], [name for name in names if name not in told])

    def test_it_explains_every_message_about_a_record(self):
        for source in ("CardRecord", "ImportJob", "ImportRecord", "ImportPass", "Delimited"):
            code = re.sub(r'"\s*\n\s*"', "", read(SOURCES, "exchange", source + ".cpp"))
            # The errors that nobody expects are about threads, not about records.
            for message in re.findall(r'\b_\(\s*"(?!Unexpected Error)((?:[^"\\]|\\.)*)"\s*\)', code):
                with self.subTest(message):
                    self.check_told(message.replace('\\"', '"'))

    def check_told(self, message):
        # Help for the dialogs, and words that fill a message.
        if "\\n" in message or " " not in message or message == "no random numbers":
            return
        if re.search(r"\berror\b|\bfailed\b|^Unable to (add|update)", message):
            message = re.split(r"[.(%]| error %", message)[0].strip()
        pattern = re.escape(" ".join(message.split()))
        pattern = re.sub(r"%+[si]", lambda _: ".{1,12}", pattern)
        self.assertRegex(TEXT, pattern)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
