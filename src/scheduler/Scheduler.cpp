#include "scheduler/Scheduler.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Process.h"
#include "scheduler/ReviewArithmetic.h"

void CardHistory::Add(const HistoryEntry& entry) {
    mEntries.remove_if([&entry](const HistoryEntry& old) { return old.CardId == entry.CardId; });
    mEntries.push_front(entry);
    while (mEntries.size() > kMaximum) {
        mEntries.pop_back();
    }
}

const HistoryEntry& CardHistory::At(int index) const {
    return *std::next(mEntries.begin(), index);
}

const HistoryEntry* CardHistory::Find(const CardUuid& id) const {
    const auto entry = std::find_if(mEntries.begin(), mEntries.end(),
                                    [&id](const HistoryEntry& each) { return each.CardId == id; });
    return entry == mEntries.end() ? nullptr : &*entry;
}

void CardHistory::EraseAt(int index) {
    mEntries.erase(std::next(mEntries.begin(), index));
}

void CardHistory::SetReviewTime(const CardUuid& id, int64_t time) {
    for (HistoryEntry& entry : mEntries) {
        if (entry.CardId == id) {
            entry.ReviewTime = time;
        }
    }
}

const CategoryReady* FindNextDue(const std::vector<CategoryReady>& categories, int32_t categoryId) {
    const auto current = std::find_if(
        categories.begin(), categories.end(),
        [categoryId](const CategoryReady& each) { return each.Info.Id == categoryId; });
    for (int CategoryReady::*const count : {&CategoryReady::Ready, &CategoryReady::New}) {
        const auto hasAny = [categoryId, count](const CategoryReady& each) {
            return each.*count > 0 && each.Info.Id != categoryId;
        };
        auto found = std::find_if(current, categories.end(), hasAny);
        if (found == categories.end()) {
            found = std::find_if(categories.begin(), categories.end(), hasAny);
        }
        if (found != categories.end()) {
            return &*found;
        }
    }
    return nullptr;
}

namespace {

// Keeps the earlier of a time, which may be invalid, and the next review of the first card.
void TakeEarlier(const std::list<FlashCard>& cards, ReviewDirection direction, wxDateTime& next) {
    if (!cards.empty()) {
        const wxDateTime due = ScheduleOf(cards.front(), direction).NextReview();
        next = next.IsValid() && next < due ? next : due;
    }
}

void AddOutlook(Database& database, int32_t categoryId, const wxDateTime& now,
                ReviewDirection direction, StudyOutlook& outlook) {
    int32_t ready = 0;
    int32_t tomorrow = 0;
    int32_t all = 0;
    int32_t introduced = 0;
    if (database.CountReady(direction, categoryId, now, ready) < 0 ||
        database.CountReady(direction, categoryId, now + wxTimeSpan::Day(), tomorrow) < 0 ||
        database.Count(direction, categoryId, all) < 0 ||
        database.CountIntroduced(direction, categoryId, introduced) < 0) {
        return;
    }
    StudyOutlook::Side& side = direction == kReviewForward ? outlook.Forward : outlook.Reverse;
    side.Ready += ready;
    side.WithinDay += tomorrow - ready;
    side.New += all - introduced;
    std::list<FlashCard> cards;
    if (introduced > 0 && database.SelectNextDue(direction, categoryId, cards) >= 0) {
        TakeEarlier(cards, direction, outlook.NextDue);
    }
}

}  // namespace

StudyOutlook CountOutlook(Database& database, const wxDateTime& now) {
    StudyOutlook outlook;
    std::list<Category> categories;
    // Without categories there is nothing to count.
    database.SelectAllCategories(categories);
    for (const Category& category : categories) {
        for (const ReviewDirection direction : kEachDirection) {
            AddOutlook(database, category.Id, now, direction, outlook);
        }
    }
    return outlook;
}

