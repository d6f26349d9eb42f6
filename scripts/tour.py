"""Studies ten cards of a sample store with real keys, and leaves pictures of it: tour.py SCREENS

Started by scripts/run on a machine without a display, inside scripts/with-display.
"""

import os
import sys

sys.dont_write_bytecode = True
ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "end_to_end"))

import driver  # noqa: E402  (found by the line above)

SCORES = (3, 4, 5, 4, 3, 5, 5, 4, 3, 4)


def main():
    screens = os.path.abspath(sys.argv[1])
    os.makedirs(screens, exist_ok=True)
    sandbox = driver.Sandbox()
    try:
        study(sandbox, screens)
    finally:
        sandbox.close()


def study(sandbox, screens):
    def picture(name):
        driver.DESKTOP.take_picture(os.path.join(screens, name))

    def scored():
        return sandbox.query("SELECT COUNT(*) FROM Cards WHERE Introduced = 1")[0][0]

    for name in ("french.txt", "japanese.txt", "capitals.txt"):
        if sandbox.run("--import", sandbox.sample(name), limit=120) != 0:
            raise AssertionError(f"samples/{name} was not imported")
    print(f"run: imported {sandbox.card_count()} cards")

    program = sandbox.start()
    program.wait_window(driver.LIST_WINDOW, 60)
    picture("1-list.png")
    driver.press("ctrl+2")
    program.wait_window(driver.STUDY_WINDOW)
    picture("2-front.png")
    for number, score in enumerate(SCORES, 1):
        driver.press("space")
        if number == 1:
            picture("3-back.png")
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
