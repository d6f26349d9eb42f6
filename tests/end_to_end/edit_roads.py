"""A person writes cards, corrects them and moves them, all by the keys."""

import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, on_one_desktop, press, type_text, wait_until

EDIT_WINDOW = "Edit - Velomind"
CARDS = """SELECT Front, Back, IntroductionOrder, Categories.Name
           FROM Cards JOIN Categories ON CategoryId = Id ORDER BY Cards.rowid"""


class EditRoad(RoadTest):
    def write(self, front, back):
        type_text(front)
        press("Tab")
        type_text(back)

    def choose(self, program, *keys):
        """Chooses from a menu, which takes no keys before it is there."""
        for key in keys:
            press(key)
            program.settle()

    def wait_cards(self, count):
        wait_until(lambda: self.sandbox.card_count() == count, f"{count} cards in the store")

    def test_cards_are_written_studied_corrected_and_moved(self):
        self.sandbox.let_read_windows()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+n")
        program.wait_window(EDIT_WINDOW)
        for count, (front, back) in enumerate((("uno", "one"), ("dos", "two")), start=1):
            self.write(front, back)
            press("alt+Return")
            self.wait_cards(count)
        self.write("tres", "thre")
        press("ctrl+Return")
        program.wait_no_window(EDIT_WINDOW)
        self.wait_cards(3)

        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        scored = "SELECT Front FROM Cards WHERE Introduced = 1 ORDER BY rowid"
        for digit, fronts in (("5", ["uno"]), ("4", ["uno", "dos"])):
            press("space", digit)
            wait_until(lambda: [row[0] for row in self.sandbox.query(scored)] == fronts,
                       f"the scores of {fronts}")

        # The third is on show. Its editor stays open while it is scored, and the score stays.
        press("ctrl+e")
        program.wait_window(EDIT_WINDOW)
        program.wait_window(STUDY_WINDOW)
        press("space", "3")
        wait_until(lambda: self.sandbox.query(scored)[2:] == [("tres",)], "the score of tres")
        program.wait_window(EDIT_WINDOW)
        press("alt+b", "ctrl+End")
        type_text("e")

        # The plots of the reviews come once the log has been read, and Tab stops at one of them.
        program.wait_text("Reviews of this card")

        # A difficulty that is none is told, and the keys are at it again.
        press("alt+i", *["Tab"] * 16)
        for keys in (("4", "0"), ("2", "5", "6"), ("a", "b", "c"), ("minus", "3"), ()):
            press("ctrl+a", "BackSpace", *keys, "Tab", "ctrl+Return")
            program.wait_window("Message")
            press("Return")
            program.wait_no_window("Message")
            program.wait_window(EDIT_WINDOW)
        press("ctrl+a", "4", "0", "Down")

        # And it moves to a category that comes into being on the way, at the second thought.
        press("alt+g")
        name = 'Numbers "100%s"'
        type_text(name)
        press("ctrl+Return")
        program.wait_window("Create Category?")
        press("alt+n")
        program.wait_no_window("Create Category?")
        program.wait_window(EDIT_WINDOW)
        press("ctrl+Return")
        program.wait_window("Create Category?")
        press("Return")
        program.wait_no_window(EDIT_WINDOW)
        program.wait_window(STUDY_WINDOW)

        self.assertEqual(0, program.quit())
        self.assertEqual([("uno", "one", 1, "Default"), ("dos", "two", 2, "Default"),
                          ("tres", "three", 3, name)], self.sandbox.query(CARDS))
        self.assertEqual(
            [(1, 3, 0, 31)], self.sandbox.query(
                "SELECT Introduced, LastScore, RIntroduced, RDifficulty FROM Cards"
                " WHERE Front = 'tres'"))
        # The log tells of the schedule that was typed, and of no other.
        with open(self.sandbox.store + ".reviews", encoding="utf-8") as log:
            self.assertEqual(["R"], [line.split("\t")[3] for line in log if line.startswith("#=")])
        self.sandbox.check_store()

    def test_what_was_typed_is_taken_back_and_made_again(self):
        self.sandbox.let_read_windows()
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+n")
        program.wait_window(EDIT_WINDOW)
        self.write("uno due tre", "one two three")
        # Each field has its own history; the menu and the keys do the same.
        press("ctrl+z", "ctrl+z", "ctrl+z", "ctrl+shift+z", "ctrl+y")
        self.choose(program, "alt+e", "u")
        press("shift+Tab", "End", "ctrl+z", "ctrl+z")
        self.choose(program, "alt+e", "e")
        press("ctrl+z")
        type_text("dos")
        # A selection that is cut and pasted elsewhere comes back in two steps.
        press("ctrl+a", "ctrl+x")
        program.wait_no_text("uno dos")
        press("ctrl+v")
        program.wait_text("uno dos")
        press("ctrl+z", "ctrl+z")
        press("alt+Return")
        self.wait_cards(1)
        # The next card is another text, with nothing to take back.
        type_text("x")
        press("ctrl+z", "ctrl+z")
        press("ctrl+Return")
        program.wait_no_window(EDIT_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual([("uno dos", "one", 1, "Default")], self.sandbox.query(CARDS))

    def test_many_cards_are_changed_together_and_gone_through(self):
        self.sandbox.let_read_windows()
        rows = "\n".join(f"{front}\tback\t{chapter}\t{str(front == 'b').lower()}"
                         for front, chapter in ("a1", "b1", "c2", "d3"))
        cards = self.sandbox.write("cards.txt", "Front\tBack\tChapter\tReverseX\n" + rows)
        self.assertEqual(0, self.sandbox.run("--import", cards))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)

        def wait_stored(expected):
            wait_until(lambda: self.sandbox.query(
                "SELECT group_concat(Author || Chapter || Notes || ReverseX, ' ') FROM"
                " (SELECT * FROM Cards ORDER BY Front)") == [(expected,)], expected)

        before, after = "10 11 20 30", "me11 me11 me21 30"
        press("Home", "shift+Down", "shift+Down", "Return")
        program.wait_window("Edit 3 Cards - Velomind")
        program.wait_text("Chapter (several)")
        press("alt+a", "ctrl+a")
        type_text("me")
        # The box stands between its two states, and another thought leaves the chapter as it is.
        press("alt+l", "alt+l", "alt+p")
        type_text("x")
        press("ctrl+z", "ctrl+Return")
        program.wait_no_window("Edit 3 Cards - Velomind")
        program.wait_window(LIST_WINDOW)
        wait_stored(after)
        for key, expected in (("ctrl+z", before), ("ctrl+shift+z", after)):
            press(key)
            wait_stored(expected)

        press("Home", "Return")
        program.wait_window(EDIT_WINDOW)
        press("alt+n")
        type_text("n")
        press("ctrl+Next")
        program.wait_window("Velomind")
        press("Return")
        program.wait_no_window("Velomind")
        program.wait_window(EDIT_WINDOW)
        wait_stored("me1n1 me11 me21 30")
        press("ctrl+Next", "ctrl+Prior")
        type_text("m")
        press("ctrl+Return")
        program.wait_no_window(EDIT_WINDOW)
        wait_stored("me1n1 me1m1 me21 30")
        self.assertEqual(0, program.quit())
        self.sandbox.check_store()

    @on_one_desktop
    def test_the_editor_tells_when_a_card_comes_and_is_left_by_its_tool(self):
        self.sandbox.let_read_windows()
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        program.wait_window(STUDY_WINDOW)
        press("space", "4")
        scored = "SELECT Front FROM Cards WHERE Introduced = 1"
        front, = wait_until(lambda: self.sandbox.query(scored), "the score")[0]
        press("ctrl+1")
        program.wait_window(LIST_WINDOW)
        press("Home", "ctrl+e")
        program.wait_window(EDIT_WINDOW)
        for text in ("Forward review schedule", "Reverse review schedule", "in 4 hours, "):
            program.wait_text(text)
        press("alt+b", "ctrl+End")
        type_text("!")
        program.click("Save & Close")
        program.wait_no_window(EDIT_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual([("hello, good day!",)], self.sandbox.query(
            "SELECT Back FROM Cards WHERE Front = ?", front))

    def test_the_keys_of_the_other_windows_work_in_the_editor_too(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+n")
        program.wait_window(EDIT_WINDOW)
        type_text("kept")
        for key, window in (("ctrl+2", STUDY_WINDOW), ("ctrl+1", LIST_WINDOW), ("ctrl+f", LIST_WINDOW)):
            program.wait_window(EDIT_WINDOW)
            press(key)
            program.wait_window(window)
        # What is typed now is searched for, and the card found is the one at hand.
        type_text("bonsoir")
        press("Return")
        program.wait_window(EDIT_WINDOW)
        for key, count in (("ctrl+e", 2), ("ctrl+w", 1)):
            press(key)
            wait_until(lambda: len(program.windows(EDIT_WINDOW)) == count,  # noqa: B023
                       f"{count} editors")
            program.settle()
        program.wait_window(EDIT_WINDOW)
        press("Tab")
        type_text("back")
        press("ctrl+Return")
        program.wait_no_window(EDIT_WINDOW)
        self.assertEqual(0, program.quit())
        self.assertEqual([("kept", "back")], self.sandbox.query(
            "SELECT Front, Back FROM Cards WHERE Front LIKE 'kept%'"))

    def change_main_window(self, program, key, old, new):
        press(key)
        program.wait_window(new)
        program.wait_no_window(old)

    def test_an_editor_outlives_the_other_windows(self):
        program = self.sandbox.start()
        program.wait_window(LIST_WINDOW)
        press("ctrl+n")
        program.wait_window(EDIT_WINDOW)
        type_text("kept")
        # Of the two main windows one is shown; the other stays behind it and ends with it.
        program.wait_window(LIST_WINDOW)
        for _ in range(2):
            self.change_main_window(program, "ctrl+2", LIST_WINDOW, STUDY_WINDOW)
            self.change_main_window(program, "ctrl+1", STUDY_WINDOW, LIST_WINDOW)
        program.close(LIST_WINDOW)
        program.wait_no_window(LIST_WINDOW)
        program.wait_window(EDIT_WINDOW)
        press("Tab")
        type_text("back")
        press("Escape")
        program.wait_window("Velomind")
        press("Return")
        self.assertEqual(0, program.wait())
        self.assertEqual([("kept", "back", 1, "Default")], self.sandbox.query(CARDS))


if __name__ == "__main__":
    unittest.main()
