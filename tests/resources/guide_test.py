"""Checks the built user guides and the man pages against the sources and each other:
guide_test.py BUILD SOURCES"""

import ast
import collections
import html
import html.parser
import os
import re
import sys
import unittest

BUILD, SOURCES = sys.argv[1:3]
TRANSLATIONS = ("de", "ja")
# What a guide names with these stands in the program's windows, or is a text of the user.
INLINE = ("em", "strong", "code", "kbd", "a")
KEYS = {"de": {"Ctrl": "Strg", "Shift": "Umschalt", "Enter": "Eingabe", "Space": "Leertaste",
               "Delete": "Entf", "Page Up": "Bild auf", "Page Down": "Bild ab", "Down": "Ab"}}


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def words_of(text):
    return " ".join(text.split())


def label_of(text):
    """A text of the program as a guide names it: without its key, its underlined letter, its dots."""
    text = re.sub(r"\(&\w\)|&(?!&)", "", text.split("\t")[0])
    return words_of(text).rstrip(".:。")


def catalogue(language):
    """Every translation of each text of the program."""
    entries = collections.defaultdict(set)
    for entry in read(SOURCES, "..", "po", language + ".po").split("\n\n"):
        texts = {name: "".join(ast.literal_eval(line) for line in value.splitlines())
                 for name, value in re.findall(
                     r'^(msg\w+(?:\[\d\])?) ((?:"(?:[^"\\]|\\.)*"\n?)+)', entry, re.M)}
        if texts.get("msgid"):
            entries[texts["msgid"]].add(texts.get("msgstr", texts.get("msgstr[0]")))
    return entries


class Block:
    """A paragraph, a cell, a picture or the like, with its words and what is marked in them."""

    def __init__(self, tag, place):
        self.tag = tag
        self.id = place
        self.text = []
        self.marked = []

    def find(self, mark):
        return [text for tag, text in self.marked if tag == mark]

    def labels(self):
        """What may be labels: marked words, the parts of a way through the menus, a whole cell."""
        texts = self.find("em") + self.find("strong")
        if self.tag in ("td", "figcaption") and not self.find("code") + self.find("kbd"):
            texts.append(re.split(r"。|\. ", words_of("".join(self.text)))[0])
        return [label_of(part) for text in texts for part in text.split(" > ")]


class Outline(html.parser.HTMLParser):
    """The blocks of a page in their order."""

    def __init__(self, page):
        super().__init__()
        self.blocks = []
        self._open = []
        self.feed(re.sub(r"<style>.*?</style>", "", page, flags=re.S))

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        if tag in INLINE:
            self._open.append(len(self.blocks[-1].text))
            if tag == "a":
                self.blocks[-1].marked.append(("to", attributes["href"]))
        elif tag != "br":
            self.blocks.append(Block(tag, attributes.get("id")))

    def handle_endtag(self, tag):
        if tag in INLINE:
            text = "".join(self.blocks[-1].text[self._open.pop():])
            self.blocks[-1].marked.append((tag, words_of(text)))

    def handle_data(self, data):
        if self.blocks:
            self.blocks[-1].text.append(data)


PAGES = {language: read(BUILD, page) for language, page in
         (("en", "Help.htm"), ("de", "Help.de.htm"), ("ja", "Help.ja.htm"))}
OUTLINES = {language: Outline(page).blocks for language, page in PAGES.items()}
CATALOGUES = {"en": {}} | {language: catalogue(language) for language in TRANSLATIONS}
LABELS = {language: {label_of(text): {label_of(told) for told in translated}
                     for text, translated in CATALOGUES[language].items()}
          for language in TRANSLATIONS}


