"""Pictures and sounds of cards: a deck that brings them, study, the list of files, and the way out."""

import io
import os
import subprocess
import zipfile

from deck_roads import CARDS, anki_package
from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, wait_until

PICTURE = (b'<svg xmlns="http://www.w3.org/2000/svg" width="300" height="200">'
           b'<rect width="300" height="200" fill="#00f"/></svg>')


def with_files(package, files):
    """The package with these files in the place of none."""
    filled = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(package)) as old, zipfile.ZipFile(filled, "w") as new:
        new.writestr("collection.anki2", old.read("collection.anki2"))
        new.writestr("media", "{" + ", ".join(f'"{number}": "{name}"' for number, name in enumerate(files)) + "}")
        for number, data in enumerate(files.values()):
            new.writestr(str(number), data)
    return filled.getvalue()


class MediaRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()

    @on_one_desktop
    def test_a_deck_brings_its_pictures_which_are_studied_listed_and_exported(self):
        package = with_files(
            anki_package([('<img src="flag.svg">', "blue"), ("word [sound:none.ogg]", "sense")]),
            {"flag.svg": PICTURE, "unused.svg": PICTURE})
        path = self.sandbox.write("flags.apkg", package)
        folder = self.sandbox.store + ".media"
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        program.open_import(path)
        program.wait_text("1 picture or sound comes along")
        program.click("OK")
        program.wait_window("New Category")
        program.click("Yes")
        program.wait_window("Import Complete")
        program.wait_text("2 Records Inserted")
        press("Return")
        program.wait_window(LIST_WINDOW)
        self.assertEqual(["flag.svg"], os.listdir(folder))

        # A picture in the whole window and back, a key for a sound that is not there, and two scores.
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("ctrl+space", "Escape", "F8", "space", "4")
        wait_until(lambda: self.sandbox.query("SELECT COUNT(*) FROM Cards WHERE LastScore = 4")
                   == [(1,)], "the score")

        with open(os.path.join(folder, "extra.svg"), "wb") as file:
            file.write(PICTURE)
        program.click("Tools")
        program.click("Media...")
        program.wait_window("Media")
        program.wait_text("The cards use 1 file")
        program.click("Delete Unused...")
        program.wait_window("Delete Unused Files")
        program.click("OK")
        wait_until(lambda: os.path.exists(os.path.join(folder, "unused", "extra.svg")), "the file set aside")
        program.wait_window("Media")
        press("Escape")
        program.wait_window(STUDY_WINDOW)
        program.click("File")
        program.click("Back Up...")
        program.wait_window("Back Up Store File")
        press("Return")
        program.wait_text("copy that folder too")
        press("Return")
        self.assertEqual(0, program.quit())
        self.sandbox.check_store()

        told = subprocess.run(
            [CARDS, "--store", self.sandbox.store, "export", "--format", "anki"],
            env=self.sandbox.environment(), capture_output=True, text=True, check=True)
        self.assertIn("collection.media", told.stderr)
