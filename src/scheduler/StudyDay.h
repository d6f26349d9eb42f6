#pragma once

#include <wx/string.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/Time.h"
#include "reviews/StudyTally.h"
#include "scheduler/Backlog.h"
#include "store/FlashCard.h"

class Database;

// What a person wants of a day at most. Zero is no limit.
struct DayLimits {
    // New cards, in each category or in all together. Each direction counts by itself.
    int32_t NewCards = 0;
    bool NewCardsPerCategory = false;
    // Answers or minutes after which it is enough. This stops nothing; it is only told.
    int32_t Enough = 0;
    bool EnoughIsMinutes = false;
    // What a forgotten card keeps of its interval, for the forecast.
    int32_t RelearnShare = 0;

    // Returns the answers that fit into a day, for a forecast; 0 without a limit.
    int32_t AnswersPerDay(double secondsPerAnswer) const;
};

// How far the day is.
struct DayProgress {
    int32_t Done = 0;
    int32_t Goal = 0;
    bool IsMinutes = false;
};

// A pause of a week or more, and the day on which its backlog will be worked off.
struct StudyPause {
    int64_t LastAnswer = 0;
    DayLimits Limits;
    BacklogForecast Backlog;
};

// Knows what was done today, by the local day, and what a day is to hold at most. The counts come
// from the log of reviews, which a worker reads once for each store; after that each score adds to
// them in memory. When the clock is set back to a day before, the log is read again. Lives on the
// main thread, and must end before the store does.
class StudyDay {
  public:
    // The clock must outlive the object.
    explicit StudyDay(const Clock& clock);
    ~StudyDay();
    StudyDay(const StudyDay&) = delete;
    StudyDay& operator=(const StudyDay&) = delete;

    void SetLimits(const DayLimits& limits) { mLimits = limits; }
    const DayLimits& GetLimits() const { return mLimits; }

    // Turns to a store, which is not owned, or to none, and forgets what was granted. The function,
    // which may be empty, is called on the worker when the counts are there.
    void Open(Database* database, std::function<void()> atEnd);

    // Returns true while today has room for a new card of the category. Waits for the worker where
    // there is a limit, and returns at once where there is none.
    bool MayIntroduce(int32_t categoryId);
    // Grants as many new cards as the limit says beyond those that today has had.
    void GrantMore(int32_t categoryId);

    // Counts a score that the log has just got.
    void Add(const ReviewRecord& record, int32_t categoryId);

    // These tell nothing while the worker counts.
    std::optional<DayProgress> GetProgress();
    bool TakesTooMuch(const CardUuid& card, ReviewDirection direction);
    // The pause that ended today with the start of the program, when there is a measure for the
    // day that does not suffice to work its backlog off today. Only until the next score.
    const StudyPause* GetPause();

  private:
    struct Reading;

    int32_t Today();
    void Start();
    // Takes over what the worker has counted, if it has ended.
    void CatchUp();
    void WaitForCounts();
    int32_t CountNew(int32_t categoryId);

    const Clock& mClock;
    Database* mpDatabase = nullptr;
    std::function<void()> mAtEnd;
    DayLimits mLimits;
    // Scores of the time in which the worker counts.
    std::vector<std::pair<ReviewRecord, int32_t>> mPending;
    StudyTally mTally;
    std::optional<StudyPause> mPause;
    // How many new cards are allowed on which day and in which category, beyond the limit.
    struct Grant {
        int32_t Day;
        int32_t CategoryId;
        int32_t Allowed;
    };
    std::vector<Grant> mGrants;
    // The day that the clock showed last. The system's calendar is slow.
    int32_t mDay = 0;
    int64_t mDayStart = 0;
    int64_t mDayEnd = 0;
    std::unique_ptr<Reading> mpReading;
};