namespace {

void TraceReview(const FlashCard& card, int score, const ReviewResult& result) {
    if (result.FirstPass) {
        VELOMIND_TRACE("%s/%s Introduction Score %i ReviewInterval %f", card.Front, card.Back,
                       score, result.NewInterval);
        return;
    }
    VELOMIND_TRACE("Score %i ReviewInterval %f->%f", score, result.OldInterval, result.NewInterval);
    VELOMIND_TRACE("%s/%s Elapsed %f Score %i ReviewInterval %f->%f", card.Front, card.Back,
                   result.Elapsed, score, result.OldInterval, result.NewInterval);
}

// Returns the line of the log for a score that took the schedule from one state to the other.
ReviewRecord MakeRecord(const CardUuid& id, ReviewDirection direction, const CardSchedule& before,
                        const CardSchedule& after, const ReviewResult& result, int64_t replaces) {
    ReviewRecord record;
    record.Time = after.LastReview.GetTicks();
    record.CardId = id;
    record.Direction = direction;
    record.Score = after.LastScore;
    if (before.Introduced) {
        record.Elapsed = std::max<int64_t>(0, SecondsBetween(before.LastReview, after.LastReview));
    }
    record.OldInterval = result.OldInterval;
    record.NewInterval = result.NewInterval;
    record.OldDifficulty = before.Difficulty;
    record.NewDifficulty = after.Difficulty;
    record.Replaces = replaces;
    return record;
}

}  // namespace

Scheduler::Scheduler(Database& database, const Sources& sources)
    : mDatabase(database), mSources(sources) {
    if (mSources.Day != nullptr) {
        mOptions.MayIntroduce = [this](int32_t id) { return mSources.Day->MayIntroduce(id); };
    }
    Initialise();
}

void Scheduler::AddListener(Listener listener) {
    mListeners.push_back(std::move(listener));
}

void Scheduler::Initialise() {
    mOptions.Categories = mSources.Categories.GetCurrentChoice(mDatabase);
    mHistoryPosition = -1;
    mHistory.Clear();
    if (mOptions.Categories.Id == -1) {
        std::list<Category> categories;
        if (mDatabase.SelectAllCategories(categories) >= 0 && !categories.empty()) {
            mOptions.Categories = ChooseAmong(categories, categories.front().Id);
        }
    }
    ReadLog();
    LoadCurrentCard();
    Tell(0);
}

void Scheduler::SetRelearnShare(int share) {
    const bool isKnown =
        std::count(std::begin(kRelearnShares), std::end(kRelearnShares), share) > 0;
    const bool hadNone = std::exchange(mRelearnShare, isKnown ? share : 0) == 0;
    if (hadNone != (mRelearnShare == 0)) {
        ReadLog();
    }
}

void Scheduler::ReadLog() {
    if (mRelearnShare == 0 || mSources.Log == nullptr) {
        mRelearning.Stop();
    } else {
        mRelearning.Read(ReviewLogPath(mDatabase.GetPath()));
    }
}

void Scheduler::SetDirections(ReviewDirection mask) {
    mOptions.Directions = mask;
    if ((mLiveDirection & mask) != 0) {
        return;
    }
    ClearLiveCard();
    LoadCurrentCard();
    Tell(1);
}

void Scheduler::ChooseAgain() {
    mHistoryPosition = -1;
    ClearLiveCard();
    LoadCurrentCard();
    Tell(1);
}

void Scheduler::SetHistoryIndex(int index) {
    mHistoryPosition = std::min(std::max(index, -1), GetHistoryCount() - 1);
    LoadCurrentCard();
    Tell(0);
}

int Scheduler::GetShownScore() const {
    return mHistoryPosition == -1 ? -1 : CurrentSchedule().LastScore;
}

bool Scheduler::IsBreakTime() const {
    const CardSchedule& schedule = CurrentSchedule();
    return !mStoreEmpty && schedule.Introduced && schedule.NextReview() > mSources.Time.Now() &&
           mHistoryPosition == -1;
}

