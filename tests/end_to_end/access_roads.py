"""What a person needs who hears the screen or has no mouse: every control of every window has a name
and a role, and the keys reach it."""

import os
import unittest

from driver import LIST_WINDOW, STUDY_WINDOW, RoadTest, press, wait_until

EDIT_WINDOW = "Edit - Velomind"
# Roles that say nothing of what a control is for.
EMPTY_ROLES = ("", "unknown", "invalid", "filler", "panel", "drawing area")
# What one acts on even where the focus is on a part of it.
ACTED_ON = ("combo box", "push button", "check box", "radio button", "text", "menu", "menu item",
            "spin button", "slider", "table", "list")


class AccessRoad(RoadTest):
    def setUp(self):
        super().setUp()
        self.sandbox.let_read_windows()
        self.program = None

    def start(self):
        self.program = self.sandbox.start()

    def look(self, title):
        """Waits for a window and looks at every control that it shows, which it gives."""
        self.program.wait_window(title)
        return self.look_at_active(title)

    def look_at_active(self, title):
        controls = wait_until(
            lambda: [control for control in self.program.controls()
                     if control.focusable or control.role in ACTED_ON], f"controls of “{title}”")
        self.assertEqual([], [control for control in controls
                              if not control.name.strip() or control.role in EMPTY_ROLES],
                         f"in “{title}”")
        return controls

    def look_and_tab(self, title, tools=()):
        """Each control that takes the focus gets it by Tab and is then seen, but for the other
        choices of a group, the rows of a list, and tools, which are entries of the menu as well."""
        controls = [control for control in self.look(title)
                    if control.focusable and control.name not in tools
                    and control.role not in ("table cell", "scroll pane")]
        reached = set()
        for _ in range(3 * len(controls)):
            self.program.settle()
            for control in controls:
                if self.sandbox.bus.has_focus(control) and control not in reached:
                    wait_until(lambda seen=control: self.is_seen(seen), f"{control} in sight")
                    reached.add(control)
            if len(reached) == len(controls):
                break
            press("Tab")
        grouped = any(control.role == "radio button" for control in reached)
        self.assertEqual([], [control for control in controls if control not in reached
                              and not (grouped and control.role == "radio button")],
                         f"not reached by Tab in “{title}”")

    def is_seen(self, control):
        """No form has scrolled it away."""
        _, top, _, height = self.sandbox.bus.place(control.node)
        _, pane_top, _, pane_height = self.sandbox.bus.place(control.pane)
        return pane_top <= top and top + height <= pane_top + pane_height

    def leave(self, title, back):
        press("Escape")
        self.program.wait_no_window(title)
        self.program.wait_window(back)

    def dialogs(self, back, *rows):
        """Opens each window by the menu, looks at it and leaves it."""
        for menu, entry, title in rows:
            with self.subTest(title):
                self.program.click(menu)
                self.program.click(entry)
                self.look_and_tab(title)
                self.leave(title, back)

    def popups(self, back, *rows):
        """Opens each menu over a window by its keys, looks for an entry and leaves it."""
        for keys, entry in rows:
            with self.subTest(keys):
                press(*keys.split())
                self.program.wait_text(entry)
                press("Escape")
                self.program.wait_no_text(entry)
                self.program.wait_window(back)

    def test_windows_of_the_list(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("capitals.txt")))
        self.start()
        self.program.wait_window(LIST_WINDOW)
        self.popups(LIST_WINDOW, ("Menu", "Paste"),
                    ("ctrl+f e Return alt+Down", "Search in All Categories"))
        self.look_and_tab(LIST_WINDOW)
        self.program.click("Category: Capitals")
        wait_until(lambda: ["Capitals"] == [control.name for control in
                                            self.look_at_active("the drop-down list")
                                            if control.focused], "the drop-down list")
        press("Escape")
        self.dialogs(LIST_WINDOW, ("Tools", "Options...", "Options"),
                     ("Help", "About...", "About Velomind"),
                     ("File", "New Category", "Add Category"))
        self.program.open_import(self.sandbox.sample("french.txt"))
        self.look_and_tab("Import")
        self.program.click("OK")
        self.look_and_tab("New Category")
        self.leave("New Category", "Import")
        self.leave("Import", LIST_WINDOW)
        card = self.sandbox.query("SELECT CardId FROM Cards WHERE Front LIKE 'Austria%'")[0][0]
        changed = self.sandbox.write("one.txt", f"id: {card}\nback: Linz\nnotes: by the Danube\n")
        self.program.open_import(changed)
        self.look_and_tab("Import")
        self.program.click("Ask before changing cards")
        self.program.click("OK")
        self.look_and_tab("Merge")
        press("Escape")
        self.program.wait_window("Stop Import?")
        press("Return")
        self.program.wait_no_window("Merge")
        self.program.wait_window("Import")
        self.leave("Import", LIST_WINDOW)
        press("ctrl+w")
        self.assertEqual(0, self.program.wait())

    def test_windows_of_study(self):
        self.assertEqual(0, self.sandbox.run("--import", self.sandbox.sample("french.txt")))
        self.start()
        self.program.wait_window(LIST_WINDOW)
        press("ctrl+2")
        self.look(STUDY_WINDOW)
        press("space")
        self.program.wait_no_text("The back side of this flash card is hidden")
        self.look(STUDY_WINDOW)
        self.popups(STUDY_WINDOW, ("Menu", "Paste"))
        press("4")
        self.program.wait_text("The back side of this flash card is hidden")
        press("Left")
        self.program.wait_no_text("The back side of this flash card is hidden")
        press("2")
        self.look_and_tab("Rescore")
        self.program.click("Original Score")
        self.program.wait_no_window("Rescore")
        self.program.wait_window(STUDY_WINDOW)
        self.dialogs(STUDY_WINDOW, ("File", "Export...", "Export Options"),
                     ("Tools", "Learning Progress...", "Learning Progress"),
                     ("Tools", "Statistics...", "Statistics - Velomind"))
        press("ctrl+e")
        self.look_and_tab(EDIT_WINDOW, ("Save & New", "Save & Close"))
        press("ctrl+w")
        self.program.wait_no_window(EDIT_WINDOW)
        self.program.wait_window(STUDY_WINDOW)
        press("ctrl+w")
        self.assertEqual(0, self.program.wait())

    def test_windows_before_the_first(self):
        with open(self.sandbox.store, "wb") as file:
            file.write(b"This is a letter to my aunt.\n" * 1000)
        self.start()
        self.look_and_tab("Velomind")
        self.program.click("Exit")
        self.assertEqual(255, self.program.wait())
        os.remove(self.sandbox.store)
        old = os.path.join(self.sandbox.documents, "Velomind Classic")
        os.mkdir(old)
        with open(os.path.join(old, "FlashCards.vls"), "wb") as file:
            file.write(b"old")
        self.start()
        self.look_and_tab("Import")
        press("alt+y")
        self.look_and_tab("Velomind")
        press("Escape")
        self.program.wait_no_window("Velomind")
        self.assertEqual(0, self.program.quit())
        self.assertTrue(os.path.exists(os.path.join(old, "FlashCards.vls")))


if __name__ == "__main__":
    unittest.main()
