#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <vector>

#include "base/Time.h"
#include "reviews/ReviewLog.h"
#include "scheduler/CardSelection.h"
#include "scheduler/Relearning.h"
#include "scheduler/ReviewArithmetic.h"
#include "scheduler/StudyDay.h"
#include "store/CardUuid.h"
#include "store/CategoryTree.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// Says which category is under study. The program's implementation reads the setting and repairs it
// against the store.
class CategorySource {
  public:
    virtual ~CategorySource() = default;
    // Returns the id of a category of the store, or -1 when there is none.
    virtual int32_t GetCurrentCategoryId(Database& database) = 0;
    // Returns it with the categories below it, as the store has them now.
    CategoryChoice GetCurrentChoice(Database& database) {
        return FindChoice(database, GetCurrentCategoryId(database));
    }
};

// A scored card, with its schedule from just before the score, from which another score can start
// as though the first had never been given.
struct HistoryEntry {
    CardUuid CardId;
    CardSchedule Schedule;
    ReviewDirection Direction = kReviewNone;
    // When it was scored last, in seconds since 1970; -1 until then. The store may have a later
    // review, which another computer has sent.
    int64_t ReviewTime = -1;
};

// The cards scored last, newest first: at most 20, each card once.
class CardHistory {
  public:
    static constexpr std::size_t kMaximum = 20;

    void Add(const HistoryEntry& entry);
    void Clear() { mEntries.clear(); }
    int GetCount() const { return static_cast<int>(mEntries.size()); }
    // The index must lie in 0 to GetCount() - 1.
    const HistoryEntry& At(int index) const;
    // Returns the entry of that card, or null.
    const HistoryEntry* Find(const CardUuid& id) const;
    void EraseAt(int index);
    void SetReviewTime(const CardUuid& id, int64_t time);

  private:
    std::list<HistoryEntry> mEntries;
};

// A category and what waits in it: cards that are due, and cards that were never scored.
struct CategoryReady {
    Category Info;
    int Ready = 0;
    int New = 0;
};

// Returns the first category after the given one, round the end, that has due cards; when none has
// any, the first that has new ones. Null when no other has either.
const CategoryReady* FindNextDue(const std::vector<CategoryReady>& categories, int32_t categoryId);

// What waits in all categories together. Excluded cards do not count.
struct StudyOutlook {
    // The cards of one direction.
    struct Side {
        // Due now, as the list of categories and the list window count them.
        int Ready = 0;
        // Falling due within the next 24 hours.
        int WithinDay = 0;
        // Never scored.
        int New = 0;
    };
    Side Forward;
    Side Reverse;
    // When the first card is due, in either direction; it may have passed. Invalid without any.
    wxDateTime NextDue;
};

// Counts what waits now. A count that fails stays 0.
StudyOutlook CountOutlook(Database& database, const wxDateTime& now);

// Tells the user of the rare renumbering of the early-review order, which freezes the screen for a
// while.
class MaintenancePrompt {
  public:
    virtual ~MaintenancePrompt() = default;
    // Returns when the user has confirmed.
    virtual void ConfirmStart() = 0;
    virtual void TellComplete() = 0;
};

// Decides which card is shown, in which direction, and what a score does to it. Keeps one live card
// until it is scored, and the history of the cards scored last. Lives on the main thread, and is
// the only writer of scheduling fields during study.
//
// "The category" below is the chosen one with all categories below it. Each of these keeps its own
// order of introduction, blocks of early review and new cards of a day.
class Scheduler {
  public:
    // Called with 1 when a score or a change of directions has chosen a card anew, else with 0.
    using Listener = std::function<void(int)>;

    // What the Scheduler needs from outside. Nothing is owned; everything must outlive it.
    struct Sources {
        CategorySource& Categories;
        MaintenancePrompt& Maintenance;
        const Clock& Time;
        ReviewRandom& Random;
        // Takes each score once the store has it; null keeps no log, and so no card keeps a part of
        // its interval.
        ReviewLog* Log = nullptr;
        // Limits the new cards of a day and counts each score; null limits nothing.
        StudyDay* Day = nullptr;
    };

    Scheduler(Database& database, const Sources& sources);

    // Listeners are called in the order in which they were added.
    void AddListener(Listener listener);

    // Turns to the current category, forgets the history and loads a card.
    void Initialise();

    // Both take effect at the next selection.
    void SetEarlyIntroduction(bool early) { mOptions.EarlyIntroduction = early; }
    void SetEarlyIntroductionInterval(int32_t seconds) {
        mOptions.EarlyIntroductionInterval = seconds;
    }
    // Sets what a forgotten card keeps of its interval, one of kRelearnShares; any other counts as
    // 0. With more than 0 the log is read, on a worker. Takes effect at the next score.
    void SetRelearnShare(int share);
    // Returns true when no worker reads the log.
    bool IsLogRead() const { return mRelearning.IsRead(); }
    // Gives up the live card for another choice, such as when new cards may come again.
    void ChooseAgain();
    // Sets the directions to study. The current card stays if its direction is among them.
    void SetDirections(ReviewDirection mask);