class GuideTest(unittest.TestCase):
    def test_every_link_has_its_place(self):
        for language, page in PAGES.items():
            with self.subTest(language):
                places = re.findall(r'\bid="([^"]+)"', page)
                self.assertEqual(len(places), len(set(places)))
                links = set(re.findall(r'\bhref="([^"]+)"', page))
                pages = {link for link in links if not link.startswith("#")}
                self.assertEqual(pages, {"Help.htm", "Help.de.htm", "Help.ja.htm"})
                self.assertEqual(set(places), {link.lstrip("#") for link in links - pages})

    def test_it_is_one_file_with_all_its_pictures(self):
        for language, page in PAGES.items():
            with self.subTest(language):
                pictures = re.findall(r'\b(?:src|srcset)="([^"]+)"', page)
                self.assertTrue(pictures)
                for picture in pictures:
                    self.assertRegex(picture, r"^data:image/png;base64,[A-Za-z0-9+/]+=*$")
                self.assertNotRegex(page, r"url\(|@import|<script|<link")

    def test_f1_finds_its_sections(self):
        sections = re.findall(r'\{Is<\w+>, "(\w+)"\}', read(SOURCES, "app", "Commands.cpp"))
        self.assertTrue(sections)
        places = {block.id for block in OUTLINES["en"]}
        self.assertEqual([], [section for section in sections if section not in places])

    def test_it_names_every_attribute(self):
        names = re.findall(r'\{L"(\w+)"', read(SOURCES, "formats", "CardRecord.cpp"))
        self.assertTrue(names)
        told = {name.lower() for name in re.findall(r"<code>(\w+)</code>", PAGES["en"])}
        self.assertEqual([], [name for name in names if name not in told])

    def check_pairs(self, check):
        """Checks each block of the English guide beside that of each other one."""
        for language in TRANSLATIONS:
            for block, other in zip(OUTLINES["en"], OUTLINES[language]):
                with self.subTest(language=language, text=words_of("".join(block.text))[:60]):
                    check(language, block, other)

    def test_all_languages_have_the_same_form(self):
        for language in TRANSLATIONS:
            with self.subTest(language):
                self.assertEqual(*([(block.tag, block.id) for block in OUTLINES[one]]
                                   for one in ("en", language)))
        self.check_pairs(self.check_form)

    def check_form(self, _, block, other):
        for mark in ("em", "strong", "kbd"):
            self.assertEqual(*(len(one.find(mark)) for one in (block, other)), mark)
        # Links, names of attributes and files are the same; examples are not.
        for mark in ("to", "code") if block.tag != "pre" else ("to",):
            self.assertEqual(*(sorted(one.find(mark)) for one in (block, other)))

    def test_keys_are_named_as_on_the_keyboards_of_the_language(self):
        self.check_pairs(self.check_keys)

    def check_keys(self, language, block, other):
        names = KEYS.get(language, {})
        keys = [re.sub("|".join(names) or "$^", lambda key: names[key[0]], key)
                for key in block.find("kbd")]
        self.assertEqual(sorted(keys), sorted(other.find("kbd")))

    def test_labels_are_those_of_the_translated_program(self):
        self.seen = 0
        self.check_pairs(self.check_labels)
        self.assertGreater(self.seen, 80)

    def check_labels(self, language, block, other):
        named = set(other.labels())
        for label in block.labels():
            translated = LABELS[language].get(label)
            # The name of the first category is the same in every language.
            if translated and label != "Default":
                self.seen += 1
                self.assertTrue(translated & named, f"{label}: {translated}, not {named}")

    def test_it_explains_every_message_about_a_record(self):
        for source in ("formats/CardRecord", "formats/Delimited", "exchange/ImportJob",
                       "exchange/ImportRecord", "exchange/ImportPass"):
            code = re.sub(r'"\s*\n\s*"', "", read(SOURCES, source + ".cpp"))
            # The errors that nobody expects are about threads, not about records.
            for message in re.findall(r'\b_\(\s*"(?!Unexpected Error)((?:[^"\\]|\\.)*)"\s*\)', code):
                self.check_told(message.replace('\\"', '"'))

    def check_told(self, message):
        # Help for the dialogs, and words that fill a message.
        if "\\n" in message or " " not in message or message == "no random numbers":
            return
        for language, page in PAGES.items():
            text = words_of(html.unescape(re.sub(r"<[^>]*>", " ", page)))
            for told in CATALOGUES[language].get(message, {message}):
                if re.search(r"\berror\b|\bfailed\b|^Unable to (add|update)", message):
                    told = re.split(r"[.。(%]| error %", told)[0].strip()
                pattern = re.sub(r"%+[si]", lambda _: ".{1,12}", re.escape(words_of(told)))
                with self.subTest(language=language, message=message):
                    self.assertRegex(text, pattern)


class ManPageTest(unittest.TestCase):
    def test_all_languages_have_the_same_form(self):
        for program in ("velomind", "velomind-cards"):
            for language in TRANSLATIONS:
                with self.subTest(program=program, language=language):
                    self.assertEqual(*(self.form(f"{program}{infix}.1.in")
                                       for infix in ("", "." + language)))

    @staticmethod
    def form(name):
        """The sections, entries, examples and options of a page."""
        return re.findall(r"^\.(?:TH|SH|TP|PP|nf|fi)\b|\\-\\-(?:[a-z_]|\\-)+",
                          read(SOURCES, "..", "packaging", name), re.M)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