bool Scheduler::HoldsNewCards() {
    bool holds = false;
    const bool hasNone = mOptions.MayIntroduce && mOptions.Categories.ForEach([&](int32_t id) {
        const bool isHeld = !mOptions.MayIntroduce(id);
        if (!isHeld && !mOptions.Categories.IsMany()) {
            return false;
        }
        const bool waits = CountNew(id) > 0;
        holds = holds || (isHeld && waits);
        return isHeld || !waits;
    });
    return hasNone && holds;
}

bool Scheduler::TakesTooMuch() const {
    return mSources.Day != nullptr && CurrentSchedule().Introduced &&
           mSources.Day->TakesTooMuch(mCurrentCard.CardId, mCurrentDirection);
}

int Scheduler::CountReady(const CategoryChoice& choice) {
    const wxDateTime now = mSources.Time.Now();
    int all = 0;
    for (const ReviewDirection direction : kEachDirection) {
        int32_t count = 0;
        if ((mOptions.Directions & direction) != 0 &&
            mDatabase.CountReady(direction, choice, now, count) >= 0) {
            all += count;
        }
    }
    return all;
}

int Scheduler::CountNew(const CategoryChoice& choice) {
    int count = 0;
    for (const ReviewDirection direction : kEachDirection) {
        int32_t all = 0;
        int32_t introduced = 0;
        if ((mOptions.Directions & direction) != 0 &&
            mDatabase.Count(direction, choice, all) >= 0 &&
            mDatabase.CountIntroduced(direction, choice, introduced) >= 0) {
            count += all - introduced;
        }
    }
    return count;
}

wxDateTime Scheduler::GetNextDueTime() {
    wxDateTime next;
    for (const ReviewDirection direction : kEachDirection) {
        mOptions.Categories.ForEach([&](int32_t id) {
            std::list<FlashCard> cards;
            if ((mOptions.Directions & direction) != 0 &&
                mDatabase.SelectNextDue(direction, id, cards) >= 0) {
                TakeEarlier(cards, direction, next);
            }
            return true;
        });
    }
    return next;
}

std::vector<CategoryReady> Scheduler::CountCategories() {
    std::list<Category> all;
    // A failure is reported by the store itself.
    mDatabase.SelectAllCategories(all);
    std::vector<CategoryReady> counted;
    for (const Category& category : all) {
        const bool mayIntroduce =
            mSources.Day == nullptr || mSources.Day->MayIntroduce(category.Id);
        counted.push_back(
            {category, CountReady(category.Id), mayIntroduce ? CountNew(category.Id) : 0});
    }
    return counted;
}

IntervalRange Scheduler::PredictInterval(int score) {
    const CardSchedule& schedule = CurrentSchedule();
    if (mHistoryPosition != -1 && score == schedule.LastScore) {
        return {schedule.ReviewInterval, schedule.ReviewInterval};
    }
    const HistoryEntry* const entry = EntryToRestore(score);
    const bool restores = entry != nullptr && entry->Direction == mCurrentDirection;
    const CardSchedule& start = restores ? entry->Schedule : schedule;
    return PredictReview(start, score, mSources.Time.Now(), LeastInterval(start, score));
}

float Scheduler::LeastInterval(const CardSchedule& schedule, int score) {
    if (mRelearnShare == 0 || mSources.Log == nullptr) {
        return 0.0f;
    }
    // The store may be another one, or stand elsewhere, since the last score.
    if (mRelearning.GetPath() != ReviewLogPath(mDatabase.GetPath())) {
        ReadLog();
    }
    const float lost = mRelearning.Find(mCurrentCard.CardId, mCurrentDirection, schedule);
    return RelearnedInterval(lost, score, mRelearnShare);
}

void Scheduler::Refresh() {
    mOptions.Categories = mSources.Categories.GetCurrentChoice(mDatabase);
    int32_t count = 0;
    if (mDatabase.SelectCardIdCount(mLiveCardId, count) < 0 || count == 0) {
        ClearLiveCard();
    }
    LoadCurrentCard();
    if (!mOptions.Categories.Has(mCurrentCard.CategoryId)) {
        ClearLiveCard();
    }
    LoadCurrentCard();
    PurgeHistory();
    Tell(0);
}

