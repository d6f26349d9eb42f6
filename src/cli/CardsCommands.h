#pragma once

struct CardsOptions;

// The exit codes of velomind-cards.
enum CardsExit : int {
    kCardsDone = 0,
    // The given file, name or search is not good.
    kCardsRefused = 1,
    kCardsUsage = 2,
    // The store could not be opened, read or written, or is in use.
    kCardsStoreFailed = 3
};

// Sends on what was printed. Returns kCardsDone, or kCardsRefused after an error message when not
// all of it could be written, now or before.
int FinishOutput(bool isPrinted);

// Runs the command and prints its outcome. Returns a CardsExit. A store that fails while it is in
// use ends the process at once, with kCardsStoreFailed.
int RunCardsCommand(const CardsOptions& options);
