#include "scheduler/StudyDay.h"

#include <algorithm>
#include <atomic>
#include <list>

#include "base/Job.h"
#include "store/Database.h"

namespace {

constexpr int64_t kLongPause = int64_t{7} * 86400;
constexpr int32_t kPortion = 2000;
// Stands for all categories in a grant.
constexpr int32_t kAll = -2;

// Adds the forecast to a pause. Returns false when the store or the log cannot be read, or when the
// backlog is gone today.
bool ForecastAfter(Database& database, const wxString& path, int64_t now,
                   const std::atomic<bool>& isCancelled, StudyPause& pause) {
    std::vector<CardSchedules> cards;
    int64_t rowId = INT64_MIN;
    int count = 1;
    while (count > 0 && !isCancelled) {
        count = database.SelectSchedules(kPortion, rowId, cards);
    }
    ReviewHistory history;
    if (count < 0 || !history.Update(path, isCancelled)) {
        return false;
    }
    BacklogPlan plan;
    plan.Schedules = StudiedSchedules(cards, ReviewQuery());
    plan.Habit = FindStudyHabit(history, now);
    plan.AnswersPerDay = pause.Limits.AnswersPerDay(plan.Habit.SecondsPerAnswer);
    plan.RelearnShare = pause.Limits.RelearnShare;
    plan.Now = now;
    pause.Backlog = ForecastBacklog(plan, isCancelled);
    return !isCancelled && pause.Backlog.DoneAfter != 0;
}

}  // namespace

int32_t DayLimits::AnswersPerDay(double secondsPerAnswer) const {
    if (!EnoughIsMinutes || Enough <= 0) {
        return std::max(Enough, 0);
    }
    return std::max(1, static_cast<int32_t>(Enough * 60.0 / std::max(secondsPerAnswer, 1.0)));
}

// What the worker writes is read once it has ended. It reads only the lines that the log had at its
// start: those after them come through Add.
struct StudyDay::Reading {
    Reading(Database& database, const DayLimits& limits, int64_t now, std::function<void()> atEnd)
        : Tally(DayOf(now)),
          Path(ReviewLogPath(database.GetPath())),
          End(ReviewLogLength(Path)),
          Work(
              [this, &database, limits, now](const std::atomic<bool>& isCancelled) {
                  Read(database, limits, now, isCancelled);
              },
              std::move(atEnd)) {}

    void Read(Database& database, const DayLimits& limits, int64_t now,
              const std::atomic<bool>& isCancelled) {
        int64_t last = -1;
        const auto add = [&](const ReviewRecord& record) {
            Tally.Add(record);
            last = record.Time <= now ? std::max(last, record.Time) : last;
        };
        VisitReviews(Path, nullptr, add, isCancelled, End);
        if (last >= 0 && now - last >= kLongPause && limits.Enough > 0) {
            StudyPause pause{last, limits, {}};
            if (ForecastAfter(database, Path, now, isCancelled, pause)) {
                Pause = pause;
            }
        }
    }

    StudyTally Tally;
    std::optional<StudyPause> Pause;
    const wxString Path;
    const int64_t End;
    Job Work;
};

StudyDay::StudyDay(const Clock& clock) : mClock(clock) {}

StudyDay::~StudyDay() = default;

void StudyDay::Open(Database* database, std::function<void()> atEnd) {
    mpReading.reset();
    mpDatabase = database;
    mAtEnd = std::move(atEnd);
    mGrants.clear();
    Start();
}

void StudyDay::Start() {
    mpReading.reset();
    mPending.clear();
    mTally = StudyTally(Today());
    mPause.reset();
    if (mpDatabase == nullptr || !mpDatabase->IsOpen()) {
        return;
    }
    mpReading = std::make_unique<Reading>(*mpDatabase, mLimits, mClock.Now().GetTicks(), mAtEnd);
    if (!mpReading->Work.Start()) {
        mpReading->Work.RunHere();
    }
}

void StudyDay::CatchUp() {
    if (mpReading == nullptr && Today() < mTally.FirstDay()) {
        Start();
    }
    if (mpReading == nullptr || !mpReading->Work.IsFinished()) {
        return;
    }
    mpReading->Work.Join();
    // Without memory for the counts there are none, and study goes on.
    if (mpReading->Work.TakeFailure().empty()) {
        mTally = std::move(mpReading->Tally);
        mPause = mpReading->Pause;
    }
    mpReading.reset();
    for (const auto& [record, categoryId] : std::exchange(mPending, {})) {
        Add(record, categoryId);
    }
}

void StudyDay::WaitForCounts() {
    CatchUp();
    if (mpReading != nullptr) {
        mpReading->Work.Join();
        CatchUp();
    }
}

int32_t StudyDay::Today() {
    const int64_t now = mClock.Now().GetTicks();
    if (now < mDayStart || now >= mDayEnd) {
        mDay = DayOf(now);
        mDayStart = StartOfDay(mDay);
        mDayEnd = StartOfDay(mDay + 1);
    }
    return mDay;
}

int32_t StudyDay::CountNew(int32_t categoryId) {
    std::vector<DayTally::NewCard>& cards = mTally.On(Today()).NewCards;
    if (!mLimits.NewCardsPerCategory) {
        return static_cast<int32_t>(cards.size());
    }
    int32_t count = 0;
    for (DayTally::NewCard& card : cards) {
        if (card.CategoryId == DayTally::NewCard::kUnknown) {
            std::list<FlashCard> found;
            mpDatabase->SelectCardById(card.CardId, found);
            card.CategoryId = found.empty() ? -1 : found.front().CategoryId;
        }
        count += card.CategoryId == categoryId ? 1 : 0;
    }
    return count;
}

bool StudyDay::MayIntroduce(int32_t categoryId) {
    if (mLimits.NewCards <= 0 || mpDatabase == nullptr) {
        return true;
    }
    WaitForCounts();
    const int32_t place = mLimits.NewCardsPerCategory ? categoryId : kAll;
    int32_t allowed = mLimits.NewCards;
    for (const Grant& grant : mGrants) {
        if (grant.Day == Today() && grant.CategoryId == place) {
            allowed = std::max(allowed, grant.Allowed);
        }
    }
    return CountNew(categoryId) < allowed;
}

void StudyDay::GrantMore(int32_t categoryId) {
    WaitForCounts();
    const int32_t place = mLimits.NewCardsPerCategory ? categoryId : kAll;
    mGrants.push_back({Today(), place, CountNew(categoryId) + mLimits.NewCards});
}

void StudyDay::Add(const ReviewRecord& record, int32_t categoryId) {
    mPause.reset();
    if (mpReading != nullptr) {
        mPending.emplace_back(record, categoryId);
    } else {
        mTally.Add(record, categoryId);
    }
}

std::optional<DayProgress> StudyDay::GetProgress() {
    CatchUp();
    if (mLimits.Enough <= 0 || mpReading != nullptr) {
        return std::nullopt;
    }
    const DayTally& today = mTally.On(Today());
    const int64_t done = mLimits.EnoughIsMinutes ? today.Seconds / 60 : today.Answers;
    return DayProgress{static_cast<int32_t>(done), mLimits.Enough, mLimits.EnoughIsMinutes};
}

bool StudyDay::TakesTooMuch(const CardUuid& card, ReviewDirection direction) {
    CatchUp();
    return mpReading == nullptr && mTally.CountLapses(card, direction) >= kManyLapses;
}

const StudyPause* StudyDay::GetPause() {
    CatchUp();
    return mPause ? &*mPause : nullptr;
}