void Scheduler::ScoreCard(int score) {
    while (!TryScore(score) && ReadCurrentCard()) {
    }
    mCurrentCard = FlashCard();
    if (mHistoryPosition != -1) {
        return;
    }
    mLiveCardId = CardUuid();
    LoadCurrentCard();
    Tell(1);
}

bool Scheduler::ReadCurrentCard() {
    std::list<FlashCard> cards;
    if (mDatabase.ReadVersion(mVersion) < 0 ||
        mDatabase.SelectCardById(mCurrentCard.CardId, cards) < 0 || cards.empty()) {
        return false;
    }
    mCurrentCard = std::move(cards.front());
    return true;
}

bool Scheduler::TryScore(int score) {
    const int64_t replaces = KeepOrRestoreSchedule(score);
    CardSchedule& schedule = ScheduleOf(mCurrentCard, mCurrentDirection);
    const CardSchedule before = schedule;
    const ReviewResult review = Review(schedule, score, mSources.Time.Now(), mSources.Random,
                                       LeastInterval(schedule, score));
    TraceReview(mCurrentCard, score, review);
    schedule.Introduced = true;
    schedule.ReviewInterval = review.NewInterval;
    schedule.LastReview = mSources.Time.Now();
    schedule.LastScore = static_cast<uint8_t>(score);
    schedule.Difficulty = review.Difficulty;
    RenumberCard();
    VELOMIND_TRACE("ERC==%08x", schedule.ERC);
    const int result = mDatabase.UpdateFlashCard(mCurrentCard, mVersion);
    if (result == Database::kChangedSince) {
        return false;
    }
    mHistory.SetReviewTime(mCurrentCard.CardId, schedule.LastReview.GetTicks());
    // A failure in the store ends the program, so nothing else is done about one.
    if (result >= 0) {
        NoteReview(
            MakeRecord(mCurrentCard.CardId, mCurrentDirection, before, schedule, review, replaces),
            before);
    }
    return true;
}

void Scheduler::NoteReview(const ReviewRecord& record, const CardSchedule& before) {
    if (mSources.Log != nullptr) {
        // The store may be another one, or stand elsewhere, since the last score.
        mSources.Log->SetPath(ReviewLogPath(mDatabase.GetPath()));
        // A review without its line counts as little now as it will at the next start.
        const int32_t erc = ScheduleOf(mCurrentCard, mCurrentDirection).ERC;
        if (mSources.Log->Append(record, before, mRelearnShare, erc) && mRelearnShare != 0) {
            mRelearning.Take(record);
        }
    }
    if (mSources.Day != nullptr) {
        mSources.Day->Add(record, mCurrentCard.CategoryId);
    }
}

void Scheduler::RenumberCard() {
    CardSchedule& schedule = ScheduleOf(mCurrentCard, mCurrentDirection);
    const int32_t before = schedule.ERC;
    const int32_t own = mCurrentCard.CategoryId;
    // A card of the history may have left the categories under study.
    const int32_t category = mOptions.Categories.Has(own) ? own : mOptions.Categories.Id;
    int32_t greatest = 0;
    if (mDatabase.SelectMaxErc(category, greatest) < 0) {
        greatest = 0;
    }
    if (IsErcUsedUp(before, greatest)) {
        mSources.Maintenance.ConfirmStart();
        // If it fails, the old numbers stay, and this card still gets its low number.
        if (mDatabase.ResetErc() >= 0) {
            mCurrentCard.Forward.ERC = mCurrentCard.Reverse.ERC = 0;
        }
        mSources.Maintenance.TellComplete();
    }
    schedule.ERC = NextErc(before, greatest, mSources.Random);
}

