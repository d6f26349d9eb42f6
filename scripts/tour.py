"""What scripts/run shows of the program.

    tour.py SCREENS     studies ten cards of a sample store with real keys, and leaves pictures of it;
                        for a machine without a display, inside scripts/with-display
    tour.py --open PID  opens the study window of a program that shows its list
"""

import os
import sys

sys.dont_write_bytecode = True
ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "end_to_end"))

import driver  # noqa: E402  (found by the line above)
from accessibility import AccessibilityBus  # noqa: E402

SCORES = (3, 4, 5, 4, 3, 5, 5, 4, 3, 4)


def main():
    if sys.argv[1] == "--open":
        open_study_window(int(sys.argv[2]))
        return
    screens = os.path.abspath(sys.argv[1])
    os.makedirs(screens, exist_ok=True)
    sandbox = driver.Sandbox()
    try:
        study(sandbox, screens)
    finally:
        sandbox.close()


def open_study_window(process):
    """By the second of the two main windows in the menu, as no key can be pressed on every desktop.
    The program's texts may be in any language."""
    address = os.environ.get("DBUS_SESSION_BUS_ADDRESS")
    if address:
        bus = AccessibilityBus(os.environ, address)
        views = driver.wait_until(lambda: bus.entries(process, "radio menu item"), "the list window")
        bus.act(views[1])


def study(sandbox, screens):
    def picture(name, unlike=""):
        return driver.DESKTOP.take_settled(os.path.join(screens, name), unlike=unlike)

    def scored():
        return sandbox.query("SELECT COUNT(*) FROM Cards WHERE Introduced = 1")[0][0]

    for name in ("french.txt", "japanese.txt", "capitals.txt"):
        if sandbox.run("--import", sandbox.sample(name), limit=120) != 0:
            raise AssertionError(f"samples/{name} was not imported")
    print(f"run: imported {sandbox.card_count()} cards")

    sandbox.let_read_windows()
    program = sandbox.start()
    program.wait_window(driver.LIST_WINDOW, 60)
    picture("1-list.png")
    driver.press("ctrl+2")
    program.wait_window(driver.STUDY_WINDOW)
    front = picture("2-front.png")
    for number, score in enumerate(SCORES, 1):
        driver.press("space")
        if number == 1:
            program.wait_no_text("The back side of this flash card is hidden")
            picture("3-back.png", unlike=front)
        driver.press(str(score))
        driver.wait_until(lambda count=number: scored() == count, f"score number {number}")
    picture("4-ten-scored.png")
    code = program.quit()

    print(f"run: {scored()} cards are scored in the store:")
    for front, score, seconds in sandbox.query(
            "SELECT Front, LastScore, ReviewInterval FROM Cards WHERE Introduced = 1 "
            "ORDER BY LastReview, IntroductionOrder"):
        first_line = front.split("\n")[0]
        print(f"run:   {first_line}: score {score}, due again in {seconds / 3600:.1f} hours")
    sandbox.check_store()
    if code != 0 or scored() != len(SCORES):
        raise AssertionError(f"exit code {code}, {scored()} cards scored")
    print(f"run: the program ended well; pictures are in {os.path.relpath(screens)}")


if __name__ == "__main__":
    try:
        main()
    except AssertionError as error:
        sys.exit(f"run: {error}")
