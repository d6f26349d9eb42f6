#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/Time.h"
#include "sync/SyncState.h"

// The exchange of a store with other computers through a folder that something else carries.
// docs/EXCHANGE.md tells what is exchanged and how it becomes one.

enum class ExchangeEnd {
    kDone,
    // Nothing was changed or sent: a question has to be answered first.
    kAsks,
    // The folder cannot be used; nothing was changed here. What was found here is sent next time.
    kNoFolder,
    // The store failed; it is as it was.
    kFailed
};

enum class ExchangeQuestion {
    kNone,
    // The store is an earlier one than that of the last exchange, such as a restored backup.
    kGoneBack,
    // The exchange would delete or turn back many cards.
    kManyLost,
    // Computers that meet for the first time have equal cards.
    kEqualCards
};

// The answers to the first two questions.
enum class ExchangeAnswer {
    kAsk,
    // What the other computers have stands; of this store, only what was changed since counts.
    kTakeNewer,
    // What this store has stands, on all computers.
    kTakeMine
};

// The rules of an exchange, each of which prevents some loss. All are on; a simulation switches one
// off to see what is lost then.
struct ExchangeRules {
    // Files wait for those that their machines had taken.
    bool WaitsForOthers = true;
    // The copy takes in what was sent and taken only.
    bool KeepsCopy = true;
    // A change counts from when it was made.
    bool KnowsTimesOfEdits = true;
    // A change that had not seen a deletion brings the card back.
    bool BringsBack = true;
    // Categories are known by name.
    bool NamesCategories = true;
    // Schedules come from all reviews.
    bool FoldsReviews = true;
    // An earlier store is noticed.
    bool NoticesGoneBack = true;
    // Texts that lost are listed.
    bool ListsLostTexts = true;
    // Equal cards of computers that meet become one.
    bool JoinsEqualCards = true;
    // Files that a folder forgot are written again.
    bool SendsAgain = true;
};

struct ExchangeOptions {
    // The store; it need not exist if the folder has cards.
    wxString StorePath;
    wxString Folder;
    // What the user calls this computer.
    wxString Name;
    const Clock* Time = nullptr;
    // Fills a random identity; null for the system's source. Never returns 0.
    std::function<uint64_t()> MakeIdentity;
    // Makes a backup before cards are changed. A failure stops the exchange: it returns 0 or the
    // system's number. Computers that study at once exchange every few minutes, so it is called
    // once an hour at the most; but always before the first exchange, the answer to a question, a
    // whole copy, or more than 500 records, as of an import elsewhere.
    std::function<int()> BackUp;
    ExchangeAnswer Answer = ExchangeAnswer::kAsk;
    std::optional<bool> JoinsEqualCards;
    const std::atomic<bool>* IsCancelled = nullptr;
    // Called once the store is changed, before the folder gets anything.
    std::function<void()> AfterChange;
    // How many cards, and how many reviews, are in memory at once. Of long texts it is fewer cards.
    int MostInMemory = 250000;
    ExchangeRules Rules;
};

struct ExchangeReport {
    ExchangeEnd End = ExchangeEnd::kFailed;
    ExchangeQuestion Question = ExchangeQuestion::kNone;
    // How many cards the question is about.
    int64_t Asked = 0;
    // True when the many cards were deleted or turned back here, and false when that was done
    // elsewhere.
    bool IsLostHere = false;
    // Changed cards and reviews.
    int64_t Sent = 0;
    int64_t Received = 0;
    // Texts that lost against a change of another computer, in this exchange.
    int64_t Conflicts = 0;
    // The other computers.
    std::vector<ExchangeMachine> Machines;
    // Whole sentences for the user: what is wrong, or what is waited for.
    wxString Message;
    // True when cards, categories or reviews of the store were changed.
    bool HasChanged = false;
};

// Exchanges once. Uses connections of its own, and may run on any thread, one at a time for each
// store; other programs are kept out by a lock.
ExchangeReport RunExchange(const ExchangeOptions& options);

// Returns true for a store that takes part in an exchange.
bool TakesPart(const wxString& storePath);
// Ends the exchange of a store; its cards stay. What it has put into the folder stays, too.
int LeaveExchange(const wxString& storePath);

// Lets a store that the program has moved stay the same computer for the others. Else it would be a
// new one, as a copy is, and the former one would be waited for.
void FollowMovedExchange(const wxString& formerPath, const wxString& storePath);

// What the windows ask of the file beside the store. They read little and fail as empty lists.
std::vector<ExchangeMachine> ReadExchangeMachines(const wxString& storePath);
std::vector<LostText> ReadLostTexts(const wxString& storePath);
// Marks a lost text as looked at, on all computers from the next exchange on. Returns 0 or -1.
int CloseLostText(const wxString& storePath, const LostText& text);
