#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>

#include "base/Time.h"
#include "scheduler/CardSelection.h"
#include "scheduler/ReviewArithmetic.h"
#include "scheduler/SchedulerSources.h"
#include "store/CardUuid.h"
#include "store/Database.h"
#include "store/FlashCard.h"

// A card that was scored, with its schedule from just before the score, so that another score can
// be applied to it as though the first had never been given.
struct HistoryEntry {
    CardUuid CardId;
    CardSchedule Schedule;
    ReviewDirection Direction = kReviewNone;
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
    // The entry of that card; null when it has none.
    const HistoryEntry* Find(const CardUuid& id) const;
    void EraseAt(int index);

  private:
    std::list<HistoryEntry> mEntries;
};

// Which card now, in which direction, and what a score does to it. Keeps one current card until it
// is scored, and the history of the cards scored last. Lives on the main thread, and is the only
// writer of scheduling fields during study.
class Scheduler {
  public:
    // Called with 1 when a score or a change of directions has brought up another card, else 0.
    using Listener = std::function<void(int)>;

    // What the Scheduler needs from outside. None is owned, and each must outlive it.
    struct Sources {
        CategorySource& Categories;
        MaintenancePrompt& Maintenance;
        const Clock& Time;
        ReviewRandom& Random;
    };

    Scheduler(Database& database, const Sources& sources);

    // Listeners are called in the order in which they were added.
    void AddListener(Listener listener);

    // Takes the current category, forgets the history and loads a card.
    void Initialise();

    // Both take effect at the next selection.
    void SetEarlyIntroduction(bool early) { mOptions.EarlyIntroduction = early; }
    void SetEarlyIntroductionInterval(int32_t seconds) {
        mOptions.EarlyIntroductionInterval = seconds;
    }
    // The directions to study. The current card stays if its direction is among them.
    void SetDirections(ReviewDirection mask);

    // -1 is the live card, 0 the card scored last, larger is older. Clamped to what there is.
    void SetHistoryIndex(int index);
    int GetHistoryIndex() const { return mHistoryPosition; }
    int GetHistoryCount() const { return mHistory.GetCount(); }

    // The last score of a card of the history in the direction in which it is shown; -1 at the live
    // card.
    int GetShownScore() const;

    // Why no card can be shown; all false while one is.
    bool IsStoreEmpty() const { return mStoreEmpty; }
    bool IsCategoryEmpty() const { return mCategoryEmpty; }
    bool IsAllExcluded() const { return mAllExcluded; }
    bool HasCard() const { return !mStoreEmpty && !mCategoryEmpty && !mAllExcluded; }

    // Holds until the card on show changes.
    const FlashCard& GetCurrentCard() const { return mCurrentCard; }
    const CardUuid& GetCurrentCardId() const { return mCurrentCard.CardId; }

    // A live card is shown that is not due yet.
    bool IsBreakTime() const;
    // How many cards of the category are due, over all directions studied.
    int GetReadyCount();

    // Looks at the store again after cards or the current category changed elsewhere.
    void Refresh();

    // Scores the current card, 0 to 5: rewrites its schedule, stores it, and at the live card
    // brings up the next. At a card of the history the caller moves on by itself. Only while
    // HasCard.
    void ScoreCard(int score);

  private:
    // Brings up the card at the history position, or the live card, or else a new choice. The live
    // card stays until it is scored, vanishes or is excluded.
    void LoadCurrentCard();
    // Makes a new choice the live card, or finds out why there is none.
    void SelectLiveCard();
    void ShowPlaceholder(const wxString& word);
    // Tests the direction the previous card was shown in.
    bool IsExcluded(const FlashCard& card) const;
    const CardSchedule& CurrentSchedule() const {
        return ScheduleOf(mCurrentCard, mCurrentDirection);
    }
    bool IsInHistory() const {
        return mHistoryPosition >= 0 && mHistoryPosition < GetHistoryCount();
    }
    // Before a score: puts a live card's schedule into the history, or takes a card of the history
    // back to where it stood before its first score, unless the score stays the same.
    void KeepOrRestoreSchedule(int score);
    void PurgeHistory();
    void ClearLiveCard();
    void Tell(int value);

    Database& mDatabase;
    Sources mSources;
    // A list, as a listener may add another.
    std::list<Listener> mListeners;
    StudyOptions mOptions;
    FlashCard mCurrentCard;
    ReviewDirection mCurrentDirection = kReviewNone;
    bool mStoreEmpty = false;
    bool mCategoryEmpty = false;
    bool mAllExcluded = false;
    CardUuid mLiveCardId;
    ReviewDirection mLiveDirection = kReviewNone;
    int mHistoryPosition = -1;
    CardHistory mHistory;
};