    // -1 is the live card, 0 the card scored last, larger is older. Clamped to the entries there
    // are.
    void SetHistoryIndex(int index);
    int GetHistoryIndex() const { return mHistoryPosition; }
    int GetHistoryCount() const { return mHistory.GetCount(); }

    // Returns the last score of a card of the history, in the direction in which it is shown; -1
    // for the live card.
    int GetShownScore() const;

    // Return why no card can be shown; all are false while one is.
    bool IsStoreEmpty() const { return mStoreEmpty; }
    bool IsCategoryEmpty() const { return mCategoryEmpty; }
    bool IsAllExcluded() const { return mAllExcluded; }
    // True while new cards of the category wait, and today has room for none of them.
    bool HoldsNewCards();
    // True when the current card was failed too often in the direction in which it is shown.
    bool TakesTooMuch() const;
    bool HasCard() const { return !mStoreEmpty && !mCategoryEmpty && !mAllExcluded; }

    // The reference is valid until another card is shown.
    const FlashCard& GetCurrentCard() const { return mCurrentCard; }
    const CardUuid& GetCurrentCardId() const { return mCurrentCard.CardId; }

    // True when the live card is not due yet: nothing is due, and study goes on early.
    bool IsBreakTime() const;
    // Counts the cards of the category that are due, over all directions studied.
    int GetReadyCount() { return CountReady(mOptions.Categories); }
    // Returns when the next introduced card of the category falls due, in any direction studied;
    // the time may have passed. Invalid when there is none.
    wxDateTime GetNextDueTime();

    // Returns the id of the chosen category.
    int32_t GetCategoryId() const { return mOptions.Categories.Id; }
    const CategoryChoice& GetCategories() const { return mOptions.Categories; }
    // Counts the cards of the category that were never scored, over all directions studied.
    int GetNewCount() { return CountNew(mOptions.Categories); }
    // Returns all categories in the order of the store, each with what waits in it. New cards for
    // which today has no room do not count.
    std::vector<CategoryReady> CountCategories();

    // Returns the intervals that a score of 0 to 5 can give the current card now. The recorded
    // score of a card in the history changes nothing, so it gives the interval that the card has.
    IntervalRange PredictInterval(int score);

    // Reads the log again after another computer's reviews have come into it.
    void ReadLog();
    // Reads the store again after cards or the current category changed elsewhere.
    void Refresh();

    // Scores the current card, 0 to 5: rewrites its schedule and stores it. What an exchange with
    // another computer has changed of the card since it was loaded stays, and a new schedule is
    // what the score begins from; a card that is gone gets none. After the live card the next one
    // is loaded; after a card of the history the caller moves on. Only while HasCard.
    void ScoreCard(int score);

  private:
    // Loads the card at the history position, or the live card, or makes a new choice. The live
    // card stays until it is scored, deleted or excluded.
    void LoadCurrentCard();
    // Chooses a new live card, or determines why there is none.
    void SelectLiveCard();
    void ShowPlaceholder(const wxString& word);
    // Tests the direction the previous card was shown in.
    bool IsExcluded(const FlashCard& card) const;
    const CardSchedule& CurrentSchedule() const {
        return ScheduleOf(mCurrentCard, mCurrentDirection);
    }
    int CountReady(const CategoryChoice& choice);
    int CountNew(const CategoryChoice& choice);
    // The history's entry whose schedule a score starts from, or null when it starts from that of
    // the current card.
    const HistoryEntry* EntryToRestore(int score) const;
    bool IsInHistory() const {
        return mHistoryPosition >= 0 && mHistoryPosition < GetHistoryCount();
    }
    // Returns false, and has changed nothing, when the store was changed from elsewhere since the
    // card was read.
    bool TryScore(int score);
    // Reads the current card anew. Returns false when it is gone.
    bool ReadCurrentCard();
    // Runs before a score: keeps a live card's schedule in the history, or restores that of a card
    // of the history from before its first score, unless the score stays the same. Returns the time
    // of the review that this one replaces, or -1.
    int64_t KeepOrRestoreSchedule(int score);
    // Returns the least interval that a score gives the current card with this schedule.
    float LeastInterval(const CardSchedule& schedule, int score);
    // Tells the log and the day of a score that the store has, and that began with this schedule.
    void NoteReview(const ReviewRecord& record, const CardSchedule& before);
    // Gives the current card its new place in the order of early review after a score.
    void RenumberCard();
    void PurgeHistory();
    void ClearLiveCard();
    void Tell(int value);

    Database& mDatabase;
    Sources mSources;
    // A list lets a listener add another while it is called.
    std::list<Listener> mListeners;
    StudyOptions mOptions;
    int mRelearnShare = 0;
    Relearning mRelearning;
    FlashCard mCurrentCard;
    // The version of the store before it was read.
    int64_t mVersion = -1;
    ReviewDirection mCurrentDirection = kReviewNone;
    bool mStoreEmpty = false;
    bool mCategoryEmpty = false;
    bool mAllExcluded = false;
    CardUuid mLiveCardId;
    ReviewDirection mLiveDirection = kReviewNone;
    int mHistoryPosition = -1;
    CardHistory mHistory;
};