int64_t Scheduler::KeepOrRestoreSchedule(int score) {
    if (mHistoryPosition == -1) {
        mHistory.Add({mCurrentCard.CardId, CurrentSchedule(), mCurrentDirection});
        return -1;
    }
    const HistoryEntry* const entry = EntryToRestore(score);
    if (entry == nullptr) {
        return -1;
    }
    ScheduleOf(mCurrentCard, entry->Direction) = entry->Schedule;
    return entry->ReviewTime;
}

const HistoryEntry* Scheduler::EntryToRestore(int score) const {
    if (mHistoryPosition == -1 || score == CurrentSchedule().LastScore) {
        return nullptr;
    }
    // After a deletion the position may hold another card's entry, so it is found by identity.
    return mHistory.Find(mCurrentCard.CardId);
}

void Scheduler::LoadCurrentCard() {
    mStoreEmpty = mCategoryEmpty = mAllExcluded = false;
    // A failure comes back with the first card that is read.
    mDatabase.ReadVersion(mVersion);
    for (;;) {
        CardUuid id = mLiveCardId;
        ReviewDirection direction = mLiveDirection;
        if (mHistoryPosition != -1) {
            const HistoryEntry entry =
                IsInHistory() ? mHistory.At(mHistoryPosition) : HistoryEntry();
            id = entry.CardId;
            direction = entry.Direction;
        }
        std::list<FlashCard> cards;
        if (!id.IsZero() && mDatabase.SelectCardById(id, cards) < 0) {
            ShowPlaceholder("Error");
            return;
        }
        if (!cards.empty() && !IsExcluded(cards.front())) {
            mCurrentCard = std::move(cards.front());
            mCurrentDirection = direction;
            return;
        }
        if (mHistoryPosition == -1) {
            SelectLiveCard();
            return;
        }
        // The card is gone or excluded, or the position is past the end.
        if (IsInHistory()) {
            mHistory.EraseAt(mHistoryPosition);
        }
        --mHistoryPosition;
    }
}

void Scheduler::SelectLiveCard() {
    ReviewCard chosen;
    CardSelection selection(mDatabase, mOptions, mSources.Time, mSources.Random);
    if (selection.GetReviewCard(chosen) >= 0) {
        mCurrentCard = std::move(chosen.Card);
        mCurrentDirection = chosen.Direction;
        mLiveCardId = mCurrentCard.CardId;
        mLiveDirection = mCurrentDirection;
        return;
    }
    ShowPlaceholder("Empty");
    int32_t count = 0;
    mStoreEmpty = mDatabase.IsEmpty();
    if (!mStoreEmpty) {
        mCategoryEmpty =
            mDatabase.SelectCategoryIdCount(mOptions.Categories, count) >= 0 && count == 0;
        mAllExcluded = !mCategoryEmpty;
    }
}

// The other fields keep their values: a window looks at the flags before it shows a card.
void Scheduler::ShowPlaceholder(const wxString& word) {
    mCurrentCard.CardId = CardUuid();
    mCurrentCard.Front = word;
    mCurrentCard.Back = word;
}

bool Scheduler::IsExcluded(const FlashCard& card) const {
    return ((mCurrentDirection & kReviewForward) != 0 && card.ForwardX) ||
           ((mCurrentDirection & kReviewReverse) != 0 && card.ReverseX);
}

void Scheduler::PurgeHistory() {
    // The counter counts the entries as before any erasure, but is compared with the corrected
    // position.
    int index = 0;
    for (int counter = 0; index < GetHistoryCount(); ++counter) {
        int32_t count = 0;
        if (mDatabase.SelectCardIdCount(mHistory.At(index).CardId, count) >= 0 && count > 0) {
            ++index;
            continue;
        }
        mHistory.EraseAt(index);
        if (counter <= mHistoryPosition) {
            --mHistoryPosition;
        }
    }
}

void Scheduler::ClearLiveCard() {
    mLiveCardId = CardUuid();
    mLiveDirection = kReviewNone;
}

void Scheduler::Tell(int value) {
    for (const Listener& listener : mListeners) {
        listener(value);
    }
}
